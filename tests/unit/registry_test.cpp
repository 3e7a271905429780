// The registry of host objects.

#include "core/registry.h"

#include <gtest/gtest.h>

#include <barrier>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace pyrux;

/// Counts what the core does to a host object.
class Probe final : public HostProbe {
public:
    std::int32_t device_pre_exit(const std::uint8_t*) override { return 0; }
    std::int32_t device_exit(const std::uint8_t*) override { return 0; }
    void announceExit() override { calls += std::to_string(number) + " "; }
    void shutDown(bool unplugged) override
    {
        left = unplugged;
        if (meet)
            meet->arrive_and_wait();
    }
    int number = 0;
    std::optional<bool> left;       ///< How it was shut down.
    std::barrier<>* meet = nullptr; ///< Where it waits for the others.
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

TEST(Registry, announcesInOrderAndEndsSideBySide)
{
    Registry registry;
    Probe probes[3];
    std::barrier meet(3); // none of them comes out before all are inside
    Probe::calls.clear();
    for (int i = 0; i < 3; ++i) {
        probes[i].number = i;
        probes[i].meet = &meet;
        DeviceEntry made = entry(std::to_string(9 - i).c_str(), &probes[i]);
        made.probe = &probes[i];
        made.unplugged = i == 1;
        registry.add(std::move(made));
    }
    registry.exitAll();
    EXPECT_EQ(Probe::calls, "0 1 2 ");
    EXPECT_EQ(probes[0].left, false); // the device is still there
    EXPECT_EQ(probes[1].left, true);
    EXPECT_EQ(probes[2].left, false);
    EXPECT_EQ(registry.size(), 0u);
    EXPECT_EQ(registry.find("9"), nullptr);
    registry.exitAll();
    EXPECT_EQ(Probe::calls, "0 1 2 ");
}

TEST(Registry, keepsThePlaceOfAnObjectThatIsBeingMade)
{
    Registry registry;
    std::future<DeviceEntry*> second;
    int host = 0;
    {
        std::unique_lock lock(registry.mutex);
        Registry::Reservation place(registry, "a");
        registry.waitUntilMade(lock, "b"); // another path waits for nobody
        second = std::async(std::launch::async, [&] {
            std::unique_lock inner(registry.mutex);
            registry.waitUntilMade(inner, "a");
            return registry.find("a");
        });
        EXPECT_EQ(registry.beingMade(), std::vector{&place});
        registry.add(entry("a", &host));
    }
    ASSERT_NE(second.get(), nullptr);
    EXPECT_TRUE(registry.beingMade().empty());
}

TEST(Registry, tellsAnObjectThatTheLibraryHasEndedMeanwhile)
{
    Registry registry;
    const std::unique_lock lock(registry.mutex);
    const Registry::Reservation place(registry, "a");
    EXPECT_FALSE(place.late());
    registry.exitAll();
    EXPECT_TRUE(place.late());
    const Registry::Reservation next(registry, "a");
    EXPECT_FALSE(next.late());
}

} // namespace
