#pragma once

#include "pyrux/pyrux.h"
#include "simulator/bus.h"
#include "tests/support/scripted_device.h"
#include "tests/support/timing.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace pyrux::test {

/// What a fresh RD210 is told.
inline constexpr const char* startUp = "42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01 | 42 00 40 00 01 | "
                                       "42 10 40 00 01 | 43 00 00 00 01";

/// Takes the output reports of a device since the last call, as `wire` writes them. Waits until there are
/// `atLeast`. A report that is not 65 bytes long or has a report id stands in full in brackets.
std::string takeWritten(const std::string& path, std::size_t atLeast = 0);

/// A scripted device that is plugged in and opened through the library, its start-up reports behind it.
template <class Interface>
class OpenedMouse {
public:
    OpenedMouse(Interface* (*factory)(const char*), const sim::Identity& identity,
                const std::function<void(ScriptedDevice&)>& prepare = {})
        : device(std::make_shared<ScriptedDevice>(identity))
    {
        if (prepare)
            prepare(*device);
        path = sim::plug(device);
        host = factory(path.c_str());
        EXPECT_NE(host, nullptr);
        forget();
    }

    ~OpenedMouse()
    {
        // A read that waits ends with the device, so that the reader is gone at once.
        sim::unplug(path);
        if (host)
            host->exit_device(1);
    }
    OpenedMouse(const OpenedMouse&) = delete;
    OpenedMouse& operator=(const OpenedMouse&) = delete;

    /// The output reports since the last call.
    std::string written(std::size_t atLeast = 0) { return takeWritten(path, atLeast); }

    void forget()
    {
        written();
        device->forget();
    }

    Interface* operator->() const { return host; }

    std::shared_ptr<ScriptedDevice> device;
    std::string path;
    Interface* host = nullptr;
};

/// RD210.
class Mouse : public OpenedMouse<PYRUX_RD210_Base> {
public:
    explicit Mouse(const std::function<void(ScriptedDevice&)>& prepare = {}) : Mouse(rd210Identity(), prepare)
    {
    }

    explicit Mouse(const sim::Identity& identity, const std::function<void(ScriptedDevice&)>& prepare = {})
        : OpenedMouse(rd210, identity, prepare)
    {
    }
};

} // namespace pyrux::test
