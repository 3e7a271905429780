#include "simulator/bus.h"
#include "tests/sim/hex.h"

#include <gtest/gtest.h>
#include <hidapi/hidapi.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace pyrux::sim {

namespace {

using namespace std::chrono_literals;

/// A device for tests: echoes every payload.
class Echo : public Firmware {
public:
    const Identity& identity() const override
    {
        if (whenIdentified)
            whenIdentified();
        return own;
    }

    void powerOn() override { ++powers; }

    void output(Bytes payload) override
    {
        overlapped = overlapped || busy.exchange(true);
        {
            const std::lock_guard lock(mutex);
            taken.push_back(textOf(payload));
        }
        emit(payload);
        busy = false;
    }

    bool happen(const std::string& event, const std::vector<int>& values) override
    {
        if (event != "say" || values.size() != 1)
            return false;
        emit({std::uint8_t(values[0])});
        return true;
    }

    std::vector<std::string> events() const override { return {"say BYTE"}; }

    std::vector<std::string> all()
    {
        const std::lock_guard lock(mutex);
        return taken;
    }

    Identity own{.pid = 0x0301,
                 .release = 0x0207,
                 .serial = "E1",
                 .product = "Echo",
                 .collections = {{.interface = 0, .usagePage = 1, .usage = 6}, {.interface = 2}},
                 .controlInterface = 2};
    std::function<void()> whenIdentified;
    std::atomic<int> powers = 0;
    std::atomic<bool> overlapped = false;

private:
    std::atomic<bool> busy = false;
    std::mutex mutex;
    std::vector<std::string> taken;
};

std::vector<std::uint8_t> report(const std::string& payload)
{
    std::vector<std::uint8_t> bytes = bytesOf("00 " + payload);
    bytes.resize(65);
    return bytes;
}

int write(hid_device* device, const std::string& payload)
{
    const auto bytes = report(payload);
    return hid_write(device, bytes.data(), bytes.size());
}

/// What one read gives: the bytes without the zeros at the end, or the number that came instead.
std::string read(hid_device* device, int limitMs = 5000)
{
    std::array<std::uint8_t, 65> buffer{};
    const int count = hid_read_timeout(device, buffer.data(), buffer.size(), limitMs);
    return count > 0 ? textOf(Bytes(buffer).first(std::size_t(count))) : std::to_string(count);
}

std::vector<std::string> paths(unsigned short vid = 0, unsigned short pid = 0)
{
    std::vector<std::string> all;
    hid_device_info* const list = hid_enumerate(vid, pid);
    for (const hid_device_info* one = list; one; one = one->next)
        all.emplace_back(one->path);
    hid_free_enumeration(list);
    return all;
}

std::string lowered(std::string text)
{
    for (char& c : text)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

class StandinTest : public testing::Test {
protected:
    StandinTest()
    {
        reset();
        echo = std::make_shared<Echo>();
        path = plug(echo);
        device = hid_open_path(path.c_str());
    }

    ~StandinTest() override
    {
        pyrux_sim_trace(nullptr);
        reset();
        if (device)
            hid_close(device);
        EXPECT_EQ(openHandles(), 0);
    }

    void close() { hid_close(std::exchange(device, nullptr)); }

    /// A call on a thread of its own. It has the handle in its hands when this returns, if the call is a
    /// read.
    std::future<std::string> readElsewhere(int limitMs = -1)
    {
        const int before = readWakeups(path);
        auto result = std::async(std::launch::async, [this, limitMs] { return read(device, limitMs); });
        while (readWakeups(path) == before)
            std::this_thread::yield();
        return result;
    }

    std::future<int> writeElsewhere(const std::string& payload, int inside)
    {
        auto result = std::async(std::launch::async, [this, payload] { return write(device, payload); });
        EXPECT_TRUE(awaitWritersInside(inside));
        return result;
    }

    std::shared_ptr<Echo> echo;
    std::string path;
    hid_device* device = nullptr;
};

TEST_F(StandinTest, listsAnEntryForEachCollection)
{
    const std::string second = plug(makeFirmware("rd210"), "port-7");
    EXPECT_EQ(second, "\\\\?\\HID#VID_3A7E&PID_012F&MI_01#port-7#{4d1e55b2-f16f-11cf-88cb-001111000030}");

    hid_device_info* const list = hid_enumerate(0, 0);
    std::vector<const hid_device_info*> entries;
    for (const hid_device_info* one = list; one; one = one->next)
        entries.push_back(one);
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[0]->interface_number, 0);
    EXPECT_EQ(entries[0]->usage_page, 1);
    EXPECT_EQ(entries[0]->usage, 6);
    EXPECT_EQ(entries[1]->path, path);
    EXPECT_EQ(entries[1]->vendor_id, 0x3A7E);
    EXPECT_EQ(entries[1]->product_id, 0x0301);
    EXPECT_EQ(entries[1]->release_number, 0x0207);
    EXPECT_EQ(entries[1]->interface_number, 2);
    EXPECT_EQ(entries[1]->usage_page, 0xFF00);
    EXPECT_EQ(entries[1]->usage, 1);
    EXPECT_EQ(entries[1]->bus_type, HID_API_BUS_USB);
    EXPECT_STREQ(entries[1]->serial_number, L"E1");
    EXPECT_STREQ(entries[1]->product_string, L"Echo");
    EXPECT_STREQ(entries[1]->manufacturer_string, L"Tessel Works");
    EXPECT_STREQ(entries[2]->path,
                 "\\\\?\\HID#VID_3A7E&PID_012F&MI_00#port-7#{4d1e55b2-f16f-11cf-88cb-001111000030}");
    EXPECT_EQ(entries[3]->path, second);
    hid_free_enumeration(list);
}

TEST_F(StandinTest, listsByVendorAndProduct)
{
    plug(makeFirmware("rd210"));
    EXPECT_EQ(paths(0x3A7E, 0).size(), 4U);
    EXPECT_EQ(paths(0x3A7E, 0x0301).size(), 2U);
    EXPECT_EQ(paths(0, 0x012F).size(), 2U);
    EXPECT_EQ(paths(0x3A7F, 0).size(), 0U);
    EXPECT_EQ(paths(0x3A7E, 0x0302).size(), 0U);
    EXPECT_STREQ(hid_error(nullptr), L"No HID devices found in the system.");
}

TEST_F(StandinTest, writesPathsByInterfaceAndCollection)
{
    const auto other = std::make_shared<Echo>();
    other->own.vid = 0x04D9;
    other->own.pid = 0x026D;
    other->own.collections = {{.interface = -1}};
    other->own.controlInterface = -1;
    EXPECT_EQ(plug(other, "a"), "\\\\?\\HID#VID_04D9&PID_026D#a#{4d1e55b2-f16f-11cf-88cb-001111000030}");

    other->own.collections = {{.interface = 3}, {.interface = 4}, {.interface = 4, .usage = 2}};
    other->own.controlInterface = 4;
    EXPECT_EQ(plug(other, "b"),
              "\\\\?\\HID#VID_04D9&PID_026D&MI_04&Col01#b#{4d1e55b2-f16f-11cf-88cb-001111000030}");
    const auto all = paths(0x04D9);
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[1], "\\\\?\\HID#VID_04D9&PID_026D&MI_03#b#{4d1e55b2-f16f-11cf-88cb-001111000030}");
    EXPECT_EQ(all[3], "\\\\?\\HID#VID_04D9&PID_026D&MI_04&Col02#b#{4d1e55b2-f16f-11cf-88cb-001111000030}");
}

TEST_F(StandinTest, givesEachPlugAPathOfItsOwn)
{
    const std::string first = plug(std::make_shared<Echo>());
    unplug(first);
    const std::string second = plug(std::make_shared<Echo>());
    EXPECT_NE(first, second);
    EXPECT_NE(first.find("#sim-"), std::string::npos);
    reset();
    EXPECT_NE(plug(std::make_shared<Echo>()), second);
}

TEST_F(StandinTest, takesADeviceBackAtItsOldPort)
{
    const std::string first = plug(echo, "port-1");
    hid_device* const old = hid_open_path(first.c_str());
    EXPECT_EQ(echo->powers, 2);
    unplug(first);
    EXPECT_EQ(hid_open_path(first.c_str()), nullptr);
    EXPECT_EQ(plug(echo, "port-1"), first);
    EXPECT_EQ(echo->powers, 3);
    EXPECT_EQ(paths().size(), 4U);
    hid_device* const now = hid_open_path(first.c_str());
    ASSERT_NE(now, nullptr);
    EXPECT_EQ(write(now, "12"), 65);
    EXPECT_EQ(read(now), "12");
    EXPECT_EQ(write(old, "13"), -1);
    hid_close(old);
    hid_close(now);
}

TEST_F(StandinTest, pushesOutWhatWasAtThePort)
{
    const std::string first = plug(std::make_shared<Echo>(), "port-1");
    hid_device* const old = hid_open_path(first.c_str());
    EXPECT_EQ(plug(std::make_shared<Echo>(), "PORT-1"),
              std::string(first).replace(first.find("port"), 4, "PORT"));
    EXPECT_EQ(read(old), "-1");
    EXPECT_EQ(paths().size(), 4U);
    hid_close(old);
}

TEST_F(StandinTest, opensPathsWithoutRegardToCase)
{
    hid_device* const again = hid_open_path(lowered(path).c_str());
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(write(again, "01 02"), 65);
    EXPECT_EQ(read(again), "01 02");
    EXPECT_EQ(openHandles(), 2);
    hid_close(again);
    EXPECT_EQ(openHandles(), 1);
}

TEST_F(StandinTest, opensNothingElse)
{
    for (const std::string& nowhere :
         {std::string(), path.substr(1), path + "x", std::string("/dev/hidraw0"), std::string(5000, 'x')}) {
        EXPECT_EQ(hid_open_path(nowhere.c_str()), nullptr);
        EXPECT_STREQ(hid_error(nullptr), L"No such device");
    }
    EXPECT_EQ(hid_open_path(nullptr), nullptr);
    unplug(path);
    EXPECT_EQ(hid_open_path(path.c_str()), nullptr);
    EXPECT_EQ(openHandles(), 1);
}

TEST_F(StandinTest, opensByVendorProductAndSerial)
{
    EXPECT_EQ(hid_open(0x3A7E, 0x0301, L"E2"), nullptr);
    EXPECT_EQ(hid_open(0x3A7E, 0x0302, nullptr), nullptr);
    hid_device* const opened = hid_open(0x3A7E, 0x0301, L"E1");
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(hid_get_device_info(opened)->interface_number, 0);
    hid_close(opened);
}

TEST_F(StandinTest, carriesPayloadsToTheModelAndBack)
{
    EXPECT_EQ(write(device, "51 00 00 00 04"), 65);
    EXPECT_EQ(echo->all(), std::vector<std::string>{"51 00 00 00 04"});
    std::array<std::uint8_t, 65> buffer;
    buffer.fill(0xEE);
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 64);
    EXPECT_EQ(textOf(Bytes(buffer).first(64)), "51 00 00 00 04");
    EXPECT_EQ(buffer[64], 0xEE);
}

TEST_F(StandinTest, cutsAReadToItsBuffer)
{
    write(device, "01 02 03 04");
    std::array<std::uint8_t, 4> buffer{0, 0, 0xEE, 0xEE};
    EXPECT_EQ(hid_read(device, buffer.data(), 2), 2);
    EXPECT_EQ(textOf(buffer), "01 02 EE EE");
    EXPECT_EQ(read(device, 0), "0");
}

TEST_F(StandinTest, takesReportsOfOtherLengthAndId)
{
    const auto short3 = bytesOf("00 0A 0B");
    EXPECT_EQ(hid_write(device, short3.data(), short3.size()), 3);
    auto marked = report("0C");
    marked[0] = 0xFF;
    EXPECT_EQ(hid_write(device, marked.data(), marked.size()), 65);
    std::vector<std::uint8_t> longer(80, 0x11);
    EXPECT_EQ(hid_write(device, longer.data(), longer.size()), 80);
    EXPECT_EQ(hid_write(device, longer.data(), 0), -1);
    EXPECT_EQ(hid_write(device, nullptr, 65), -1);
    const auto all = echo->all();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0], "0A 0B");
    EXPECT_EQ(all[1], "0C");
    EXPECT_EQ(all[2].size(), 64 * 3 - 1U);
}

TEST_F(StandinTest, takesCommandsOnTheControlInterfaceOnly)
{
    hid_device* const boot = hid_open_path(paths().front().c_str());
    ASSERT_NE(boot, nullptr);
    EXPECT_EQ(write(boot, "01"), -1);
    EXPECT_EQ(echo->all().size(), 0U);
    write(device, "02");
    EXPECT_EQ(read(boot, 0), "0");
    EXPECT_EQ(read(device, 0), "02");
    hid_close(boot);
}

TEST_F(StandinTest, waitsAsTheReadAsks)
{
    EXPECT_EQ(read(device, 0), "0");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(read(device, 30), "0");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
    EXPECT_EQ(hid_set_nonblocking(device, 1), 0);
    std::array<std::uint8_t, 65> buffer{};
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 0);
    EXPECT_EQ(hid_set_nonblocking(device, 0), 0);
    auto waiting =
        std::async(std::launch::async, [&] { return hid_read(device, buffer.data(), buffer.size()); });
    EXPECT_EQ(waiting.wait_for(20ms), std::future_status::timeout);
    EXPECT_TRUE(echo->happen("say", {7}));
    EXPECT_EQ(waiting.get(), 64);
    EXPECT_EQ(buffer[0], 7);
}

TEST_F(StandinTest, wakesAReadThatWaits)
{
    auto waiting = readElsewhere();
    write(device, "21");
    EXPECT_EQ(waiting.get(), "21");
    auto timed = readElsewhere(60000);
    inject(path, {0x22});
    EXPECT_EQ(timed.get(), "22");
}

TEST_F(StandinTest, keepsSixtyFourReportsForEachHandle)
{
    hid_device* const other = hid_open_path(path.c_str());
    for (int i = 1; i <= 65; ++i)
        echo->happen("say", {i});
    EXPECT_EQ(read(other, 0), "02"); // the oldest gave way
    for (int i = 2; i <= 65; ++i) {
        char expected[4];
        std::snprintf(expected, sizeof expected, "%02X", i);
        EXPECT_EQ(read(device, 0), expected);
    }
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_EQ(read(other, 0), "03");
    hid_close(other);
}

TEST_F(StandinTest, sendsNothingToHandlesOfLater)
{
    echo->happen("say", {1});
    hid_device* const later = hid_open_path(path.c_str());
    EXPECT_EQ(read(later, 0), "0");
    hid_close(later);
}

TEST_F(StandinTest, failsAtOnceWhenUnplugged)
{
    echo->happen("say", {1});
    hid_device* const other = hid_open_path(path.c_str());
    auto waiting = std::async(std::launch::async, [&] { return read(other, -1); });
    while (readWakeups(path) == 0)
        std::this_thread::yield();
    unplug(path);
    EXPECT_EQ(waiting.get(), "-1");
    EXPECT_EQ(read(device, -1), "-1"); // what had arrived is lost
    EXPECT_EQ(read(device, 0), "-1");
    EXPECT_STREQ(hid_error(device), L"No such device");
    EXPECT_EQ(write(device, "01"), -1);
    EXPECT_STREQ(hid_error(device), L"No such device");
    EXPECT_EQ(echo->all().size(), 0U);
    EXPECT_EQ(paths().size(), 0U);
    echo->happen("say", {1});
    EXPECT_EQ(read(device, 0), "-1");
    EXPECT_EQ(takeTraffic(path).size(), 1U); // what came before
    hid_close(other);
}

TEST_F(StandinTest, endsAReadWhoseHandleIsClosed)
{
    auto waiting = readElsewhere();
    close();
    EXPECT_EQ(waiting.get(), "-1");
    EXPECT_EQ(misuses(), 1); // hidapi would have freed what the read uses
}

TEST_F(StandinTest, seesHandlesThatAreNotOpen)
{
    hid_device* const old = device;
    close();
    EXPECT_EQ(misuses(), 0);
    std::array<std::uint8_t, 65> buffer{};
    EXPECT_EQ(hid_write(old, buffer.data(), buffer.size()), -1);
    EXPECT_EQ(hid_read(old, buffer.data(), buffer.size()), -1);
    EXPECT_EQ(hid_read_timeout(old, buffer.data(), buffer.size(), -1), -1);
    EXPECT_EQ(hid_set_nonblocking(old, 1), -1);
    EXPECT_EQ(hid_get_input_report(old, buffer.data(), buffer.size()), -1);
    EXPECT_EQ(hid_get_device_info(old), nullptr);
    EXPECT_STREQ(hid_error(old), L"Device handle is not open");
    hid_close(old);
    EXPECT_EQ(misuses(), 8);
    hid_device* const next = hid_open_path(path.c_str());
    EXPECT_NE(next, old);
    hid_close(next);
    hid_close(nullptr);
    EXPECT_EQ(misuses(), 8);
    reset();
    EXPECT_EQ(misuses(), 0);
}

TEST_F(StandinTest, seesCallsThatOverlap)
{
    std::promise<void> inside;
    std::promise<void> leave;
    std::atomic<bool> armed = true;
    echo->whenIdentified = [&] {
        if (!armed.exchange(false))
            return;
        inside.set_value();
        leave.get_future().wait();
    };
    auto list = std::async(std::launch::async, [] { return paths().size(); });
    inside.get_future().wait();
    EXPECT_EQ(overlaps(), 0);
    hid_init();
    EXPECT_EQ(overlaps(), 1);
    close();
    EXPECT_EQ(overlaps(), 2);
    leave.set_value();
    EXPECT_EQ(list.get(), 2U);
    echo->whenIdentified = nullptr;
    hid_init();
    EXPECT_EQ(overlaps(), 2);
    reset();
    EXPECT_EQ(overlaps(), 0);
}

TEST_F(StandinTest, takesItsTimeToWrite)
{
    setConduct(path, {.writeTime = 30ms});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(write(device, "01"), 65);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);
    EXPECT_EQ(read(device, 0), "01");
}

TEST_F(StandinTest, holdsStalledWritesUntilTheyAreReleased)
{
    setConduct(path, {.writeTime = std::chrono::hours(10000000)});
    auto first = writeElsewhere("01", 1);
    auto second = writeElsewhere("02", 2);
    EXPECT_EQ(writersInside(), 2);
    EXPECT_EQ(echo->all().size(), 0U);
    setConduct(path, {});
    auto third = writeElsewhere("03", 3);
    releaseWrites(path);
    EXPECT_EQ(first.get(), 65);
    EXPECT_EQ(second.get(), 65);
    EXPECT_EQ(third.get(), 65);
    EXPECT_EQ(writersInside(), 0);
    EXPECT_EQ(echo->all(), (std::vector<std::string>{"01", "02", "03"}));
    EXPECT_EQ(write(device, "04"), 65);
}

TEST_F(StandinTest, stallsAgainAfterARelease)
{
    setConduct(path, {.writeTime = 1h});
    releaseWrites(path);
    auto first = writeElsewhere("01", 1);
    releaseWrites(path);
    EXPECT_EQ(first.get(), 65);
    auto second = writeElsewhere("02", 1);
    releaseWrites(path);
    EXPECT_EQ(second.get(), 65);
}

TEST_F(StandinTest, endsStalledWritesOfADeviceThatGoes)
{
    setConduct(path, {.writeTime = 1h});
    auto first = writeElsewhere("01", 1);
    auto second = writeElsewhere("02", 2);
    unplug(path);
    EXPECT_EQ(first.get(), -1);
    EXPECT_EQ(second.get(), -1);
    EXPECT_EQ(writersInside(), 0);
    EXPECT_EQ(echo->all().size(), 0U);

    path = plug(echo);
    hid_device* const again = hid_open_path(path.c_str());
    setConduct(path, {.writeTime = 1h});
    auto third = std::async(std::launch::async, [&] { return write(again, "03"); });
    EXPECT_TRUE(awaitWritersInside(1));
    reset();
    EXPECT_EQ(third.get(), -1);
    hid_close(again);
}

TEST_F(StandinTest, doesNotWaitForWritersThatDoNotCome)
{
    EXPECT_FALSE(awaitWritersInside(1, 10ms));
    EXPECT_TRUE(awaitWritersInside(0, 0ms));
}

TEST_F(StandinTest, answersLate)
{
    setConduct(path, {.replyTime = 50ms});
    const auto begin = std::chrono::steady_clock::now();
    write(device, "01");
    write(device, "02");
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_EQ(read(device), "01");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
    EXPECT_EQ(read(device), "02");
    write(device, "03");
    unplug(path);
    EXPECT_EQ(read(device), "-1");
}

TEST_F(StandinTest, answersEachReplyAtItsOwnTime)
{
    setConduct(path, {.replyTime = 1h});
    write(device, "01");
    setConduct(path, {.replyTime = 20ms});
    write(device, "02");
    EXPECT_EQ(read(device), "02"); // not after the one of an hour
}

TEST_F(StandinTest, fallsSilent)
{
    setConduct(path, {.silent = true});
    EXPECT_EQ(write(device, "01"), 65);
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_EQ(echo->all().size(), 1U);
    inject(path, {0x09});
    EXPECT_EQ(read(device, 0), "09");
    setConduct(path, {});
    write(device, "02");
    EXPECT_EQ(read(device, 0), "02");
}

TEST_F(StandinTest, refusesWrites)
{
    setConduct(path, {.refuseWrites = true});
    EXPECT_EQ(write(device, "01"), -1);
    EXPECT_STREQ(hid_error(device), L"Input/output error");
    EXPECT_EQ(echo->all().size(), 0U);
    EXPECT_EQ(takeWritten(path), "");
    setConduct(path, {});
    EXPECT_EQ(write(device, "02"), 65);
    EXPECT_STREQ(hid_error(device), L"Success");
}

TEST_F(StandinTest, failsReads)
{
    auto waiting = readElsewhere();
    setConduct(path, {.failReads = true});
    EXPECT_EQ(waiting.get(), "-1");
    EXPECT_EQ(read(device, -1), "-1");
    EXPECT_STREQ(hid_error(device), L"Input/output error");
    EXPECT_EQ(write(device, "01"), 65);
    EXPECT_EQ(read(device, 0), "-1");
    setConduct(path, {});
    EXPECT_EQ(read(device, 0), "01");
}

TEST_F(StandinTest, turnsReportsIntoNoise)
{
    setConduct(path, {.garbage = true});
    const auto sent = report("01 02 03");
    std::array<std::uint8_t, 64> before{};
    for (int i = 0; i < 100; ++i) {
        write(device, "01 02 03");
        std::array<std::uint8_t, 64> noise{};
        ASSERT_EQ(hid_read(device, noise.data(), noise.size()), 64);
        for (std::size_t at = 0; at < noise.size(); ++at)
            EXPECT_NE(noise[at], sent[at + 1]) << at;
        EXPECT_NE(noise, before);
        before = noise;
    }
}

TEST_F(StandinTest, cutsReports)
{
    setConduct(path, {.shortReads = 3});
    write(device, "01 02 03 04 05");
    std::array<std::uint8_t, 65> buffer{};
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 3);
    EXPECT_EQ(textOf(buffer), "01 02 03");
    setConduct(path, {.shortReads = 0});
    write(device, "01");
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 0);
    setConduct(path, {});
    inject(path, {1, 2});
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 2);
    inject(path, std::vector<std::uint8_t>(100, 1));
    EXPECT_EQ(hid_read(device, buffer.data(), buffer.size()), 64);
}

TEST_F(StandinTest, recordsTheTraffic)
{
    write(device, "41 80");
    setConduct(path, {.shortReads = 2});
    write(device, "52 22");
    const auto traffic = takeTraffic(path);
    ASSERT_EQ(traffic.size(), 4U);
    EXPECT_EQ(traffic[0].direction, WireRecord::Direction::toDevice);
    EXPECT_EQ(traffic[0].bytes, report("41 80"));
    EXPECT_EQ(traffic[1].direction, WireRecord::Direction::toHost);
    EXPECT_EQ(traffic[1].bytes.size(), 64U);
    EXPECT_EQ(textOf(traffic[1].bytes), "41 80");
    EXPECT_EQ(traffic[2].bytes, report("52 22"));
    EXPECT_EQ(traffic[3].bytes, bytesOf("52 22"));
    EXPECT_EQ(takeTraffic(path).size(), 0U);
}

TEST_F(StandinTest, waitsForTraffic)
{
    auto traffic = std::async(std::launch::async, [&] { return takeTraffic(path, 3); });
    write(device, "01");
    EXPECT_EQ(traffic.wait_for(20ms), std::future_status::timeout);
    echo->happen("say", {2});
    EXPECT_EQ(traffic.get().size(), 3U);
    EXPECT_EQ(takeTraffic(path, 1, 10ms).size(), 0U);
}

TEST_F(StandinTest, keepsTheNewestTraffic)
{
    for (int i = 0; i < 65536; ++i)
        echo->happen("say", {i & 0xFF});
    echo->happen("say", {0x77});
    const auto traffic = takeTraffic(path);
    ASSERT_EQ(traffic.size(), 65536U);
    EXPECT_EQ(traffic.front().bytes[0], 1);
    EXPECT_EQ(traffic.back().bytes[0], 0x77);
}

TEST_F(StandinTest, tellsWhatWasWritten)
{
    EXPECT_EQ(takeWritten(path), "");
    write(device, "41 80");
    write(device, "51 00 00 00 C4");
    write(device, "");
    EXPECT_EQ(takeWritten(path), "41 80 | 51 00 00 00 C4 | 00");
    EXPECT_EQ(takeWritten(path), "");
    const auto short3 = bytesOf("00 0A 00");
    hid_write(device, short3.data(), short3.size());
    auto marked = std::vector<std::uint8_t>(65, 0);
    marked[0] = 0xFF;
    hid_write(device, marked.data(), marked.size());
    std::string expected = "[00 0A 00] | [FF";
    for (int i = 1; i < 65; ++i)
        expected += " 00";
    EXPECT_EQ(takeWritten(path), expected + "]");
    write(device, "01");
    unplug(path);
    EXPECT_EQ(takeWritten(lowered(path)), "01");
    EXPECT_EQ(takeWritten("elsewhere"), "");
}

TEST_F(StandinTest, givesTheNewestInputReport)
{
    std::array<std::uint8_t, 6> buffer{0, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    write(device, "01 02 03 04 05 06");
    EXPECT_EQ(hid_get_input_report(device, buffer.data(), 5), 5);
    EXPECT_EQ(textOf(buffer), "00 01 02 03 04 EE");
    std::array<std::uint8_t, 70> room{};
    EXPECT_EQ(hid_get_input_report(device, room.data(), room.size()), 65);
    setConduct(path, {.failReads = true});
    EXPECT_EQ(hid_get_input_report(device, buffer.data(), 5), -1);
    setConduct(path, {});
    unplug(path);
    EXPECT_EQ(hid_get_input_report(device, buffer.data(), 5), -1);
}

TEST_F(StandinTest, countsReads)
{
    EXPECT_EQ(readWakeups(path), 0);
    read(device, 0);
    hid_set_nonblocking(device, 1);
    std::array<std::uint8_t, 65> buffer{};
    hid_read(device, buffer.data(), buffer.size());
    EXPECT_EQ(readWakeups(path), 2);
    EXPECT_EQ(readWakeups("elsewhere"), 0);
}

TEST_F(StandinTest, tellsWhetherItsReaderHasCaughtUp)
{
    EXPECT_FALSE(awaitReader(path, 0ms)); // nobody has read
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_TRUE(awaitReader(path, 0ms));
    echo->happen("say", {1});
    EXPECT_FALSE(awaitReader(path, 0ms));
    EXPECT_EQ(read(device, 0), "01");
    EXPECT_FALSE(awaitReader(path, 0ms)); // it may still be at work on that one
    auto next = readElsewhere(60000);
    EXPECT_TRUE(awaitReader(path));
    echo->happen("say", {2});
    EXPECT_EQ(next.get(), "02");
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_TRUE(awaitReader(path, 0ms));
    EXPECT_FALSE(awaitReader("elsewhere", 0ms));
}

TEST_F(StandinTest, waitsForThoseOnlyWhoRead)
{
    hid_device* const writing = hid_open_path(path.c_str());
    EXPECT_EQ(read(device, 0), "0");
    echo->happen("say", {1});
    EXPECT_EQ(read(device, 0), "01");
    EXPECT_EQ(read(device, 0), "0");
    EXPECT_TRUE(awaitReader(path, 0ms));
    EXPECT_EQ(read(writing, 0), "01");
    EXPECT_FALSE(awaitReader(path, 0ms)); // now it is another reader
    hid_close(writing);
    EXPECT_TRUE(awaitReader(path, 0ms));
}

TEST_F(StandinTest, tellsTheTextsOfADevice)
{
    std::array<wchar_t, 32> text{};
    EXPECT_EQ(hid_get_manufacturer_string(device, text.data(), text.size()), 0);
    EXPECT_STREQ(text.data(), L"Tessel Works");
    EXPECT_EQ(hid_get_product_string(device, text.data(), text.size()), 0);
    EXPECT_STREQ(text.data(), L"Echo");
    EXPECT_EQ(hid_get_serial_number_string(device, text.data(), 2), 0);
    EXPECT_STREQ(text.data(), L"E");
    EXPECT_EQ(hid_get_indexed_string(device, 1, text.data(), text.size()), -1);
    EXPECT_EQ(hid_get_device_info(device)->path, path);
    EXPECT_EQ(hid_get_device_info(device), hid_get_device_info(device));
    std::array<std::uint8_t, 65> buffer{};
    EXPECT_EQ(hid_send_feature_report(device, buffer.data(), buffer.size()), -1);
    EXPECT_EQ(hid_get_feature_report(device, buffer.data(), buffer.size()), -1);
    EXPECT_STREQ(hid_error(device), L"Not supported");
}

TEST_F(StandinTest, isOfTheVersionOfItsHeader)
{
    EXPECT_STREQ(hid_version_str(), HID_API_VERSION_STR);
    EXPECT_EQ(hid_version()->major, HID_API_VERSION_MAJOR);
    EXPECT_EQ(hid_version()->minor, HID_API_VERSION_MINOR);
    EXPECT_EQ(hid_version()->patch, HID_API_VERSION_PATCH);
    EXPECT_EQ(hid_init(), 0);
    EXPECT_EQ(hid_exit(), 0);
}

TEST_F(StandinTest, refusesAFirmwareWithoutCollections)
{
    const auto bare = std::make_shared<Echo>();
    bare->own.collections.clear();
    EXPECT_EQ(plug(bare), "");
    EXPECT_EQ(plug(nullptr), "");
    EXPECT_EQ(paths().size(), 2U);
}

/// What the trace of a test has seen: "direction bytes".
std::vector<std::string>& traced()
{
    static std::vector<std::string> lines;
    return lines;
}

/// Writes a zone into the text that `context` is.
void showZone(void* context, const char* name, const unsigned char* colors, int leds)
{
    *static_cast<std::string*>(context) += std::string(name) + ": " + std::to_string(leds) + " " +
                                           textOf({colors, std::size_t(3 * leds)}) + "\n";
}

TEST_F(StandinTest, showsTheLightsOfADeviceToPlainFunctions)
{
    std::array<char, 1024> path{};
    ASSERT_EQ(pyrux_sim_plug("playdock", path.data()), 0);
    hid_device* const dock = hid_open_path(path.data());
    write(dock, "80 01 02 01");
    write(dock, "80 09 02 01 0A 0B 0C");
    write(dock, "80 11 02 FF 01 02 03");
    std::string shown;
    EXPECT_EQ(pyrux_sim_picture(path.data(), showZone, &shown), 4);
    EXPECT_EQ(shown, "zone 1: 1 \nzone 2: 1 0A 0B 0C\nzone 3: 1 \nbottom: 1 01 02 03\n");
    hid_close(dock);
    EXPECT_EQ(pyrux_sim_picture(path.data(), nullptr, &shown), -1);
    EXPECT_EQ(pyrux_sim_picture(nullptr, showZone, &shown), -1);
    EXPECT_EQ(pyrux_sim_picture("elsewhere", showZone, &shown), -1);
    EXPECT_EQ(pyrux_sim_unplug(path.data()), 0);
    EXPECT_EQ(pyrux_sim_picture(path.data(), showZone, &shown), -1);
}

TEST_F(StandinTest, isReachedByPlainFunctions)
{
    std::string names;
    for (const std::string& name : firmwareNames()) {
        EXPECT_NE(makeFirmware(name), nullptr) << name;
        names += (names.empty() ? "" : ",") + name;
    }
    EXPECT_EQ(pyrux_sim_models(), names);
    EXPECT_EQ(makeFirmware("rd211"), nullptr);

    std::array<char, 1024> plugged{};
    EXPECT_EQ(pyrux_sim_plug("rd211", plugged.data()), -1);
    EXPECT_EQ(pyrux_sim_plug(nullptr, plugged.data()), -1);
    EXPECT_EQ(pyrux_sim_plug("rd210", nullptr), -1);
    EXPECT_EQ(pyrux_sim_plug("rd210", plugged.data()), 0);
    EXPECT_EQ(paths(0x3A7E, 0x012F).at(1), plugged.data());
    hid_device* const mouse = hid_open_path(plugged.data());

    traced().clear();
    pyrux_sim_trace([](const char* of, int direction, const unsigned char* bytes, int length) {
        traced().push_back(std::string(std::strstr(of, "PID_012F") ? "rd210 " : "other ") +
                           std::to_string(direction) + " " + std::to_string(length) + " " +
                           textOf({bytes, std::size_t(length)}));
    });
    write(mouse, "41 80");
    const int level = 4;
    EXPECT_EQ(pyrux_sim_event(plugged.data(), "dpi", &level, 1), 0);
    pyrux_sim_trace(nullptr);
    write(mouse, "41 00");
    EXPECT_EQ(traced(), (std::vector<std::string>{"rd210 0 65 00 41 80", "rd210 1 64 41 80",
                                                  "rd210 1 64 42 20 40 04 01"}));
    EXPECT_EQ(read(mouse), "41 80");
    EXPECT_EQ(read(mouse), "42 20 40 04 01");

    EXPECT_EQ(pyrux_sim_event(plugged.data(), "dpi", &level, 0), -1);
    EXPECT_EQ(pyrux_sim_event(plugged.data(), "dpi", nullptr, 1), -1);
    EXPECT_EQ(pyrux_sim_event(plugged.data(), "dpi", &level, -1), -1);
    EXPECT_EQ(pyrux_sim_event(plugged.data(), nullptr, &level, 1), -1);
    EXPECT_EQ(pyrux_sim_event("elsewhere", "dpi", &level, 1), -1);
    EXPECT_EQ(pyrux_sim_event(nullptr, "dpi", &level, 1), -1);
    EXPECT_EQ(pyrux_sim_picture(plugged.data(), showZone, nullptr), 0); // it has no lights
    EXPECT_EQ(pyrux_sim_unplug(plugged.data()), 0);
    EXPECT_EQ(pyrux_sim_unplug(plugged.data()), -1);
    EXPECT_EQ(pyrux_sim_unplug(nullptr), -1);
    EXPECT_EQ(pyrux_sim_event(plugged.data(), "dpi", &level, 1), -1);
    EXPECT_EQ(read(mouse, -1), "-1");
    hid_close(mouse);
}

TEST_F(StandinTest, handsReportsToTheModelOneAtATime)
{
    std::vector<std::future<int>> writers;
    for (int thread = 0; thread < 4; ++thread)
        writers.push_back(std::async(std::launch::async, [&] {
            int written = 0;
            for (int i = 0; i < 500; ++i)
                written += write(device, "01");
            return written;
        }));
    for (auto& writer : writers)
        EXPECT_EQ(writer.get(), 500 * 65);
    EXPECT_EQ(echo->all().size(), 2000U);
    EXPECT_FALSE(echo->overlapped);
}

TEST_F(StandinTest, standsPluggingAndPullingAtAnyTime)
{
    std::atomic<bool> over = false;
    std::mutex library; // hidapi's rule for these calls
    std::atomic<int> answered = 0;
    const auto host = [&] {
        while (!over) {
            hid_device* opened = nullptr;
            {
                const std::lock_guard lock(library);
                const auto all = paths(0x3A7E, 0x012F);
                if (!all.empty())
                    opened = hid_open_path(all.back().c_str());
            }
            if (!opened)
                continue;
            auto reader = std::async(std::launch::async, [&] {
                while (read(opened, 5) != "-1" && !over)
                    ++answered;
            });
            for (int i = 0; i < 20 && write(opened, "41 80") == 65;)
                ++i;
            reader.wait();
            const std::lock_guard lock(library);
            hid_close(opened);
        }
    };
    auto first = std::async(std::launch::async, host);
    auto second = std::async(std::launch::async, host);
    const auto mouse = makeFirmware("rd210");
    for (int i = 0; i < 100; ++i) {
        const std::string at = plug(mouse, i % 2 ? "port-1" : "");
        setConduct(at, {.replyTime = std::chrono::milliseconds(i % 3)});
        mouse->happen("dpi", {i % 7});
        if (i % 10 == 0) {
            const int before = answered;
            while (answered == before)
                std::this_thread::yield();
        }
        takeTraffic(at);
        unplug(at);
    }
    over = true;
    first.wait();
    second.wait();
    EXPECT_GT(answered, 0);
    EXPECT_EQ(overlaps(), 0);
    EXPECT_EQ(misuses(), 0);
}

} // namespace

} // namespace pyrux::sim
