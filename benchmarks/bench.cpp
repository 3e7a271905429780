/// The speed budget. Each figure is stated beside raw hidapi calls on the same stand-in in the same run, so
/// that the numbers mean the same on every machine.

#include "core/log.h"
#include "devices/mice/rd210.h"
#include "pyrux/pyrux.h"
#include "services/message_thread.h"
#include "services/service.h"
#include "services/spectrum.h"
#include "simulator/bus.h"
#include "transport/cmd_queue.h"
#include "transport/usb_hid.h"

#include <benchmark/benchmark.h>
#include <hidapi/hidapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

using namespace pyrux;

namespace {

/// The command 41 80, which the mouse answers with its echo.
constexpr Report command{0x41, 0x80};

std::string devicePath()
{
    static const std::string path = sim::plug(sim::makeFirmware("rd210"));
    return path;
}

PYRUX_RD210_Base& mouse()
{
    static PYRUX_RD210_Base& object = *rd210(devicePath().c_str());
    return object;
}

PYRUX_RD210_Base& closedMouse()
{
    static PYRUX_RD210_Base* const object = [] {
        PYRUX_RD210_Base* made = rd210(sim::plug(sim::makeFirmware("rd210")).c_str());
        made->exit_device(1);
        return made;
    }();
    return *object;
}

hid_device* rawDevice()
{
    static hid_device* const device = hid_open_path(sim::plug(sim::makeFirmware("rd210")).c_str());
    return device;
}

void rawExchange(benchmark::State& state)
{
    hid_device* device = rawDevice();
    std::array<std::uint8_t, 65> reply{};
    for (auto _ : state) {
        hid_write(device, command.bytes().data(), Report::size);
        benchmark::DoNotOptimize(hid_read_timeout(device, reply.data(), reply.size(), 1000));
    }
}

void rawWrite(benchmark::State& state)
{
    hid_device* device = rawDevice();
    for (auto _ : state)
        hid_write(device, command.bytes().data(), Report::size);
    std::array<std::uint8_t, 65> reply{};
    while (hid_read_timeout(device, reply.data(), reply.size(), 0) > 0) {
    }
}

/// `stopRecordMacro` is one command and its reply.
void hostExchange(benchmark::State& state)
{
    PYRUX_RD210_Base& object = mouse();
    for (auto _ : state)
        benchmark::DoNotOptimize(object.stopRecordMacro());
}

void watchedWrite(benchmark::State& state)
{
    usbHid channel(sim::plug(sim::makeFirmware("rd210")));
    channel.open(usbHid::Mode::blocking);
    for (auto _ : state)
        channel.writeWatched(command.bytes());
}

void threadPerWrite(benchmark::State& state)
{
    hid_device* device = rawDevice();
    for (auto _ : state)
        std::thread([&] { hid_write(device, command.bytes().data(), Report::size); }).join();
}

/// A queue that sends meanwhile, at its fast pace.
void queuePush(benchmark::State& state)
{
    usbHid channel(sim::plug(sim::makeFirmware("rd215")));
    channel.open(usbHid::Mode::blocking);
    CmdQueue queue;
    queue.setChannel(&channel);
    for (auto _ : state)
        queue.push(0, command);
}

/// A keyboard, and how many commands a call takes.
struct Keyboard {
    const std::string path = sim::plug(sim::makeFirmware("qw210"));
    PYRUX_QW210_Base& host = *qw210(path.c_str());
    std::array<EffectRecord, 18> effects{};

    /// Another profile has effects of its own, which the next call reads.
    void read()
    {
        host.changeProfileId(profile ^= 1);
        host.getGeneralEffectAll(effects.data());
    }
    void store() { host.saveConfig(); }

    template <class Call>
    std::size_t commandsOf(Call call)
    {
        sim::takeTraffic(path);
        call();
        return std::size_t(std::ranges::count(sim::takeTraffic(path), sim::WireRecord::Direction::toDevice,
                                              &sim::WireRecord::direction));
    }

private:
    std::uint8_t profile = 0;
};

Keyboard& keyboard()
{
    static auto& one = *new Keyboard;
    return one;
}

void effectRead(benchmark::State& state)
{
    for (auto _ : state)
        keyboard().read();
}

void effectStore(benchmark::State& state)
{
    for (auto _ : state)
        keyboard().store();
}

/// A strand controller that takes reports, counts them and answers nothing.
class Sink final : public sim::Firmware {
public:
    const sim::Identity& identity() const override { return own; }
    void output(sim::Bytes) override
    {
        if (--expected == 0)
            done.release();
    }
    bool happen(const std::string&, const std::vector<int>&) override { return false; }
    std::vector<std::string> events() const override { return {}; }

    /// In front of the calls that cause so many reports; `await` then waits for them.
    void expect(int reports) { expected = reports; }
    void await() { done.acquire(); }

private:
    const sim::Identity own = sim::makeFirmware("strandhub")->identity();
    std::atomic<int> expected{0};
    std::binary_semaphore done{0};
};

constexpr int reportsPerFrame = 3;

/// One report in each lane of a queue that pauses for nothing.
void queuedReports(benchmark::State& state)
{
    const auto sink = std::make_shared<Sink>();
    usbHid channel(sim::plug(sink));
    channel.open(usbHid::Mode::blocking);
    CmdQueue queue;
    queue.paceDelayMs = 0;
    queue.setChannel(&channel);
    for (auto _ : state) {
        sink->expect(int(CmdQueue::laneCount));
        for (std::size_t lane = 0; lane < CmdQueue::laneCount; ++lane)
            queue.push(lane, command);
        sink->await();
    }
}

/// A lit device, and the frame of 60 LEDs that it is given.
struct LitDevice {
    std::shared_ptr<Sink> sink = std::make_shared<Sink>();
    PYRUX_STRANDHUB_Base& host = *strandhub(sim::plug(sink).c_str());
    std::vector<LightingLedZone> frame{{10, {}}};

    LitDevice()
    {
        for (std::uint32_t led = 0; led < 60; ++led)
            frame[0].leds.push_back({led, std::uint8_t(led * 4), 128, 255});
        sink->expect(1 + 18 * reportsPerFrame); // its command, and black for each zone
        host.setLightingInit();
        sink->await();
    }
    ~LitDevice() { host.exit_device(1); }
    LitDevice(const LitDevice&) = delete;
    LitDevice& operator=(const LitDevice&) = delete;
};

/// From the host's call to the last byte, on so many devices at once.
template <int devices>
void litFrames(benchmark::State& state)
{
    std::vector<std::unique_ptr<LitDevice>> all;
    for (int i = 0; i < devices; ++i)
        all.push_back(std::make_unique<LitDevice>());
    for (auto _ : state) {
        for (const auto& one : all) {
            one->sink->expect(reportsPerFrame);
            one->host.setSyncLightingData(one->frame);
        }
        for (const auto& one : all)
            one->sink->await();
    }
}

void refusedCall(benchmark::State& state)
{
    PYRUX_RD210_Base& object = closedMouse();
    for (auto _ : state)
        benchmark::DoNotOptimize(object.stopRecordMacro());
}

void forwardedCall(benchmark::State& state)
{
    PYRUX_RD210_Base& object = mouse();
    for (auto _ : state)
        benchmark::DoNotOptimize(object.registerNotify(nullptr));
}

void forwardedWork(benchmark::State& state)
{
    static Notify<NotifyCallback> notify;
    for (auto _ : state)
        notify.set(nullptr);
}

/// A device's thread that handles messages and answers each with one to the thread that has made it.
class Subscriber {
public:
    explicit Subscriber(const std::function<void(const platform::ThreadMessage&)>& handle)
    {
        std::promise<platform::ThreadId> up;
        auto started = up.get_future();
        thread = std::thread([handle, &up, back = platform::currentThreadId()] {
            const auto messages = platform::ThreadMessages::open();
            up.set_value(platform::currentThreadId());
            for (;;) {
                const auto message = messages->wait(std::chrono::hours(1));
                if (!message || message->number == MSG_QUIT_THREAD)
                    return;
                handle(*message);
                platform::postThreadMessage(back, *message);
            }
        });
        id = started.get();
    }
    ~Subscriber()
    {
        platform::postThreadMessage(id, {MSG_QUIT_THREAD});
        thread.join();
    }
    Subscriber(const Subscriber&) = delete;
    Subscriber& operator=(const Subscriber&) = delete;

    /// Waits for the answer.
    void await() { answers->wait(std::chrono::hours(1)); }

    platform::ThreadId id = 0;

private:
    std::unique_ptr<platform::ThreadMessages> answers = platform::ThreadMessages::open();
    std::thread thread;
};

/// A message to a thread and one back.
void messageThereAndBack(benchmark::State& state)
{
    Subscriber subscriber([](const platform::ThreadMessage&) {});
    for (auto _ : state) {
        platform::postThreadMessage(subscriber.id, {MSG_AMPLITUDE});
        subscriber.await();
    }
}

/// A spectrum from a service to the bars on the subscriber's thread, and a message back.
void sampleThereAndBack(benchmark::State& state)
{
    Subscriber subscriber([](const platform::ThreadMessage& message) {
        benchmark::DoNotOptimize(spectrumToLevels(payloadOf<MSG_AMPLITUDE>(message), 19, 6));
    });
    const auto outlet = std::make_shared<Outlet<MSG_AMPLITUDE>>();
    Subscription subscription(outlet, subscriber.id);
    const std::vector<float> spectrum(4096, 1.0F);
    for (auto _ : state) {
        outlet->post(spectrum);
        subscriber.await();
    }
    subscription.end();
}

void spectrumToBars(benchmark::State& state)
{
    const std::vector<float> spectrum(4096, 1.0F);
    for (auto _ : state)
        benchmark::DoNotOptimize(spectrumToLevels(spectrum, 19, 6));
}

void largestOfSpectrum(benchmark::State& state)
{
    const std::vector<float> spectrum(4096, 1.0F);
    for (auto _ : state)
        benchmark::DoNotOptimize(*std::ranges::max_element(spectrum));
}

/// Keeps the times of a run for the table of ratios.
class Times : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Aggregate ? run.aggregate_name == "median" : run.repetitions <= 1)
                microseconds[run.run_name.function_name] =
                    run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e6;
    }
    std::map<std::string, double> microseconds;
};

/// Time to load the stand-in and after it the library, each in a process of its own; the median of some.
std::array<double, 2> loadTimes()
{
    std::array<std::vector<double>, 2> times;
    for (int round = 0; round < 21; ++round) {
        const std::string program = std::string(LOAD_TIME_PROGRAM " ") + STANDIN_FILE + " " + LIBRARY_FILE;
        const std::unique_ptr<std::FILE, decltype(&pclose)> pipe(popen(program.c_str(), "r"), &pclose);
        for (std::vector<double>& of : times)
            if (double time = 0; std::fscanf(pipe.get(), "%lf", &time) == 1)
                of.push_back(time);
    }
    std::array<double, 2> medians{};
    for (std::size_t i = 0; i < times.size(); ++i) {
        std::ranges::sort(times[i]);
        medians[i] = times[i].empty() ? -1 : times[i][times[i].size() / 2];
    }
    return medians;
}

void printRatios(std::map<std::string, double>& us)
{
    const auto [standin, library] = loadTimes();
    std::printf("\n%-34s %10s %10s %8s  %s\n", "what", "us", "raw us", "ratio", "budget");
    const auto row = [](const char* what, double time, double raw, const std::string& budget) {
        std::printf("%-34s %10.3f %10.3f %8.2f  %s\n", what, time, raw, time / raw, budget.c_str());
    };
    const auto verdict = [](bool kept, const std::string& text) {
        return text + (kept ? ": kept" : ": EXCEEDED");
    };
    row("command and reply, host object", us["hostExchange"], us["rawExchange"],
        verdict(us["hostExchange"] - us["rawExchange"] <= 25, "at most 25 us above raw"));
    row("watched write", us["watchedWrite"], us["rawWrite"],
        verdict(us["watchedWrite"] * 3 <= us["threadPerWrite"], "a third of one with a thread"));
    row("write with a thread of its own", us["threadPerWrite"], us["rawWrite"], "-");
    row("push of one report to a queue", us["queuePush"], us["rawWrite"],
        verdict(us["queuePush"] <= 1, "at most 1 us"));
    const auto rate = [](double time) { return std::to_string(int(1e6 / time)) + " a second"; };
    const double queued = us["queuedReports"] / double(CmdQueue::laneCount);
    row("one of 21 reports through a queue", queued, us["rawWrite"], rate(queued));
    const double rawFrame = us["rawWrite"] * reportsPerFrame;
    row("60 LEDs, call to last byte", us["litFrame"], rawFrame, rate(us["litFrame"]));
    row("the same, one of 8 devices", us["litFrame8"] / 8, rawFrame, rate(us["litFrame8"] / 8));
    row("the same, one of 32 devices", us["litFrame32"] / 32, rawFrame, rate(us["litFrame32"] / 32));
    const auto commands = [](std::size_t count) { return std::to_string(count) + " commands"; };
    const std::size_t reads = keyboard().commandsOf([] { keyboard().read(); });
    row("a keyboard's effects, read", us["effectRead"], us["rawExchange"] * double(reads), commands(reads));
    const std::size_t writes = keyboard().commandsOf([] { keyboard().store(); });
    row("a keyboard's effects, stored", us["effectStore"], us["rawExchange"] * double(writes),
        commands(writes));
    row("host call refused, log off", us["refusedCall"], us["rawWrite"],
        verdict(us["refusedCall"] <= 0.1, "at most 0.1 us"));
    row("host call forwarded, log off", us["forwardedCall"], us["forwardedWork"],
        verdict(us["forwardedCall"] - us["forwardedWork"] <= 0.1, "at most 0.1 us above the work"));
    row("4096 bins to bars; raw: their largest", us["spectrumToBars"], us["largestOfSpectrum"], "-");
    row("sample to its bars; raw: a message", us["sampleThereAndBack"], us["messageThereAndBack"], "-");
    row("loading the library", library, standin,
        verdict(library <= 5000, "at most 5000 us; raw: the stand-in"));
}

} // namespace

int main(int count, char** arguments)
{
    debugEnabled = 0;
    benchmark::Initialize(&count, arguments);
    for (const auto& [name, body] : std::map<std::string, void (*)(benchmark::State&)>{
             {"rawExchange", rawExchange},
             {"rawWrite", rawWrite},
             {"hostExchange", hostExchange},
             {"watchedWrite", watchedWrite},
             {"threadPerWrite", threadPerWrite},
             {"queuePush", queuePush},
             {"queuedReports", queuedReports},
             {"effectRead", effectRead},
             {"effectStore", effectStore},
             {"litFrame", litFrames<1>},
             {"litFrame8", litFrames<8>},
             {"litFrame32", litFrames<32>},
             {"refusedCall", refusedCall},
             {"forwardedCall", forwardedCall},
             {"forwardedWork", forwardedWork},
             {"messageThereAndBack", messageThereAndBack},
             {"sampleThereAndBack", sampleThereAndBack},
             {"spectrumToBars", spectrumToBars},
             {"largestOfSpectrum", largestOfSpectrum},
         })
        benchmark::RegisterBenchmark(name.c_str(), body)->UseRealTime();
    Times times;
    benchmark::RunSpecifiedBenchmarks(&times);
    printRatios(times.microseconds);
    return 0;
}
