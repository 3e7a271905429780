// RD210 through the raw virtual table: what it refuses, and the record that a callback is given. Nothing here
// uses the interface's declaration.

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>

namespace pyrux::test {
namespace {

TEST(RD210Boundary, tellsWhatItRefuses)
{
    Mouse mouse;
    EXPECT_EQ(callEntry(mouse.host, 0, std::uint8_t{5}), -2);
    EXPECT_EQ(callEntry(mouse.host, 1, static_cast<std::uint8_t*>(nullptr)), -3);
}

TEST(RD210Boundary, callsBackWithTheRecord)
{
    // A callback as a host without headers writes it: event at 0, value at 4.
    static std::array<std::uint8_t, 6> seen;
    static std::atomic<int> calls;
    calls = 0;
    Mouse mouse;
    void (*const callback)(void*) = [](void* record) {
        std::memcpy(seen.data(), record, seen.size());
        ++calls;
    };
    EXPECT_EQ(callEntry(mouse.host, 21, callback), 0);
    mouse.device->send("43 01 00 00 03 C0");
    EXPECT_EQ(callEntry(mouse.host, 18), 0); // its reply comes after the event
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(hex(seen), "02 00 00 00 22 00");
    EXPECT_EQ(callEntry(mouse.host, 22), 0);
    mouse.device->send("43 01 00 00 03 C0");
    EXPECT_EQ(callEntry(mouse.host, 18), 0);
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace pyrux::test
