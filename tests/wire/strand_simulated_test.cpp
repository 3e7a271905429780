// The strand controllers against their firmware models: what is set reads back, frames are seen.

#include "simulator/models/strand_hub.h"
#include "tests/support/hub.h"
#include "tests/support/simulated_device.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace pyrux::test {
namespace {

using Byte = std::uint8_t;

template <class Model>
class SimulatedStrand : public Simulated<sim::StrandFirmware, Model> {
protected:
    std::vector<sim::Light> zone(const std::string& name) const
    {
        for (const sim::LightZone& zone : this->device->picture())
            if (zone.name == name)
                return zone.leds;
        ADD_FAILURE() << "no " << name;
        return {};
    }
};
TYPED_TEST_SUITE(SimulatedStrand, StrandModels, ModelName);

TYPED_TEST(SimulatedStrand, keepsTheEffectOfEachPlace)
{
    const auto effectOf = [](Byte port, Byte subPort) {
        const auto number = Byte(10 * port + subPort);
        return StrandEffectParam{Byte(1 + number % 8), 0, Byte(1 + number % 5), number, Byte(number + 1),
                                 Byte(number + 2),     3, Byte(number + 4),     port,   subPort};
    };
    for (const Byte port : {1, 2, 3})
        for (const Byte subPort : {0, 1, 2, 3, 4, 5}) {
            const StrandEffectParam effect = effectOf(port, subPort);
            ASSERT_EQ(this->host->setEffectParameter(&effect), E_OK);
        }
    for (const Byte port : {1, 2, 3})
        for (const Byte subPort : {0, 1, 2, 3, 4, 5}) {
            const StrandEffectParam effect = effectOf(port, subPort);
            StrandEffectParam got{};
            got.port = port;
            got.subPort = subPort;
            EXPECT_EQ(this->host->getEffectParameter(&got), E_OK);
            EXPECT_EQ(bytesOf(got), bytesOf(effect));
            // Another effect has its own parameters.
            got.effect = Byte(effect.effect == 9 ? 1 : 9);
            EXPECT_EQ(this->host->getAnyEffectParameter(&got), E_OK);
            EXPECT_EQ(+got.speed, 3);
            EXPECT_EQ(+got.red, 255);
        }
}

TYPED_TEST(SimulatedStrand, changesEffectsWithTheirParameters)
{
    StrandEffectParam first{2, 0, 4, 1, 2, 10, 20, 30, 2, 0};
    StrandEffectParam second{3, 0, 1, 5, 6, 40, 50, 60, 2, 0};
    EXPECT_EQ(this->host->setEffectParameter(&first), E_OK);
    EXPECT_EQ(this->host->setEffectParameter(&second), E_OK);
    StrandEffectParam place{};
    place.port = 2;
    EXPECT_EQ(this->host->setEffectMode(&place, 2), E_OK);
    EXPECT_EQ(bytesOf(place), bytesOf(first));
    Byte effect = 0xEE;
    EXPECT_EQ(this->host->getEffectMode(&place, &effect), E_OK);
    EXPECT_EQ(effect, 2);
    EXPECT_EQ(this->device->settings().ports[1].zones[0].effect, 2);
    StrandEffectTable table{2, 0, {}};
    EXPECT_EQ(this->host->getAllEffectParameter(&table), E_OK);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(table.effects[i].effect, i);
    EXPECT_EQ(bytesOf(table.effects[2]), "02 04 01 0A 14 1E 02 00");
    EXPECT_EQ(bytesOf(table.effects[3]), "03 01 05 28 32 3C 06 00");
    EXPECT_EQ(bytesOf(table.effects[9]), "09 03 00 FF FF FF 00 00");
    EXPECT_EQ(this->host->setEffectMode(&place, 10), E_INVALID_GET); // the device has no such effect
}

TYPED_TEST(SimulatedStrand, keepsSizesTypesAndNumbers)
{
    const StrandGen1Size size{3, 7, 10};
    EXPECT_EQ(this->host->setGen1Size(&size), E_OK);
    StrandGen1Size got{3, 0, 0};
    EXPECT_EQ(this->host->getGen1Size(&got), E_OK);
    EXPECT_EQ(bytesOf(got), "03 07 08");
    StrandGen2Size fans{1, 0, {}};
    EXPECT_EQ(this->host->getGen2Size(&fans), E_OK);
    EXPECT_EQ(bytesOf(fans), "01 03 14 10 0C 00 00");
    const StrandRemap remap{1, {{1, 3}, {2, 1}, {3, 2}, {0, 0}, {0, 0}}};
    EXPECT_EQ(this->host->remapGen2SubPort(&remap), E_OK);
    EXPECT_EQ(this->host->getGen2Size(&fans), E_OK);
    EXPECT_EQ(bytesOf(fans), "01 03 10 0C 14 00 00");
    EXPECT_TRUE(this->device->happen("attach", {2, 24}));
    EXPECT_EQ(this->host->setARGBType(2, 2), E_OK); // looks at the port again
    Byte type = 0;
    EXPECT_EQ(this->host->getARGBType(2, &type), E_OK);
    EXPECT_EQ(type, 2);
    fans.port = 2;
    EXPECT_EQ(this->host->getGen2Size(&fans), E_OK);
    EXPECT_EQ(bytesOf(fans), "02 01 18 00 00 00 00");
    EXPECT_EQ(this->host->setARGBType(2, 9), E_INVALID_GET); // it knows no such type
}

TYPED_TEST(SimulatedStrand, keepsTheRest)
{
    std::array<Byte, 32> id{}, gotId{};
    for (std::size_t i = 0; i < id.size(); ++i)
        id[i] = Byte(0xA0 + i);
    EXPECT_EQ(this->host->setUID(2, id.data()), E_OK);
    EXPECT_EQ(this->host->getUID(gotId.data()), E_OK);
    EXPECT_EQ(gotId, id);
    Byte value = 0;
    EXPECT_EQ(this->host->setMultilayerMode(3), E_OK);
    EXPECT_EQ(this->host->getMultilayerMode(&value), E_OK);
    EXPECT_EQ(value, 3);
    std::array<StrandOverlayParam, 3> overlays{};
    for (int port = 1; port <= 3; ++port) {
        overlays[std::size_t(port - 1)] =
            recordOf<StrandOverlayParam>("0" + std::to_string(port) + " " + counting(16 * port, 29));
        EXPECT_EQ(this->host->setOverlayEffectParameter(&overlays[std::size_t(port - 1)]), E_OK);
    }
    EXPECT_EQ(this->host->getOverlayMode(&value), E_OK);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(this->host->setOverlayMode(0), E_OK);
    EXPECT_EQ(this->host->getOverlayMode(&value), E_OK);
    EXPECT_EQ(value, 0);
    std::array<StrandOverlayParam, 3> got{};
    EXPECT_EQ(this->host->getOverlayEffectParameterAll(got.data()), E_OK);
    EXPECT_EQ(bytesOf(got), bytesOf(overlays));
    std::uint16_t version = 0;
    EXPECT_EQ(this->host->getVersion(&version), E_OK);
    EXPECT_EQ(version, 0x0105);
    EXPECT_EQ(this->host->setIdentify(3, 2), E_OK);
    EXPECT_EQ(this->device->identified(), (std::array<Byte, 2>{4, 2}));
    EXPECT_NE(this->device->savedSettings(), this->device->settings());
    EXPECT_EQ(this->host->saveConfig(), E_OK);
    EXPECT_EQ(this->device->savedSettings(), this->device->settings());
    EXPECT_EQ(this->host->resetConfig(0), E_OK);
    EXPECT_EQ(this->device->settings().multilayer, 0);
    EXPECT_EQ(this->device->savedSettings().multilayer, 3);
    EXPECT_EQ(this->host->resetData(), E_OK);
    EXPECT_EQ(this->device->savedSettings().multilayer, 0);
}

TYPED_TEST(SimulatedStrand, keepsCustomColors)
{
    StrandGen1Size size{2, 0, 0};
    EXPECT_EQ(this->host->getGen1Size(&size), E_OK);
    ASSERT_EQ(size.chainLength * size.leds, 40);
    StrandGen2Size fans{1, 0, {}};
    EXPECT_EQ(this->host->getGen2Size(&fans), E_OK);
    const auto set = recordOf<StrandCustomBuffer>("00 00 00 00 " + counting(1, 180));
    for (const Byte zone : {2, 4, 6}) {
        EXPECT_EQ(this->host->setEffectCustomize(zone, &set), E_OK);
        const std::size_t leds = zone == 2 ? 40 : zone == 4 ? 20 : 12;
        StrandCustomBuffer got{};
        EXPECT_EQ(this->host->getEffectCustomize(zone, &got), E_OK);
        EXPECT_EQ(bytesOf(got),
                  bytesOf(recordOf<StrandCustomBuffer>("00 00 00 00 " + counting(1, 3 * leds))));
    }
    StrandEffectParam place{};
    place.port = 2;
    EXPECT_EQ(this->host->setEffectMode(&place, 9), E_OK); // which shows them
    const std::vector<sim::Light> leds = this->zone("port 2");
    ASSERT_EQ(leds.size(), 40U);
    EXPECT_EQ(leds[0], (sim::Light{1, 2, 3}));
    EXPECT_EQ(leds[19], (sim::Light{58, 59, 60}));
    EXPECT_EQ(leds[39], (sim::Light{118, 119, 120}));
}

TYPED_TEST(SimulatedStrand, showsTheFramesOfAHost)
{
    EXPECT_EQ(this->host->setLightingInit(), E_OK);
    this->awaitFrames(18);
    EXPECT_TRUE(this->device->driven());
    EXPECT_EQ(this->zone("port 2"), std::vector<sim::Light>(40));
    std::vector<LightingLed> leds;
    for (std::uint32_t i = 0; i < 40; ++i)
        leds.push_back({i, Byte(i), Byte(2 * i), Byte(3 * i)});
    EXPECT_EQ(this->host->setSyncLightingData({{20, leds}, {12, {{15, 7, 8, 9}}}}), E_OK);
    this->awaitFrames(20);
    for (std::size_t i = 0; i < 40; ++i)
        EXPECT_EQ(this->zone("port 2")[i], (sim::Light{Byte(i), Byte(2 * i), Byte(3 * i)}));
    EXPECT_EQ(this->zone("port 1 fan 2")[14], sim::Light{});
    EXPECT_EQ(this->zone("port 1 fan 2")[15], (sim::Light{7, 8, 9}));
    StrandPortColor color{};
    color.zone[3] = 255;
    color.red = 10;
    color.green = 11;
    color.blue = 12;
    EXPECT_EQ(this->host->setLightingPortColor(&color), E_OK);
    this->awaitFrames(21);
    for (const sim::LightZone& zone : this->device->picture())
        EXPECT_EQ(zone.leds, std::vector<sim::Light>(zone.leds.size(), sim::Light{10, 11, 12})) << zone.name;
    EXPECT_EQ(this->host->setLightingTurnOff(), E_OK);
    this->awaitFrames(39);
    for (const sim::LightZone& zone : this->device->picture())
        EXPECT_EQ(zone.leds, std::vector<sim::Light>(zone.leds.size())) << zone.name;
    EXPECT_EQ(this->host->setLightingUninit(), E_OK);
    EXPECT_EQ(this->host->setMultilayerMode(0), E_OK); // its reply comes after
    EXPECT_FALSE(this->device->driven());
}

} // namespace
} // namespace pyrux::test
