#include "tests/support/scripted_device.h"

#include <algorithm>
#include <optional>

namespace pyrux::test {
namespace {

bool begins(const ByteVector& report, const ByteVector& head)
{
    return head.size() <= report.size() && std::equal(head.begin(), head.end(), report.begin());
}

} // namespace

sim::Identity rd210Identity()
{
    sim::Identity identity;
    identity.vid = 0x3A7E;
    identity.pid = 0x012F;
    identity.release = 0x0123;
    identity.serial = "S1";
    identity.product = "RD210";
    identity.collections = {{0, 0x0001, 0x0002}, {1, 0xFF00, 0x0001}};
    identity.controlInterface = 1;
    return identity;
}

void ScriptedDevice::answers(std::string_view command, const std::vector<std::string>& replies)
{
    const std::lock_guard lock(mutex);
    rules[bytes(command)] = {replies.begin(), replies.end()};
}

void ScriptedDevice::send(std::string_view report)
{
    emit(sim::Bytes(bytes(report)));
}

bool ScriptedDevice::awaitCommands(std::string_view command, std::size_t count)
{
    std::unique_lock lock(mutex);
    return arrived.wait_for(lock, patience, [&] { return countLocked(bytes(command)) >= count; });
}

std::size_t ScriptedDevice::commands(std::string_view command) const
{
    const std::lock_guard lock(mutex);
    return countLocked(bytes(command));
}

void ScriptedDevice::forget()
{
    const std::lock_guard lock(mutex);
    received.clear();
}

std::size_t ScriptedDevice::countLocked(const ByteVector& head) const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(received, [&](const ByteVector& report) { return begins(report, head); }));
}

void ScriptedDevice::output(sim::Bytes payload)
{
    const ByteVector command(payload.begin(), payload.end());
    std::optional<std::string> reply;
    {
        const std::lock_guard lock(mutex);
        received.push_back(command);
        std::deque<std::string>* rule = nullptr;
        std::size_t length = 0;
        for (auto& [head, replies] : rules)
            if (begins(command, head) && (!rule || head.size() >= length)) {
                rule = &replies;
                length = head.size();
            }
        if (rule) {
            reply = rule->front();
            if (rule->size() > 1)
                rule->pop_front();
        }
    }
    arrived.notify_all();
    if (!reply)
        emit(payload);
    else
        for (const std::string& report : reports(*reply))
            send(report);
}

} // namespace pyrux::test
