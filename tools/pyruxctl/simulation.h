#pragma once

#include "loader.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux::ctl {

/// The LEDs of one part of a device, each as red, green, blue.
struct LightZone {
    std::string name;
    std::vector<std::array<std::uint8_t, 3>> leds;
    bool operator==(const LightZone&) const = default;
};
using Picture = std::vector<LightZone>;

/// The bus of the hidapi stand-in. To be made before the PYRUX library is loaded, which then finds the
/// stand-in's devices where it looks for the system's.
class Simulation {
public:
    /// Loads the stand-in: the file of PYRUX_SIMULATOR, or the one of the installation or the build tree.
    /// Throws Failure.
    Simulation();

    /// Shows the bytes on the wire, or stops to.
    void trace(bool on);

    /// Plugs a model in. Throws UsageError for a model that it does not know.
    /// @return the device path
    std::string plug(const std::string& model);

    /// Pulls a device out.
    /// @param which  its path, its model, or empty for the only one
    /// @return the device path
    std::string unplug(const std::string& which);

    /// Plugs the device in again that was pulled out last.
    /// @return the device path
    std::string replug();

    struct Plugged {
        std::string model;
        std::string path;
    };
    const std::vector<Plugged>& devices() const { return plugged; }

    /// What the LEDs of a device show now.
    /// @param which  its path, its model, or empty for the only one
    Picture picture(const std::string& which);

    /// Lets a device do something by itself. Throws UsageError when the model has no such event.
    void event(const std::string& which, const std::string& name, const std::vector<int>& values);

private:
    std::vector<Plugged>::iterator find(const std::string& which);

    SharedLibrary library;
    std::vector<Plugged> plugged;
    std::vector<Plugged> pulled; ///< In the order in which they were pulled out.
};

} // namespace pyrux::ctl
