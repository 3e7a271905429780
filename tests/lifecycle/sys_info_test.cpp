// The export `sysInfo`: its object through the raw virtual table, and what stays of it after `pyrux_exit`.
// Its services write to the log from time to time, so each test has a process of its own.

#include "tests/support/debug_log.h"
#include "tests/support/isolated.h"
#include "tests/support/member_call.h"
#include "tests/support/pipe_peer.h"

#include <pyrux/pyrux.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

template <class Result = std::int32_t, class... Values>
Result callSlot(void* object, std::size_t slot, Values... values)
{
    using Operation = Result(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[slot])(object, values...);
}

void destroy(void* object)
{
    EXPECT_EQ((callSlot<void*>(object, 16, std::uint32_t(1))), object);
}

/// The resident service.
PipePeer::Script resident()
{
    return [](PipePeer::Client& client) {
        const std::string request = client.receive();
        if (request == "temp")
            client.send("45;60");
        else if (request == "getcorenum")
            client.send("8;16");
        else if (request == "getsysinfo")
            client.send("0.5;1;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14");
        client.receive(); // until it goes
    };
}

/// The last records that the callbacks got.
struct Told {
    std::mutex mutex;
    std::condition_variable changed;
    SysStatusRecord status{};
    SysDetailRecord details{};

    bool waitFor(const std::function<bool()>& what)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, 10s, what);
    }
};

Told told;

void takeStatus(SysStatusRecord status)
{
    const std::lock_guard lock(told.mutex);
    told.status = status;
    told.changed.notify_all();
}

void takeDetails(SysDetailRecord details)
{
    const std::lock_guard lock(told.mutex);
    told.details = details;
    told.changed.notify_all();
}

void takeLanguage(std::int32_t) {}

bool between(std::int32_t value, std::int32_t lowest, std::int32_t highest)
{
    return value >= lowest && value <= highest;
}

} // namespace

ISOLATED_TEST(SysInfoExport, logsItsNameAndMakesAnotherObjectEachTime)
{
    void* first = nullptr;
    EXPECT_EQ(debugLinesOf([&] { first = sysInfo(); }).front(), "[PYRUX][SYS]PYRUX::sysInfo, #");
    void* const second = sysInfo();
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    destroy(first);
    destroy(second);
}

ISOLATED_TEST(SysInfoExport, hasItsOperationsInTheirSlots)
{
    const PipePeer peer("twldservicepipe", resident());
    void* const object = sysInfo();
    ASSERT_NE(object, nullptr);
    std::int32_t a = -1;
    std::int32_t b = -1;
    int window = 0;

    EXPECT_EQ(callSlot(object, 2, &a, &b), 0); // getSysCore
    EXPECT_EQ(a, 8);
    EXPECT_EQ(b, 16);
    EXPECT_EQ(callSlot(object, 3, &a), 0); // getCpuUsage
    EXPECT_TRUE(between(a, 0, 100));
    EXPECT_EQ(callSlot(object, 4, &a), 0); // getGpuUsage
    EXPECT_TRUE(between(a, 0, 100));
    EXPECT_EQ(callSlot(object, 5, &a), 0); // getRamUsage
    EXPECT_TRUE(between(a, 1, 100));
    a = 77;
    EXPECT_EQ(callSlot(object, 7, &a), -3); // getKeyboardLanguage
    EXPECT_EQ(a, 77);
    testing::internal::CaptureStdout();
    EXPECT_EQ(callSlot(object, 6, static_cast<void*>(&window)), 0); // setHookWindow
    EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with("hook_pid set = "));
    EXPECT_EQ(callSlot(object, 7, &a), 0);
    EXPECT_TRUE(between(a, 0, 14));

    EXPECT_EQ(callSlot(object, 8, &takeStatus), 0);    // registerStatusNotify
    EXPECT_EQ(callSlot(object, 10, &takeLanguage), 0); // registerLanguageNotify
    EXPECT_EQ(callSlot(object, 13, &takeDetails), 0);  // registerInfoNotify
    EXPECT_TRUE(told.waitFor([] { return told.status.cpuTemp == 45 && told.details.field14 == 14; }));
    EXPECT_EQ(told.status.gpuTemp, 60);
    EXPECT_EQ(callSlot(object, 1, &a, &b), 0); // getSysTemp
    EXPECT_TRUE(a == 45 || a == 0);            // kept after the callback
    EXPECT_EQ(callSlot(object, 9), 0);         // unRegisterStatusNotify
    EXPECT_EQ(callSlot(object, 14), 0);        // unRegisterInfoNotify
    EXPECT_EQ(callSlot(object, 11), 0);        // unRegisterLanguageNotify

    told.status = {};
    EXPECT_EQ(callSlot(object, 12, SysStatusRecord{1, 2, 3, 4, 5}), 0); // callStatusNotify
    EXPECT_EQ(told.status.cpuTemp, 0);
    EXPECT_EQ(callSlot(object, 8, &takeStatus), 0);
    EXPECT_EQ(callSlot(object, 12, SysStatusRecord{1, 2, 3, 4, 5}), 0);
    EXPECT_EQ(callSlot(object, 9), 0);
    SysDetailRecord details{};
    details.field7 = 7.25F;
    EXPECT_EQ(callSlot(object, 13, &takeDetails), 0);
    EXPECT_EQ(callSlot(object, 15, details), 0); // callInfoNotify
    EXPECT_EQ(callSlot(object, 14), 0);
    destroy(object);
}

ISOLATED_TEST(SysInfoExport, namesTheHardware)
{
    void* const object = sysInfo();
    SysHardwareNames names{};
    names.ramCapacityGiB = -1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(callSlot(object, 0, &names), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_GE(names.ramCapacityGiB, 0);
    destroy(object);
}

ISOLATED_TEST(SysInfoExport, endsItsServicesWithTheLibrary)
{
    const PipePeer peer("twldservicepipe", resident());
    void* const object = sysInfo();
    EXPECT_EQ(callSlot(object, 8, &takeStatus), 0);
    EXPECT_TRUE(told.waitFor([] { return told.status.cpuTemp == 45; }));
    EXPECT_EQ(pyrux_exit(), 0);
    // Neither of the two services asks again, which they did every 800 and 1000 ms.
    const int asked = static_cast<int>(peer.requests().size());
    EXPECT_FALSE(peer.hasServed(asked + 1, 1500ms));
    // The object outlives them.
    std::int32_t cpu = 0;
    std::int32_t gpu = 0;
    EXPECT_EQ(callSlot(object, 1, &cpu, &gpu), 0);
    EXPECT_EQ(cpu, 45);
    EXPECT_EQ(gpu, 60);
    destroy(object);
}

} // namespace pyrux::test
