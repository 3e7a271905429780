// The wired mice with lights: start and end, and what the devices report by themselves.

#include "tests/support/debug_log.h"
#include "tests/support/led_mouse.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace pyrux::test {
namespace {

constexpr const char* acknowledgement = "42 10 00 00 01 00 00 01 01";

/// The shift of the keys is one for each model: each test begins with button 1 up.
template <class Model>
class LedMouseEvents : public testing::Test {
protected:
    LedMouseEvents()
    {
        mouse->registerNotify(Notifications::callback);
        mouse.device->send("43 01 00 00 01 40");
        settle();
        Notifications::clear();
        mouse.forget();
    }

    /// When a reply has come, everything that was sent before it has been looked at.
    void settle() { EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK); }

    std::string eventsOf(const char* report)
    {
        Notifications::clear();
        mouse.device->send(report);
        settle();
        return Notifications::await(0);
    }

    static std::string text(const char* what) { return "[PYRUX]" + Model::facts().model + " " + what; }

    Opened<Model> mouse;
};
TYPED_TEST_SUITE(LedMouseEvents, LedMouseModels, ModelName);

TYPED_TEST(LedMouseEvents, tellOfTheDpiButton)
{
    forgetDebugOutput();
    this->mouse.device->send("42 20 40 77 01 88 99 01 01");
    EXPECT_EQ(Notifications::await(1), "1:0");
    EXPECT_EQ(this->mouse.written(1), wire("42 10 40 00 01"));
    EXPECT_EQ(debugLines(), Lines{this->text("dpi change")});
}

TYPED_TEST(LedMouseEvents, tellOfTheProfile)
{
    forgetDebugOutput();
    this->mouse.device->send("42 20 00 77 01");
    EXPECT_EQ(Notifications::await(1), "0:0");
    EXPECT_EQ(this->mouse.written(1), acknowledgement);
    EXPECT_EQ(debugLines(), Lines{this->text("profile change")});
}

TYPED_TEST(LedMouseEvents, tellOfTheEffectMode)
{
    forgetDebugOutput();
    this->mouse.device->send("42 20 00 77 00 88 99 01");
    EXPECT_EQ(Notifications::await(1), "2:0");
    EXPECT_EQ(this->mouse.written(1), acknowledgement);
    EXPECT_EQ(debugLines(), Lines{this->text("effect mode change")});
}

TYPED_TEST(LedMouseEvents, tellOfTheEffectData)
{
    forgetDebugOutput();
    this->mouse.device->send("42 20 00 77 00 88 99 00 01");
    EXPECT_EQ(Notifications::await(1), "3:0");
    EXPECT_EQ(this->mouse.written(1), acknowledgement);
    EXPECT_EQ(debugLines(), Lines{this->text("effect data change")});
}

TYPED_TEST(LedMouseEvents, tellOfAllThatOneReportHolds)
{
    forgetDebugOutput();
    this->mouse.device->send("42 20 00 02 01 00 00 01 01");
    EXPECT_EQ(Notifications::await(3), "0:0 2:0 3:0");
    EXPECT_EQ(this->mouse.written(3), joined({acknowledgement, acknowledgement, acknowledgement}));
    EXPECT_EQ(debugLines(), (Lines{this->text("profile change"), this->text("effect mode change"),
                                   this->text("effect data change")}));
    EXPECT_EQ(this->eventsOf("42 20 00 02 00 00 00 01 01"), "2:0 3:0");
    EXPECT_EQ(this->eventsOf("42 20 00 02 01 00 00 00 01"), "0:0 3:0");
}

TYPED_TEST(LedMouseEvents, passOverReportsThatAreNone)
{
    for (const char* report :
         {"42 20 00 01 00 01 01 00 00 01", "42 20 00 00 02 00 00 02 02", "42 20 40 00 00 00 00 01 01",
          "42 21 00 00 01 00 00 01 01", "42 20 01 00 01 00 00 01 01"})
        EXPECT_EQ(this->eventsOf(report), "") << report;
    for (const std::string& report : reports(this->mouse.written()))
        EXPECT_EQ(report, "80 01");
}

TYPED_TEST(LedMouseEvents, nameEachKey)
{
    constexpr std::array<int, 24> values{0x1E, -1, 0x1F, 0x22, 0x21, 0x23, 0, 0, 0x09, 0x0A, 0, 0,
                                         0,    0,  0,    0,    0,    0,    0, 0, 0,    0,    0, 0};
    for (int key = 0; key < 256; ++key) {
        if (key == 1)
            continue;
        const std::uint8_t byte = std::uint8_t(key);
        const std::string number = hex(std::span(&byte, 1));
        const std::string value = std::to_string(key < 24 ? values[std::size_t(key)] : 0);
        Notifications::clear();
        this->mouse.device->send("43 01 77 88 " + number + " C0 99");
        this->mouse.device->send("43 01 77 88 " + number + " 40 99");
        EXPECT_EQ(Notifications::await(2), "4:" + value + " 5:" + value) << key;
    }
    this->settle();
    EXPECT_EQ(this->mouse.written(), wire("80 01"));
}

TYPED_TEST(LedMouseEvents, shiftTheKeysWhileButtonOneIsDown)
{
    EXPECT_EQ(this->eventsOf("43 01 00 00 01 C0"), "");
    EXPECT_EQ(this->eventsOf("43 01 00 00 00 C0"), "4:62");
    EXPECT_EQ(this->eventsOf("43 01 00 00 06 40"), "5:32");
    EXPECT_EQ(this->eventsOf("43 01 00 00 01 40"), "");
    EXPECT_EQ(this->eventsOf("43 01 00 00 00 C0"), "4:30");
}

/// What another mouse's button 1 does to the keys of this one.
template <class Other, class Model>
std::string shiftedBy(Opened<Model>& mouse)
{
    Opened<Other> other;
    other.device->send("43 01 00 00 01 C0");
    EXPECT_EQ(other->stopSurfaceLearning(), E_OK);
    Notifications::clear();
    mouse.device->send("43 01 00 00 00 C0");
    EXPECT_EQ(mouse->stopSurfaceLearning(), E_OK);
    const std::string events = Notifications::await(0);
    other.device->send("43 01 00 00 01 40");
    EXPECT_EQ(other->stopSurfaceLearning(), E_OK);
    return events;
}

TYPED_TEST(LedMouseEvents, shiftTheKeysOfAllMiceOfTheModelAndOfNoOther)
{
    forEachOf(LedMouseModels(), [&]<class Other>() {
        const bool same = std::is_same_v<Other, TypeParam>;
        EXPECT_EQ(shiftedBy<Other>(this->mouse), same ? "4:62" : "4:30") << Other::own.name;
    });
    Mouse plain;
    plain.device->send("43 01 00 00 01 C0");
    EXPECT_EQ(plain->stopSurfaceLearning(), E_OK);
    EXPECT_EQ(this->eventsOf("43 01 00 00 00 C0"), "4:30");
    plain.device->send("43 01 00 00 01 40");
    EXPECT_EQ(plain->stopSurfaceLearning(), E_OK);
}

TEST(LedMouseReader, givesUpAtTheThirtyFirstFailure)
{
    std::vector<std::unique_ptr<OpenedDevice<void>>> mice;
    std::vector<std::string> expected;
    forEachOf(LedMouseModels(), [&]<class Model>() {
        mice.push_back(std::make_unique<OpenedDevice<void>>(Model::facts().factory, identityOf<Model>()));
        expected.push_back(Model::facts().reader);
    });
    forgetDebugOutput();
    for (const auto& mouse : mice)
        sim::setConduct(mouse->path, {.readFailures = 31});
    Lines lines;
    for (const std::string& line : expected)
        lines = debugLinesWith(line);
    for (const std::string& line : expected)
        EXPECT_EQ(std::ranges::count(lines, line), 1) << line;
}

} // namespace
} // namespace pyrux::test
