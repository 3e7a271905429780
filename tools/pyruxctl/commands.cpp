#include "commands.h"

#include "console.h"
#include "text.h"
#include "views.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace pyrux::ctl {

namespace {

struct CodeName {
    _error code;
    std::string_view name;
};
constexpr CodeName codeNames[]{
    {E_OK, "E_OK"},
    {E_FAIL, "E_FAIL"},
    {E_INVALID_SET, "E_INVALID_SET"},
    {E_INVALID_GET, "E_INVALID_GET"},
    {E_INVALID_MODE, "E_INVALID_MODE"},
    {E_INVALID_STATE, "E_INVALID_STATE"},
    {E_INVALID_PARAM, "E_INVALID_PARAM"},
    {E_PIPE_FAIL, "E_PIPE_FAIL"},
    {E_CFG_FAIL, "E_CFG_FAIL"},
    {E_NOT_OPEN, "E_NOT_OPEN"},
    {E_CLOSED, "E_CLOSED"},
    {E_WRITE_TIMEOUT, "E_WRITE_TIMEOUT"},
    {E_NO_SPACE, "E_NO_SPACE"},
    {E_NOT_SUPPORTED, "E_NOT_SUPPORTED"},
    {E_WRONG_REPLY, "E_WRONG_REPLY"},
};

std::string idText(std::uint32_t vid, std::uint32_t pid)
{
    return hexadecimal(vid, 4) + ":" + hexadecimal(pid, 4);
}

std::string interfaceText(const Device& device)
{
    return device.interface ? std::to_string(*device.interface) : "-";
}

std::string goodOrBad(bool good)
{
    return good ? "ok" : "bad";
}

Json toJson(const Device& device)
{
    return {
        {"model", device.model ? Json(device.model->command) : Json()},
        {"name", device.name},
        {"vid", hexadecimal(device.vid, 4)},
        {"pid", hexadecimal(device.pid, 4)},
        {"interface", device.interface ? Json(*device.interface) : Json()},
        {"path", device.path},
        {"product", device.product},
        {"vendor", device.vendor},
        {"serial", device.serial},
        {"release", device.release},
        {"driverOk", device.driverOk},
        {"statusOk", device.statusOk},
    };
}

Json toJson(const std::vector<Device>& devices)
{
    Json array = Json::array();
    for (const Device& device : devices)
        array.push_back(toJson(device));
    return array;
}

using Row = std::array<std::string, 9>;

void printTable(const std::vector<Row>& rows)
{
    std::array<std::size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        console::print(line.substr(0, line.find_last_not_of(' ') + 1));
    }
}

void list(Session& session, const Style& style)
{
    const std::vector<Device> devices = session.devices();
    if (style.json)
        return console::print(toPrettyText(toJson(devices)));
    if (devices.empty()) {
        if (!style.quiet)
            console::note("no device is attached");
        return;
    }
    std::vector<Row> rows{
        {"NAME", "ID", "INTERFACE", "PRODUCT", "SERIAL", "RELEASE", "DRIVER", "STATUS", "PATH"}};
    for (const Device& device : devices)
        rows.push_back({device.name, idText(device.vid, device.pid), interfaceText(device), device.product,
                        device.serial, device.release, goodOrBad(device.driverOk), goodOrBad(device.statusOk),
                        device.path});
    printTable(rows);
}

/// What the version exports tell of a device.
struct Versions {
    std::array<char, 512> bluetooth{};
    std::array<std::uint16_t, 2> release{}; ///< Of a receiver, and of any other device.
    std::uint8_t driver = 0;
};

Versions versionsOf(const Library& library, const Device& device)
{
    Versions versions;
    const std::string path = upperCase(device.path); // the form in which these exports read it
    library.getBTVersion(path.c_str(), versions.bluetooth.data());
    library.getDGVersion(path.c_str(), versions.release.data());
    library.getDriverVersion(path.c_str(), &versions.driver);
    return versions;
}

std::string libraryVersion(const Library& library)
{
    float version = 0;
    library.pyrux_version(&version);
    std::array<std::byte, sizeof version> memory;
    std::memcpy(memory.data(), &version, sizeof version);
    return toText(toJson(typeOf<float>, memory.data()));
}

Json infoAsJson(Session& session)
{
    const Library& library = session.library();
    Json devices = Json::array();
    for (const Device& device : session.devices()) {
        const Versions versions = versionsOf(library, device);
        Json entry = toJson(device);
        entry["bluetoothVersion"] = versions.bluetooth.data();
        entry["receiverVersion"] = versions.release[0];
        entry["deviceVersion"] = versions.release[1];
        entry["driverVersion"] = versions.driver;
        devices.push_back(std::move(entry));
    }
    return {
        {"version", parseJson(libraryVersion(library), "version")},
        {"library", library.file().string()},
        {"devNums", library.devNums()},
        {"devices", std::move(devices)},
    };
}

void info(Session& session, const Style& style)
{
    if (style.json)
        return console::print(toPrettyText(infoAsJson(session)));
    const Library& library = session.library();
    const auto line = [](const std::string& name, const std::string& value) {
        console::print(name + std::string(20 - name.size(), ' ') + (value.empty() ? "-" : value));
    };
    line("version", libraryVersion(library));
    line("library", library.file().string());
    line("devNums", std::to_string(library.devNums()));
    for (const Device& device : session.devices()) {
        const Versions versions = versionsOf(library, device);
        console::print("");
        line("name", device.name);
        line("  id", idText(device.vid, device.pid));
        line("  interface", interfaceText(device));
        line("  product", device.product);
        line("  vendor", device.vendor);
        line("  serial", device.serial);
        line("  release", device.release);
        line("  driver", goodOrBad(device.driverOk));
        line("  status", goodOrBad(device.statusOk));
        line("  bluetooth version", versions.bluetooth.data());
        line("  receiver version", std::to_string(versions.release[0]));
        line("  device version", std::to_string(versions.release[1]));
        line("  driver version", std::to_string(versions.driver));
        line("  path", device.path);
    }
}

/// Opens each attached device whose operations pyruxctl knows, or the one that is named.
void openAll(Session& session, const Command& command)
{
    bool found = command.device.empty();
    for (const Device& device : session.devices()) {
        if (!command.device.empty() && !equalIgnoringCase(device.path, command.device))
            continue;
        found = true;
        if (!device.model)
            continue;
        try {
            session.open(*device.model, device.path);
            if (!command.style.quiet && !command.style.json)
                console::note("watching " + std::string(device.model->command) + " " + device.path);
        } catch (const Failure& failure) { // the others can still be watched
            if (!command.device.empty())
                throw;
            console::note(std::string("pyruxctl: ") + failure.what());
        }
    }
    if (!found)
        throw Failure(Exit::noDevice, "no device " + command.device + " is attached");
}

/// Follows a device that has come or gone.
void follow(Session& session, const HotplugEvent& event, const Command& command)
{
    if (event.plugged != 1)
        return session.drop(event.path);
    const Model* const model = findModel(event.vid, event.pid);
    if (!model)
        return;
    try {
        session.open(*model, event.path);
    } catch (const Failure& failure) {
        if (!command.style.quiet)
            console::note(std::string("pyruxctl: ") + failure.what());
    }
}

bool isOf(const Event& event, const std::string& path)
{
    const auto* const hotplug = std::get_if<HotplugEvent>(&event);
    return !hotplug || path.empty() || equalIgnoringCase(hotplug->path, path);
}

void watch(Session& session, const Command& command)
{
    using Clock = EventQueue::Clock;
    console::catchInterrupt();
    auto deadline = Clock::time_point::max();
    if (command.seconds)
        deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(*command.seconds));
    session.listen();
    openAll(session, command);
    for (unsigned shown = 0; !command.count || shown < *command.count;) {
        const auto event = events().pop(deadline);
        if (!event)
            return;
        if (!isOf(*event, command.device))
            continue;
        showEvent(session, *event, command.style);
        if (const auto* const hotplug = std::get_if<HotplugEvent>(&*event))
            follow(session, *hotplug, command);
        ++shown;
    }
}

Json eventAsJson(const Session& session, const DeviceEvent& event)
{
    const HostObject* const object = session.listener(event.slot);
    return {
        {"kind", "event"},
        {"model", object ? Json(object->model->command) : Json()},
        {"path", object ? Json(object->path) : Json()},
        {"event", event.event},
        {"text", object ? Json(object->model->eventText(event.event)) : Json()},
        {"value", event.value},
    };
}

Json eventAsJson(const Session&, const HotplugEvent& event)
{
    return {
        {"kind", event.plugged == 1 ? "plugged" : "unplugged"},
        {"name", event.name},
        {"path", event.path},
        {"vid", hexadecimal(event.vid, 4)},
        {"pid", hexadecimal(event.pid, 4)},
        {"driverOk", event.driverOk == 1},
        {"statusOk", event.statusOk == 1},
    };
}

std::string eventAsLine(const Session& session, const DeviceEvent& event)
{
    const HostObject* const object = session.listener(event.slot);
    const std::string numbers = std::to_string(event.event) + ", value " + std::to_string(event.value);
    if (!object)
        return "event " + numbers;
    return std::string(object->model->command) + ": " + std::string(object->model->eventText(event.event)) +
           " (event " + numbers + ") " + object->path;
}

std::string eventAsLine(const Session&, const HotplugEvent& event)
{
    return std::string(event.name) + ": " + (event.plugged == 1 ? "plugged in" : "unplugged") + " (" +
           idText(event.vid, event.pid) + ", driver " + goodOrBad(event.driverOk == 1) + ", status " +
           goodOrBad(event.statusOk == 1) + ") " + event.path;
}

} // namespace

void showEvent(const Session& session, const Event& event, const Style& style)
{
    console::print(std::visit(
        [&](const auto& e) { return style.json ? toText(eventAsJson(session, e)) : eventAsLine(session, e); },
        event));
}

std::string outputText(const std::string& name, const Json& value)
{
    if (!value.is_object())
        return name + ": " + toText(value);
    std::string text;
    for (const auto& [key, inner] : value.items())
        text += (text.empty() ? "" : "\n") + key + ": " + toText(inner);
    return text;
}

std::string resultLine(const Command& command, std::int32_t code)
{
    const auto found =
        std::ranges::find(codeNames, code, [](const CodeName& c) { return std::int32_t{c.code}; });
    return command.name + " " + command.words.front() + ": " + std::to_string(code) +
           (found == std::end(codeNames) ? "" : " " + std::string(found->name));
}

Result callOperation(Session& session, const Command& command, const Documents& documents)
{
    const Model& model = *findModel(command.name);
    const Operation* const operation = model.findOperation(command.words.front());
    if (!operation)
        throw UsageError(command.name + " has no operation \"" + command.words.front() + "\"");
    try {
        Call call(*operation, {command.words.begin() + 1, command.words.end()}, documents);
        const std::int32_t code = call.on(session.open(model, command.device).host);
        return {code, call.outputs()};
    } catch (const UsageError& error) {
        throw UsageError(command.name + " " + operation->synopsis() + ": " + error.what());
    }
}

Json valueOf(const Result& result)
{
    if (result.outputs.empty())
        return nullptr;
    return result.outputs.size() == 1 ? result.outputs.front() : result.outputs;
}

void showResult(const Command& command, const Result& result)
{
    if (result.code < 0)
        return console::note(resultLine(command, result.code));
    if (command.style.json)
        return console::print(toPrettyText(valueOf(result)));
    for (const auto& [name, value] : result.outputs.items())
        console::print(outputText(name, value));
    if (result.outputs.empty() && !command.style.quiet)
        console::print("ok");
}

Exit execute(Session& session, const Command& command, const Documents& documents)
{
    if (command.name == "list") {
        list(session, command.style);
    } else if (command.name == "info") {
        info(session, command.style);
    } else if (command.name == "watch") {
        watch(session, command);
    } else if (command.name == "lights") {
        showLights(session, command);
    } else if (command.words.front() == monitorWord && !findModel(command.name)->monitored.empty()) {
        return monitor(session, command);
    } else {
        const Result result = callOperation(session, command, documents);
        showResult(command, result);
        return result.code < 0 ? Exit::refused : Exit::fine;
    }
    return Exit::fine;
}

} // namespace pyrux::ctl
