// PLAY_DOCK: requests and what the dock makes of them, effects, frames of a host.

#include "tests/support/debug_log.h"
#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Base = PYRUX_PLAY_DOCK_Base;
using Effect = PlayDockEffect;
using Color = LightingPortColorOf<3>;

/// An effect's record: zone, effect, speed, the bytes that are carried through, rate.
Effect effectOf(int effect, int speed, int rate)
{
    return recordOf<Effect>("EE " + hexByte(effect) + " " + hexByte(speed) + " 0A 0B 0C " +
                            counting(0x21, 16) + " 31 32 33 34 35 36 E1 E2 E3 " + hexByte(rate));
}

/// A request: what the host calls, what goes out, and how many reports that is when the dock refuses it.
struct Request {
    const char* name;
    const char* command; ///< The beginning that tells it from others.
    std::function<_error(Base*)> call;
    std::string sent;
    std::size_t queued = 0; ///< Frames that follow it in any case.
};

const std::vector<Request>& requests()
{
    static const std::vector<Request> all{
        {"setLightingInit", "80 01 02 01", [](Base* dock) { return dock->setLightingInit(); }, "80 01 02 01",
         3},
        {"setLightingUninit", "80 01 02", [](Base* dock) { return dock->setLightingUninit(); }, "80 01 02"},
        {"setEffectParameter", "80 03 02",
         [](Base* dock) {
             const Effect record = effectOf(5, 1, 2);
             return dock->setEffectParameter(&record);
         },
         "80 03 02 FF 05 02 0A 0B 0C 36 " + counting(0x21, 16) + " 31 32 33 34 35"},
        {"getEffectParameter", "80 03 01",
         [](Base* dock) {
             Effect record = effectOf(5, 1, 2);
             return dock->getEffectParameter(&record);
         },
         "80 03 01 FF"},
        {"getAnyEffectParameter", "80 04 01",
         [](Base* dock) {
             Effect record = effectOf(5, 1, 2);
             return dock->getAnyEffectParameter(&record);
         },
         "80 04 01 FF 05"},
        {"setEffectMode", "80 06 02", [](Base* dock) { return dock->setEffectMode(9, 8); }, "80 06 02 FF 08"},
        {"getEffectMode", "80 03 01",
         [](Base* dock) {
             std::uint8_t effect = 0;
             return dock->getEffectMode(9, &effect);
         },
         "80 03 01 FF"},
        {"setBottomEffectParameter", "80 11 02",
         [](Base* dock) {
             std::array<std::uint8_t, 3> color{0x0A, 0x0B, 0x0C};
             return dock->setBottomEffectParameter(color.data());
         },
         "80 11 02 FF 0A 0B 0C"},
        {"getBottomEffectParameter", "80 11 01",
         [](Base* dock) {
             std::array<std::uint8_t, 3> color{0x0A, 0x0B, 0x0C};
             return dock->getBottomEffectParameter(color.data());
         },
         "80 11 01 FF"},
        {"saveConfig", "80 B0 02", [](Base* dock) { return dock->saveConfig(); }, "80 B0 02"},
        {"resetConfig", "80 B1 02", [](Base* dock) { return dock->resetConfig(9); }, "80 B1 02"},
        {"resetData", "80 B6 02", [](Base* dock) { return dock->resetData(); }, "80 B6 02"},
        {"getVersion", "80 B4 01",
         [](Base* dock) {
             std::uint16_t version = 0;
             return dock->getVersion(&version);
         },
         "80 B4 01"},
    };
    return all;
}

class PlayDock : public testing::Test {
protected:
    HubOf<PlayDockModel> dock;
};

TEST_F(PlayDock, sendsEachRequest)
{
    for (const Request& request : requests()) {
        EXPECT_EQ(request.call(dock.host), E_OK) << request.name;
        const std::string written = dock.written(1 + request.queued);
        EXPECT_EQ(reports(written).front(), wire(request.sent)) << request.name;
        EXPECT_EQ(reports(written).size(), 1 + request.queued) << request.name;
    }
}

TEST_F(PlayDock, tellsOfARefusal)
{
    for (const Request& request : requests()) {
        const std::string command = request.command;
        dock.device->answer(request.sent, command.substr(0, 5) + " 04 C9 01");
        forgetDebugOutput();
        EXPECT_EQ(request.call(dock.host), E_INVALID_GET) << request.name;
        const std::string name = request.name;
        EXPECT_EQ(debugLines(), (Lines{hostLine<PlayDockModel>(name + ", #"),
                                       // "error code = 201"; a number after a comma is shown as "#"
                                       hostLine<PlayDockModel>(name + ", error code = 201"),
                                       hostLine<PlayDockModel>(name + ", ret = -3")}))
            << name;
        dock.written(1 + request.queued);
    }
}

TEST_F(PlayDock, takesNoOtherReply)
{
    for (const Request& request : requests())
        for (const char* operation : {"00", "01", "02", "05", "FF"}) {
            const std::string command = request.command;
            dock.device->answer(request.sent, command.substr(0, 5) + " " + operation + " 01 02 03");
            EXPECT_EQ(int(request.call(dock.host)), -98) << request.name << ' ' << operation;
            dock.written(1 + request.queued);
        }
}

WAITING_TEST(PlayDockMissingReply, failsEveryRequest)
{
    std::vector<std::function<void()>> scenarios;
    for (const Request& request : requests())
        scenarios.emplace_back([request] {
            HubOf<PlayDockModel> dock([](ScriptedDevice& device) { device.silence("80 01"); });
            dock.device->silence(request.sent);
            EXPECT_EQ(request.call(dock.host), E_INVALID_GET) << request.name;
            EXPECT_EQ(reports(dock.written(1 + request.queued)).size(), 1 + request.queued) << request.name;
        });
    together(scenarios);
}

TEST_F(PlayDock, setsEffects)
{
    const std::string rest = " 0A 0B 0C 36 " + counting(0x21, 16) + " 31 32 33 34 35";
    for (int effect = 1; effect < 9; ++effect)
        for (int speed = 0; speed < 4; ++speed) {
            const Effect record = effectOf(effect, speed, 255); // no rate
            EXPECT_EQ(dock->setEffectParameter(&record), E_OK);
            EXPECT_EQ(dock.written(), "80 03 02 FF " + hexByte(effect) + " " + hexByte(3 - speed) + rest);
        }
    for (int rate = 0; rate < 8; ++rate) {
        const Effect record = effectOf(0, 255, rate); // no speed
        EXPECT_EQ(dock->setEffectParameter(&record), E_OK);
        EXPECT_EQ(dock.written(), "80 03 02 FF 00 " + hexByte(rate) + rest);
    }
}

TEST_F(PlayDock, refusesValuesOutOfRange)
{
    const auto refused = [&](const Effect& record) {
        EXPECT_EQ(dock->setEffectParameter(&record), E_INVALID_SET) << bytesOf(record);
    };
    for (const int effect : {9, 10, 255})
        refused(effectOf(effect, 0, 0));
    for (const int speed : {4, 255})
        refused(effectOf(1, speed, 0));
    for (const int rate : {8, 255})
        refused(effectOf(0, 0, rate));
    for (const std::uint8_t effect : {9, 10, 255}) {
        EXPECT_EQ(dock->setEffectMode(1, effect), E_INVALID_SET);
        Effect record = effectOf(effect, 1, 1);
        EXPECT_EQ(dock->getEffectParameter(&record), E_INVALID_GET);
        EXPECT_EQ(dock->getAnyEffectParameter(&record), E_INVALID_GET);
        EXPECT_EQ(bytesOf(record), bytesOf(effectOf(effect, 1, 1)));
    }
    EXPECT_EQ(dock.writtenBeforeQuestion(), "");
}

TEST_F(PlayDock, needsItsRecords)
{
    EXPECT_EQ(dock->setEffectParameter(nullptr), E_INVALID_SET);
    EXPECT_EQ(dock->getEffectParameter(nullptr), E_INVALID_GET);
    EXPECT_EQ(dock->getAnyEffectParameter(nullptr), E_INVALID_GET);
    EXPECT_EQ(dock->getEffectMode(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(dock->setBottomEffectParameter(nullptr), E_INVALID_SET);
    EXPECT_EQ(dock->getBottomEffectParameter(nullptr), E_INVALID_GET);
    EXPECT_EQ(dock->getVersion(nullptr), E_INVALID_GET);
    EXPECT_EQ(dock.writtenBeforeQuestion(), "");
}

TEST_F(PlayDock, readsEffects)
{
    // After the effect and its speed: color, color count, data, extra, tail.
    const std::string onWire = " 1A 1B 1C 56 " + counting(0x41, 16) + " 51 52 53 54 55 99";
    const std::string inRecord = " 1A 1B 1C " + counting(0x41, 16) + " 51 52 53 54 55 56 E1 E2 E3 ";
    for (int any = 0; any < 2; ++any) {
        const std::string head = any ? "80 04 " : "80 03 ";
        const auto get = [&](int effect) {
            Effect record = effectOf(effect, 0xE5, 0xE6);
            EXPECT_EQ(any ? dock->getAnyEffectParameter(&record) : dock->getEffectParameter(&record), E_OK);
            EXPECT_EQ(dock.written(), any ? wire("80 04 01 FF " + hexByte(effect)) : "80 03 01 FF");
            return bytesOf(record);
        };
        for (int speed = 0; speed < 4; ++speed) {
            dock.device->answer(head + "01", head + "03 07 " + hexByte(3 - speed) + onWire);
            EXPECT_EQ(get(8), "EE 07 " + hexByte(speed) + inRecord + "E6");
        }
        for (const int rate : {0, 7}) {
            dock.device->answer(head + "01", head + "03 00 " + hexByte(rate) + onWire);
            EXPECT_EQ(get(0), "EE 00 E5" + inRecord + hexByte(rate));
            EXPECT_EQ(get(8), "EE 00 E5" + inRecord + hexByte(rate)); // by the device's effect
        }
    }
}

TEST_F(PlayDock, readsItsMode)
{
    dock.device->answer("80 03 01", "80 03 03 08 01");
    for (const std::uint8_t zone : {0, 1, 255}) {
        std::uint8_t effect = 0xEE;
        EXPECT_EQ(dock->getEffectMode(zone, &effect), E_OK);
        EXPECT_EQ(effect, 8);
        EXPECT_EQ(dock.written(), "80 03 01 FF");
    }
    for (const std::uint8_t zone : {0, 255}) {
        EXPECT_EQ(dock->setEffectMode(zone, 0), E_OK);
        EXPECT_EQ(dock.written(), "80 06 02 FF");
    }
}

TEST_F(PlayDock, readsTheBottomAndTheVersion)
{
    dock.device->answer("80 11 01", "80 11 03 1A 1B 1C 1D");
    ByteVector color(4, 0xEE);
    EXPECT_EQ(dock->getBottomEffectParameter(color.data()), E_OK);
    EXPECT_EQ(hex(color), "1A 1B 1C EE");
    dock.device->answer("80 B4 01", "80 B4 03 CD AB");
    std::uint16_t version = 0;
    EXPECT_EQ(dock->getVersion(&version), E_OK);
    EXPECT_EQ(version, 0xABCD);
}

TEST_F(PlayDock, leavesOutputsAsTheyWereWhenARequestFails)
{
    for (const char* reply : {"04 01 02 03", "02 01 02 03"}) {
        for (const char* command : {"80 03", "80 04", "80 11"})
            dock.device->answer(std::string(command) + " 01", std::string(command) + " " + reply);
        dock.device->answer("80 B4 01", std::string("80 B4 ") + reply);
        Effect record = effectOf(3, 1, 2);
        EXPECT_NE(dock->getEffectParameter(&record), E_OK);
        EXPECT_NE(dock->getAnyEffectParameter(&record), E_OK);
        EXPECT_EQ(bytesOf(record), bytesOf(effectOf(3, 1, 2)));
        std::array<std::uint8_t, 3> color{0xE1, 0xE2, 0xE3};
        EXPECT_NE(dock->getBottomEffectParameter(color.data()), E_OK);
        EXPECT_EQ(hex(color), "E1 E2 E3");
        std::uint16_t version = 0xE1E2;
        EXPECT_NE(dock->getVersion(&version), E_OK);
        EXPECT_EQ(version, 0xE1E2);
    }
}

TEST_F(PlayDock, spacesItsRequests)
{
    dock.settle();
    constexpr int requests = 6;
    const auto time = milliseconds([&] {
        for (int i = 0; i < requests; ++i)
            dock.settle();
    });
    EXPECT_GE(time, requests * 32 - 6); // ticks of whole ms
    EXPECT_LT(time, requests * 150);
}

TEST_F(PlayDock, paintsItsZones)
{
    for (std::uint32_t zone = 1; zone <= 3; ++zone) {
        const Color color{{}, {0, zone, 4}, 0x11, 0x22, 0x33};
        EXPECT_EQ(dock->setLightingPortColor(&color), E_OK);
        EXPECT_EQ(dock.written(1), "80 09 " + hexByte(int(zone)) + " 01 11 22 33");
        // Deliberate: byte 3 is another here.
        EXPECT_EQ(dock->setSyncLightingData({{zone, {{0, 1, 2, 3}, {9, 4, 5, 6}}}}), E_OK);
        EXPECT_EQ(dock.written(1), "80 09 " + hexByte(int(zone)) + " 00 04 05 06");
    }
    const Color all{{}, {3, 2, 1}, 0x11, 0x22, 0x33};
    EXPECT_EQ(dock->setLightingPortColor(&all), E_OK);
    EXPECT_EQ(sortedGroups(dock.written(3)),
              "80 09 01 01 11 22 33 | 80 09 02 01 11 22 33 | 80 09 03 01 11 22 33");
    EXPECT_EQ(dock->setSyncLightingData({{1, {}}, {2, {}}, {3, {}}}), E_OK); // zones without LEDs
    EXPECT_EQ(dock.writtenBeforeQuestion(), "");
}

TEST_F(PlayDock, sendsItsLanesInOrder)
{
    sim::setConduct(dock.path, {.writeTime = 900ms});
    EXPECT_EQ(dock->setSyncLightingData({{3, {{0, 0xEE, 0, 0}}}}), E_OK);
    EXPECT_TRUE(sim::awaitWritersInside(1));
    EXPECT_EQ(dock->setSyncLightingData({{3, {{0, 3, 3, 3}}}, {2, {{0, 2, 2, 2}}}, {1, {{0, 1, 1, 1}}}}),
              E_OK);
    sim::setConduct(dock.path, {});
    sim::releaseWrites(dock.path);
    EXPECT_EQ(dock.written(4),
              "80 09 03 00 EE | 80 09 01 00 01 01 01 | 80 09 02 00 02 02 02 | 80 09 03 00 03 03 03");
}

TEST_F(PlayDock, spacesItsFramesOnceTheHostHasTakenThem)
{
    // Two frames so far apart that the queue does not pace the second one: how long both take.
    const auto pair = [&] {
        // Out of the pause after the frames before.
        EXPECT_EQ(dock->setSyncLightingData({{1, {{0, 1, 1, 1}}}}), E_OK);
        dock.written(1);
        std::this_thread::sleep_for(200ms);
        return milliseconds([&] {
            EXPECT_EQ(dock->setSyncLightingData({{1, {{0, 2, 2, 2}}}}), E_OK);
            dock.written(1);
            std::this_thread::sleep_for(15ms);
            EXPECT_EQ(dock->setSyncLightingData({{1, {{0, 3, 3, 3}}}}), E_OK);
            dock.written(1);
        });
    };
    std::int64_t shortest = pair();
    for (int i = 0; i < 20 && shortest >= 31; ++i)
        shortest = std::min(shortest, pair());
    EXPECT_LT(shortest, 31);
    EXPECT_EQ(dock->setLightingInit(), E_OK);
    dock.written(4);
    for (int i = 0; i < 3; ++i)
        EXPECT_GE(pair(), 31);
    // The gap stays when the lights are given back.
    EXPECT_EQ(dock->setLightingUninit(), E_OK);
    dock.written();
    EXPECT_GE(pair(), 31);
}

TEST_F(PlayDock, goesDarkEvenWhenItRefusesTheHost)
{
    dock.device->answer("80 01 02 01", "80 01 04 02");
    EXPECT_EQ(dock->setLightingInit(), E_INVALID_GET);
    EXPECT_EQ(sortedGroups(dock.written(4)), "80 01 02 01 | 80 09 01 | 80 09 02 | 80 09 03");
    dock.device->answer("80 01 02 00", "80 01 02 02");
    EXPECT_EQ(int(dock->setLightingUninit()), -98);
    EXPECT_EQ(dock.written(1), "80 01 02");
}

} // namespace
} // namespace pyrux::test
