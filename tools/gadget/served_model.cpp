#include "served_model.h"

#include "failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/eventfd.h>

namespace pyrux::gadget {

namespace {

/// Input reports that a device keeps while the host fetches none. Further ones are lost, as they are when a
/// device's buffer is full.
constexpr std::size_t mostWaiting = 64;

} // namespace

ServedModel::ServedModel(std::shared_ptr<sim::Firmware> served, Place at, Trace told)
    : model(std::move(served)), place(std::move(at)), trace(std::move(told)),
      usb(place.folder, model->identity(), interfacesOf(model->identity())),
      wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    const std::size_t control = controlInterfaceOf(model->identity());
    std::size_t number = 0;
    for (HidInterface& interface : interfacesOf(model->identity())) {
        const std::size_t here = number++;
        if (!interface.carriesModel)
            continue;
        lines.insert(here == control ? lines.begin() : lines.end(),
                     Line{here, std::move(interface), {}, {}, {}});
    }
    model->connect([this](const sim::Channel& from, sim::Bytes payload) { queue(from, payload); });
}

ServedModel::~ServedModel()
{
    model->powerOff();
    model->connect({});
}

void ServedModel::plug()
{
    model->powerOn();
    usb.plug(place.controller);
    try {
        openNodes();
    } catch (const Failure&) {
        closeNodes();
        usb.unplug();
        throw;
    }
}

void ServedModel::openNodes()
{
    for (Line& line : lines) {
        line.node = usb.node(line.place);
        line.file = FileDescriptor(open(line.node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (!line.file)
            throw Failure(Exit::refused, line.node + ": " + std::strerror(errno));
    }
}

void ServedModel::closeNodes()
{
    for (Line& line : lines)
        line.file.reset();
}

void ServedModel::unplug()
{
    // The nodes go with the device, and must not be held any more when the device comes back.
    closeNodes();
    usb.unplug();
    model->powerOff();
    const std::lock_guard lock(mutex);
    for (Line& line : lines)
        line.waiting.clear();
}

void ServedModel::setSilent(bool on)
{
    const std::lock_guard lock(mutex);
    silent = on;
    if (silent)
        for (Line& line : lines)
            line.waiting.clear();
}

bool ServedModel::happen(const std::string& event, const std::vector<int>& values)
{
    return isPlugged() && model->happen(event, values);
}

std::string ServedModel::whereabouts() const
{
    std::array<char, 16> ids{};
    const sim::Identity& identity = model->identity();
    std::snprintf(ids.data(), ids.size(), "%04x:%04x", identity.vid, identity.pid);
    std::string text = ids.data() + (" at " + place.controller);
    for (const Line& line : lines)
        text += ", " + line.node;
    return text;
}

bool ServedModel::hasReports(std::size_t port) const
{
    const std::lock_guard lock(mutex);
    return !lines[port].waiting.empty();
}

void ServedModel::queue(const sim::Channel& from, sim::Bytes payload)
{
    const auto line =
        std::ranges::find(lines, from.interface, [](const Line& one) { return one.interface.number; });
    if (line == lines.end())
        return;
    Report report;
    if (from.id != 0)
        report.push_back(from.id);
    report.insert(report.end(), payload.begin(), payload.end());
    {
        const std::lock_guard lock(mutex);
        if (silent || line->waiting.size() >= mostWaiting)
            return;
        line->waiting.push_back(std::move(report));
    }
    eventfd_write(wake.get(), 1);
}

void ServedModel::clearWakeUp()
{
    eventfd_t ignored = 0;
    eventfd_read(wake.get(), &ignored);
}

void ServedModel::takeReports(std::size_t port)
{
    const Line& line = lines[port];
    // A read gives one transfer, or the next packet of a longer one. So each is a report: a full packet is
    // the whole of it, and a short one ends it, such as the byte that is left over from a report that a host
    // has sent with a report id to an interface without.
    Report buffer(line.interface.reportLength);
    for (;;) {
        const ssize_t count = read(line.file.get(), buffer.data(), buffer.size());
        if (count > 0) {
            const sim::Bytes report(buffer.data(), std::size_t(count));
            if (trace)
                trace('>', report);
            const std::uint8_t id = line.interface.hasIds ? report[0] : 0;
            model->outputOn({line.interface.number, id}, report.subspan(line.interface.hasIds));
        }
        if (count < 0 && errno != EINTR)
            return; // nothing left, or the host has just shut the device down
    }
}

void ServedModel::sendReports(std::size_t port)
{
    const std::lock_guard lock(mutex);
    Line& line = lines[port];
    while (!line.waiting.empty()) {
        const Report& report = line.waiting.front();
        const ssize_t count = write(line.file.get(), report.data(), report.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        if (count > 0 && trace)
            trace('<', report);
        line.waiting.pop_front(); // also when the host has not set the device up: nobody is there to hear it
    }
}

} // namespace pyrux::gadget
