#include "simulator/bus.h"

#include "simulator/standin/device.h"
#include "simulator/standin/registry.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace pyrux::sim {

namespace {

constexpr std::size_t plainReport = 65; // report id 0 and 64 bytes of payload

void appendHex(std::string& text, Bytes bytes)
{
    for (const std::uint8_t& byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, &byte == &bytes.front() ? "%02X" : " %02X", byte);
        text += digits;
    }
}

void appendReport(std::string& text, Bytes report)
{
    if (report.size() != plainReport || report[0] != 0) {
        text += '[';
        appendHex(text, report);
        text += ']';
        return;
    }
    std::size_t end = report.size();
    while (end > 2 && report[end - 1] == 0)
        --end;
    appendHex(text, report.subspan(1, end - 1));
}

/// Calls with a device and the entry of the path.
template <class Call>
void withEntry(const std::string& path, Call call)
{
    const auto device = Registry::instance().find(path);
    if (const Entry* const entry = device ? device->entryOf(path) : nullptr)
        call(*device, *entry);
}

template <class Call>
void withDevice(const std::string& path, Call call)
{
    if (const auto device = Registry::instance().find(path))
        call(*device);
}

} // namespace

std::string plug(std::shared_ptr<Firmware> device, std::string instance)
{
    return Registry::instance().plug(std::move(device), std::move(instance));
}

std::vector<std::string> pathsOf(const std::string& path)
{
    std::vector<std::string> paths;
    withDevice(path, [&](Device& device) {
        for (const Entry& entry : device.entries)
            paths.push_back(entry.path);
    });
    return paths;
}

void unplug(const std::string& path)
{
    withDevice(path, [](Device& device) { Registry::unplug(device); });
}

void reset()
{
    Registry::instance().reset();
}

void setConduct(const std::string& path, const Conduct& conduct)
{
    withDevice(path, [&](Device& device) { device.setConduct(conduct); });
}

void releaseWrites(const std::string& path)
{
    withDevice(path, [](Device& device) { device.releaseWrites(); });
}

std::vector<WireRecord> takeTraffic(const std::string& path, std::size_t count,
                                    std::chrono::milliseconds limit)
{
    std::vector<WireRecord> taken;
    withEntry(path, [&](Device& device, const Entry& entry) {
        taken = device.takeTraffic(*entry.wire, count, limit);
    });
    return taken;
}

std::string takeWritten(const std::string& path)
{
    std::string text;
    for (const WireRecord& record : takeTraffic(path)) {
        if (record.direction != WireRecord::Direction::toDevice)
            continue;
        if (!text.empty())
            text += " | ";
        appendReport(text, record.bytes);
    }
    return text;
}

void inject(const std::string& path, std::vector<std::uint8_t> report)
{
    withEntry(path, [&](Device& device, const Entry& entry) { device.deliver(*entry.wire, report); });
}

int openHandles()
{
    return Registry::instance().openHandles();
}

int writersInside()
{
    return stalledWriters();
}

bool awaitWritersInside(int count, std::chrono::milliseconds limit)
{
    return awaitStalledWriters(count, limit);
}

bool awaitReader(const std::string& path, std::chrono::milliseconds limit)
{
    bool came = false;
    withDevice(path, [&](Device& device) { came = device.awaitReader(limit); });
    return came;
}

int readWakeups(const std::string& path)
{
    int reads = 0;
    withEntry(path, [&](Device&, const Entry& entry) { reads = entry.wire->readCalls; });
    return reads;
}

int overlaps()
{
    return Registry::instance().overlaps;
}

int misuses()
{
    return Registry::instance().misuses;
}

} // namespace pyrux::sim

using namespace pyrux;

int pyrux_sim_plug(const char* model, char* path)
{
    constexpr int pathRoom = 1024;
    auto device = model && path ? sim::makeFirmware(model) : nullptr;
    if (!device)
        return -1;
    std::snprintf(path, pathRoom, "%s", sim::plug(std::move(device)).c_str());
    return 0;
}

int pyrux_sim_unplug(const char* path)
{
    const auto device = path ? sim::Registry::instance().find(path) : nullptr;
    return device && sim::Registry::unplug(*device) ? 0 : -1;
}

int pyrux_sim_replug(const char* path)
{
    const auto device = path ? sim::Registry::instance().find(path) : nullptr;
    if (!device || device->isPlugged())
        return -1;
    sim::plug(device->model, device->instance);
    return 0;
}

int pyrux_sim_event(const char* path, const char* event, const int* values, int count)
{
    const auto device = path ? sim::Registry::instance().find(path) : nullptr;
    if (!device || !device->isPlugged() || !event || count < 0 || (count > 0 && !values))
        return -1;
    return device->model->happen(event, std::vector<int>(values, values + count)) ? 0 : -1;
}

int pyrux_sim_picture(const char* path,
                      void (*zone)(void* context, const char* name, const unsigned char* colors, int leds),
                      void* context)
{
    const auto device = path ? sim::Registry::instance().find(path) : nullptr;
    if (!device || !device->isPlugged() || !zone)
        return -1;
    const sim::Picture picture = device->model->picture();
    for (const auto& [name, leds] : picture) {
        std::vector<unsigned char> colors;
        for (const sim::Light& led : leds)
            colors.insert(colors.end(), {led.red, led.green, led.blue});
        zone(context, name.c_str(), colors.data(), int(leds.size()));
    }
    return int(picture.size());
}

void pyrux_sim_trace(void (*callback)(const char* path, int direction, const unsigned char* bytes,
                                      int length))
{
    sim::setTrace(callback);
}

const char* pyrux_sim_models()
{
    static const std::string& names = *[] {
        auto* all = new std::string;
        for (const std::string& name : sim::firmwareNames()) {
            if (!all->empty())
                *all += ',';
            *all += name;
        }
        return all;
    }();
    return names.c_str();
}
