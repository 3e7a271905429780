// RD210 with the firmware model behind it: what is set is kept by the device and reads back.

#include "simulator/models/rd210.h"

#include "tests/support/mouse.h"
#include "tests/support/notifications.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace pyrux::test {
namespace {

class RD210RoundTrip : public testing::Test {
protected:
    RD210RoundTrip() { open(); }
    ~RD210RoundTrip() override
    {
        sim::unplug(path);
        host->exit_device(1);
    }

    void open()
    {
        path = sim::plug(device);
        host = rd210(path.c_str());
        EXPECT_NE(host, nullptr);
    }

    /// Pulls the device out and plugs it in again: it begins with what was saved.
    void powerCycle()
    {
        sim::unplug(path);
        host->exit_device(1);
        open();
    }

    int profile()
    {
        std::uint8_t value = 0xEE;
        EXPECT_EQ(host->getCurrProfileId(&value), E_OK);
        return value;
    }

    std::array<std::uint16_t, 13> map()
    {
        std::array<std::uint16_t, 13> codes{};
        EXPECT_EQ(host->getKeyMappingAll(codes.data()), E_OK);
        return codes;
    }

    PerformanceRecord performance()
    {
        PerformanceRecord record{};
        EXPECT_EQ(host->getPerformance(&record), E_OK);
        return record;
    }

    std::shared_ptr<sim::RD210Firmware> device = std::make_shared<sim::RD210Firmware>();
    std::string path;
    PYRUX_RD210_Base* host = nullptr;
};

TEST_F(RD210RoundTrip, isKnownToTheDeviceFromTheStart)
{
    EXPECT_EQ(device->profileAcknowledgements(), 1);
    EXPECT_EQ(device->dpiAcknowledgements(), 1);
}

TEST_F(RD210RoundTrip, changesProfiles)
{
    for (const std::uint8_t each : {3, 0, 4, 1, 2}) {
        EXPECT_EQ(host->changeProfileId(each), E_OK);
        EXPECT_EQ(device->profile(), each);
        EXPECT_EQ(profile(), each);
    }
    EXPECT_EQ(host->changeProfileId(5), E_INVALID_SET);
    EXPECT_EQ(device->profile(), 2);
}

TEST_F(RD210RoundTrip, savesWhatIsToLast)
{
    EXPECT_EQ(host->changeProfileId(2), E_OK);
    EXPECT_EQ(host->setKeyMapping(3, 0x0123), E_OK);
    EXPECT_EQ(host->saveConfig(), E_OK);
    EXPECT_EQ(device->saves(), 1);
    EXPECT_EQ(host->changeProfileId(4), E_OK);
    powerCycle();
    EXPECT_EQ(profile(), 2);
    EXPECT_EQ(map()[3], 0x0123);
}

TEST_F(RD210RoundTrip, resetsProfiles)
{
    const auto factory = map();
    EXPECT_EQ(host->setKeyMapping(3, 0x0123), E_OK);
    EXPECT_EQ(host->resetProfile(0), E_OK);
    EXPECT_EQ(map(), factory);
    EXPECT_EQ(device->saves(), 1);
    EXPECT_EQ(host->setKeyMapping(3, 0x0123), E_OK);
    EXPECT_EQ(host->changeProfileId(1), E_OK);
    EXPECT_EQ(host->resetProfile(1), E_OK);
    EXPECT_EQ(map(), factory);
}

TEST_F(RD210RoundTrip, mapsKeys)
{
    const std::array<std::uint16_t, 13> codes{0x0001, 0x0102, 0x0500, 0x0501, 0x0204, 0x0305, 0x0006,
                                              0x0007, 0x0308, 0x0500, 0x020A, 0x0501, 0x010C};
    EXPECT_EQ(host->setKeyMappingAll(codes.data()), E_OK);
    EXPECT_EQ(map(), codes);
    EXPECT_EQ(host->setKeyMapping(0, 0x0321), E_OK);
    EXPECT_EQ(host->setKeyMapping(12, 0x0500), E_OK);
    EXPECT_EQ(device->key(0), 0x0321);
    auto changed = codes;
    changed[0] = 0x0321;
    changed[12] = 0x0500;
    EXPECT_EQ(map(), changed);
    // Codes of a macro leave their buttons alone.
    std::array<std::uint16_t, 13> none{};
    none.fill(0x03FF);
    EXPECT_EQ(host->setKeyMappingAll(none.data()), E_OK);
    EXPECT_EQ(map(), changed);
}

TEST_F(RD210RoundTrip, crossesTheWheelsDirections)
{
    // A step down of button 6 stands where button 7 reads its step up, and the other way round.
    std::array<std::uint16_t, 13> codes{};
    codes.fill(0x0009);
    codes[6] = 0x0501;
    EXPECT_EQ(host->setKeyMappingAll(codes.data()), E_OK);
    EXPECT_EQ(map()[7], 0x0500);
    codes[6] = 0x0009;
    codes[7] = 0x0500;
    EXPECT_EQ(host->setKeyMappingAll(codes.data()), E_OK);
    EXPECT_EQ(map()[6], 0x0501);
    EXPECT_EQ(map()[7], 0x00BF); // its own function: the code is the byte after the command
}

TEST_F(RD210RoundTrip, mapsDpiLevels)
{
    PerformanceRecord record = performance();
    const std::array<std::uint8_t, 7> enabled{0, 1, 0, 1, 1, 0, 1};
    std::memcpy(record.levelEnabled, enabled.data(), 7);
    record.currentLevel = 3;
    EXPECT_EQ(host->setPerformance(&record), E_OK);
    for (std::uint16_t level = 0; level < 7; ++level) {
        EXPECT_EQ(host->setKeyMapping(2, std::uint16_t(0x01E0 + level)), E_OK);
        EXPECT_EQ(map()[2], 0x01E0 + level);
    }
    // The device knows the place in the order 1 3 4 6 0 2 5.
    EXPECT_EQ(host->setKeyMapping(2, 0x01E4), E_OK);
    EXPECT_EQ(device->key(2), 0x01E2);
}

TEST_F(RD210RoundTrip, makesAShiftOfAButton)
{
    std::uint8_t on = 0xEE;
    EXPECT_EQ(host->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 0);
    EXPECT_EQ(host->setMouseCombo(1), E_OK);
    EXPECT_EQ(host->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 1);
    EXPECT_EQ(device->key(5), 0x01EA);
    EXPECT_EQ(host->setKeyMapping(5, 0x0009), E_OK); // a success that changes nothing
    EXPECT_EQ(device->key(5), 0x01EA);
    EXPECT_EQ(host->setMouseCombo(0), E_OK);
    EXPECT_EQ(host->getMouseCombo(&on), E_OK);
    EXPECT_EQ(on, 0);
    EXPECT_EQ(host->setKeyMapping(5, 0x0009), E_OK);
    EXPECT_EQ(device->key(5), 0x0009);
}

TEST_F(RD210RoundTrip, keepsMacros)
{
    for (const std::uint8_t count : {0, 1, 14, 15, 16, 29, 30, 194, 195, 198})
        for (const std::uint8_t button : {0, 5, 6, 7, 8, 12}) {
            MouseMacroRecord written{};
            written.button = button;
            std::strcpy(written.name, "name");
            written.mode = std::uint8_t(button % 3);
            written.count = count;
            for (std::size_t i = 0; i < count; ++i)
                written.events[i] = {std::uint16_t((i * 7) % 0x400), std::uint8_t(i % 2),
                                     std::uint16_t(i * 160)};
            if (count > 2) {
                written.events[1] = {0x0500, 2, 5};
                written.events[2] = {0x0501, 2, 0x7FFF};
            }
            ASSERT_EQ(host->setMacro(&written), E_OK);
            MouseMacroRecord read;
            std::memset(&read, 0xEE, sizeof read);
            read.button = button;
            ASSERT_EQ(host->getMacro(&read), E_OK);
            EXPECT_EQ(std::memcmp(&read, &written, 43 + 5u * count), 0)
                << int(count) << " on " << int(button);
        }
    EXPECT_EQ(map()[8], 0x03FF);
}

TEST_F(RD210RoundTrip, clearsMacros)
{
    MouseMacroRecord record{};
    record.button = 4;
    record.count = 1;
    EXPECT_EQ(host->setMacro(&record), E_OK);
    EXPECT_EQ(map()[4], 0x03FF);
    EXPECT_EQ(host->clearMacro(4), E_OK);
    EXPECT_EQ(host->getMacro(&record), E_OK);
    EXPECT_EQ(record.mode, 3);
    EXPECT_EQ(record.count, 0);
    EXPECT_NE(map()[4], 0x03FF);
}

TEST_F(RD210RoundTrip, keepsThePerformance)
{
    PerformanceRecord written{};
    written.currentLevel = 6;
    for (std::size_t i = 0; i < 7; ++i) {
        written.levels[i] = {std::uint16_t(100 + 2600 * i), std::uint16_t(32000 - 5000 * i)};
        written.levelEnabled[i] = i % 2 == 0;
    }
    written.levels[3] = {16100, 16000};
    written.pollingCode = 3;
    written.flagA = 1;
    written.surfaceA = 0x31;
    written.surfaceB = 0x32;
    written.settingF0 = 1;
    written.pointerSpeed = 4;
    written.doubleClickSpeed = 8;
    written.settingBank = 8;
    EXPECT_EQ(host->setPerformance(&written), E_OK);
    PerformanceRecord expected = written;
    expected.levels[3].x = 16000; // half of 16100 is cut to the step of 100
    const PerformanceRecord read = performance();
    EXPECT_EQ(std::memcmp(&read, &expected, sizeof read), 0);
    written.pointerSpeed = 0;
    written.doubleClickSpeed = 0;
    EXPECT_EQ(host->setPerformance(&written), E_OK);
}

TEST_F(RD210RoundTrip, changesDpiLevels)
{
    PerformanceRecord record = performance();
    const std::array<std::uint8_t, 7> enabled{1, 0, 1, 1, 0, 1, 0};
    std::memcpy(record.levelEnabled, enabled.data(), 7);
    record.currentLevel = 2;
    EXPECT_EQ(host->setPerformance(&record), E_OK);
    for (std::uint8_t level = 0; level < 7; ++level) {
        const bool can = enabled[level] == 1;
        EXPECT_EQ(host->changeDpiLevel(level), can ? E_OK : E_INVALID_SET) << int(level);
        if (can) {
            EXPECT_EQ(device->level(), level);
            EXPECT_EQ(performance().currentLevel, level);
        }
    }
    EXPECT_EQ(+performance().levels[6].x, +record.levels[6].x);
}

TEST_F(RD210RoundTrip, resetsParts)
{
    MouseMacroRecord macro{};
    macro.button = 4;
    macro.count = 1;
    const PerformanceRecord factory = performance();
    const auto keys = map();
    EXPECT_EQ(host->setMacro(&macro), E_OK);
    EXPECT_EQ(host->setKeyMapping(3, 0x0123), E_OK);
    PerformanceRecord changed = factory;
    changed.levels[0] = {700, 900};
    changed.pollingCode = std::uint8_t(factory.pollingCode + 1);
    EXPECT_EQ(host->setPerformance(&changed), E_OK);

    EXPECT_EQ(host->resetPartial(0), E_OK);
    EXPECT_EQ(map()[4], keys[4]);
    EXPECT_EQ(map()[3], 0x0123);
    EXPECT_EQ(host->resetPartial(1), E_OK);
    EXPECT_EQ(map(), keys);
    EXPECT_EQ(+performance().levels[0].x, 700);
    EXPECT_EQ(host->resetPartial(2), E_OK);
    PerformanceRecord read = performance();
    EXPECT_EQ(+read.levels[0].x, +factory.levels[0].x);
    EXPECT_EQ(read.pollingCode, factory.pollingCode);
    EXPECT_EQ(read.settingF0, 1);
    EXPECT_EQ(read.settingBank, 3);
}

TEST_F(RD210RoundTrip, learnsTheSurface)
{
    std::uint8_t status = 0xEE;
    EXPECT_EQ(host->getSurfaceLearningStatus(&status), E_OK);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(host->startSurfaceLearning(), E_OK);
    EXPECT_TRUE(device->learning());
    EXPECT_EQ(host->getSurfaceLearningStatus(&status), E_OK);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(device->happen("surface", {33, 44}));
    EXPECT_EQ(host->getSurfaceLearningStatus(&status), E_OK);
    EXPECT_EQ(status, 0);
    std::uint8_t a = 0;
    std::uint8_t b = 0;
    EXPECT_EQ(host->getSurfaceLearningResult(&a, &b), E_OK);
    EXPECT_EQ(a, 33);
    EXPECT_EQ(b, 44);
    EXPECT_EQ(host->startSurfaceLearning(), E_OK);
    EXPECT_EQ(host->stopSurfaceLearning(), E_OK);
    EXPECT_FALSE(device->learning());
}

TEST_F(RD210RoundTrip, recordsAMacro)
{
    EXPECT_EQ(host->startRecordMacro(), E_OK);
    EXPECT_TRUE(device->recording());
    EXPECT_EQ(host->stopRecordMacro(), E_OK);
    EXPECT_FALSE(device->recording());
    EXPECT_TRUE(device->configurable());
}

TEST_F(RD210RoundTrip, tellsWhatTheDeviceDoesByItself)
{
    Notifications::clear();
    EXPECT_EQ(host->registerNotify(Notifications::callback), E_OK);
    EXPECT_TRUE(device->happen("dpi", {4}));
    EXPECT_TRUE(device->happen("profile", {2}));
    EXPECT_TRUE(device->happen("key", {3, 1}));
    EXPECT_TRUE(device->happen("key", {3, 0}));
    EXPECT_EQ(Notifications::await(4), "1:0 0:0 2:34 3:34");
    EXPECT_EQ(profile(), 2);
    EXPECT_EQ(device->profileAcknowledgements(), 2);
    EXPECT_EQ(device->dpiAcknowledgements(), 2);
}

} // namespace
} // namespace pyrux::test
