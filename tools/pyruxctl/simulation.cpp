#include "simulation.h"

#include "console.h"
#include "failure.h"
#include "text.h"

#include "simulator/bus.h"

#include <array>

namespace pyrux::ctl {

namespace {

std::vector<std::filesystem::path> candidates()
{
    const auto here = programFolder();
    return {
        here / PYRUX_LIBRARY_FOLDER / "pyrux/simulator" / PYRUX_SIMULATOR_NAME, // the installed tree
        here / "../lib/pyrux/simulator" / PYRUX_SIMULATOR_NAME,
        here / "../simulator" / PYRUX_SIMULATOR_NAME, // the build tree
        here / PYRUX_SIMULATOR_NAME, // the build tree on Windows, where a program's folder holds its DLLs
    };
}

template <class Function>
Function* get(const SharedLibrary& library, const char* name)
{
    void* const symbol = library.find(name);
    if (!symbol)
        throw Failure(Exit::notLoaded,
                      library.file().string() + " is not the simulator: it has no \"" + name + "\"");
    return reinterpret_cast<Function*>(symbol);
}
#define SIMULATOR(name) get<decltype(::name)>(library, #name)

/// "> 41 80" for a report to the device, "< 41 80" for one to the host, without the zeros at its end. The
/// report id in front of an output report is 0 and left out.
void traceReport(const char*, int direction, const unsigned char* bytes, int length)
{
    std::basic_string_view<unsigned char> report(bytes, static_cast<std::size_t>(length));
    if (direction == 0 && !report.empty() && report.front() == 0)
        report.remove_prefix(1);
    while (report.size() > 1 && report.back() == 0)
        report.remove_suffix(1);
    std::string line = direction == 0 ? "  >" : "  <";
    for (const unsigned char byte : report)
        line += {' ', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    console::note(line);
}

} // namespace

Simulation::Simulation() : library(loadFirst("PYRUX_SIMULATOR", candidates()))
{
    SIMULATOR(pyrux_sim_plug); // so that a hidapi that is no stand-in is told at once
}

void Simulation::trace(bool on)
{
    SIMULATOR(pyrux_sim_trace)(on ? traceReport : nullptr);
}

std::string Simulation::plug(const std::string& model)
{
    std::array<char, 1024> path{};
    if (SIMULATOR(pyrux_sim_plug)(model.c_str(), path.data()) != 0)
        throw UsageError("the simulator has no model \"" + model + "\"; it has " +
                         SIMULATOR(pyrux_sim_models)());
    plugged.push_back({model, path.data()});
    return path.data();
}

std::string Simulation::unplug(const std::string& which)
{
    const auto found = find(which);
    pulled.push_back(*found);
    plugged.erase(found);
    SIMULATOR(pyrux_sim_unplug)(pulled.back().path.c_str());
    return pulled.back().path;
}

std::string Simulation::replug()
{
    if (pulled.empty())
        throw UsageError("no device was pulled out");
    plugged.push_back(pulled.back());
    pulled.pop_back();
    SIMULATOR(pyrux_sim_replug)(plugged.back().path.c_str());
    return plugged.back().path;
}

void Simulation::event(const std::string& which, const std::string& name, const std::vector<int>& values)
{
    const auto found = find(which);
    if (SIMULATOR(pyrux_sim_event)(found->path.c_str(), name.c_str(), values.data(),
                                   static_cast<int>(values.size())) != 0)
        throw UsageError(found->model + " cannot do \"" + name + "\" now, or not with these values");
}

Picture Simulation::picture(const std::string& which)
{
    Picture zones;
    SIMULATOR(pyrux_sim_picture)
    (
        find(which)->path.c_str(),
        [](void* context, const char* name, const unsigned char* colors, int leds) {
            LightZone zone{name, {}};
            for (int i = 0; i < leds; ++i, colors += 3)
                zone.leds.push_back({colors[0], colors[1], colors[2]});
            static_cast<Picture*>(context)->push_back(std::move(zone));
        },
        &zones);
    return zones;
}

std::vector<Simulation::Plugged>::iterator Simulation::find(const std::string& which)
{
    auto found = plugged.end();
    for (auto at = plugged.begin(); at != plugged.end(); ++at) {
        if (!which.empty() && at->model != which && !equalIgnoringCase(at->path, which))
            continue;
        if (found != plugged.end())
            throw UsageError("several devices are plugged in, name one by its path");
        found = at;
    }
    if (found == plugged.end())
        throw UsageError(which.empty() ? "no device is plugged in" : "no \"" + which + "\" is plugged in");
    return found;
}

} // namespace pyrux::ctl
