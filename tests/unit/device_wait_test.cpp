// Waiting for a device: what cannot be waited for. Nodes that can are in tests/hidraw.

#include "platform/device_wait.h"

#include <gtest/gtest.h>

namespace {

using pyrux::platform::DeviceWait;

TEST(DeviceWait, isNotToBeHadForOtherPaths)
{
    for (const char* path :
         {"", "nothing", "/dev/null", "/dev/hidraw", "/dev/hidraw899999", "0001:0002:01",
          R"(\\?\HID#VID_3A7E&PID_012F&MI_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030})"})
        EXPECT_EQ(DeviceWait::open(path), nullptr) << path;
}

} // namespace
