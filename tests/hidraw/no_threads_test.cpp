// What is left of the library when the system has no room for a thread.

#include "tests/hidraw/no_threads.h"

#include "core/debug_console.h"
#include "devices/keyboards/status_painter.h"
#include "services/hardware_names.h"
#include "services/message_thread.h"
#include "services/service_manager.h"
#include "services/sys_info.h"
#include "tests/hidraw/fake_node.h"
#include "transport/cmd_queue.h"
#include "transport/device_closer.h"
#include "transport/hotplug.h"
#include "transport/reader_thread.h"
#include "transport/usb_hid.h"

#include <gtest/gtest.h>

#ifdef PYRUX_UNSANITIZED

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

constexpr std::array<std::uint8_t, 4> command{0x00, 0x41, 0x80, 0x07};

TEST(WithoutThreads, writesAndReadersFailInTheirOwnWay)
{
    FakeNode node;
    usbHid channel(node.path());
    ASSERT_TRUE(channel.open(usbHid::Mode::blocking));
    {
        const NoThreads none;
        EXPECT_EQ(channel.writeWatched(command), E_WRITE_TIMEOUT);
        EXPECT_TRUE(node.takeWritten().empty());
    }
    EXPECT_EQ(channel.writeWatched(command), E_OK); // there is room again
    ReaderThread reader(channel, {});
    const NoThreads none;
    EXPECT_FALSE(reader.start([](const Reply&) { FAIL(); }));
    EXPECT_TRUE(reader.ended());
    EXPECT_FALSE(channel.isOpen());
    EXPECT_EQ(channel.writeWatched(command), E_NOT_OPEN);
    EXPECT_TRUE(reader.stopWithin(0ms));
}

TEST(WithoutThreads, queuesTryAgainWithTheNextPush)
{
    const Report report{0x41, 0x80};
    std::atomic<int> sent{0};
    auto none = std::make_unique<NoThreads>();
    CmdQueue queue;
    queue.setChannel([&](CmdQueue::Packet) {
        sent = 1;
        sent.notify_all();
        return E_OK;
    });
    EXPECT_TRUE(queue.ended());
    queue.push(0, report);
    EXPECT_TRUE(queue.ended());
    none.reset();
    queue.push(0, report); // starts the thread, and is lost
    EXPECT_FALSE(queue.ended());
    queue.push(0, report);
    sent.wait(0);
}

TEST(WithoutThreads, messageThreadsDoNotStart)
{
    const NoThreads none;
    MessageThread thread;
    EXPECT_FALSE(thread.start([](const platform::ThreadMessage&) { FAIL(); }));
    EXPECT_TRUE(thread.stopWithin(0ms));
    EXPECT_FALSE(thread.start([](const platform::ThreadMessage&) { FAIL(); }));
    thread.stop();
}

TEST(WithoutThreads, nobodyPaintsTheStatus)
{
    const NoThreads none;
    const StatusChart chart;
    StatusPainter painter(
        chart, [] { return std::optional<std::uint32_t>(0); }, [](std::span<const std::uint8_t>) { FAIL(); });
    EXPECT_FALSE(painter.start());
    EXPECT_TRUE(painter.stopWithin(0ms));
}

TEST(WithoutThreads, servicesStandAndTellNothing)
{
    const NoThreads none;
    PYRUX_SERVICE services;
    EXPECT_EQ(services.createService("cpuusage"), 0);
    SYS_INFO_Base* const object = new SYS_INFO({.services = services, .limits = {1ms, 1ms}});
    SysHardwareNames names;
    EXPECT_EQ(object->getHardwareNames(&names), E_INVALID_GET);
    EXPECT_EQ(object->destroy(1), object);
}

TEST(WithoutThreads, startingTellsThatItFailed)
{
    const NoThreads none;
    EXPECT_FALSE(startHotplug());
    EXPECT_FALSE(startDebugConsole());
    closeDeviceByPath("nothing"); // done at once
    EXPECT_TRUE(DeviceCloser::instance().waitUntilIdle(0ms));
}

} // namespace
} // namespace pyrux::test

#endif
