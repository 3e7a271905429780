#include "core/log.h"
#include "devices/power/voltgrid.h"
#include "simulator/bus.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

using namespace pyrux;

namespace {

/// A supply that begins each reply as it should, and lies behind it.
class LyingSupply final : public sim::Firmware {
public:
    std::span<const std::uint8_t> lies;

    const sim::Identity& identity() const override
    {
        static const sim::Identity own{
            .pid = 0x0030, .collections = {{.interface = -1}}, .controlInterface = -1};
        return own;
    }

    void output(sim::Bytes payload) override
    {
        switch (payload[1]) { // the letter of the request
        case 'Q':
            return reply({'[', 'm', payload[2]});
        case 'S':
            return reply({'C'});
        default:
            return reply({'[', payload[1]});
        }
    }

    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

private:
    void reply(std::initializer_list<std::uint8_t> head)
    {
        std::array<std::uint8_t, 16> report{};
        const std::size_t count = std::min(report.size() - head.size(), lies.size());
        std::copy_n(lies.begin(), count, std::copy(head.begin(), head.end(), report.begin()));
        lies = lies.subspan(count);
        emit(report);
    }
};

/// A clock whose sleeps take no time.
class Hurried final : public Clock {
public:
    std::uint32_t now() override { return 0; }
    void sleep(std::unique_lock<std::mutex>&, std::condition_variable&, std::chrono::milliseconds,
               const std::function<bool()>&) override
    {
    }
    void wait(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
              const std::function<bool()>& until) override
    {
        changed.wait(lock, until);
    }
};

} // namespace

/// Everything that a supply can send, by itself and as a reply.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Hurried clock;
    static const auto supply = std::make_shared<LyingSupply>();
    static const std::string path = sim::plug(supply);
    static VOLTGRID& protocol = []() -> VOLTGRID& {
        debugEnabled = 0;
        return *new VOLTGRID(path, clock);
    }();
    if (size == 0)
        return 0;
    supply->lies = {data + 1, size - 1};
    VoltgridFan fan{};
    std::uint8_t family, major, minor;
    switch (data[0] % 4) {
    case 0:
        protocol.getFan(fan);
        break;
    case 1:
        protocol.getVersion(&family, &major, &minor);
        break;
    case 2:
        protocol.getMultiRail(&family);
        break;
    default:
        // A measurement; the request behind it is answered once it has been taken in.
        sim::inject(path, {data + 1, data + std::min<std::size_t>(size, 17)});
        protocol.getMultiRail(&family);
        break;
    }
    PsuInput input{};
    protocol.getInput(input);
    return 0;
}
