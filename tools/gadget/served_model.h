#pragma once

#include "file_descriptor.h"
#include "simulator/firmware.h"
#include "usb_device.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// @file
/// A firmware model as a USB device: plugged in and out, its reports carried to and from the kernel.

namespace pyrux::gadget {

/// Where a device is presented.
struct Place {
    std::string folder;     ///< Name of the device in the kernel's gadget configuration.
    std::string controller; ///< Name of the device controller.
};

/// Is told of a report on the wire: '>' to the device, '<' to the host. Called before the model answers.
using Trace = std::function<void(char direction, sim::Bytes report)>;

class ServedModel {
public:
    /// Makes the device; it is not yet plugged in.
    ServedModel(std::shared_ptr<sim::Firmware> model, Place place, Trace trace = {});
    ~ServedModel();

    void plug();
    void unplug();
    bool isPlugged() const { return usb.isPlugged(); }

    /// A silent device takes reports and sends none.
    void setSilent(bool on);

    /// As Firmware::happen; false also while the device is not plugged in.
    bool happen(const std::string& event, const std::vector<int>& values);
    std::vector<std::string> events() const { return model->events(); }

    /// "3a7e:012f at dummy_udc.0, /dev/hidg1"
    std::string whereabouts() const;

    // For a poll loop. A port is an interface through which the model speaks; each has a file, -1 while the
    // device is not plugged in.
    std::size_t ports() const { return lines.size(); }
    int port(std::size_t number) const { return lines[number].file.get(); }
    bool hasReports(std::size_t port) const;  ///< Input reports wait for the host.
    void takeReports(std::size_t port);       ///< Hands the host's reports to the model.
    void sendReports(std::size_t port);       ///< Hands input reports over until the host is to fetch them.
    int wakeUp() const { return wake.get(); } ///< Readable: look at `hasReports` anew.
    void clearWakeUp();

private:
    using Report = std::vector<std::uint8_t>;

    struct Line {
        std::size_t place; ///< Of the interface in the device.
        HidInterface interface;
        std::string node;
        FileDescriptor file;
        std::deque<Report> waiting; ///< Guarded by `mutex`.
    };

    void openNodes();
    void closeNodes();
    void queue(const sim::Channel& from, sim::Bytes payload);

    std::shared_ptr<sim::Firmware> model;
    Place place;
    Trace trace;
    UsbDevice usb;
    std::vector<Line> lines; ///< That of the commands first.
    FileDescriptor wake;
    mutable std::mutex mutex; ///< A model may send from a thread of its own.
    bool silent = false;      ///< Guarded by `mutex`.
};

} // namespace pyrux::gadget
