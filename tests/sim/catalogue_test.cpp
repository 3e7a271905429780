// The simulated devices and the library's catalogue tell of the same devices, each in its own words.

#include "core/catalogue.h"
#include "simulator/models.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

namespace pyrux::sim {

namespace {

class SimulatedModel : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(All, SimulatedModel, testing::ValuesIn(firmwareNames()),
                         [](const auto& info) { return info.param; });

TEST_P(SimulatedModel, standsInTheCatalogue)
{
    const auto model = makeFirmware(GetParam());
    ASSERT_TRUE(model);
    const Identity& identity = model->identity();
    std::string name = identity.product;
    std::erase(name, ' ');
    if (name == "GLOWHUBII")
        name = "GLOWHUB2";
    const auto row = std::ranges::find_if(deviceCatalogue, [&](const auto& one) { return one.name == name; });
    ASSERT_NE(row, deviceCatalogue.end()) << name;
    EXPECT_EQ(identity.vid, row->vid);
    EXPECT_EQ(identity.pid, row->pid);
    EXPECT_EQ(identity.controlInterface, row->interface);
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
