// The models that pyruxctl knows, and the library's tables.

#include "core/models.h"
#include "models.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace pyrux::ctl {

namespace {

const ModelRow* rowOf(const Model& model)
{
    const auto row = std::ranges::find(modelRows, model.command, &ModelRow::exportName);
    return row == modelRows.end() ? nullptr : &*row;
}

TEST(Models, haveTheIdentitiesOfTheCatalogue)
{
    int known = 0;
    for (const Model& model : models()) {
        const ModelRow* const row = rowOf(model);
        if (!row) {
            EXPECT_EQ(model.command, "sysInfo");
            continue;
        }
        ++known;
        ASSERT_FALSE(model.identities.empty()) << model.command;
        EXPECT_EQ(model.identities.front().name, deviceCatalogue[std::size_t(row->deviceType)].name)
            << model.command;
        for (const Identity& identity : model.identities)
            EXPECT_TRUE(std::ranges::any_of(deviceCatalogue, [&](const DeviceRow& one) {
                return one.name == identity.name && one.vid == identity.vid && one.pid == identity.pid;
            })) << identity.name;
    }
    EXPECT_GE(known, 15);
}

TEST(Models, standInTheOrderOfTheirNames)
{
    EXPECT_EQ(models().back().command, "sysInfo");
    EXPECT_TRUE(std::ranges::is_sorted(models().begin(), models().end() - 1, {}, &Model::command));
}

} // namespace

} // namespace pyrux::ctl
