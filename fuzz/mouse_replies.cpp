#include "core/log.h"
#include "pyrux/pyrux.h"
#include "simulator/bus.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

using namespace pyrux;

namespace {

/// A mouse that repeats the head of every command, and lies behind it.
class LyingMouse final : public sim::Firmware {
public:
    std::span<const std::uint8_t> lies;

    const sim::Identity& identity() const override
    {
        static const sim::Identity own{
            .pid = 0x012F, .collections = {{.interface = 1}}, .controlInterface = 1};
        return own;
    }

    void output(sim::Bytes payload) override
    {
        std::array<std::uint8_t, 64> reply{};
        for (std::size_t i = 0; i < reply.size(); ++i)
            reply[i] = i < 3 ? payload[i] : next();
        emit(reply);
    }

    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

private:
    std::uint8_t next()
    {
        if (lies.empty())
            return 0xFC; // ends a macro
        const std::uint8_t lie = lies.front();
        lies = lies.subspan(1);
        return lie;
    }
};

} // namespace

/// Everything that a mouse can answer to what a host reads from it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto mouse = std::make_shared<LyingMouse>();
    static const std::string path = sim::plug(mouse);
    static PYRUX_RD210_Base* const host = [] {
        debugEnabled = 0;
        return rd210(path.c_str());
    }();
    if (size == 0)
        return 0;
    mouse->lies = {data + 1, size - 1};
    const std::uint8_t button = data[0] % 13;
    PerformanceRecord performance{};
    MouseMacroRecord macro{};
    std::array<std::uint16_t, 13> map{};
    switch (data[0] / 13 % 6) {
    case 0:
        host->getPerformance(&performance);
        break;
    case 1:
        macro.button = button;
        host->getMacro(&macro);
        break;
    case 2:
        host->getKeyMappingAll(map.data());
        break;
    case 3:
        host->setKeyMapping(button, std::uint16_t(KEY_DPI_LEVEL + button % 7));
        break;
    case 4:
        host->changeDpiLevel(button % 7);
        break;
    default:
        // A report that nobody asked for.
        sim::inject(path, {data + 1, data + size});
        host->stopRecordMacro();
        break;
    }
    return 0;
}
