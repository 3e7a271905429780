#pragma once

#include "library.h"
#include "models.h"
#include "simulation.h"

#include <optional>
#include <string>
#include <vector>

namespace pyrux::ctl {

/// How a session is set up.
struct Setup {
    std::vector<std::string> simulate; ///< Models to plug in; empty: the real devices.
    bool trace = false;
    bool debug = false;
};

/// One record of `devInfo`.
struct Device {
    const Model* model; ///< Null for a device whose operations pyruxctl does not know.
    std::string name;   ///< The catalogue's name, "-" without a model.
    std::string path;
    std::string product;
    std::string vendor;
    std::string serial;
    std::uint32_t vid;
    std::uint32_t pid;
    std::string release; ///< Such as "1.00".
    std::optional<int> interface;
    bool driverOk;
    bool statusOk;
};

/// A host object of the library.
struct HostObject {
    const Model* model;
    std::string path;
    void* host;
    std::optional<std::size_t> slot; ///< Where its events arrive, while it is listened to.
};

/// The library, loaded and started as needed, with the objects that were opened. Ending it shuts the devices
/// down.
class Session {
public:
    explicit Session(Setup setup) : setup(std::move(setup)) {}
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// The library; the simulator is loaded in front of it if asked for. Throws Failure when they cannot be
    /// loaded.
    const Library& library();

    /// The bus of simulated devices. Throws UsageError without --simulate.
    Simulation& simulator();

    std::vector<Device> devices();

    /// From now on opened devices, and the library's hotplug events, go to `events()`.
    void listen();

    /// The host object of a device. Throws Failure: not there, cannot be opened, or several to choose from.
    /// @param path  as `devInfo` gives it, in any case; empty: the only attached device of the model, or the
    ///              last opened one when none is attached any more
    HostObject& open(const Model& model, const std::string& path);

    /// The object whose events arrive at a slot, or null.
    const HostObject* listener(std::size_t slot) const;

    /// Waits until the library has closed the objects of a device that was pulled out. Throws Failure when it
    /// does not.
    void awaitClosed(const std::string& path);

    /// Stops listening to a device that has gone.
    void drop(const std::string& path);

private:
    void start();
    HostObject& openComputer(const Model& model);
    HostObject* findOpened(const Model& model, const std::string& path);
    void listenTo(HostObject& object);

    const Setup setup;
    std::optional<Simulation> simulation;
    std::optional<Library> loaded;
    bool started = false;
    bool listening = false;
    std::size_t nextSlot = 0;
    std::vector<HostObject>
        opened; ///< In order of their opening. The objects themselves live as long as the process.
};

} // namespace pyrux::ctl
