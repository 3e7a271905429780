// The library under hosts, devices and a system at their worst: random calls of everything that a host can
// reach, from several threads and from callbacks, on devices that lie, stall, come and go.
//
//   stress [--seconds N] [--seed N] [--threads N] [--cycles N]
//
// Runs rounds in processes of their own and prints the seed, the number of calls, and how many rounds ended in
// a crash, a hang or an unexpected result: the exit code is 0 when none did. With --cycles it plugs a device
// in and out so many times in place of that, and prints what a cycle leaves.

#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "simulator/models.h"
#include "tests/hotplug/footprint.h"
#include "tests/stress/operations.h"
#include "tests/support/member_call.h"
#include "tests/support/process.h"
#include "tests/support/surroundings.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Options {
    std::uint64_t seconds = 30;
    std::uint64_t seed = 1;
    std::uint64_t threads = 8;
    std::uint64_t cycles = 0;
    std::uint64_t round = 0; ///< Not 0: this process is a round of that many seconds.
};

/// Longest time for all calls to come out once every device has been pulled.
constexpr auto patience = 60s;

std::atomic<std::uint64_t> calls{0};

/// A text in case of trouble; the round ends by it.
[[noreturn]] void fail(const std::string& what)
{
    std::fprintf(stderr, "stress: %s\n", what.c_str());
    std::fflush(stderr);
    std::abort();
}

Arguments::Generator& generator()
{
    static std::atomic<std::uint64_t> threads{0};
    static std::atomic<std::uint64_t> seed{0};
    thread_local Arguments::Generator own(seed + ++threads);
    return own;
}

unsigned upTo(std::size_t count)
{
    return unsigned(generator()() % count);
}

bool oneIn(unsigned chances)
{
    return upTo(chances) == 0;
}

/// Host objects: those of all factories that hosts know of. They are never freed.
class Objects {
public:
    struct Object {
        void* host = nullptr;
        const FactoryRow* row = nullptr;
    };

    void add(const Object& object)
    {
        if (!object.host)
            return;
        const std::lock_guard lock(mutex);
        if (all.size() < 64)
            all.push_back(object);
        else
            all[upTo(all.size())] = object;
    }

    Object any() const
    {
        const std::lock_guard lock(mutex);
        return all.empty() ? Object{} : all[upTo(all.size())];
    }

    std::vector<Object> list() const
    {
        const std::lock_guard lock(mutex);
        return all;
    }

private:
    mutable std::mutex mutex;
    std::vector<Object> all;
};

Objects objects;

/// Ports that devices come to and go from.
struct Port {
    std::mutex mutex; ///< While something comes or goes.
    const FactoryRow* row = nullptr;
    std::string path;
};

std::array<Port, 8> ports;

std::int64_t call(const Objects::Object& object, std::size_t slot)
{
    Arguments arguments(generator());
    ++calls;
    const std::int64_t result =
        object.row->slots[slot](object.host, slot, arguments, [](const auto& inner) { inner(); });
    if (!isResult(result))
        fail(std::string(object.row->firmware) + ", slot " + std::to_string(slot) + ": " +
             std::to_string(result));
    return result;
}

void callSome()
{
    const Objects::Object object = objects.any();
    if (!object.host)
        return;
    const std::size_t slot = upTo(object.row->slots.size());
    if (slot != object.row->exitSlot || oneIn(4))
        call(object, slot);
}

void comeOrGo()
{
    const std::size_t number = upTo(ports.size());
    Port& port = ports[number];
    const std::unique_lock lock(port.mutex, std::try_to_lock);
    if (!lock)
        return;
    if (!port.path.empty()) {
        sim::unplug(port.path);
        port.path.clear();
        return;
    }
    port.row = &factories()[upTo(factories().size())];
    port.path = sim::plug(sim::makeFirmware(port.row->firmware), "port-" + std::to_string(number));
}

/// A port's path and factory as they are now.
void anyPort(std::string& path, const FactoryRow*& row)
{
    Port& port = ports[upTo(ports.size())];
    const std::unique_lock lock(port.mutex, std::try_to_lock);
    if (!lock)
        return;
    path = port.path;
    row = port.row;
}

void open()
{
    std::string path;
    const FactoryRow* row = nullptr;
    anyPort(path, row);
    if (!row)
        return;
    ++calls;
    switch (upTo(20)) {
    case 0: // a path of nothing
        if (!path.empty())
            path[upTo(path.size())] = char(1 + upTo(255));
        row->factory(path.c_str());
        break;
    case 1: // another model's factory: on a path of its own, since a path belongs to one model
        std::ranges::transform(path, path.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
        factories()[upTo(factories().size())].factory(path.c_str());
        break;
    default:
        objects.add({row->factory(path.c_str()), row});
        break;
    }
}

void misbehave()
{
    std::string path;
    const FactoryRow* row = nullptr;
    anyPort(path, row);
    sim::Conduct conduct;
    switch (upTo(16)) {
    case 0:
        conduct.silent = true;
        break;
    case 1:
        conduct.garbage = true;
        break;
    case 2:
        conduct.shortReads = upTo(64);
        break;
    case 3:
        conduct.replyTime = std::chrono::milliseconds(upTo(300));
        break;
    case 4:
        conduct.refuseWrites = true;
        break;
    case 5:
        conduct.writeTime = std::chrono::milliseconds(oneIn(2) ? 5000 : upTo(50));
        break;
    case 6:
        conduct.readFailures = upTo(40);
        break;
    default:
        break;
    }
    sim::setConduct(path, conduct);
    if (oneIn(3))
        sim::releaseWrites(path);
}

void inject()
{
    std::string path;
    const FactoryRow* row = nullptr;
    anyPort(path, row);
    // Beginnings that some device gives a meaning to.
    constexpr std::uint8_t heads[][3]{{0x42, 0x20, 0x40}, {0x42, 0x20, 0x00}, {0x43, 0x01, 0x00},
                                      {0x41, 0x80, 0x00}, {0x52, 0x00, 0x00}, {0x80, 0x0B, 0x03},
                                      {0x80, 0x0A, 0x03}, {0x42, 0x10, 0x00}, {0xFF, 0xAA, 0x55}};
    std::vector<std::uint8_t> report(upTo(65));
    for (std::uint8_t& byte : report)
        byte = std::uint8_t(oneIn(3) ? generator()() : upTo(3));
    const auto& head = heads[upTo(std::size(heads))];
    std::copy_n(head, std::min(std::size(head), report.size()), report.begin());
    sim::inject(path, report);
}

void callExport()
{
    ++calls;
    std::string path;
    const FactoryRow* row = nullptr;
    anyPort(path, row);
    const char* const text = oneIn(8) ? nullptr : path.c_str();
    std::array<std::uint16_t, 2> versions;
    std::array<char, 128> name;
    std::uint8_t byte = 0;
    switch (upTo(8)) {
    case 0:
        devNums();
        break;
    case 1: {
        // As many as there may ever be, since devices come between the two calls.
        std::vector<DevInfoRecord> records(256);
        devInfo(oneIn(8) ? nullptr : records.data());
        break;
    }
    case 2:
        getDGVersion(text, oneIn(8) ? nullptr : versions.data());
        break;
    case 3:
        getBTVersion(text, oneIn(8) ? nullptr : name.data());
        break;
    case 4:
        getDriverVersion(text, oneIn(8) ? nullptr : &byte);
        break;
    case 5: {
        std::int32_t first = 0;
        std::int32_t second = 0;
        getSysTemp(oneIn(8) ? nullptr : &first, &second);
        getSysCore(&first, oneIn(8) ? nullptr : &second);
        break;
    }
    case 6:
        pyrux_init(); // once more
        break;
    default: {
        if (!oneIn(8))
            break;
        SYS_INFO_Base* const computer = sysInfo();
        for (int i = 0; i < 8; ++i) {
            Arguments arguments(generator());
            const std::size_t slot = 1 + upTo(sysInfoSlots().size() - 1);
            sysInfoSlots()[slot](computer, slot, arguments, [](const auto& inner) { inner(); });
        }
        computer->destroy(1);
    }
    }
}

/// How deep callbacks may call in that lead to callbacks.
constinit thread_local int depth = 0;

void callBack()
{
    if (depth > 2 || !oneIn(3))
        return;
    ++depth;
    const Objects::Object object = objects.any();
    switch (upTo(8)) {
    case 0:
        if (object.host)
            call(object, object.row->exitSlot);
        break;
    case 1:
        if (object.host) // often the one beside it: registering and unregistering
            call(object, object.row->exitSlot - 1 - upTo(2));
        break;
    case 2:
        if (oneIn(8))
            open();
        break;
    case 3:
        callExport();
        break;
    default:
        callSome();
        break;
    }
    --depth;
}

void hotplugBack(HotplugEvent event)
{
    if (std::string_view(event.name).size() >= sizeof event.name)
        fail("an event's name without an end");
    callBack();
}

void actOnce()
{
    const unsigned action = upTo(100);
    if (action < 60)
        callSome();
    else if (action < 70)
        open();
    else if (action < 75)
        comeOrGo();
    else if (action < 82)
        misbehave();
    else if (action < 95)
        inject();
    else
        callExport();
}

/// Waits for threads; where one does not come out it ends the process, for a debugger or a core to tell where it is.
class Watch {
public:
    Watch(const char* what, Clock::duration limit)
        : thread([this, what, limit] {
              std::unique_lock lock(mutex);
              if (!changed.wait_for(lock, limit, [&] { return done; }))
                  fail(std::string("hangs: ") + what);
          })
    {
    }
    ~Watch()
    {
        {
            const std::lock_guard lock(mutex);
            done = true;
        }
        changed.notify_all();
        thread.join();
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
    std::thread thread;
};

void expectClosed(const char* when)
{
    for (const Objects::Object& object : objects.list())
        for (std::size_t slot = 0; slot < object.row->slots.size(); ++slot)
            if (slot != object.row->exitSlot && call(object, slot) != E_CLOSED)
                fail(std::string(object.row->firmware) + ", slot " + std::to_string(slot) + " is open " +
                     when);
}

int runRound(const Options& options)
{
    onCallback = callBack;
    registerDevNotify(hotplugBack);
    pyrux_init();
    const auto end = Clock::now() + std::chrono::seconds(options.round);
    std::vector<std::thread> hosts;
    for (std::uint64_t i = 0; i < options.threads; ++i)
        hosts.emplace_back([&, i] {
            generator().seed(options.seed * 1000 + i);
            while (Clock::now() < end)
                actOnce();
        });
    {
        std::this_thread::sleep_until(end);
        // No call outlives its device.
        const Watch watch("a call whose device has been pulled", patience);
        sim::reset();
        for (std::thread& host : hosts)
            host.join();
        sim::reset(); // what came meanwhile
    }
    {
        const Watch watch("the end of the library", patience);
        std::thread second([] { pyrux_exit(); });
        pyrux_exit();
        second.join();
    }
    const Watch watch("a call after the end", patience);
    expectClosed("after the end");
    if (sim::misuses() > 0)
        fail(std::to_string(sim::misuses()) + " calls with a closed handle");
    if (sim::overlaps() > 0)
        fail(std::to_string(sim::overlaps()) + " calls of hidapi that must not overlap");
    std::printf("calls %llu\n", static_cast<unsigned long long>(calls.load()));
    return 0;
}

/// Plugs devices in and out, many side by side since each takes a second to leave the registry.
int runCycles(const Options& options)
{
    constexpr std::size_t sideBySide = 200;
    struct Plugged {
        std::string path;
        PYRUX_RD210_Base* host = nullptr;
    };
    std::vector<Plugged> devices(std::min<std::size_t>(sideBySide, options.cycles));
    pyrux_init();
    const std::size_t threads = footprint().threads;
    // The threads of the last objects go as these leave the registry.
    const auto settled = [&] {
        const Watch watch("the end of objects whose devices have been pulled", patience);
        while (footprint().threads > threads)
            std::this_thread::yield();
        return footprint();
    };
    const auto cycle = [&] {
        for (std::size_t i = 0; i < devices.size(); ++i)
            devices[i].path = sim::plug(sim::makeFirmware("rd210"), "port-" + std::to_string(i));
        for (Plugged& device : devices) {
            // Until the object before it has left the registry it is what the path leads to.
            PYRUX_RD210_Base* host = nullptr;
            while (!(host = rd210(device.path.c_str())) || host == device.host) {
            }
            device.host = host;
            if (host->changeProfileId(1) != E_OK)
                fail("a device that has come back does not work");
        }
        for (const Plugged& device : devices)
            sim::unplug(device.path);
        for (const Plugged& device : devices)
            while (device.host->changeProfileId(1) != E_CLOSED) {
            }
    };
    for (int i = 0; i < 3; ++i)
        cycle(); // what is there from the first time on
    const Footprint before = settled();
    std::size_t done = 0;
    for (; done < options.cycles; done += devices.size())
        cycle();
    const Footprint after = settled();
    const double bytes = double(after.bytes) - double(before.bytes);
    std::printf("%zu cycles, descriptors %zu to %zu, threads %zu to %zu, %.1f bytes a cycle\n", done,
                before.files, after.files, before.threads, after.threads, bytes / double(done));
    pyrux_exit();
    return after.files <= before.files && after.threads <= before.threads ? 0 : 1;
}

int runRounds(const Options& options)
{
    constexpr std::uint64_t roundSeconds = 10;
    std::uint64_t sum = 0;
    int crashes = 0;
    std::uint64_t seed = options.seed;
    for (std::uint64_t left = options.seconds; left > 0; ++seed) {
        const std::uint64_t time = std::min(left, roundSeconds);
        left -= time;
        const Ended ended =
            run(thisProgram(), {"--round", std::to_string(time), "--seed", std::to_string(seed), "--threads",
                                std::to_string(options.threads)});
        const std::size_t count = ended.output.rfind("calls ");
        if (ended.exitCode == 0 && count != std::string::npos) {
            sum += std::strtoull(ended.output.c_str() + count + 6, nullptr, 10);
            continue;
        }
        ++crashes;
        std::printf("seed %llu ended with %d:\n%s\n", static_cast<unsigned long long>(seed), ended.exitCode,
                    ended.output.c_str());
    }
    std::printf("seed %llu, %llu s, %llu calls, %d crashes\n", static_cast<unsigned long long>(options.seed),
                static_cast<unsigned long long>(options.seconds), static_cast<unsigned long long>(sum),
                crashes);
    return crashes == 0 ? 0 : 1;
}

bool parse(int argc, char** argv, Options& options)
{
    struct Option {
        std::string_view name;
        std::uint64_t Options::*value;
    };
    constexpr Option known[]{{"--seconds", &Options::seconds},
                             {"--seed", &Options::seed},
                             {"--threads", &Options::threads},
                             {"--cycles", &Options::cycles},
                             {"--round", &Options::round}};
    for (int i = 1; i < argc; i += 2) {
        const auto* const option = std::ranges::find(known, std::string_view(argv[i]), &Option::name);
        if (option == std::end(known) || i + 1 == argc)
            return false;
        options.*(option->value) = std::strtoull(argv[i + 1], nullptr, 10);
    }
    return true;
}

} // namespace
} // namespace pyrux::test

int main(int argc, char** argv)
{
    using namespace pyrux::test;
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs("usage: stress [--seconds N] [--seed N] [--threads N] [--cycles N]\n", stderr);
        return 2;
    }
    const OwnPipes pipes;
    if (options.cycles)
        return runCycles(options);
    return options.round ? runRound(options) : runRounds(options);
}
