// Threads of devices that take thread messages, and GLOW HUB II's.

#include "services/message_thread.h"

#include "devices/lighting/glow_hub2.h"
#include "services/service_manager.h"
#include "simulator/bus.h"
#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <mutex>
#include <string>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using platform::postThreadMessage;

TEST(MessageThreads, takeMessagesUntilTheyAreToldToQuit)
{
    std::promise<std::uintptr_t> word;
    MessageThread thread;
    thread.start([&](const platform::ThreadMessage& message) {
        if (message.number == 1027)
            word.set_value(message.second);
    });
    EXPECT_TRUE(postThreadMessage(thread.id(), {1026}));
    EXPECT_TRUE(postThreadMessage(thread.id(), {1027, 1, 22}));
    EXPECT_EQ(word.get_future().get(), 22U);
    EXPECT_TRUE(thread.stopWithin(20s));
    EXPECT_FALSE(postThreadMessage(thread.id(), {1027}));
    EXPECT_TRUE(thread.stopWithin(0s));
}

TEST(MessageThreads, endBySomebodyElsesMessageToo)
{
    MessageThread thread;
    thread.start([](const platform::ThreadMessage&) { FAIL(); });
    EXPECT_TRUE(postThreadMessage(thread.id(), {1031}));
    while (postThreadMessage(thread.id(), {1031}))
        std::this_thread::yield();
    EXPECT_TRUE(thread.stopWithin(20s));
}

TEST(MessageThreads, areLeftAloneWhileTheyAreHeld)
{
    std::promise<void> inside;
    std::promise<void> release;
    MessageThread thread;
    thread.start([&](const platform::ThreadMessage&) {
        EXPECT_FALSE(thread.stopWithin(20s)); // itself: at once
        inside.set_value();
        release.get_future().get();
    });
    EXPECT_TRUE(postThreadMessage(thread.id(), {1026}));
    inside.get_future().get();
    EXPECT_FALSE(thread.stopWithin(0s));
    release.set_value();
    EXPECT_TRUE(thread.stopWithin(20s));
}

TEST(MessageThreads, neverStartedHaveEnded)
{
    MessageThread thread;
    EXPECT_TRUE(thread.stopWithin(0s));
}

/// The device behind the host object, whose message thread is in reach.
class AudioHub : public GLOW_HUB2 {
public:
    using GLOW_HUB2::GLOW_HUB2;
    using GLOW_HUB2::messages;
};

std::promise<GlowHub2Notify> told;

TEST(GlowHub2Audio, tellsTheHostThatTheSoundHasChanged)
{
    sim::Identity identity;
    identity.pid = 0x1007;
    identity.collections = {{}};
    const std::string path = sim::plug(std::make_shared<ScriptedDevice>(identity));
    {
        AudioHub hub(path);
        ASSERT_FALSE(hub.openFailed());
        SERVICE_PROBE* service = nullptr;
        EXPECT_EQ(PYRUX_SERVICE::instance().findService(service, "audio"), 0); // made for it
        hub.registerNotify([](GlowHub2Notify record) { told.set_value(record); });
        EXPECT_TRUE(postThreadMessage(hub.messages.id(), {4}));
        EXPECT_TRUE(postThreadMessage(hub.messages.id(), {3}));
        EXPECT_TRUE(postThreadMessage(hub.messages.id(), {2}));
        const GlowHub2Notify record = told.get_future().get();
        EXPECT_EQ(hex({reinterpret_cast<const std::uint8_t*>(&record), sizeof record}),
                  "02 00 00 01 00 01 00 00 01 00 01");
        EXPECT_TRUE(hub.endThreads(std::chrono::steady_clock::now() + 20s));
        EXPECT_FALSE(postThreadMessage(hub.messages.id(), {2}));
    }
    sim::unplug(path);
}

} // namespace
} // namespace pyrux::test
