#pragma once

#include "simulator/firmware.h"
#include "tests/support/bytes.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux::test {

/// Longest time that a test waits for something that is about to happen. Nothing waits for it to run out.
inline constexpr std::chrono::seconds patience{20};

/// RD210 as the bus shows it: a boot mouse on interface 0, the commands on interface 1.
sim::Identity rd210Identity();

/// A device without a mind of its own: it answers each command by what the test has laid down, else by the
/// command itself.
class ScriptedDevice final : public sim::Firmware {
public:
    explicit ScriptedDevice(sim::Identity identity = rd210Identity()) : self(std::move(identity)) {}

    /// Commands that begin with `command` are answered by `replies`: one after the other, the last one again
    /// and again. A reply of "" is silence, one of "52 00 | 52 00 01" is two reports. Of several rules the
    /// longest `command` counts, of equal ones the newest.
    void answers(std::string_view command, const std::vector<std::string>& replies);
    void answer(std::string_view command, const std::string& reply) { answers(command, {reply}); }
    void silence(std::string_view command) { answer(command, ""); }

    /// Sends an input report.
    void send(std::string_view report);

    /// Waits for `count` commands that begin with `command`, all since plug-in or `forget`.
    bool awaitCommands(std::string_view command, std::size_t count = 1);
    std::size_t commands(std::string_view command) const;
    void forget();

    const sim::Identity& identity() const override { return self; }
    void output(sim::Bytes payload) override;
    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

private:
    std::size_t countLocked(const ByteVector& head) const;

    const sim::Identity self;
    mutable std::mutex mutex;
    std::condition_variable arrived;
    std::map<ByteVector, std::deque<std::string>> rules;
    std::vector<ByteVector> received;
};

/// Lays down a device's answers.
using Prepare = std::function<void(ScriptedDevice&)>;

} // namespace pyrux::test
