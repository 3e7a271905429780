// Every factory, every slot and every export while the system has no room for one thing that it is asked for:
// the first, the second, and so on, until there is no further one.

#include "tests/stress/shortage.h"

#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "simulator/models.h"
#include "tests/stress/operations.h"
#include "tests/support/isolated.h"
#include "tests/support/member_call.h"
#include "tests/support/pipe_peer.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

constexpr std::array kinds{Kind::thread, Kind::eventfd, Kind::socket, Kind::open, Kind::memory};
constexpr const char* kindNames[]{"thread", "eventfd", "socket", "open", "memory"};

const char* nameOf(Kind kind)
{
    return kindNames[static_cast<std::size_t>(kind)];
}

std::size_t entriesOf(const char* folder)
{
    return std::size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// Threads and descriptors of the process.
struct Footing {
    std::size_t threads = entriesOf("/proc/self/task");
    std::size_t files = entriesOf("/proc/self/fd");
};

/// The process comes back to what it had. A detached thread tells nobody when it has quite gone.
void expectBackAt(const Footing& before)
{
    const auto end = std::chrono::steady_clock::now() + 20s;
    Footing now;
    for (; now.threads > before.threads || now.files > before.files; now = Footing()) {
        if (std::chrono::steady_clock::now() > end)
            break;
        std::this_thread::yield();
    }
    EXPECT_LE(now.threads, before.threads);
    EXPECT_LE(now.files, before.files);
}

/// Calls `attempt` with 1, 2 and so on, which tells whether there was such a request.
template <class Attempt>
void failEach(Kind kind, Attempt attempt)
{
    std::size_t which = 1;
    for (bool felt = true; felt && !testing::Test::HasFailure(); ++which) {
        SCOPED_TRACE(std::string(nameOf(kind)) + " number " + std::to_string(which));
        felt = attempt(which);
    }
}

/// A simulated device that is plugged in, and what opens it.
struct Plugged {
    explicit Plugged(const FactoryRow& row) : row(row), path(sim::plug(sim::makeFirmware(row.firmware))) {}
    ~Plugged()
    {
        sim::unplug(path);
        if (host)
            exit(1);
    }
    Plugged(const Plugged&) = delete;
    Plugged& operator=(const Plugged&) = delete;

    void* open() { return host = row.factory(path.c_str()); }

    std::int64_t exit(std::uint8_t unplugged)
    {
        using Exit = std::int32_t(PYRUX_MEMBER_CALL*)(void*, std::uint8_t);
        return reinterpret_cast<Exit>((*static_cast<void***>(host))[row.exitSlot])(host, unplugged);
    }

    const FactoryRow& row;
    const std::string path;
    void* host = nullptr;
};

class Shortages : public testing::TestWithParam<std::size_t> {
protected:
    Shortages()
    {
        Plugged once(row); // what the process has from the first use on
        once.open();
    }

    const FactoryRow& row = factories()[GetParam()];
};

TEST_P(Shortages, leaveTheFactoryWithNothingBegun)
{
    const Footing before;
    for (const Kind kind : kinds)
        failEach(kind, [&](std::size_t which) {
            Plugged device(row);
            const Footing plugged; // a firmware model may have a thread of its own
            bool felt = false;
            {
                const Shortage shortage(kind, which);
                device.open();
                felt = shortage.felt();
            }
            if (!device.host) {
                EXPECT_TRUE(felt);
                EXPECT_EQ(sim::openHandles(), 0);
                expectBackAt(plugged);
                EXPECT_NE(device.open(), nullptr); // there is room again
            }
            sim::unplug(device.path);
            if (device.host) {
                EXPECT_EQ(device.exit(1), 0);
                device.host = nullptr;
            }
            expectBackAt(before);
            return felt;
        });
}

TEST_P(Shortages, doNotKeepADeviceFromItsEnd)
{
    for (const Kind kind : kinds)
        failEach(kind, [&](std::size_t which) {
            Plugged device(row);
            const Footing plugged;
            EXPECT_NE(device.open(), nullptr);
            bool felt = false;
            {
                const Shortage shortage(kind, which);
                EXPECT_EQ(device.exit(0), 0);
                felt = shortage.felt();
            }
            // On a busy machine the rest is done behind its back.
            expectBackAt(plugged);
            EXPECT_EQ(sim::openHandles(), 0);
            return felt;
        });
}

INSTANTIATE_TEST_SUITE_P(Factories, Shortages, testing::Range<std::size_t>(0, 15),
                         [](const auto& one) { return std::string(factories()[one.param].firmware); });

std::int64_t callSlot(const Plugged& device, std::size_t slot, unsigned seed, const Around& around)
{
    Arguments::Generator generator(seed);
    Arguments arguments(generator);
    return device.row.slots[slot](device.host, slot, arguments, around);
}

/// Arguments with which a call gets to its end, if there are.
unsigned goodSeed(const Plugged& device, std::size_t slot)
{
    unsigned seed = 1;
    while (seed < 8 && callSlot(device, slot, seed, [](const auto& call) { call(); }) != E_OK)
        ++seed;
    return seed;
}

void failInEverySlot(const Plugged& device)
{
    for (std::size_t slot = 0; slot < device.row.slots.size(); ++slot) {
        if (slot == device.row.exitSlot)
            continue;
        SCOPED_TRACE(std::string(device.row.firmware) + ", slot " + std::to_string(slot));
        const unsigned seed = goodSeed(device, slot);
        for (const Kind kind : kinds)
            failEach(kind, [&](std::size_t which) {
                bool felt = false;
                const std::int64_t result =
                    callSlot(device, slot, seed, [&](const std::function<void()>& call) {
                        const Shortage shortage(kind, which);
                        call();
                        felt = shortage.felt();
                    });
                EXPECT_TRUE(isResult(result)) << result;
                EXPECT_NE(result, E_CLOSED);
                return felt;
            });
    }
}

/// All models side by side: some calls wait for replies that do not come.
TEST(Shortage, givesEverySlotACode)
{
    {
        // A service that an effect has asked for stays to the end of the library.
        constexpr std::size_t setSystemStatusEffect = 29;
        Plugged keyboard(factories().at(13));
        ASSERT_NE(keyboard.open(), nullptr);
        goodSeed(keyboard, setSystemStatusEffect);
        sim::unplug(keyboard.path);
    }
    const Footing before;
    std::vector<std::thread> hosts;
    for (const FactoryRow& row : factories())
        hosts.emplace_back([&row] {
            Plugged device(row);
            ASSERT_NE(device.open(), nullptr);
            failInEverySlot(device);
        });
    for (std::thread& host : hosts)
        host.join();
    expectBackAt(before);
}

TEST(Shortage, knowsEveryFactory)
{
    EXPECT_EQ(factories().size(), 15U);
}

/// An export, and whether a result of it may come from a shortage.
struct Export {
    const char* name;
    std::function<bool()> call;
};

TEST(Shortage, givesEveryExportItsResult)
{
    const OwnPipes pipes;
    PipePeer service("twldservicepipe", answering("7;9"));
    sim::plug(sim::makeFirmware("rd210"));
    std::vector<DevInfoRecord> records(8);
    std::int32_t first = 0;
    std::int32_t second = 0;
    float number = 0;
    char text[64];
    std::uint16_t versions[2];
    std::uint8_t driver = 0;
    const char* const path = "\\\\?\\HID#VID_3A7E&PID_012F&MI_01#x#{}";
    const char* const driverPath = "\\\\?\\HID#VID_3A7E&PID_01C1&MI_00#x#{}";
    const std::vector<Export> exports{
        {"devNums", [&] { return devNums() >= 0; }},
        {"devInfo",
         [&] {
             const std::int32_t count = devInfo(records.data());
             return count == 0 || count == 1;
         }},
        {"registerDevNotify", [] { return registerDevNotify(nullptr) == 0; }},
        {"getBTVersion", [&] { return getBTVersion(path, text), text[0] == '\0'; }},
        {"getDGVersion", [&] { return getDGVersion(path, versions), versions[0] == 0; }},
        {"getDriverVersion", [&] { return getDriverVersion(driverPath, &driver), driver == 0; }},
        {"dprintf", [] { return pyrux_dprintf("%s", "text"), true; }},
        {"pyrux_background", [] { return pyrux_background(0) == 0; }},
        {"getSysTemp", [&] { return isResult(getSysTemp(&first, &second)); }},
        {"getSysCore", [&] { return isResult(getSysCore(&first, &second)); }},
        {"getVersion", [&] { return isResult(getVersion(&number)); }},
        {"fakeTempEnable", [] { return isResult(fakeTempEnable()); }},
        {"fakeTempStep", [] { return isResult(fakeTempStep()); }},
    };
    for (const Export& one : exports) {
        SCOPED_TRACE(one.name);
        EXPECT_TRUE(one.call());
        const Footing before;
        for (const Kind kind : kinds)
            failEach(kind, [&](std::size_t which) {
                const Shortage shortage(kind, which);
                EXPECT_TRUE(one.call());
                return shortage.felt();
            });
        expectBackAt(before);
    }
    sim::reset();
}

ISOLATED_TEST(Shortage, givesTheComputersObjectOrNull)
{
    const PipePeer service("twldservicepipe", answering("7;9"));
    sysInfo()->destroy(1); // its services stay
    const Footing before;
    for (const Kind kind : kinds)
        failEach(kind, [&](std::size_t which) {
            bool felt = false;
            SYS_INFO_Base* object = nullptr;
            {
                const Shortage shortage(kind, which);
                object = sysInfo();
                felt = shortage.felt();
            }
            EXPECT_TRUE(object || felt);
            if (object)
                object->destroy(1);
            expectBackAt(before);
            return felt;
        });
}

ISOLATED_TEST(Shortage, givesTheComputersSlotsACode)
{
    const PipePeer service("twldservicepipe", answering("7;9"));
    SYS_INFO_Base* const object = sysInfo();
    ASSERT_NE(object, nullptr);
    for (std::size_t slot = 0; slot < sysInfoSlots().size(); ++slot) {
        SCOPED_TRACE("slot " + std::to_string(slot));
        for (const Kind kind : kinds)
            failEach(kind, [&](std::size_t which) {
                Arguments::Generator generator(slot);
                Arguments arguments(generator);
                bool felt = false;
                const std::int64_t result =
                    sysInfoSlots()[slot](object, slot, arguments, [&](const std::function<void()>& call) {
                        const Shortage shortage(kind, which);
                        call();
                        felt = shortage.felt();
                    });
                EXPECT_TRUE(isResult(result)) << result;
                return felt;
            });
    }
    object->destroy(1);
}

/// The life of the library in this process, with the shortage that the variable names.
TEST(Shortage, lifeOfTheLibrary)
{
    const char* const text = std::getenv("PYRUX_TEST_SHORTAGE");
    if (!text)
        return; // the test below starts it
    const OwnPipes pipes;
    const std::string path = sim::plug(sim::makeFirmware("rd210"));
    const Shortage shortage(kinds.at(std::size_t(text[0] - '0')), std::size_t(std::atoi(text + 1)),
                            text[0] == '4' ? Whose::callers : Whose::everybodys);
    EXPECT_EQ(pyrux_init(), 0);
    rd210(path.c_str());
    EXPECT_EQ(pyrux_exit(), 0);
    EXPECT_EQ(pyrux_exit(), 0);
    std::puts(shortage.felt() ? "felt" : "plenty");
}

TEST(Shortage, doesNotKeepTheLibraryFromStartAndEnd)
{
    for (const Kind kind : kinds)
        failEach(kind, [&](std::size_t which) {
            const Variable variable("PYRUX_TEST_SHORTAGE",
                                    std::to_string(static_cast<int>(kind)) + std::to_string(which));
            const Ended child = run(thisProgram(), {"--gtest_filter=Shortage.lifeOfTheLibrary",
                                                    "--gtest_output=", "--gtest_color=no"});
            EXPECT_EQ(child.exitCode, 0) << child.output;
            EXPECT_NE(child.output.find("[  PASSED  ] 1 test."), std::string::npos) << child.output;
            return child.output.find("felt\n") != std::string::npos;
        });
}

} // namespace
} // namespace pyrux::test
