// RD210: DPI levels and the settings beside them.

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <cstring>

namespace pyrux::test {
namespace {

constexpr const char* bank = "52 10 AA AA AA AA AA AA AA AA AA AA 05 AA AA AA 07 AA";

/// Seven levels, of which 1, 3 and 5 are off; level 2 is current.
PerformanceRecord sample()
{
    PerformanceRecord record{};
    record.currentLevel = 2;
    const DpiLevel levels[7]{{400, 500},   {800, 900},     {1600, 1700}, {3200, 3300},
                             {6400, 6500}, {12000, 12100}, {16000, 100}};
    std::memcpy(record.levels, levels, sizeof levels);
    const std::uint8_t enabled[7]{1, 0, 1, 0, 1, 0, 1};
    std::memcpy(record.levelEnabled, enabled, sizeof enabled);
    record.pollingCode = 0x55;
    record.flagA = 1;
    record.flagB = 1;
    record.surfaceA = 0x21;
    record.surfaceB = 0x22;
    record.settingF0 = 0x66;
    record.pointerSpeed = 6;
    record.doubleClickSpeed = 6;
    record.settingBank = 8;
    return record;
}

/// What the two settings of the system are, through the library.
std::pair<int, int> systemSpeeds(Mouse& mouse)
{
    PerformanceRecord record{};
    EXPECT_EQ(mouse->getPerformance(&record), E_OK);
    mouse.forget();
    return {record.pointerSpeed, record.doubleClickSpeed};
}

TEST(RD210SetPerformance, writesEverything)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    const PerformanceRecord record = sample();
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    // Order 0 2 4 6 1 3 5: place 1 of 4; y, x, no doubling.
    EXPECT_EQ(mouse.written(),
              wire("41 80 | 51 9B 00 00 00 02 04 06 01 03 05 | "
                   "51 40 00 00 01 04 04 10 40 00 08 20 78 03 0F 3F 9F 07 1F 77 00 00 00 00 00 00 00 "
                   "55 07 21 22 | "
                   "51 F0 00 00 66 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 05 00 00 00 08"));
}

TEST(RD210SetPerformance, doublesTheLevelsAbove16000)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    const DpiLevel levels[7]{{16100, 16000}, {16000, 16100}, {26000, 26000}, {0, 65535},
                             {65535, 50},    {199, 200},     {16001, 99}};
    std::memcpy(record.levels, levels, sizeof levels);
    std::memset(record.levelEnabled, 1, 7);
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    // y: 9F; 8050 -> 4F; 13000 -> 81; 32767 -> 146; 50 -> 0; 1; 99 -> 0, as the division is towards zero.
    // x: 4F; 9F; 81; 0 -> -1; 146; 199 -> 0; 8000 -> 4F.
    EXPECT_EQ(mouse.written(),
              wire("41 80 | 51 9B 00 00 00 01 02 03 04 05 06 | "
                   "51 40 00 00 02 07 9F 4F 81 46 00 01 00 4F 9F 81 FF 46 00 4F 01 10 11 10 01 00 01 "
                   "55 07 21 22 | "
                   "51 F0 00 00 66 | 52 10 | 51 10 00 00 00 00 00 00 00 00 00 00 05 00 00 00 08"));
}

/// The last bytes of 51 40: polling, options, surfaces.
std::string tail(Mouse& mouse, const PerformanceRecord& record)
{
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    for (const std::string& report : reports(mouse.written()))
        if (report.starts_with("51 40 "))
            return report.substr(27 * 3);
    return "";
}

TEST(RD210SetPerformance, takesTheFlagsAsTruthValues)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    record.flagA = 0;
    record.flagB = 0;
    EXPECT_EQ(tail(mouse, record), "55 02 21 22");
    record.flagA = 0x80;
    EXPECT_EQ(tail(mouse, record), "55 03 21 22");
    record.flagA = 0;
    record.flagB = 2;
    EXPECT_EQ(tail(mouse, record), "55 06 21 22");
    record.flagA = 255;
    record.flagB = 255;
    EXPECT_EQ(tail(mouse, record), "55 07 21 22");
}

TEST(RD210SetPerformance, hasDefaultsForTheSurface)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    record.surfaceA = 0;
    record.surfaceB = 0;
    EXPECT_EQ(tail(mouse, record), "55 07 0A 10");
    record.surfaceA = 255;
    record.surfaceB = 1;
    EXPECT_EQ(tail(mouse, record), "55 07 FF 01");
}

TEST(RD210SetPerformance, enablesALevelByOneAlone)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    const std::uint8_t enabled[7]{2, 255, 1, 0, 1, 3, 128};
    std::memcpy(record.levelEnabled, enabled, sizeof enabled);
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    EXPECT_TRUE(mouse.written().starts_with("41 80 | 51 9B 00 00 02 04 00 01 03 05 06 | 51 40 00 00 00 02 "));
}

TEST(RD210SetPerformance, refusesWhatIsOutOfRange)
{
    Mouse mouse;
    const auto refused = [&](auto change) {
        PerformanceRecord record = sample();
        change(record);
        EXPECT_EQ(mouse->setPerformance(&record), E_INVALID_SET);
        EXPECT_EQ(mouse.written(), "");
    };
    refused([](PerformanceRecord& record) { record.currentLevel = 7; });
    refused([](PerformanceRecord& record) { record.currentLevel = 255; });
    refused([](PerformanceRecord& record) { record.pointerSpeed = 12; });
    refused([](PerformanceRecord& record) { record.doubleClickSpeed = 12; });
    refused([](PerformanceRecord& record) { record.settingBank = 9; });
    refused([](PerformanceRecord& record) { record.levelEnabled[2] = 0; }); // the current level
    refused([](PerformanceRecord& record) { record.levelEnabled[2] = 2; });
    refused([](PerformanceRecord& record) { std::memset(record.levelEnabled, 0, 7); });
    EXPECT_EQ(mouse->setPerformance(nullptr), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210SetPerformance, takesTheLimits)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    record.currentLevel = 6;
    record.pointerSpeed = 11;
    record.doubleClickSpeed = 11;
    record.settingBank = 0;
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    const std::string written = mouse.written();
    EXPECT_TRUE(written.starts_with("41 80 | 51 9B 00 00 00 02 04 06 01 03 05 | 51 40 00 00 03 04 "))
        << written;
    EXPECT_TRUE(written.ends_with("| 51 10 00 00 00 00 00 00 00 00 00 00 05")) << written;
}

TEST(RD210SetPerformance, setsTheSystemsSpeeds)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    mouse.device->answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
    PerformanceRecord record = sample();
    for (int index = 1; index <= 11; ++index) {
        record.pointerSpeed = std::uint8_t(index);
        record.doubleClickSpeed = std::uint8_t(12 - index);
        EXPECT_EQ(mouse->setPerformance(&record), E_OK);
        EXPECT_EQ(systemSpeeds(mouse), std::pair(index, 12 - index));
    }
    record.pointerSpeed = 0;
    record.doubleClickSpeed = 0;
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    EXPECT_EQ(systemSpeeds(mouse), std::pair(6, 6));
}

TEST(RD210SetPerformance, setsNoSpeedsWhenItIsRefused)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    record.pointerSpeed = 1;
    record.settingBank = 9;
    EXPECT_EQ(mouse->setPerformance(&record), E_INVALID_SET);
    EXPECT_EQ(systemSpeeds(mouse), std::pair(6, 6));
}

TEST(RD210ResetPartial, setsTheMiddleSpeeds)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    record.pointerSpeed = 1;
    record.doubleClickSpeed = 11;
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    EXPECT_EQ(mouse->resetPartial(0), E_OK);
    EXPECT_EQ(mouse->resetPartial(1), E_OK);
    EXPECT_EQ(systemSpeeds(mouse), std::pair(1, 11));
    EXPECT_EQ(mouse->resetPartial(2), E_OK);
    EXPECT_EQ(systemSpeeds(mouse), std::pair(6, 6));
}

/// Place 1 of 4; y 0x10.., x 0x20.., multipliers of all kinds.
constexpr const char* performance =
    "52 40 AA BB 01 04 10 11 12 13 14 15 9F 20 21 22 23 24 25 9F 00 01 10 11 02 20 33 "
    "C1 07 D1 D2 EE";

PerformanceRecord dirty()
{
    PerformanceRecord record;
    std::memset(&record, 0xEE, sizeof record);
    return record;
}

void expectLevel(const PerformanceRecord& record, std::size_t level, int x, int y, int enabled)
{
    EXPECT_EQ(+record.levels[level].x, x) << level;
    EXPECT_EQ(+record.levels[level].y, y) << level;
    EXPECT_EQ(record.levelEnabled[level], enabled) << level;
}

TEST(RD210GetPerformance, readsEverything)
{
    Mouse mouse;
    mouse.device->answer("52 40", performance);
    mouse.device->answer("52 9B", "52 9B AA BB 03 05 00 06 01 04 02");
    mouse.device->answer("52 F0", "52 F0 AA BB 77");
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = dirty();
    EXPECT_EQ(mouse->getPerformance(&record), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 40 | 52 9B | 52 F0 | 52 10"));
    EXPECT_EQ(record.currentLevel, 5);
    expectLevel(record, 3, 3300, 1700, 1);           // place 0, multiplier 00
    expectLevel(record, 5, 6800, 1800, 1);           // place 1, 01
    expectLevel(record, 0, 3500, 3800, 1);           // place 2, 10
    expectLevel(record, 6, 7200, 4000, 1);           // place 3, 11
    expectLevel(record, 1, 11100, 2100, 0);          // place 4, 02
    expectLevel(record, 4, 3800, 6600, 0);           // place 5, 20
    expectLevel(record, 2, 16000 * 4, 16000 * 4, 0); // place 6, 33
    EXPECT_EQ(record.pollingCode, 0xC1);
    EXPECT_EQ(record.flagA, 1);
    EXPECT_EQ(record.flagB, 1);
    EXPECT_EQ(record.surfaceA, 0xD1);
    EXPECT_EQ(record.surfaceB, 0xD2);
    EXPECT_EQ(record.settingF0, 0x77);
    EXPECT_EQ(record.settingBank, 7);
    for (const std::uint8_t reserved : record.reserved)
        EXPECT_EQ(reserved, 0xEE);
}

TEST(RD210GetPerformance, readsADeviceWithoutAnOrder)
{
    Mouse mouse;
    mouse.device->answer("52 40", performance);
    mouse.device->answer("52 9B", "52 9B 00 00 FF 05 00 06 01 04 02");
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = dirty();
    EXPECT_EQ(mouse->getPerformance(&record), E_OK);
    EXPECT_EQ(record.currentLevel, 1);
    expectLevel(record, 0, 3300, 1700, 1);
    expectLevel(record, 1, 6800, 1800, 1);
    expectLevel(record, 2, 3500, 3800, 1);
    expectLevel(record, 3, 7200, 4000, 1);
    expectLevel(record, 4, 11100, 2100, 1);
    expectLevel(record, 5, 3800, 6600, 1);
    expectLevel(record, 6, 16000 * 4, 16000 * 4, 1);
}

TEST(RD210GetPerformance, readsTheOptions)
{
    struct Case {
        const char* option;
        int a, b;
    };
    for (const Case& each :
         {Case{"00", 0, 0}, Case{"01", 1, 0}, Case{"02", 0, 0}, Case{"04", 0, 0}, Case{"06", 0, 1},
          Case{"07", 1, 1}, Case{"F8", 0, 0}, Case{"FF", 1, 1}, Case{"05", 1, 0}}) {
        Mouse mouse;
        mouse.device->answer(
            "52 40", std::string("52 40 00 00 00 07 10 11 12 13 14 15 16 10 11 12 13 14 15 16 00 00 00 00 00 "
                                 "00 00 C1 ") +
                         each.option);
        mouse.device->answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
        PerformanceRecord record = dirty();
        EXPECT_EQ(mouse->getPerformance(&record), E_OK);
        EXPECT_EQ(record.flagA, each.a) << each.option;
        EXPECT_EQ(record.flagB, each.b) << each.option;
        EXPECT_EQ(record.surfaceA, 0) << each.option;
    }
}

TEST(RD210GetPerformance, reads16100BackAs16000)
{
    Mouse mouse;
    mouse.device->answer("52 10", bank);
    PerformanceRecord record = sample();
    record.levels[2] = {16100, 16200};
    EXPECT_EQ(mouse->setPerformance(&record), E_OK);
    // The device gives back what it has been given.
    for (const std::string& report : reports(mouse.written()))
        if (report.starts_with("51 40") || report.starts_with("51 9B"))
            mouse.device->answer("52" + report.substr(2, 3), "52" + report.substr(2));
    PerformanceRecord back = dirty();
    EXPECT_EQ(mouse->getPerformance(&back), E_OK);
    EXPECT_EQ(+back.levels[2].x, 16000);
    EXPECT_EQ(+back.levels[2].y, 16200);
    EXPECT_EQ(back.currentLevel, 2);
    EXPECT_EQ(std::memcmp(back.levelEnabled, record.levelEnabled, 7), 0);
    EXPECT_EQ(+back.levels[5].x, 12000);
}

TEST(RD210GetPerformance, refusesPlacesOutsideTheTables)
{
    const std::string levels = " 10 11 12 13 14 15 16 10 11 12 13 14 15 16 00 00 00 00 00 00 00 C1 07 D1 D2";
    struct Case {
        std::string performance, order;
    };
    for (const Case& each : {Case{"52 40 00 00 07 07" + levels, "52 9B 00 00 00 01 02 03 04 05 06"},
                             Case{"52 40 00 00 FF 07" + levels, "52 9B 00 00 00 01 02 03 04 05 06"},
                             Case{"52 40 00 00 00 07" + levels, "52 9B 00 00 00 01 02 03 04 05 07"},
                             Case{"52 40 00 00 00 07" + levels, "52 9B 00 00 C8 01 02 03 04 05 06"}}) {
        Mouse mouse;
        mouse.device->answer("52 40", each.performance);
        mouse.device->answer("52 9B", each.order);
        PerformanceRecord record = dirty();
        EXPECT_EQ(mouse->getPerformance(&record), E_INVALID_GET) << each.performance << " " << each.order;
        const PerformanceRecord untouched = dirty();
        EXPECT_EQ(std::memcmp(&record, &untouched, sizeof record), 0);
    }
}

TEST(RD210GetPerformance, needsARecord)
{
    Mouse mouse;
    EXPECT_EQ(mouse->getPerformance(nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210GetSurfaceLearningResult, readsThePerformance)
{
    Mouse mouse;
    mouse.device->answer("52 40", performance);
    mouse.device->answer("52 9B", "52 9B 00 00 00 01 02 03 04 05 06");
    std::uint8_t a = 0xEE;
    std::uint8_t b = 0xEE;
    EXPECT_EQ(mouse->getSurfaceLearningResult(&a, &b), E_OK);
    EXPECT_EQ(a, 0xD1);
    EXPECT_EQ(b, 0xD2);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 40 | 52 9B | 52 F0 | 52 10"));
    EXPECT_EQ(mouse->getSurfaceLearningResult(nullptr, &b), E_INVALID_GET);
    EXPECT_EQ(mouse->getSurfaceLearningResult(&a, nullptr), E_INVALID_GET);
    EXPECT_EQ(mouse.written(), "");
}

TEST(RD210ChangeDpiLevel, writesThePlaceOfTheLevel)
{
    Mouse mouse;
    // Every byte of the reply tells its place; five levels are enabled.
    const std::string rest =
        " 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B 1C 1D 1E 1F 20 21 22 23 "
        "24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F";
    mouse.device->answer("52 40", "52 40 02 03 04 05" + rest);
    mouse.device->answer("52 9B", "52 9B 00 00 03 05 00 06 01 04 02");
    EXPECT_EQ(mouse->changeDpiLevel(6), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40 | 51 40 02 03 03 05" + rest));
    EXPECT_EQ(mouse->changeDpiLevel(3), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40 | 51 40 02 03 00 05" + rest));
    // Levels 4 and 2 stand after the enabled ones.
    EXPECT_EQ(mouse->changeDpiLevel(4), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40"));
    EXPECT_EQ(mouse->changeDpiLevel(2), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40"));
}

TEST(RD210ChangeDpiLevel, takesTheLevelForThePlaceWithoutAnOrder)
{
    Mouse mouse;
    mouse.device->answer("52 40", "52 40 00 00 00 05");
    mouse.device->answers("52 9B",
                          {"52 9B 00 00 FF 05 00 06 01 04 02", "52 9B 00 00 00 00 00 00 00 00 00 04"});
    EXPECT_EQ(mouse->changeDpiLevel(4), E_OK);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40 | 51 40 00 00 04 05"));
    EXPECT_EQ(mouse->changeDpiLevel(4), E_OK); // not in the order's seven places
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40 | 51 40 00 00 04 05"));
    EXPECT_EQ(mouse->changeDpiLevel(5), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), wire("41 80 | 52 9B | 52 40"));
}

TEST(RD210ChangeDpiLevel, refusesAnEighthLevel)
{
    Mouse mouse;
    EXPECT_EQ(mouse->changeDpiLevel(7), E_INVALID_SET);
    EXPECT_EQ(mouse->changeDpiLevel(255), E_INVALID_SET);
    EXPECT_EQ(mouse.written(), "");
}

} // namespace
} // namespace pyrux::test
