// The keyboards: frames of a host.

#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Keys = std::vector<DirectKeyColor>;

template <class Model>
class KeyboardLights : public KeyboardTest<Model> {
protected:
    /// What a list sends: reports that are given, then the keys that are not in them, black.
    std::string with(const std::string& listed, const std::set<int>& keys)
    {
        std::vector<std::string> pieces{listed};
        ByteVector report;
        for (int key = 0; key < Model::directLeds; ++key) {
            if (keys.contains(key))
                continue;
            if (report.empty())
                report = {0xC0, 0x01, 0, 0};
            ++report[2];
            report.insert(report.end(), {std::uint8_t(key), 0, 0, 0});
            if (report[2] == 15) {
                pieces.push_back(hex(report));
                report.clear();
            }
        }
        if (!report.empty())
            pieces.push_back(hex(report));
        return wire(joined(pieces));
    }

    /// What goes out for a list.
    std::string sent(const Keys& list, std::size_t count)
    {
        EXPECT_EQ(this->keyboard->setSyncLightingData(list), E_OK);
        return this->keyboard.written(count);
    }
};
TYPED_TEST_SUITE(KeyboardLights, KeyboardModels, ModelName);

TYPED_TEST(KeyboardLights, areTakenOverWithoutWaitingForReplies)
{
    this->keyboard.device->silence("41");
    this->keyboard.device->silence("C0");
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->keyboard->setLightingInit(), E_OK); }), 2000);
    EXPECT_EQ(this->keyboard.written(3), wire("41 03 | C0 F0 00 00 01 | C0 00"));
}

TYPED_TEST(KeyboardLights, areGivenBack)
{
    EXPECT_EQ(this->keyboard->setLightingUninit(), E_OK);
    EXPECT_EQ(this->keyboard.written(1), wire("41 00"));
}

TYPED_TEST(KeyboardLights, areTurnedOff)
{
    EXPECT_EQ(this->keyboard->setLightingTurnOff(), E_OK);
    EXPECT_EQ(this->keyboard.written(1), wire("C0 00"));
}

TYPED_TEST(KeyboardLights, ofOneColorHaveTheirCommandFromTheTakeOver)
{
    const std::uint8_t first[]{1, 2, 3};
    EXPECT_EQ(this->keyboard->setLightingPortColor(first), E_OK);
    EXPECT_EQ(this->keyboard.written(1), wire("00 00 00 00 01 02 03"));
    EXPECT_EQ(this->keyboard->setLightingInit(), E_OK);
    this->keyboard.written(3);
    const std::uint8_t second[]{0xFF, 0, 0x80};
    EXPECT_EQ(this->keyboard->setLightingPortColor(second), E_OK);
    EXPECT_EQ(this->keyboard.written(1), wire("C0 00 00 00 FF 00 80"));
    EXPECT_EQ(this->keyboard->setLightingTurnOff(), E_OK);
    EXPECT_EQ(this->keyboard.written(1), wire("C0 00"));
}

TYPED_TEST(KeyboardLights, arePaintedOneByOneAndTheOthersBlack)
{
    const std::string expected = this->with("C0 01 02 00 07 11 12 13 00 21 22 23", {0, 7});
    EXPECT_EQ(
        this->sent({{7, 0x11, 0x12, 0x13, 0xEE}, {0, 0x21, 0x22, 0x23, 0xEE}}, reports(expected).size()),
        expected);
}

TYPED_TEST(KeyboardLights, ofNoListStay)
{
    EXPECT_EQ(this->keyboard->setSyncLightingData({}), E_OK);
    const std::string expected = this->with("C0 01 01 00 00 01 02 03", {0});
    EXPECT_EQ(this->sent({{0, 1, 2, 3, 0}}, reports(expected).size()), expected);
}

/// An entry that is not shown keeps its place, which is then that of LED 0 in black.
TYPED_TEST(KeyboardLights, thatAreNotThereOrListedTwiceLeaveTheirPlaceEmpty)
{
    const int last = TypeParam::directLeds - 1;
    const auto byte = std::uint8_t(last);
    const std::string expected =
        this->with("C0 01 07 00 05 11 12 13 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " +
                       hex(std::span(&byte, 1)) + " 61 62 63 00 00 00 00",
                   {5, last});
    EXPECT_EQ(this->sent({{5, 0x11, 0x12, 0x13, 0},
                          {last + 1, 0x21, 0x22, 0x23, 0},
                          {5, 0x31, 0x32, 0x33, 0},
                          {-1, 0x41, 0x42, 0x43, 0},
                          {0x7FFFFFFF, 0x51, 0x52, 0x53, 0},
                          {last, 0x61, 0x62, 0x63, 0},
                          {256 + 6, 0x71, 0x72, 0x73, 0}},
                         reports(expected).size()),
              expected);
}

TYPED_TEST(KeyboardLights, areFifteenToAReport)
{
    Keys list;
    std::string first = "C0 01 0F 00", second = "C0 01 02 00";
    std::set<int> listed;
    for (int key = 20; key < 37; ++key) {
        const auto byte = std::uint8_t(key);
        list.push_back({key, byte, 0x80, 0x01, 0});
        (key < 35 ? first : second) +=
            " " + hex(std::span(&byte, 1)) + " " + hex(std::span(&byte, 1)) + " 80 01";
        listed.insert(key);
    }
    const std::string expected = this->with(joined({first, second}), listed);
    EXPECT_EQ(this->sent(list, reports(expected).size()), expected);
}

TYPED_TEST(KeyboardLights, mayAllBeListed)
{
    Keys list;
    std::string expected;
    for (int key = 0; key < TypeParam::directLeds; ++key) {
        const auto byte = std::uint8_t(key);
        list.push_back({key, 1, 2, byte, 0});
        if (key % 15 == 0) {
            const auto count = std::uint8_t(std::min(15, TypeParam::directLeds - key));
            expected += (key ? " | C0 01 " : "C0 01 ") + hex(std::span(&count, 1)) + " 00";
        }
        expected += " " + hex(std::span(&byte, 1)) + " 01 02 " + hex(std::span(&byte, 1));
    }
    EXPECT_EQ(this->sent(list, reports(expected).size()), wire(expected));
}

TYPED_TEST(KeyboardLights, areReplacedByNewerOnesWhileTheDeviceIsBusy)
{
    sim::setConduct(this->keyboard.path, {.writeTime = 20ms});
    this->keyboard->setSyncLightingData({{0, 1, 2, 3, 0}});
    while (sim::writersInside() == 0)
        std::this_thread::yield();
    for (const std::uint8_t red : {2, 3, 4})
        this->keyboard->setSyncLightingData({{0, red, 2, 3, 0}});
    const std::string last = this->with("C0 01 01 00 00 04 02 03", {0});
    const std::string all = joined({this->with("C0 01 01 00 00 01 02 03", {0}), last});
    EXPECT_EQ(this->keyboard.written(reports(all).size()), all);
}

} // namespace
} // namespace pyrux::test
