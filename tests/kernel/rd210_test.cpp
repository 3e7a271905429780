#include "tests/kernel/rd210_rig.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <numeric>
#include <poll.h>
#include <unistd.h>

/// @file
/// RD210 driven through the kernel: host operations in, reports on the wire, and back. The reports are those
/// that the device has got, without the zeros at their end.

namespace pyrux::test {

namespace {

using namespace std::chrono_literals;

/// A command waits 2 s for its reply.
constexpr auto replyLimit = 2000ms;
constexpr auto margin = 1500ms;

TEST_F(RD210Rig, factoryGreetsTheDeviceOnce)
{
    mouse->exit_device(1);
    unplug();
    plugAgain();
    gadget->takeWritten();
    mouse = openDevice();
    ASSERT_NE(mouse, nullptr);
    EXPECT_EQ(gadget->takeWritten(), "42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01 | 42 00 40 00 01 | "
                                     "42 10 40 00 01 | 43 00 00 00 01");
    EXPECT_EQ(openDevice(), mouse);
    EXPECT_EQ(gadget->takeWritten(), "");
}

TEST_F(RD210Rig, profileIsWrittenAndReadBack)
{
    EXPECT_EQ(mouse->changeProfileId(3), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 51 00 00 00 03");
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 3);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52");
    EXPECT_EQ(mouse->changeProfileId(5), E_INVALID_SET);
    EXPECT_EQ(gadget->takeWritten(), "");
}

TEST_F(RD210Rig, dpiLevelIsWrittenAndReadBack)
{
    EXPECT_EQ(mouse->changeDpiLevel(4), E_OK);
    EXPECT_EQ(
        gadget->takeWritten(),
        "41 80 | 52 9b | 52 40 | 51 40 00 00 04 07 03 07 0f 1f 3f 77 9f 03 07 0f 1f 3f 77 9f 00 00 00 00 00 "
        "00 00 01 02 0a 10");
    PerformanceRecord record{};
    EXPECT_EQ(mouse->getPerformance(&record), E_OK);
    EXPECT_EQ(record.currentLevel, 4);
    EXPECT_EQ(+record.levels[4].x, 6400);
    EXPECT_EQ(+record.levels[6].y, 16000);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52 40 | 52 9b | 52 f0 | 52 10");
}

TEST_F(RD210Rig, keyMapIsWrittenAndReadBack)
{
    EXPECT_EQ(mouse->setKeyMapping(3, 0x0104), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52 10 | 51 20 b3 00 04 01 | 51 18 03 00 ff 3f");
    EXPECT_EQ(mouse->setKeyMapping(12, KEY_STEP_DOWN), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52 10 | 51 18 0c 00 b4 5d | 53 00 02 00 ff 9e 80 00 00 fc");
    std::array<std::uint16_t, 13> map{};
    EXPECT_EQ(mouse->getKeyMappingAll(map.data()), E_OK);
    const std::array<std::uint16_t, 13> expected{0xB0,   0xB1, 0xB2, 0x0104, 0xB4, 0xB5,  0x0501,
                                                 0x0500, 0xFF, 0xFF, 0xFF,   0xFF, 0x0501};
    EXPECT_EQ(map, expected);
}

MouseMacroRecord macroOf(std::uint8_t button, std::uint8_t mode, std::uint8_t count)
{
    MouseMacroRecord macro{};
    macro.button = button;
    std::strcpy(macro.name, "ab");
    macro.mode = mode;
    macro.count = count;
    for (std::uint8_t i = 0; i < count; ++i)
        macro.events[i] = {.code = std::uint16_t(0x0104 + i),
                           .kind = std::uint8_t(i % 2),
                           .delay = std::uint16_t(10 + 100 * i)};
    return macro;
}

TEST_F(RD210Rig, macroIsWrittenAndReadBack)
{
    MouseMacroRecord macro = macroOf(2, 0, 2);
    EXPECT_EQ(mouse->setMacro(&macro), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52 22 | 51 18 02 00 b2 3c | 51 19 02 00 61 62 | "
                                     "53 00 03 00 04 5d 14 00 05 3d dc 00 00 fc fe ff");
    for (const std::uint8_t count : {2, 15, 40, 198}) {
        macro = macroOf(2, 2, count);
        EXPECT_EQ(mouse->setMacro(&macro), E_OK);
        MouseMacroRecord read{};
        read.button = 2;
        EXPECT_EQ(mouse->getMacro(&read), E_OK);
        EXPECT_STREQ(read.name, "ab");
        EXPECT_EQ(read.mode, 2);
        ASSERT_EQ(read.count, count);
        EXPECT_EQ(std::memcmp(read.events, macro.events, count * sizeof read.events[0]), 0) << int(count);
    }
    EXPECT_EQ(mouse->clearMacro(2), E_OK);
    MouseMacroRecord none{};
    none.button = 2;
    EXPECT_EQ(mouse->getMacro(&none), E_OK);
    EXPECT_EQ(none.mode, 3);
}

TEST_F(RD210Rig, performanceIsWrittenAndReadBack)
{
    const PerformanceRecord record{.currentLevel = 5,
                                   .levels = {{400, 500},
                                              {800, 900},
                                              {1600, 1600},
                                              {3200, 3200},
                                              {6400, 6400},
                                              {16200, 12000},
                                              {16000, 16400}},
                                   .levelEnabled = {1, 0, 1, 0, 0, 1, 1},
                                   .pollingCode = 4,
                                   .reserved = {},
                                   .flagA = 1,
                                   .flagB = 0,
                                   .surfaceA = 12,
                                   .surfaceB = 34,
                                   .settingF0 = 5,
                                   .pointerSpeed = 4,
                                   .doubleClickSpeed = 8,
                                   .settingBank = 7};
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    EXPECT_EQ(
        gadget->takeWritten(),
        "41 80 | 51 9b 00 00 00 02 05 06 01 03 04 | "
        "51 40 00 00 02 04 04 0f 77 51 08 1f 3f 03 0f 50 9f 07 1f 3f 00 00 01 10 00 00 00 04 03 0c 22 | "
        "51 f0 00 00 05 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 ff 00 00 00 07");
    PerformanceRecord read{};
    EXPECT_EQ(mouse->getPerformance(&read), E_OK);
    EXPECT_EQ(std::memcmp(&read, &record, sizeof record), 0);
}

TEST_F(RD210Rig, deviceMadeEventsReachTheCallback)
{
    EXPECT_EQ(mouse->registerNotify(Events::callback), E_OK);
    EXPECT_EQ(gadget->command("event dpi 2"), "ok");
    EXPECT_EQ(Events::next(), "1:0");
    EXPECT_TRUE(gadget->waitForWritten("42 10 40 00 01")); // the acknowledgement
    PerformanceRecord record{};
    EXPECT_EQ(mouse->getPerformance(&record), E_OK);
    EXPECT_EQ(record.currentLevel, 2);

    EXPECT_EQ(gadget->command("event profile 4"), "ok");
    EXPECT_EQ(Events::next(), "0:0");
    EXPECT_TRUE(gadget->waitForWritten("42 10 00 00 01 00 00 01"));
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 4);

    EXPECT_EQ(gadget->command("event key 5 1"), "ok");
    EXPECT_EQ(Events::next(), "2:35");
    EXPECT_EQ(gadget->command("event key 5 0"), "ok");
    EXPECT_EQ(Events::next(), "3:35");
    EXPECT_EQ(mouse->unRegisterNotify(), E_OK);
}

/// The device has several reports ready before the host fetches the first.
TEST_F(RD210Rig, burstOfEventsArrivesWholeAndInOrder)
{
    EXPECT_EQ(mouse->registerNotify(Events::callback), E_OK);
    EXPECT_EQ(gadget->command("event key 0 1\nevent key 2 1\nevent key 3 1\nevent key 4 1\nevent key 8 1\n"
                              "event key 8 0\nevent key 4 0\nevent key 0 0"),
              "ok");
    for (int i = 1; i < 8; ++i)
        EXPECT_EQ(gadget->line(), "ok");
    for (const char* event : {"2:30", "2:31", "2:34", "2:33", "2:9", "3:9", "3:33", "3:30"})
        EXPECT_EQ(Events::next(), event);
}

TEST_F(RD210Rig, savedSettingsOutliveThePlug)
{
    EXPECT_EQ(mouse->changeProfileId(2), E_OK);
    gadget->takeWritten();
    EXPECT_EQ(mouse->saveConfig(), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 01 | 50 55 | 41");
    EXPECT_EQ(mouse->changeProfileId(1), E_OK); // not saved
    EXPECT_EQ(mouse->exit_device(1), E_OK);
    unplug();
    plugAgain();
    mouse = openDevice();
    ASSERT_NE(mouse, nullptr);
    std::uint8_t profile = 0xEE;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 2);
}

TEST_F(RD210Rig, silentDeviceCostsTheDescribedTime)
{
    EXPECT_EQ(gadget->command("silent on"), "ok");
    std::uint8_t profile = 0xEE;
    const auto time = timeOf([&] { EXPECT_EQ(mouse->getCurrProfileId(&profile), E_INVALID_GET); });
    EXPECT_GE(time, 2 * replyLimit); // two commands
    EXPECT_LT(time, 2 * replyLimit + margin);
    EXPECT_EQ(profile, 0xEE);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 52");
    EXPECT_EQ(gadget->command("silent off"), "ok");
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 0);
}

TEST_F(RD210Rig, pulledOutWhileACallWaits)
{
    EXPECT_EQ(gadget->command("silent on"), "ok");
    auto waiting = std::async(std::launch::async, [&] {
        _error result = E_OK;
        const auto time = timeOf([&] { result = mouse->stopRecordMacro(); });
        return std::pair(result, time);
    });
    ASSERT_TRUE(gadget->waitForWritten("41 80")); // the device has it, and the call waits
    unplug();
    const auto [result, time] = waiting.get();
    EXPECT_EQ(result, E_NOT_OPEN); // when the object lets its device go, a second after the notice
    EXPECT_LT(time, replyLimit + margin);

    std::uint8_t profile = 0xEE;
    EXPECT_LT(timeOf([&] { EXPECT_EQ(mouse->getCurrProfileId(&profile), E_CLOSED); }), margin);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED); }), margin);
    EXPECT_EQ(profile, 0xEE);

    // The device comes back as another one.
    EXPECT_EQ(gadget->command("silent off"), "ok");
    plugAgain();
    PYRUX_RD210_Base* const next = openDevice();
    ASSERT_NE(next, nullptr);
    ASSERT_NE(next, mouse);
    EXPECT_EQ(next->changeProfileId(1), E_OK);

    EXPECT_LT(timeOf([&] { EXPECT_EQ(mouse->exit_device(1), E_OK); }), 500ms);
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_CLOSED);
    mouse = next;
    EXPECT_EQ(mouse->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 1);
}

TEST_F(RD210Rig, exitSaysGoodbyeUnlessUnplugged)
{
    EXPECT_EQ(mouse->exit_device(0), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 01 | 41");
    EXPECT_EQ(mouse->changeProfileId(1), E_CLOSED);
    EXPECT_EQ(gadget->takeWritten(), "");
}

/// The report with the id 0xFF that part 2 of a partial reset sends is no command to a device whose reports
/// have no ids: it arrives whole, in two packets, and is not answered.
TEST_F(RD210Rig, reportWithAnIdIsNoCommand)
{
    const auto time = timeOf([&] { EXPECT_EQ(mouse->resetPartial(2), E_INVALID_SET); });
    EXPECT_GE(time, replyLimit);
    EXPECT_LT(time, replyLimit + margin);
    std::string filling;
    for (int i = 0; i < 59; ++i)
        filling += " ff";
    EXPECT_EQ(gadget->takeWritten(),
              "41 80 | 52 22 | 51 98 10 | 51 22 00 00 c0 c0 | ff 51 9b 00 00" + filling + " | ff");
    EXPECT_EQ(mouse->changeProfileId(1), E_OK);
    EXPECT_EQ(gadget->takeWritten(), "41 80 | 51 00 00 00 01");
}

class RD210RigTiming : public RD210Rig {
protected:
    std::vector<std::string> gadgetArguments() const override { return {"rd210"}; }
};

struct Times {
    std::vector<double> microseconds;

    template <class Call>
    void measure(int count, Call&& call)
    {
        for (int i = 0; i < count; ++i) {
            const auto begin = std::chrono::steady_clock::now();
            call();
            const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
            microseconds.push_back(time.count());
        }
        std::ranges::sort(microseconds);
    }

    double mean() const
    {
        return std::accumulate(microseconds.begin(), microseconds.end(), 0.0) / double(microseconds.size());
    }

    void print(const char* what) const
    {
        const std::size_t last = microseconds.size() - 1;
        std::printf(
            "%-34s mean %6.0f us, fastest %6.0f, median %6.0f, 99 of 100 within %6.0f, slowest %6.0f\n", what,
            mean(), microseconds.front(), microseconds[last / 2], microseconds[last * 99 / 100],
            microseconds.back());
    }
};

TEST_F(RD210RigTiming, commandAndReply)
{
    constexpr int count = 500;
    Times library;
    library.measure(count, [&] { ASSERT_EQ(mouse->stopRecordMacro(), E_OK); }); // one command
    mouse->exit_device(1);

    const int node = open(nodes["01"].path.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(node, 0);
    std::array<std::uint8_t, 65> command{0x00, 0x41, 0x80};
    std::array<std::uint8_t, 64> reply{};
    Times raw;
    raw.measure(count, [&] {
        ASSERT_EQ(write(node, command.data(), command.size()), 65);
        ASSERT_EQ(read(node, reply.data(), reply.size()), 64);
        ASSERT_EQ(reply[1], 0x80);
    });
    close(node);
    library.print("command and reply, library:");
    raw.print("command and reply, node itself:");
    EXPECT_LT(library.mean(), 100'000); // far from any time-out
}

} // namespace

} // namespace pyrux::test
