#include "session.h"

#include "failure.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace pyrux::ctl {

namespace {

/// Puts the library's debug output out of the way before the library can look at the variable.
void chooseDebugOutput(bool debug)
{
    constexpr auto variable = "PYRUX_DEBUG_OUTPUT";
    if (debug)
        setEnvironment(variable, "stderr");
    else if (const char* const chosen = std::getenv(variable); !chosen || !*chosen)
        setEnvironment(variable, "none");
}

template <std::size_t N>
std::string textOf(const char (&field)[N])
{
    return std::string(field, std::find(field, field + N, '\0'));
}

/// The number after "mi_" of a device path; nothing for a device that is not composite.
std::optional<int> interfaceOf(const std::string& path)
{
    const auto at = upperCase(path).find("&MI_");
    if (at == std::string::npos)
        return std::nullopt;
    return static_cast<int>(std::strtol(path.c_str() + at + 4, nullptr, 10));
}

/// Binary coded decimal: 0x0123 is 1.23.
std::string releaseText(std::uint16_t release)
{
    const std::string digits = hexadecimal(release, 4);
    return (digits[0] == '0' ? "" : digits.substr(0, 1)) + digits[1] + "." + digits.substr(2);
}

Device makeDevice(const DevInfoRecord& record)
{
    Device device{};
    device.model = findModel(record.vid, record.pid);
    device.name = device.model ? findName(record.vid, record.pid) : "-";
    device.path = textOf(record.path);
    device.product = textOf(record.product);
    device.vendor = textOf(record.vendor);
    device.serial = textOf(record.serial);
    device.vid = record.vid;
    device.pid = record.pid;
    device.release = releaseText(record.release);
    device.interface = interfaceOf(device.path);
    device.driverOk = record.driverOk == 1;
    device.statusOk = record.statusOk == 1;
    return device;
}

} // namespace

const Library& Session::library()
{
    if (loaded)
        return *loaded;
    chooseDebugOutput(setup.debug);
    if (!setup.simulate.empty()) {
        simulation.emplace();
        simulation->trace(setup.trace);
        for (const std::string& model : setup.simulate)
            simulation->plug(model);
    }
    return loaded.emplace();
}

Session::~Session()
{
    for (const HostObject& object : opened)
        if (object.slot)
            object.model->calls.stopListening(object.host);
    for (const HostObject& object : opened)
        if (object.model->calls.destroy)
            object.model->calls.destroy(object.host);
    if (started)
        loaded->pyrux_exit();
}

Simulation& Session::simulator()
{
    if (setup.simulate.empty())
        throw UsageError("works with simulated devices only (--simulate)");
    library(); // loads it
    return *simulation;
}

std::vector<Device> Session::devices()
{
    const auto room = static_cast<std::size_t>(std::max(library().devNums(), 0));
    // A device may come between the two calls; the spare places are for the records that it may bring.
    std::vector<DevInfoRecord> records(room + 16);
    const auto count = static_cast<std::size_t>(std::max(library().devInfo(records.data()), 0));
    std::vector<Device> devices;
    for (std::size_t i = 0; i < std::min(count, records.size()); ++i)
        devices.push_back(makeDevice(records[i]));
    return devices;
}

void Session::start()
{
    if (started)
        return;
    // This program is no control application that other processes should hear of.
    library().pyrux_background(1);
    library().pyrux_init();
    started = true;
}

void Session::listen()
{
    start();
    library().registerDevNotify(&onHotplug);
    listening = true;
}

HostObject* Session::findOpened(const Model& model, const std::string& path)
{
    const auto isIt = [&](const HostObject& object) {
        return object.model == &model && (path.empty() || equalIgnoringCase(object.path, path));
    };
    const auto found = std::find_if(opened.rbegin(), opened.rend(), isIt);
    return found == opened.rend() ? nullptr : &*found;
}

HostObject& Session::openComputer(const Model& model)
{
    if (HostObject* const object = findOpened(model, ""))
        return *object;
    start();
    void* const host = model.calls.create(library().factory(model.command), "");
    if (!host)
        throw Failure(Exit::noDevice, "the library has no " + std::string(model.command));
    return opened.emplace_back(HostObject{&model, "", host, std::nullopt});
}

HostObject& Session::open(const Model& model, const std::string& path)
{
    if (model.identities.empty())
        return openComputer(model);
    std::vector<Device> candidates;
    for (Device& device : devices()) {
        const bool named = !path.empty() && equalIgnoringCase(device.path, path);
        if (named && device.model != &model)
            throw UsageError(device.path + " is no " + std::string(model.command));
        // A device that fits two rows of the catalogue has two records.
        const bool known = std::ranges::find(candidates, device.path, &Device::path) != candidates.end();
        if (!known && (named || (path.empty() && device.model == &model)))
            candidates.push_back(std::move(device));
    }
    if (candidates.size() > 1) {
        std::string message = "several devices are attached, name one with --device:";
        for (const Device& device : candidates)
            message += "\n  " + device.path;
        throw UsageError(message);
    }
    if (candidates.empty()) {
        // It has gone: its object goes on answering, as the library promises.
        if (HostObject* const object = findOpened(model, path))
            return *object;
        if (path.empty())
            throw Failure(Exit::noDevice, "no " + std::string(model.command) + " is attached");
    }

    start();
    const std::string wanted = candidates.empty() ? path : candidates.front().path;
    void* const host = model.calls.create(library().factory(model.command), wanted.c_str());
    if (!host)
        throw Failure(Exit::noDevice, "cannot open " + wanted);
    HostObject* object = findOpened(model, wanted);
    if (!object || object->host != host)
        object = &opened.emplace_back(HostObject{&model, wanted, host, std::nullopt});
    if (listening && !object->slot)
        listenTo(*object);
    return *object;
}

void Session::listenTo(HostObject& object)
{
    // Slots are taken in turn, so that a late event of a device that has gone is not taken for another's.
    for (std::size_t i = 0; i < slotCount; ++i) {
        const std::size_t slot = (nextSlot + i) % slotCount;
        if (listener(slot))
            continue;
        nextSlot = slot + 1;
        object.slot = slot;
        object.model->calls.listen(object.host, slot);
        return;
    }
    throw Failure(Exit::noDevice,
                  "more than " + std::to_string(slotCount) + " devices cannot be listened to");
}

const HostObject* Session::listener(std::size_t slot) const
{
    const auto found = std::ranges::find(opened, slot, &HostObject::slot);
    return found == opened.end() ? nullptr : &*found;
}

void Session::awaitClosed(const std::string& path)
{
    using namespace std::chrono_literals;
    constexpr auto limit = 5s;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (HostObject& object : opened) {
        if (!equalIgnoringCase(object.path, path))
            continue;
        object.slot.reset();
        while (object.model->calls.stopListening(object.host) != E_CLOSED) { // a call that sends nothing
            if (std::chrono::steady_clock::now() > deadline)
                throw Failure(Exit::refused, "the library has not closed " + path);
            std::this_thread::sleep_for(1ms);
        }
    }
}

void Session::drop(const std::string& path)
{
    for (HostObject& object : opened)
        if (object.slot && equalIgnoringCase(object.path, path)) {
            object.model->calls.stopListening(object.host);
            object.slot.reset();
        }
}

} // namespace pyrux::ctl
