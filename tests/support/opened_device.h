#pragma once

#include "simulator/bus.h"
#include "tests/support/models.h"
#include "tests/support/raw_host.h"
#include "tests/support/scripted_device.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace pyrux::test {

/// A scripted device that is plugged in and opened through the library, its opening over.
/// @tparam Interface  void: calls go through the raw tables
template <class Interface>
class OpenedDevice {
public:
    OpenedDevice(Interface* (*factory)(const char*), const sim::Identity& identity,
                 const Prepare& prepare = {})
        : device(std::make_shared<ScriptedDevice>(identity))
    {
        if (prepare)
            prepare(*device);
        path = sim::plug(device);
        host = factory(path.c_str());
        EXPECT_NE(host, nullptr);
        forget();
    }

    ~OpenedDevice()
    {
        // A read that waits ends with the device, so that the reader is gone at once.
        sim::unplug(path);
        if (!host)
            return;
        if constexpr (std::is_void_v<Interface>)
            callHook(host, Hook::exit, true);
        else
            host->exit_device(1);
    }
    OpenedDevice(const OpenedDevice&) = delete;
    OpenedDevice& operator=(const OpenedDevice&) = delete;

    /// The output reports since the last call.
    std::string written(std::size_t atLeast = 0) { return takeWritten(path, atLeast); }

    void forget()
    {
        written();
        device->forget();
    }

    /// The object is not to be touched any more.
    void release() { host = nullptr; }

    Interface* operator->() const { return host; }

    std::shared_ptr<ScriptedDevice> device;
    std::string path;
    Interface* host = nullptr;
};

/// A model that is opened. It answers what its opening asks, then what the test lays down.
template <class Model>
class Opened : public OpenedDevice<typename Model::Interface> {
public:
    explicit Opened(const Prepare& prepare = {}) : Opened(identityOf<Model>(), prepare) {}

    explicit Opened(const sim::Identity& identity, const Prepare& prepare = {})
        : OpenedDevice<typename Model::Interface>(Model::factory, identity, [&](ScriptedDevice& device) {
              Model::facts().prepare(device);
              if (prepare)
                  prepare(device);
          })
    {
    }
};

} // namespace pyrux::test
