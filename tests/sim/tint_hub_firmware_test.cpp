#include "simulator/models/tint_hub.h"
#include "tests/sim/on_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pyrux::sim {

namespace {

class TintHubFirmwareTest : public OnTable<TintHubFirmware> {
protected:
    using Session = TintHubFirmware::Session;

    /// Commands that are not answered.
    void tell(const std::vector<std::string>& commands)
    {
        for (const std::string& command : commands)
            EXPECT_EQ(ask(command), "") << command;
    }
};

TEST_F(TintHubFirmwareTest, hasItsIdentity)
{
    EXPECT_EQ(device.identity().vid, 0x3A7E);
    EXPECT_EQ(device.identity().pid, 0x004F);
    EXPECT_EQ(device.identity().product, "TINT HUB");
    EXPECT_EQ(device.identity().controlInterface, 1);
}

TEST_F(TintHubFirmwareTest, keepsTheParametersOfEachMode)
{
    tell({"41 01", "51 2B 00 00 01 3C 20 FF FF 7F 01 02 03", "51 28 00 00 01"});
    tell({"51 2B 00 00 03 46 00 19 FF FF 04 05 06", "41 00"});
    EXPECT_EQ(ask("52 2C 00 00 01"), "52 2C 00 01 3C 20 FF FF 7F 01 02 03");
    EXPECT_EQ(ask("52 2C 00 00 03"), "52 2C 00 03 46 00 19 FF FF 04 05 06");
    EXPECT_EQ(ask("52 2C 00 00 09"), "52 2C 00 09 00 00 FF FF FF FF FF FF");
    EXPECT_EQ(ask("52 28"), "52 28 00 01");
    EXPECT_EQ(ask("52 29"), "");
}

TEST_F(TintHubFirmwareTest, takesSettingsInASessionOnly)
{
    const std::vector<std::string> settings{"51 2B 00 00 01 3C", "51 28 00 00 05",
                                            "51 A0 01 00 00 00 00 00 01"};
    tell(settings);
    tell({"41 03"});
    tell(settings);
    EXPECT_EQ(device.settings(), TintHubFirmware::Settings());
    tell({"41 02"}); // no such session
    EXPECT_EQ(device.session(), Session::host);
    tell({"41 80"});
    EXPECT_EQ(device.session(), Session::color);
    tell(settings);
    EXPECT_EQ(device.settings().mode, 5);
}

TEST_F(TintHubFirmwareTest, keepsTheColorsOfItsPorts)
{
    EXPECT_EQ(ask("52 A8"), "52 A8 00 FF FF FF FF FF FF FF FF FF FF FF FF");
    tell({"41 80", "51 28 00 00 04", "51 A8 00 00 09"});
    EXPECT_EQ(ask("52 A8"), "52 A8 00 FF FF FF FF FF FF FF FF FF FF FF FF");
    tell({"51 30", "51 A8 00 00 " + counting(1, 12) + " EE", "51 2C 00 00 04 00 00 FF FF 7F FF FF FF"});
    EXPECT_EQ(ask("52 A8"), "52 A8 00 " + counting(1, 12));
    EXPECT_EQ(ask("52 2C FF FF 04 FF FF"), "52 2C 00 04 00 00 FF FF 7F FF FF FF");
    EXPECT_EQ(zone("port 2"), "010202"); // 04 05 06 at 7F of FF
    tell({"51 2C 00 00 04 00 00 FF FF FF FF FF FF"});
    EXPECT_EQ(zone("port 4"), "0A0B0C");
}

TEST_F(TintHubFirmwareTest, keepsTheNewestFourLayers)
{
    tell({"41 01"});
    for (const char* layer : {"05", "06", "07", "08", "09"})
        tell({std::string("51 2B 01 00 ") + layer + " 02 00 FF FF FF 01 02 " + layer});
    tell({"51 A0 01 00 00 01 00 00 0A 0B 0C 0D", "51 28 00 00 E0"});
    ASSERT_EQ(device.settings().layers.size(), 4U);
    EXPECT_EQ(device.settings().layers[0].mode, 6);
    EXPECT_EQ(device.settings().layers[3].mode, 9);
    EXPECT_EQ(device.settings().layers[3].effect, (TintHubFirmware::Effect{2, 0, 255, 255, 255, 1, 2, 9}));
    EXPECT_EQ(device.settings().layersEnd, (std::array<std::uint8_t, 4>{10, 11, 12, 13}));
    EXPECT_EQ(device.settings().effects.size(), 0U);
    EXPECT_EQ(zone("port 1"), "010206");
    EXPECT_EQ(zone("port 4"), "010209");
}

TEST_F(TintHubFirmwareTest, losesWhatItHasNotStored)
{
    tell({"41 01", "51 28 00 00 03", "50 55", "51 28 00 00 02"});
    EXPECT_EQ(device.savedSettings().mode, 3);
    EXPECT_EQ(device.stores(), 1);
    tell({"50 56"});
    EXPECT_EQ(device.stores(), 1);
    device.powerOn();
    EXPECT_EQ(device.settings().mode, 3);
    EXPECT_EQ(device.session(), Session::none);
    EXPECT_EQ(device.stores(), 0);
}

TEST_F(TintHubFirmwareTest, showsTheFramesOfAHost)
{
    tell({"C0 F0", "C0 02 00 00 " + counting(1, 12)});
    EXPECT_EQ(zone("port 1"), "FFFFFF");
    tell({"41 03", "C0 02 00 00 " + counting(1, 12)});
    EXPECT_EQ(device.frames(), 0);
    EXPECT_FALSE(device.driven());
    tell({"C0 F0", "C0 02 00 00 " + counting(1, 12) + " EE"});
    EXPECT_TRUE(device.driven());
    EXPECT_EQ(device.frames(), 1);
    EXPECT_EQ(device.picture(), (Picture{{"port 1", {{1, 2, 3}}},
                                         {"port 2", {{4, 5, 6}}},
                                         {"port 3", {{7, 8, 9}}},
                                         {"port 4", {{10, 11, 12}}}}));
    tell({"00 00 00 00 01"}); // no command
    EXPECT_EQ(device.frames(), 1);
    tell({"41 00"});
    EXPECT_FALSE(device.driven());
    EXPECT_EQ(zone("port 1"), "FFFFFF");
}

TEST_F(TintHubFirmwareTest, doesNothingByItself)
{
    EXPECT_TRUE(device.events().empty());
    EXPECT_FALSE(device.happen("effect", {1}));
}

} // namespace

} // namespace pyrux::sim
