#include "served_model.h"

#include "failure.h"

#include <algorithm>
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
    model->connect([this](sim::Bytes payload) { queue(payload); });
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
        openNode();
    } catch (const Failure&) {
        usb.unplug();
        throw;
    }
}

void ServedModel::openNode()
{
    node = usb.node(controlInterfaceOf(model->identity()));
    file = FileDescriptor(open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        throw Failure(Exit::refused, node + ": " + std::strerror(errno));
}

void ServedModel::unplug()
{
    // The node goes with the device, and must not be held any more when the device comes back.
    file.reset();
    usb.unplug();
    model->powerOff();
    const std::lock_guard lock(mutex);
    waiting.clear();
}

void ServedModel::setSilent(bool on)
{
    const std::lock_guard lock(mutex);
    silent = on;
    if (silent)
        waiting.clear();
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
    return ids.data() + (" at " + place.controller + ", " + node);
}

bool ServedModel::hasReports() const
{
    const std::lock_guard lock(mutex);
    return !waiting.empty();
}

void ServedModel::queue(sim::Bytes payload)
{
    {
        const std::lock_guard lock(mutex);
        if (silent || waiting.size() >= mostWaiting)
            return;
        Report report{};
        std::ranges::copy(payload.first(std::min(payload.size(), report.size())), report.begin());
        waiting.push_back(report);
    }
    eventfd_write(wake.get(), 1);
}

void ServedModel::clearWakeUp()
{
    eventfd_t ignored = 0;
    eventfd_read(wake.get(), &ignored);
}

void ServedModel::takeReports()
{
    // A read gives one transfer, or the next 64 bytes of a longer one. So each is a report: a full packet is
    // the whole of it, and a short one ends it, such as the byte that is left over from a report that a host
    // has sent with a report id.
    Report report;
    for (;;) {
        const ssize_t count = read(file.get(), report.data(), report.size());
        if (count > 0) {
            const sim::Bytes payload(report.data(), std::size_t(count));
            if (trace)
                trace('>', payload);
            model->output(payload);
        }
        if (count < 0 && errno != EINTR)
            return; // nothing left, or the host has just shut the device down
    }
}

void ServedModel::sendReports()
{
    const std::lock_guard lock(mutex);
    while (!waiting.empty()) {
        const ssize_t count = write(file.get(), waiting.front().data(), waiting.front().size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return;
        if (count > 0 && trace)
            trace('<', waiting.front());
        waiting.pop_front(); // also when the host has not set the device up: nobody is there to hear it
    }
}

} // namespace pyrux::gadget
