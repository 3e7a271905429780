#pragma once

#include "pyrux/pyrux.h"
#include "tests/kernel/gadget.h"
#include "tests/kernel/hidraw.h"

#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// @file
/// A simulated RD210 on the virtual machine's USB bus, and its host object.

namespace pyrux::test {

/// Collects what the notification callback is given. One for the process, since a callback carries nothing of
/// its own.
class Events {
public:
    static void callback(NotifyRecord* record);

    /// Waits for the next one, and gives it as "event:value"; "none" when it does not come.
    static std::string next();
};

/// The path that `devInfo` gives for the node of a hidraw device; empty when it lists none.
std::string pathOf(const std::string& node);

/// Keeps the number of a node from being given out again, to the end of the process: the library returns the
/// object that it has for a path until it has heard of the device's removal.
void keepNumberOf(const HidrawNode& node);

class RD210Rig : public testing::Test {
protected:
    static constexpr auto vid = "3a7e";
    static constexpr auto pid = "012f";

    /// Plugs the device in and opens it; the reports of the start-up are behind it.
    void SetUp() override;
    void TearDown() override;
    virtual std::vector<std::string> gadgetArguments() const { return {"--trace", "rd210"}; }

    /// Waits for the device's nodes.
    void waitForDevice();
    PYRUX_RD210_Base* openDevice();

    void unplug();
    void plugAgain();

    Udev udev;
    std::unique_ptr<Gadget> gadget;
    std::map<std::string, HidrawNode> nodes; ///< By interface.
    PYRUX_RD210_Base* mouse = nullptr;
};

/// How long a call takes.
template <class Call>
std::chrono::milliseconds timeOf(Call&& call)
{
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

} // namespace pyrux::test
