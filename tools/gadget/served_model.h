#pragma once

#include "file_descriptor.h"
#include "simulator/firmware.h"
#include "usb_device.h"

#include <array>
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

    // For a poll loop. `port` is -1 while the device is not plugged in.
    int port() const { return file.get(); }
    int wakeUp() const { return wake.get(); } ///< Readable: look at `hasReports` anew.
    bool hasReports() const;                  ///< Input reports wait for the host.
    void takeReports();                       ///< Hands the host's reports to the model.
    void sendReports();                       ///< Hands input reports over until the host is to fetch them.
    void clearWakeUp();

private:
    using Report = std::array<std::uint8_t, 64>;

    void openNode();
    void queue(sim::Bytes payload);

    std::shared_ptr<sim::Firmware> model;
    Place place;
    Trace trace;
    UsbDevice usb;
    std::string node;
    FileDescriptor file;
    FileDescriptor wake;
    mutable std::mutex mutex; ///< Guards the two below: a model may send from a thread of its own.
    std::deque<Report> waiting;
    bool silent = false;
};

} // namespace pyrux::gadget
