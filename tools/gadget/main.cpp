#include "failure.h"
#include "server.h"

#include "simulator/models.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <optional>

namespace {

using namespace pyrux;
using namespace pyrux::gadget;

constexpr auto footer = R"(Commands, one per line on the standard input or the socket:
  event NAME [VALUE...]   let the device do something by itself
  events                  list the names of "event"
  unplug, plug            pull the device out, plug it in again
  silent on|off           take reports and send none
  quit                    take the device away and end; so do SIGINT, SIGTERM and SIGHUP

Exit codes:
  0  ended by "quit" or a signal
  1  the system refused something
  2  usage error
  3  this machine cannot present a device: no gadget interface, no controller, no right

See pyrux-gadget(8).)";

struct Options {
    std::string model;
    Place place;
    std::string socket;
    bool trace = false;
};

/// "> 41 80", without the zeros that fill a report.
void printReport(char direction, sim::Bytes report)
{
    while (report.size() > 1 && report.back() == 0)
        report = report.first(report.size() - 1);
    std::string line(1, direction);
    for (const std::uint8_t byte : report)
        line += {' ', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    std::puts(line.c_str());
    std::fflush(stdout);
}

std::string listOfModels()
{
    std::string list;
    for (const std::string& name : sim::firmwareNames())
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

/// @return none: what was asked for has been printed
std::optional<Options> parse(int argc, char** argv)
{
    CLI::App app("Presents a simulated device as a real USB device, through the kernel's gadget interface.",
                 "pyrux-gadget");
    Options options;
    bool list = false;
    app.add_option("MODEL", options.model, "Model of the device, such as rd210");
    app.add_option("--udc", options.place.controller,
                   "Device controller; default: the first in /sys/class/udc")
        ->type_name("NAME");
    app.add_option("--name", options.place.folder,
                   "Name of the device in the gadget configuration; default: pyrux-MODEL")
        ->type_name("NAME");
    app.add_option("--socket", options.socket, "Take commands on this socket too")->type_name("PATH");
    app.add_flag("--trace", options.trace,
                 "Print each report, as payload without the zeros at its end: \"> 41 80\" to the device, "
                 "\"< 41 80\" to the host");
    app.add_flag("--list", list, "List the models and exit");
    app.set_version_flag("--version", PYRUX_VERSION, "Show the version and exit");
    app.footer(footer);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            throw Failure(Exit::usage, std::string(error.what()) + "; --help tells more");
        app.exit(error);
        return std::nullopt;
    }
    if (list) {
        std::printf("%s\n", listOfModels().c_str());
        return std::nullopt;
    }
    if (options.model.empty())
        throw Failure(Exit::usage, "which model? There are: " + listOfModels());
    if (options.place.folder.empty())
        options.place.folder = "pyrux-" + options.model;
    if (options.place.folder.front() == '.' || options.place.folder.find('/') != std::string::npos)
        throw Failure(Exit::usage, "--name: \"" + options.place.folder + "\" cannot be a folder's name");
    return options;
}

void serve(Options options)
{
    const std::shared_ptr<sim::Firmware> model = sim::makeFirmware(options.model);
    if (!model)
        throw Failure(Exit::usage, "there is no model \"" + options.model + "\", only: " + listOfModels());
    if (options.place.controller.empty())
        options.place.controller = firstController();
    // From here on a signal does not leave a half-made device behind.
    const FileDescriptor signals = endingSignals();
    std::signal(SIGPIPE, SIG_IGN);
    const std::unique_ptr<ControlSocket> socket = options.socket.empty()
                                                      ? std::make_unique<ControlSocket>()
                                                      : std::make_unique<ControlSocket>(options.socket);
    ServedModel device(model, options.place, options.trace ? printReport : Trace());
    device.plug();
    std::printf("%s is %s\n", options.model.c_str(), device.whereabouts().c_str());
    std::fflush(stdout);
    Server(device, signals, *socket).run();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (std::optional<Options> options = parse(argc, argv))
            serve(std::move(*options));
        return int(Exit::fine);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "pyrux-gadget: %s\n", failure.what());
        return int(failure.exit);
    }
}
