#pragma once

#include "fuzz/support/input.h"
#include "simulator/firmware.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace pyrux::fuzz {

/// A report of an input: a byte that says how it is sent, its length, and so many bytes of it, which zeros
/// fill up.
namespace how {
inline constexpr std::uint8_t repeats = 0x07; ///< So many first bytes are taken from the command instead.
inline constexpr std::uint8_t cut = 0x08;     ///< It ends with its last byte; nothing is filled up.
inline constexpr std::uint8_t path = 0x30;    ///< Which collection it comes from, in bits 4 and 5.
inline constexpr std::uint8_t silence = 0x40; ///< None is sent; the length and the bytes are missing too.
inline constexpr std::uint8_t more = 0x80;    ///< Another one follows without being asked for.
} // namespace how

/// A device of the simulator that answers as its firmware does, until it is given an input: from then on each
/// command is answered by what stands next in that, and after its end by nothing.
class OutsideDevice final : public sim::Firmware {
public:
    explicit OutsideDevice(std::shared_ptr<sim::Firmware> model);

    /// Plugs the device in. Its path stays where it is.
    const std::string& plug();

    void answerFrom(Input reports);

    /// Sends what is left of the input, as reports that nobody has asked for.
    void sendRest();

    const sim::Identity& identity() const override { return model->identity(); }
    void powerOn() override { model->powerOn(); }
    void powerOff() override { model->powerOff(); }
    void output(sim::Bytes payload) override { model->output(payload); }
    void outputOn(const sim::Channel& channel, sim::Bytes payload) override;
    std::optional<std::vector<std::uint8_t>> inputReport(const sim::Channel& channel) override;
    bool happen(const std::string& event, const std::vector<int>& values) override;
    std::vector<std::string> events() const override { return model->events(); }

private:
    bool sendNext(Bytes command);

    const std::shared_ptr<sim::Firmware> model;
    std::string ownPath;
    std::vector<std::string> paths;
    std::atomic<bool> honest{true};
    std::mutex mutex; ///< Guards `reports`: a queue may write while an input ends.
    Input reports;
};

} // namespace pyrux::fuzz
