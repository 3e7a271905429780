// What goes on while an object is being made: its device takes its time, and nobody else waits for it.

#include "tests/support/debug_capture.h"
#include "tests/support/debug_log.h"
#include "tests/support/isolated.h"
#include "tests/support/keyboard.h"
#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <memory>
#include <string>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

/// A device whose object is being made on another thread.
template <class Interface>
class Making {
public:
    Making(Interface* (*factory)(const char*), const sim::Identity& identity, const char* silent,
           const char* first)
        : device(std::make_shared<ScriptedDevice>(identity)), factory(factory)
    {
        device->silence(silent);
        path = sim::plug(device);
        host = again();
        EXPECT_TRUE(device->awaitCommands(first));
    }

    /// Another call of the factory.
    std::future<Interface*> again()
    {
        return std::async(std::launch::async, [this] { return factory(path.c_str()); });
    }

    bool stands() const { return host.wait_for(0s) == std::future_status::ready; }

    std::shared_ptr<ScriptedDevice> device;
    std::string path;
    std::future<Interface*> host;

private:
    Interface* (*factory)(const char*);
};

/// A keyboard that answers nothing takes about 18 s.
struct SilentKeyboard : Making<PYRUX_QW210_Base> {
    SilentKeyboard() : Making(qw210, identityOf<QW210Model>(), "", "41 01") {}
};

/// A mouse that does not say hello takes 2 s.
struct SilentMouse : Making<PYRUX_RD210_Base> {
    SilentMouse() : Making(rd210, rd210Identity(), "43", "43") {}
};

ISOLATED_TEST(Making, holdsBackNoOtherDevice)
{
    SilentKeyboard keyboard;
    {
        Mouse mouse;
        EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    }
    EXPECT_FALSE(keyboard.stands());
    sim::unplug(keyboard.path);
    PYRUX_QW210_Base* const host = keyboard.host.get();
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(host->exit_device(1), E_OK);
}

ISOLATED_TEST(Making, givesAllCallersOneObject)
{
    SilentMouse mouse;
    auto second = mouse.again();
    PYRUX_RD210_Base* const host = mouse.host.get();
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(second.get(), host);
    EXPECT_EQ(takeWritten(mouse.path), wire(RD210Model::facts().opening)); // once
}

ISOLATED_TEST(Making, doesNotHoldTheEndOfTheLibrary)
{
    SilentKeyboard keyboard;
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_FALSE(keyboard.stands());
    sim::unplug(keyboard.path);
    EXPECT_EQ(keyboard.host.get(), nullptr);
}

ISOLATED_TEST(Making, endsWithAGoodbyeWhenTheLibraryHasEnded)
{
    SilentMouse mouse;
    EXPECT_EQ(pyrux_exit(), 0);
    Lines lines;
    lines = debugLinesOf([&] { EXPECT_EQ(mouse.host.get(), nullptr); });
    EXPECT_EQ(std::ranges::count(lines, "[PYRUX][RD210]exit devie RD210 by probe"), 1);
    EXPECT_TRUE(takeWritten(mouse.path).ends_with("43 00 00 00 01 | 41 01 | 41"));
    // As after any end: the next call makes a new object.
    mouse.device->answer("43", "43 00 00 00 01");
    PYRUX_RD210_Base* const host = rd210(mouse.path.c_str());
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(host->changeProfileId(1), E_OK);
}

ISOLATED_TEST(Making, hearsOfARemovalMeanwhile)
{
    EXPECT_EQ(pyrux_init(), 0);
    SilentMouse mouse;
    DebugCapture capture;
    sim::unplug(mouse.path);
    PYRUX_RD210_Base* const host = mouse.host.get();
    ASSERT_NE(host, nullptr);
    EXPECT_TRUE(capture.waitFor("[PYRUX][RD210]exit devie RD210 by probe"));
    EXPECT_EQ(host->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(pyrux_exit(), 0);
}

} // namespace
} // namespace pyrux::test
