// The simulated devices and the library's catalogue tell of the same devices, each in its own words.

#include "core/catalogue.h"
#include "simulator/models.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace pyrux::sim {

namespace {

/// A name without what stands between its words.
std::string lettersOf(std::string name)
{
    std::erase_if(name, [](char one) { return one == ' ' || one == '_'; });
    return name;
}

class SimulatedModel : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(All, SimulatedModel, testing::ValuesIn(firmwareNames()),
                         [](const auto& model) { return model.param; });

TEST_P(SimulatedModel, standsInTheCatalogue)
{
    const auto model = makeFirmware(GetParam());
    ASSERT_TRUE(model);
    const Identity& identity = model->identity();
    const auto row = std::ranges::find_if(deviceCatalogue, [&](const DeviceRow& one) {
        return one.vid == identity.vid && one.pid == identity.pid &&
               one.interface == identity.controlInterface;
    });
    ASSERT_NE(row, deviceCatalogue.end());
    const std::map<std::string, std::string> otherNames{
        {"GLOW HUB II", "GLOWHUB2"}, {"QW210", "QW205V2"}, {"QW220", "QW225V2"}};
    const auto other = otherNames.find(identity.product);
    EXPECT_EQ(lettersOf(row->name), other != otherNames.end() ? other->second : lettersOf(identity.product));
    const bool reached = std::ranges::any_of(identity.collections, [&](const Collection& one) {
        return one.interface == row->interface &&
               (row->usagePage == anyUsagePage || row->usagePage == one.usagePage);
    });
    EXPECT_TRUE(reached);
    EXPECT_TRUE(identity.serial.ends_with("-000001")) << identity.serial;
}

TEST(SimulatedModels, differInTheirIds)
{
    std::set<std::uint16_t> ids;
    for (const std::string& name : firmwareNames())
        EXPECT_TRUE(ids.insert(makeFirmware(name)->identity().pid).second) << name;
    EXPECT_EQ(makeFirmware("rd211"), nullptr);
}

} // namespace

} // namespace pyrux::sim
