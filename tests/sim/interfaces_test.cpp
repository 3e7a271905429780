// Devices with more than one interface, and reports of other lengths than the usual, on the bus.

#include "simulator/bus.h"
#include "tests/sim/hex.h"

#include <gtest/gtest.h>
#include <hidapi/hidapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pyrux::sim {

namespace {

/// Interface 0: 512-byte commands, 64-byte answers. Interface 1: 5-byte input reports only. Interface 2: two
/// collections, each with reports of its own ids.
class Display final : public Firmware {
public:
    const Identity& identity() const override { return self; }
    void output(Bytes) override { ADD_FAILURE() << "output is for firmwares with one channel"; }
    void outputOn(const Channel& on, Bytes payload) override
    {
        const std::lock_guard lock(mutex);
        taken.push_back({on, {payload.begin(), payload.end()}});
    }
    std::optional<std::vector<std::uint8_t>> inputReport(const Channel& from) override
    {
        if (from == Channel{1, 0})
            return std::vector<std::uint8_t>{0, 0, 0, 0, 12};
        if (from == Channel{2, 7})
            return std::vector<std::uint8_t>{0x77};
        return {};
    }
    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

    using Firmware::emit;

    std::vector<std::pair<Channel, std::vector<std::uint8_t>>> all()
    {
        const std::lock_guard lock(mutex);
        return taken;
    }

private:
    const Identity self{
        .pid = 0x0302,
        .serial = "D1",
        .product = "Display",
        .collections = {
            {.interface = 0, .reports = {{.output = 512, .input = 64}}},
            {.interface = 1, .usagePage = 0x000C, .reports = {{.output = 0, .input = 5}}},
            {.interface = 2,
             .usage = 1,
             .reports = {{.id = 6, .output = 20, .input = 20}, {.id = 7, .output = 32, .input = 3}}},
            {.interface = 2, .usage = 2, .reports = {{.id = 8, .output = 0, .input = 2}}}}};
    std::mutex mutex;
    std::vector<std::pair<Channel, std::vector<std::uint8_t>>> taken;
};

class InterfacesTest : public testing::Test {
protected:
    InterfacesTest()
    {
        paths = pathsOf(plug(display, "port"));
        for (const std::string& path : paths)
            handles.push_back(hid_open_path(path.c_str()));
    }
    ~InterfacesTest() override
    {
        for (hid_device* handle : handles)
            hid_close(handle);
        reset();
    }

    static std::vector<std::uint8_t> reportOf(std::uint8_t id, std::size_t payload, std::uint8_t first)
    {
        std::vector<std::uint8_t> bytes(1 + payload);
        bytes[0] = id;
        for (std::size_t i = 0; i < payload; ++i)
            bytes[1 + i] = std::uint8_t(first + i);
        return bytes;
    }
    int write(std::size_t handle, const std::vector<std::uint8_t>& bytes)
    {
        return hid_write(handles.at(handle), bytes.data(), bytes.size());
    }
    /// What hid_read gives at once.
    std::vector<std::uint8_t> read(std::size_t handle, std::size_t room = 600)
    {
        std::vector<std::uint8_t> buffer(room);
        const int count = hid_read_timeout(handles.at(handle), buffer.data(), buffer.size(), 0);
        buffer.resize(std::size_t(std::max(count, 0)));
        return buffer;
    }

    const std::shared_ptr<Display> display = std::make_shared<Display>();
    std::vector<std::string> paths;
    std::vector<hid_device*> handles;
};

TEST_F(InterfacesTest, haveTheirPaths)
{
    ASSERT_EQ(paths.size(), 4U);
    EXPECT_EQ(paths[0], R"(\\?\HID#VID_3A7E&PID_0302&MI_00#port#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(paths[1], R"(\\?\HID#VID_3A7E&PID_0302&MI_01#port#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(paths[2],
              R"(\\?\HID#VID_3A7E&PID_0302&MI_02&Col01#port#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_EQ(paths[3],
              R"(\\?\HID#VID_3A7E&PID_0302&MI_02&Col02#port#{4d1e55b2-f16f-11cf-88cb-001111000030})");
    EXPECT_TRUE(pathsOf("elsewhere").empty());
}

TEST_F(InterfacesTest, takeReportsOf512Bytes)
{
    const auto sent = reportOf(0, 512, 0x10);
    EXPECT_EQ(write(0, sent), 513);
    ASSERT_EQ(display->all().size(), 1U);
    EXPECT_EQ(display->all()[0].first, (Channel{0, 0}));
    EXPECT_EQ(display->all()[0].second, std::vector<std::uint8_t>(sent.begin() + 1, sent.end()));
    // A longer one is cut to the report's length.
    EXPECT_EQ(write(0, reportOf(0, 600, 0)), 601);
    EXPECT_EQ(display->all()[1].second.size(), 512U);
    const auto traffic = takeTraffic(paths[0]);
    ASSERT_EQ(traffic.size(), 2U);
    EXPECT_EQ(traffic[0].bytes, sent);
}

TEST_F(InterfacesTest, giveEachItsOwnReports)
{
    display->emit({0, 0}, bytesOf("A1 A2"));
    display->emit({1, 0}, bytesOf("01 02 03 04 05 06 07"));
    EXPECT_EQ(read(0).size(), 64U);
    EXPECT_EQ(read(1), bytesOf("01 02 03 04 05"));
    EXPECT_TRUE(read(0).empty());
    EXPECT_TRUE(read(1).empty());
    // There is no such report, and no such interface.
    display->emit({1, 3}, bytesOf("01"));
    display->emit({4, 0}, bytesOf("01"));
    for (std::size_t handle = 0; handle < handles.size(); ++handle)
        EXPECT_TRUE(read(handle).empty()) << handle;
}

TEST_F(InterfacesTest, refuseWhatTheyDoNotTake)
{
    EXPECT_EQ(write(1, reportOf(0, 5, 1)), -1);
    EXPECT_EQ(write(2, reportOf(0, 20, 1)), -1); // 0 is not among its ids
    EXPECT_EQ(write(2, reportOf(8, 2, 1)), -1);  // the other collection's
    EXPECT_EQ(write(3, reportOf(8, 2, 1)), -1);  // an input report
    EXPECT_TRUE(display->all().empty());
}

TEST_F(InterfacesTest, tellReportsByTheirIds)
{
    EXPECT_EQ(write(2, reportOf(6, 20, 1)), 21);
    EXPECT_EQ(write(2, reportOf(7, 32, 1)), 33);
    ASSERT_EQ(display->all().size(), 2U);
    EXPECT_EQ(display->all()[0].first, (Channel{2, 6}));
    EXPECT_EQ(display->all()[0].second.size(), 20U);
    EXPECT_EQ(display->all()[1].first, (Channel{2, 7}));
    EXPECT_EQ(display->all()[1].second.size(), 32U);

    display->emit({2, 7}, bytesOf("AA BB"));
    display->emit({2, 8}, bytesOf("CC"));
    EXPECT_EQ(read(2), bytesOf("07 AA BB 00"));
    EXPECT_TRUE(read(2).empty());
    EXPECT_EQ(read(3), bytesOf("08 CC 00"));
    EXPECT_TRUE(read(3).empty());
}

TEST_F(InterfacesTest, countTheirTrafficApart)
{
    write(0, reportOf(0, 64, 1));
    write(2, reportOf(7, 32, 1));
    display->emit({1, 0}, bytesOf("05"));
    read(1);
    EXPECT_EQ(takeWritten(paths[1]), "");
    EXPECT_EQ(takeWritten(paths[0]).substr(0, 11), "01 02 03 04");
    EXPECT_EQ(takeWritten(paths[2]).substr(0, 12), "[07 01 02 03");
    EXPECT_EQ(takeTraffic(paths[3]).size(), 0U); // the same interface
    EXPECT_EQ(readWakeups(paths[1]), 1);
    EXPECT_EQ(readWakeups(paths[0]), 0);
}

TEST_F(InterfacesTest, takeInjectedReportsAsTheyAre)
{
    inject(paths[1], bytesOf("08"));
    EXPECT_EQ(read(1), bytesOf("08"));
    inject(paths[2], bytesOf("08 01"));
    EXPECT_TRUE(read(2).empty());
    EXPECT_EQ(read(3), bytesOf("08 01"));
    EXPECT_TRUE(read(0).empty());
}

TEST_F(InterfacesTest, areAskedForAnInputReport)
{
    const auto ask = [&](std::size_t handle, std::uint8_t id, std::size_t room) {
        std::vector<std::uint8_t> buffer(room, 0xEE);
        buffer.front() = id;
        const int count = hid_get_input_report(handles.at(handle), buffer.data(), buffer.size());
        return std::pair(count, buffer);
    };
    // The model's own answer.
    EXPECT_EQ(ask(1, 0, 6), std::pair(6, bytesOf("00 00 00 00 00 0C")));
    EXPECT_EQ(ask(1, 0, 3), std::pair(3, bytesOf("00 00 00")));
    // Filled to the report's length.
    EXPECT_EQ(ask(2, 7, 6), std::pair(4, bytesOf("07 77 00 00 EE EE")));
    // Where it has none, what it sent last under that id.
    display->emit({2, 6}, bytesOf("01 02"));
    display->emit({2, 7}, bytesOf("09"));
    EXPECT_EQ(ask(2, 6, 3), std::pair(3, bytesOf("06 01 02")));
    EXPECT_EQ(ask(2, 9, 3).first, -1);
    EXPECT_EQ(ask(2, 8, 3).first, -1); // the other collection's
}

TEST_F(InterfacesTest, keepManyReportsOfTheirLength)
{
    for (int i = 0; i < 65; ++i)
        display->emit({1, 0}, std::vector<std::uint8_t>(5, std::uint8_t(i)));
    for (int i = 1; i < 65; ++i)
        EXPECT_EQ(read(1), std::vector<std::uint8_t>(5, std::uint8_t(i))) << i; // the oldest gave way
    EXPECT_TRUE(read(1).empty());
}

} // namespace

} // namespace pyrux::sim
