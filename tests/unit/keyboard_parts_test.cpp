// A keyboard that lacks what its layout has no row for.

#include "devices/keyboards/keyboard.h"
#include "simulator/bus.h"
#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

constexpr KeyboardLayout bare{
    .model = modelRow("qw210"),
    .partialResets = 1,
    .effects = {.systemStatus = std::nullopt},
};

/// Without lights, key reports and a status effect.
class BareKeyboard : public Keyboard {
public:
    explicit BareKeyboard(const std::string& path) : Keyboard(path, bare) {}
};

class KeyboardParts : public testing::Test {
protected:
    KeyboardParts() { events.clear(); }
    ~KeyboardParts() override
    {
        sim::unplug(path); // ends the read that waits
        keyboard.reset();
    }

    static void note(NotifyRecord* record) { events.push_back(record->event); }
    static inline std::vector<std::uint32_t> events; ///< On the reader's thread, until a reply has come.

    const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>(identityOf<QW210Model>());
    const std::string path = sim::plug(device);
    std::unique_ptr<BareKeyboard> keyboard = std::make_unique<BareKeyboard>(path);
};

TEST_F(KeyboardParts, areThereByTheLayout)
{
    ASSERT_EQ(keyboard->openFailed(), 0);
    EXPECT_FALSE(keyboard->lights);
    EXPECT_FALSE(keyboard->status);
    EXPECT_EQ(takeWritten(path), wire(joined({"41 01 | 41 00", reloading(),
                                              "42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01"})));
    EXPECT_EQ(keyboard->profiles.resetPartial(1), E_INVALID_SET);
    EXPECT_EQ(takeWritten(path), "");
}

/// A key report is a reply like others to a keyboard that has none.
TEST_F(KeyboardParts, thatAreMissingTellNothing)
{
    keyboard->registerNotify(note);
    takeWritten(path);
    device->send("43 01 00 00 05 C0");
    device->send("42 20 00 00 00 00 00 01");
    ASSERT_TRUE(device->awaitCommands("42 10", 2)); // the start's and the answer to the change
    EXPECT_EQ(keyboard->startRecordMacro(), E_OK);
    EXPECT_EQ(events, std::vector<std::uint32_t>{1});
    EXPECT_EQ(takeWritten(path), wire("42 10 00 00 01 00 00 01 | 41 01"));
}

/// Effect 20 is one like others, and nobody is asked to paint it.
TEST_F(KeyboardParts, doWithoutTheStatusEffect)
{
    takeWritten(path);
    EXPECT_EQ(keyboard->effects.setMode(20), E_OK);
    EXPECT_EQ(keyboard->effects.setMode(4), E_OK);
    EXPECT_EQ(takeWritten(path), wire("41 80 | 51 28 00 00 14 | 41 80 | 51 28 00 00 04"));
}

TEST_F(KeyboardParts, endTogether)
{
    takeWritten(path);
    keyboard->noteClosed();
    keyboard->sayGoodbye();
    EXPECT_EQ(takeWritten(path), wire("41 01 | 41 00 | 41 00"));
    EXPECT_TRUE(keyboard->endThreads(std::chrono::steady_clock::now() + patience));
    EXPECT_EQ(keyboard->startRecordMacro(), E_NOT_OPEN);
}

} // namespace
} // namespace pyrux::test
