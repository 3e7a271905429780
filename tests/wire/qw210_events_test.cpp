// The keyboards: what they report by themselves, and the reader.

#include "tests/support/debug_log.h"
#include "tests/support/keyboard.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace pyrux::test {
namespace {

constexpr const char* acknowledgement = "42 10 00 00 01 00 00 01";

/// Fn is one flag for each model: every test begins with the key up.
template <class Model>
class KeyboardEvents : public KeyboardTest<Model> {
protected:
    KeyboardEvents()
    {
        this->keyboard->registerNotify(Notifications::callback);
        this->keyboard.device->send("43 01 00 00 3C 40");
        this->keyboard.settle();
        Notifications::clear();
        this->keyboard.forget();
    }
    ~KeyboardEvents() override
    {
        this->keyboard.device->send("43 01 00 00 3C 40");
        this->keyboard.settle();
    }

    std::string eventsOf(const std::string& report)
    {
        Notifications::clear();
        this->keyboard.device->send(report);
        this->keyboard.settle();
        return Notifications::await(0);
    }

    /// Whether the next call that uses the library's copy reads it anew.
    bool reads()
    {
        this->keyboard.written();
        EffectRecord record{};
        EXPECT_EQ(this->keyboard->getGeneralEffect(0, &record), E_OK);
        const std::string written = this->keyboard.written();
        EXPECT_TRUE(written.empty() || written == reloading()) << written;
        return !written.empty();
    }

    static std::string text(const char* what) { return "[PYRUX]" + Model::facts().model + " " + what; }
};
TYPED_TEST_SUITE(KeyboardEvents, KeyboardModels, ModelName);

std::string keyReport(int number, const char* state)
{
    const auto byte = std::uint8_t(number);
    return "43 01 77 88 " + hex(std::span(&byte, 1)) + " " + state + " 99";
}

TYPED_TEST(KeyboardEvents, tellOfTheProfile)
{
    forgetDebugOutput();
    this->keyboard.device->send("42 20 00 77 01 88 99 00");
    EXPECT_EQ(Notifications::await(1), "0:0");
    EXPECT_EQ(this->keyboard.written(1), acknowledgement);
    EXPECT_EQ(debugLines(), Lines{this->text("profile change")});
    this->keyboard.settle(); // the copy is stale once the callback has returned
    EXPECT_TRUE(this->reads());
    EXPECT_FALSE(this->reads());
}

TYPED_TEST(KeyboardEvents, tellOfTheEffect)
{
    forgetDebugOutput();
    this->keyboard.device->send("42 20 00 77 00 88 99 01");
    EXPECT_EQ(Notifications::await(1), "1:0");
    EXPECT_EQ(this->keyboard.written(1), acknowledgement);
    EXPECT_EQ(debugLines(), Lines{this->text("effect change")});
    this->keyboard.settle();
    EXPECT_FALSE(this->reads());
}

TYPED_TEST(KeyboardEvents, ofBothKindsAreThatOfTheProfile)
{
    this->keyboard.device->send("42 20 00 00 01 00 00 01");
    EXPECT_EQ(this->keyboard.written(1), acknowledgement);
    this->keyboard.settle();
    EXPECT_EQ(Notifications::await(0), "0:0");
    EXPECT_EQ(this->keyboard.written(), "41 01"); // no second acknowledgement
}

TYPED_TEST(KeyboardEvents, passOverReportsThatAreNone)
{
    for (const char* report :
         {"42 20 00 01 00 01 01 00 01", "42 20 00 00 02 00 00 02", "42 20 01 00 01 00 00 01",
          "42 20 40 00 01 00 00 01", "42 21 00 00 01 00 00 01", "43 00 00 00 05 C0", "44 01 00 00 05 C0"})
        EXPECT_EQ(this->eventsOf(report), "") << report;
    for (const std::string& report : reports(this->keyboard.written()))
        EXPECT_EQ(report, "41 01");
    EXPECT_FALSE(this->reads());
}

// By matrix number, the Fn key being number 60.
constexpr std::array<int, 120> usages{
    0x35,   0x1E, 0x2B, 0x14, 0x39, 0x04, 0xE1, 0x1D, 0x1F, 0x20, 0x1A, 0x08, 0x16, 0x07, 0x1B,
    0x06,   0x21, 0x22, 0x15, 0x17, 0x09, 0x0A, 0x19, 0x05, 0x23, 0x24, 0x1C, 0x18, 0x0B, 0x0D,
    0x11,   0x10, 0x25, 0x26, 0x0C, 0x12, 0x0E, 0x0F, 0x36, 0x37, 0x27, 0x2D, 0x13, 0x2F, 0x33,
    0x34,   0x38, 0xE5, 0x2E, 0x2A, 0x30, 0x31, 0x28, 0xE6, 0xE4, 0x00, 0x49, 0x4A, 0x4C, 0x4D,
    0x4000, 0x52, 0x51, 0x50, 0x4B, 0x00, 0x4E, 0x43, 0x44, 0x45, 0x4F, 0x62, 0x53, 0x54, 0x5F,
    0x60,   0x5C, 0x5D, 0x59, 0x5A, 0x55, 0x56, 0x61, 0x57, 0x5E, 0x58, 0x5B, 0x63, 0x89, 0x87,
    0xE3,   0xE0, 0xE2, 0x2C, 0x88, 0xE7, 0x29, 0x3A, 0x3B, 0x3C, 0x8B, 0x8A, 0x46, 0x47, 0x3D,
    0x3E,   0x3F, 0x48, 0xF2, 0xF3, 0xF0, 0xF4, 0x40, 0x41, 0x42, 0x00, 0x00, 0x00, 0x64, 0x32};

/// QW220 has no keys where QW210 has F2, F3, F0 and F4.
template <class Model>
int usageOf(int number)
{
    if (number >= 120 || (std::is_same_v<Model, QW220Model> && number >= 108 && number < 112))
        return 0;
    return usages[std::size_t(number)];
}

TYPED_TEST(KeyboardEvents, nameEachKey)
{
    for (int key = 0; key < 256; ++key) {
        const std::string value = std::to_string(usageOf<TypeParam>(key));
        Notifications::clear();
        this->keyboard.device->send(keyReport(key, "C0"));
        this->keyboard.device->send(keyReport(key, "40"));
        EXPECT_EQ(Notifications::await(2), "2:" + value + " 3:" + value) << key;
    }
    EXPECT_EQ(this->keyboard.written(), "");
}

TYPED_TEST(KeyboardEvents, shiftTheKeysWhileFnIsDown)
{
    EXPECT_EQ(this->eventsOf(keyReport(60, "C0")), "2:16384");
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "2:16388"); // 0x4004
    EXPECT_EQ(this->eventsOf(keyReport(5, "40")), "3:16388");
    EXPECT_EQ(this->eventsOf(keyReport(55, "C0")), "2:16384"); // no key
    EXPECT_EQ(this->eventsOf(keyReport(200, "C0")), "2:16384");
    EXPECT_EQ(this->eventsOf(keyReport(60, "40")), "3:16384");
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "2:4");
}

TYPED_TEST(KeyboardEvents, ofAnotherStateAreDroppedBeforeTheyReachFn)
{
    EXPECT_EQ(this->eventsOf(keyReport(5, "80")), "");
    EXPECT_EQ(this->eventsOf(keyReport(5, "00")), "");
    EXPECT_EQ(this->eventsOf(keyReport(60, "80")), "");
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "2:4");
    EXPECT_EQ(this->eventsOf(keyReport(60, "C0")), "2:16384");
    EXPECT_EQ(this->eventsOf(keyReport(60, "C1")), "");
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "2:16388");
}

/// What another keyboard's Fn does to the keys of this one.
template <class Other, class Model>
std::string shiftedBy(KeyboardOf<Model>& keyboard)
{
    KeyboardOf<Other> other;
    other.device->send(keyReport(60, "C0"));
    other.settle();
    Notifications::clear();
    keyboard.device->send(keyReport(5, "C0"));
    keyboard.settle();
    const std::string events = Notifications::await(0);
    other.device->send(keyReport(60, "40"));
    other.settle();
    return events;
}

TYPED_TEST(KeyboardEvents, areShiftedByFnOfEveryKeyboardOfTheModel)
{
    const auto expected = [](const char* other) {
        return TypeParam::facts().model == other ? "2:16388" : "2:4";
    };
    EXPECT_EQ(shiftedBy<QW210Model>(this->keyboard), expected("QW210"));
    EXPECT_EQ(shiftedBy<QW220Model>(this->keyboard), expected("QW220"));
}

TYPED_TEST(KeyboardEvents, goToNobodyOnceTheCallbackIsGone)
{
    EXPECT_EQ(this->keyboard->unRegisterNotify(), E_OK);
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "");
    this->keyboard.written();
    this->keyboard.device->send("42 20 00 00 01");
    EXPECT_EQ(this->keyboard.written(1), acknowledgement);
    this->keyboard.settle();
    EXPECT_EQ(Notifications::await(0), "");
    EXPECT_TRUE(this->reads());
    EXPECT_EQ(this->keyboard->registerNotify(Notifications::callback), E_OK);
    EXPECT_EQ(this->eventsOf(keyReport(5, "C0")), "2:4");
}

TYPED_TEST(KeyboardEvents, comeBetweenACommandAndItsReply)
{
    this->keyboard.device->answer("52 00",
                                  "43 01 00 00 05 C0 | 51 00 00 00 01 | 52 01 00 00 01 | 52 00 00 00 02");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(this->keyboard->getCurrProfileId(&id), E_OK);
    EXPECT_EQ(id, 2);
    EXPECT_EQ(Notifications::await(1), "2:4");
}

TEST(KeyboardReader, givesUpAtTheThirtyFirstFailure)
{
    KeyboardOf<QW210Model> first;
    KeyboardOf<QW220Model> second;
    forgetDebugOutput();
    sim::setConduct(first.path, {.readFailures = 31});
    sim::setConduct(second.path, {.readFailures = 30});
    debugLinesWith("[PYRUX][QW205V2]QW210 USB fail");
    second.settle(); // thirty are survived
    EXPECT_EQ(std::ranges::count(debugLines(), std::string("[PYRUX][QW225V2]QW220 USB fail")), 0);
    sim::setConduct(second.path, {.readFailures = 1}); // all failures of an object's life count
    const Lines lines = debugLinesWith("[PYRUX][QW225V2]QW220 USB fail");
    EXPECT_EQ(std::ranges::count(lines, std::string("[PYRUX][QW205V2]QW210 USB fail")), 1);
    EXPECT_EQ(std::ranges::count(lines, std::string("[PYRUX][QW225V2]QW220 USB fail")), 1);
}

} // namespace
} // namespace pyrux::test
