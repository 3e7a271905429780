// The registry of host objects.

#include "core/registry.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace pyrux;

/// Counts what the core does to a host object.
class Probe final : public DEV_PROBE {
public:
    std::int32_t device_pre_exit(const std::uint8_t*) override { return 0; }
    std::int32_t device_exit(const std::uint8_t* unplugged) override
    {
        calls += std::to_string(number) + ":" + std::to_string(*unplugged) + " ";
        return 0;
    }
    int number = 0;
    static inline std::string calls;
};

DeviceEntry entry(const char* path, void* host)
{
    DeviceEntry made;
    made.model = "RD210";
    made.deviceType = 31;
    made.host = host;
    made.path = path;
    return made;
}

TEST(Registry, findsAPathByteByByte)
{
    Registry registry;
    int first = 0;
    int second = 0;
    registry.add(entry("\\\\?\\HID#A", &first));
    registry.add(entry("\\\\?\\hid#a", &second));
    EXPECT_EQ(registry.size(), 2u);
    ASSERT_NE(registry.find("\\\\?\\HID#A"), nullptr);
    EXPECT_EQ(registry.find("\\\\?\\HID#A")->host, &first);
    EXPECT_EQ(registry.find("\\\\?\\hid#a")->host, &second);
    for (const char* path : {"", "\\\\?\\HID#", "\\\\?\\HID#AA", "\\\\?\\Hid#A"})
        EXPECT_EQ(registry.find(path), nullptr) << path;
}

TEST(Registry, removesOneEntry)
{
    Registry registry;
    int hosts[3];
    for (int i = 0; i < 3; ++i)
        registry.add(entry(std::to_string(i).c_str(), &hosts[i]));
    registry.remove(registry.find("1"));
    EXPECT_EQ(registry.size(), 2u);
    EXPECT_EQ(registry.find("1"), nullptr);
    EXPECT_EQ(registry.find("0")->host, &hosts[0]);
    EXPECT_EQ(registry.find("2")->host, &hosts[2]);
    registry.add(entry("1", &hosts[2]));
    EXPECT_EQ(registry.find("1")->host, &hosts[2]);
}

TEST(Registry, endsAllInTheOrderOfTheirCreation)
{
    Registry registry;
    Probe probes[3];
    Probe::calls.clear();
    for (int i = 0; i < 3; ++i) {
        probes[i].number = i;
        DeviceEntry made = entry(std::to_string(9 - i).c_str(), &probes[i]);
        made.probe = &probes[i];
        registry.add(std::move(made));
    }
    registry.exitAll();
    EXPECT_EQ(Probe::calls, "0:0 1:0 2:0 "); // the devices are still there
    EXPECT_EQ(registry.size(), 0u);
    EXPECT_EQ(registry.find("9"), nullptr);
    registry.exitAll();
    EXPECT_EQ(Probe::calls, "0:0 1:0 2:0 ");
}

} // namespace
