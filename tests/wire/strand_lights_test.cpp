// The strand controllers: frames of a host.

#include "tests/support/debug_log.h"
#include "tests/support/frame_pace.h"
#include "tests/support/hub.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Byte = std::uint8_t;

/// The three reports of a frame: 180 bytes in one stream, cut at 59, 62 and 59.
std::string frameOf(const std::string& place, const std::string& stream)
{
    ByteVector all = bytes(stream);
    all.resize(180);
    const auto part = [&](std::size_t from, std::size_t count) {
        return hex(std::span(all).subspan(from, count));
    };
    return wire("00 09 " + place + " 3C " + part(0, 59) + " | 01 09 " + part(59, 62) + " | 82 09 " +
                part(121, 59));
}

/// One color everywhere.
std::string solid(const std::string& place, const std::string& color)
{
    return frameOf(place, times(60, color));
}

constexpr const char* ports[]{"01", "02", "04"};
constexpr const char* subPorts[]{"00", "01", "02", "04", "08", "10"};

/// Black for all places, in the order of their lanes.
std::string dark()
{
    std::string text;
    for (const char* port : ports)
        for (const char* subPort : subPorts)
            text += (text.empty() ? "" : " | ") + frameOf(std::string(port) + " " + subPort, "");
    return text;
}

/// The groups of a text, in order, without a command that is no frame. It is a plain write, which may come
/// between the reports of a frame; it must be there once.
std::string framesBeside(const std::string& command, const std::string& text)
{
    std::vector<std::string> all = reports(text);
    EXPECT_EQ(std::ranges::count(all, command), 1) << text;
    std::erase(all, command);
    return sortedGroups(joined(all));
}

template <class Model>
class StrandLights : public testing::Test {
protected:
    /// Codes from the first entry on, in the color 11 22 33.
    _error paint(const std::vector<std::uint32_t>& codes)
    {
        StrandPortColor color{};
        std::ranges::copy(codes, color.zone);
        color.red = 0x11;
        color.green = 0x22;
        color.blue = 0x33;
        return hub->setLightingPortColor(&color);
    }

    /// A frame for zone 10 whose red tells it from others.
    _error send(int red) { return hub->setSyncLightingData({{10, {{0, Byte(red), 0x22, 0x33}}}}); }
    static std::string sent(int red) { return frameOf("01 00", hexByte(red) + " 22 33"); }

    /// The queue's thread stands in the write of a frame's first report, until `letGo` or for a time. The
    /// frame is that of the last lane, so that a round of all lanes follows.
    void holdQueue(std::chrono::milliseconds time = 60s)
    {
        sim::setConduct(hub.path, {.writeTime = time});
        EXPECT_EQ(hub->setSyncLightingData({{36, {}}}), E_OK);
        EXPECT_TRUE(sim::awaitWritersInside(1));
        sim::setConduct(hub.path, {});
    }
    static std::string held() { return frameOf("04 20", ""); }
    /// The reports after that frame.
    std::string letGo(std::size_t count)
    {
        sim::releaseWrites(hub.path);
        std::vector<std::string> all = reports(hub.written(3 + count));
        EXPECT_GE(all.size(), 3 + count);
        const auto rest = all.begin() + std::ptrdiff_t(std::min<std::size_t>(3, all.size()));
        EXPECT_EQ(joined({all.begin(), rest}), held());
        return joined({rest, all.end()});
    }

    HubOf<Model> hub;
};
TYPED_TEST_SUITE(StrandLights, StrandModels, ModelName);

TYPED_TEST(StrandLights, areThreeReportsOfSixtyLeds)
{
    EXPECT_EQ(this->paint({12}), E_OK);
    EXPECT_EQ(this->hub.written(3),
              "00 09 01 02 3C 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 "
              "33 11 22 33 "
              "11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 | "
              "01 09 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 "
              "22 33 11 22 "
              "33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 | "
              "82 09 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 "
              "11 22 33 11 "
              "22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33 11 22 33");
}

TYPED_TEST(StrandLights, havePlacesByCode)
{
    constexpr const char* seven[]{"00", "01", "02", "04", "08", "10", "20"};
    for (std::uint32_t port = 1; port <= 3; ++port)
        for (std::uint32_t subPort = 0; subPort <= 6; ++subPort) {
            const std::string place = std::string(ports[port - 1]) + " " + seven[subPort];
            EXPECT_EQ(this->paint({10 * port + subPort}), E_OK);
            EXPECT_EQ(this->hub.written(3), solid(place, "11 22 33"));
            EXPECT_EQ(this->hub->setSyncLightingData({{10 * port + subPort, {{1, 1, 2, 3}}}}), E_OK);
            EXPECT_EQ(this->hub.written(3), frameOf(place, "00 00 00 01 02 03"));
        }
    EXPECT_EQ(this->paint({255}), E_OK);
    EXPECT_EQ(this->hub.written(3), solid("FF FF", "11 22 33"));
    EXPECT_EQ(this->hub->setSyncLightingData({{255, {{0, 1, 2, 3}}}}), E_OK);
    EXPECT_EQ(this->hub.written(3), frameOf("FF FF", "01 02 03"));
}

TYPED_TEST(StrandLights, skipFillersAndStopAtCodesThatAreNone)
{
    EXPECT_EQ(this->paint({0, 0, 21, 0, 0, 33}), E_OK);
    EXPECT_EQ(sortedGroups(this->hub.written(6)),
              sortedGroups(solid("02 01", "11 22 33") + " | " + solid("04 04", "11 22 33")));
    for (const std::uint32_t code :
         {1U, 9U, 17U, 18U, 19U, 27U, 29U, 37U, 40U, 99U, 254U, 256U, 265U, 0xFFFFFFFFU}) {
        this->paint({11, code, 12});
        EXPECT_EQ(this->hub.written(3), solid("01 01", "11 22 33")) << code;
    }
    EXPECT_EQ(this->paint({}), E_OK);
    EXPECT_EQ(this->hub.writtenBeforeQuestion(), "");
}

TYPED_TEST(StrandLights, takeAllEighteenEntries)
{
    std::vector<std::uint32_t> codes(18);
    codes[17] = 35;
    EXPECT_EQ(this->paint(codes), E_OK);
    EXPECT_EQ(this->hub.written(3), solid("04 10", "11 22 33"));
}

TYPED_TEST(StrandLights, arePaintedOneByOne)
{
    std::vector<LightingLed> leds;
    for (std::uint32_t i = 0; i < 60; ++i)
        leds.push_back({59 - i, Byte(3 * (59 - i) + 1), Byte(3 * (59 - i) + 2), Byte(3 * (59 - i) + 3)});
    EXPECT_EQ(this->hub->setSyncLightingData({{31, leds}}), E_OK);
    EXPECT_EQ(this->hub.written(3), frameOf("04 01", counting(1, 180)));
    // LEDs that are not listed are dark; those that a frame does not have are left out.
    EXPECT_EQ(
        this->hub->setSyncLightingData(
            {{31, {{2, 1, 2, 3}, {60, 9, 9, 9}, {61, 9, 9, 9}, {256, 9, 9, 9}, {0xFFFFFFFF, 9, 9, 9}}}}),
        E_OK);
    EXPECT_EQ(this->hub.written(3), frameOf("04 01", "00 00 00 00 00 00 01 02 03"));
    // LED 19 and LED 40 stand across reports.
    EXPECT_EQ(this->hub->setSyncLightingData({{20, {{19, 1, 2, 3}, {40, 4, 5, 6}, {59, 7, 8, 9}}}}), E_OK);
    EXPECT_EQ(this->hub.written(3), "00 09 02 00 3C " + times(57, "00") + " 01 02 | 01 09 03 " +
                                        times(60, "00") + " 04 | 82 09 05 06 " + times(54, "00") +
                                        " 07 08 09");
    EXPECT_EQ(this->hub->setSyncLightingData({{20, {}}}), E_OK);
    EXPECT_EQ(this->hub.written(3), frameOf("02 00", ""));
}

TYPED_TEST(StrandLights, nameAllPortsWithALastDigitOfSevenToNine)
{
    for (const std::uint32_t code : {17U, 28U, 39U}) {
        EXPECT_EQ(this->hub->setSyncLightingData({{code, {{0, 1, 2, 3}}}}), E_OK);
        EXPECT_EQ(this->hub.written(3).substr(0, 8), "00 09 FF") << code;
    }
}

TYPED_TEST(StrandLights, needAZone)
{
    EXPECT_EQ(this->hub->setSyncLightingData({}), E_INVALID_SET);
    EXPECT_EQ(this->hub.writtenBeforeQuestion(), "");
}

TYPED_TEST(StrandLights, goOutByLane)
{
    this->holdQueue();
    this->paint({35, 20, 11, 31, 15});
    EXPECT_EQ(this->letGo(15), solid("01 01", "11 22 33") + " | " + solid("01 10", "11 22 33") + " | " +
                                   solid("02 00", "11 22 33") + " | " + solid("04 01", "11 22 33") + " | " +
                                   solid("04 10", "11 22 33"));
}

TYPED_TEST(StrandLights, shareALaneWhereNumbersMeet)
{
    this->holdQueue();
    // 255 goes to lane 0, which is zone 10's too; sub-port 6 of a port has the lane of the next port.
    EXPECT_EQ(this->send(9), E_OK);
    this->paint({255});
    this->paint({16});
    this->paint({20});
    EXPECT_EQ(this->letGo(6), solid("FF FF", "11 22 33") + " | " + solid("02 00", "11 22 33"));
    this->holdQueue();
    this->paint({255});
    EXPECT_EQ(this->send(9), E_OK);
    this->paint({36}); // lane 18: after all others
    this->paint({35});
    EXPECT_EQ(this->letGo(9),
              this->sent(9) + " | " + solid("04 10", "11 22 33") + " | " + solid("04 20", "11 22 33"));
}

TYPED_TEST(StrandLights, areTakenOverDark)
{
    EXPECT_EQ(this->hub->setLightingInit(), E_OK);
    EXPECT_EQ(framesBeside("80 01 02 01", this->hub.written(55)), sortedGroups(dark()));
    EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
    EXPECT_EQ(this->hub.written(), wire("80 01 02 00"));
}

TYPED_TEST(StrandLights, areTakenOverWithoutWaitingForReplies)
{
    this->hub.device->silence("80 01");
    EXPECT_LT(milliseconds([&] {
                  EXPECT_EQ(this->hub->setLightingInit(), E_OK);
                  EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
              }),
              900);
}

TYPED_TEST(StrandLights, areTurnedOffByLane)
{
    this->holdQueue();
    this->paint({36, 12});
    EXPECT_EQ(this->hub->setLightingTurnOff(), E_OK);
    EXPECT_EQ(this->letGo(54), dark()); // what waited is dropped
}

TYPED_TEST(StrandLights, areForgottenWhenTheyAreTakenOver)
{
    this->holdQueue(150ms);
    this->paint({36, 12});
    EXPECT_EQ(this->hub->setLightingInit(), E_OK);
    EXPECT_EQ(framesBeside("80 01 02 01", this->hub.written(58)),
              sortedGroups(this->held() + " | " + dark()));
}

TYPED_TEST(StrandLights, areForgottenWhenTheyAreGivenBack)
{
    this->holdQueue(150ms);
    this->paint({36, 12});
    EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
    EXPECT_EQ(this->send(7), E_OK);
    EXPECT_EQ(framesBeside("80 01 02", this->hub.written(7)),
              sortedGroups(this->held() + " | " + this->sent(7)));
}

TYPED_TEST(StrandLights, logOnlyWhatDoesNotRunAtFrameRate)
{
    EXPECT_EQ(
        debugLinesOf([&] {
            this->hub->setLightingInit();
            this->paint({11});
            this->send(1);
            this->hub->setSyncLightingData({});
            this->hub->setLightingTurnOff();
            this->hub->setLightingUninit();
        }),
        (Lines{
            hostLine<TypeParam>("setLightingInit, #"), hostLine<TypeParam>("setLightingInit, ret = 0"),
            hostLine<TypeParam>("setLightingTurnOff, #"), hostLine<TypeParam>("setLightingTurnOff, ret = 0"),
            hostLine<TypeParam>("setLightingUninit, #"), hostLine<TypeParam>("setLightingUninit, ret = 0")}));
}

TYPED_TEST(StrandLights, areNotPaced)
{
    const auto quick = [&] {
        return pausesBetween(
            this->hub.path, [&](Byte red) { this->send(red); }, 3, 0ms, 9ms);
    };
    EXPECT_TRUE(quick());
    this->hub->setLightingInit();
    this->hub.written(55);
    EXPECT_TRUE(quick());
}

TYPED_TEST(StrandLights, showTheNewestFrameOfAFastProducer)
{
    this->holdQueue();
    for (int red = 2; red <= 250; ++red)
        EXPECT_EQ(this->send(red), E_OK);
    EXPECT_EQ(this->letGo(3), this->sent(250));
}

TYPED_TEST(StrandLights, runBesideRequests)
{
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(this->send(i), E_OK);
        this->hub.settle();
    }
}

} // namespace
} // namespace pyrux::test
