#include "command_line.h"

#include "failure.h"
#include "views.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
#include <sstream>

namespace pyrux::ctl {

namespace {

constexpr auto exitCodes = R"(Exit codes:
  0  done
  1  the operation gave an error code, or a script did not find what it expected
  2  usage error
  3  the device is not there or cannot be opened
  4  the library or the simulator cannot be loaded

Environment: PYRUX_LIBRARY, PYRUX_SIMULATOR, PYRUX_DEBUG_OUTPUT. See pyruxctl(1).)";

constexpr auto scriptHelp =
    R"(A line is a command of pyruxctl ("rd210 changeDpiLevel 3"), a comment ("# ..."), or one of:
  open MODEL [PATH]           open a device; an operation does it too
  plug MODEL                  plug a simulated device in
  unplug [MODEL|PATH]         pull it out, and wait until the library has closed it
  replug                      plug it in again, with what it had saved
  trace on|off                show the bytes on the wire, or stop to
  event [MODEL|PATH] NAME [VALUE...]
                              let it do something by itself: "event rd210 dpi 2"
  expect-event EVENT [VALUE]  wait for the next event, which must be this one;
                              EVENT is a number, "plugged" or "unplugged"
  expect-lights JSON [MODEL|PATH]
                              wait until the lights of a simulated device are these,
                              such as '{"port 1":"ff0000 x48"}'
  expect CODE COMMAND         the operation must give this result code
  match JSON COMMAND          the operation must give these values
  ! COMMAND                   the command must fail

A backslash at the end of a line continues it. The script ends at the first line that fails.)";

/// CLI11's help with usage lines of our own.
class HelpFormatter : public CLI::Formatter {
public:
    std::map<const CLI::App*, std::string> usages;

    std::string make_usage(const CLI::App* app, std::string name) const override
    {
        const auto found = usages.find(app);
        const bool isTop = app->get_parent() == nullptr;
        return "Usage: " + std::string(isTop ? "pyruxctl" : name) + " [OPTIONS]" +
               (found == usages.end() ? "" : " " + found->second) + "\n";
    }
};

std::vector<std::string> splitAtCommas(const std::string& text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');)
        parts.push_back(part);
    return parts;
}

std::string listOperations(const Model& model)
{
    std::string text = "Operations:\n";
    for (const Operation& operation : model.operations)
        text += "  " + operation.synopsis() + "\n";
    if (!model.monitored.empty())
        text += "  " + std::string(monitorWord) + "\n";
    text += model.events.empty() ? "" : "\nEvents:\n";
    for (const EventName& event : model.events)
        text += "  " + std::to_string(event.event) + "  " + std::string(event.text) + "\n";
    return text + "\n\"pyruxctl " + std::string(model.command) + " OPERATION --help\" tells the arguments.";
}

/// "level: 0 to 255"; a record field by field.
std::string valueHelp(std::string_view name, const Type& type)
{
    if (type.kind != Type::Kind::record)
        return std::string(name) + ": " + describe(type) + "\n";
    std::string text = std::string(name) + ":\n";
    for (const Field& field : type.fields)
        text += "    " + std::string(field.name) + ": " + describe(field) + "\n";
    return text;
}

std::string operationHelp(const Model& model, const Operation& operation)
{
    std::string text =
        "Usage: pyruxctl [OPTIONS] " + std::string(model.command) + " " + operation.synopsis() + "\n";
    const auto words = operation.words();
    if (!words.empty())
        text += "\nTakes\n";
    for (const Word& word : words)
        text += "  " + valueHelp(word.name, *word.type) +
                (word.type->isPlain() ? "" : "    as JSON, as @FILE, or - for the standard input\n");
    std::string outputs;
    for (const Argument& argument : operation.arguments)
        if (argument.isOutput())
            outputs += "  " + valueHelp(argument.name, *argument.type);
    return text + (outputs.empty() ? "" : "\nGives\n" + outputs);
}

/// The grammar of a command line, and where its words go.
class Grammar {
public:
    Grammar(CommandLine& line, bool isScript) : to(line)
    {
        app.name("pyruxctl");
        app.formatter(formatter);
        app.description("Shows and drives PYRUX devices.");
        app.require_subcommand(0, 1);
        formatter->usages[&app] = "COMMAND ...";
        if (!isScript) {
            app.add_flag("--version", version, "Show the version and exit");
            addSetup(app);
        }
        addStyle(app);
        addDevice(app);

        CLI::App& list = addCommand("list", "List the attached devices");
        CLI::App& info = addCommand("info", "Show the library's version and details of each device");
        CLI::App& watch =
            addCommand("watch", "Show devices that come and go, and the events of devices, as they come");
        addDevice(watch);
        watch.add_option("--for", to.command.seconds, "End after this time")->type_name("SECONDS");
        watch.add_option("--count", to.command.count, "End after so many events")->type_name("N");
        CLI::App& lights = addCommand("lights", "Show the lights of simulated devices");
        addDevice(lights);
        lights.add_option("--for", to.command.seconds, "Go on showing them, as long as this")
            ->type_name("SECONDS");
        std::vector<CLI::App*> all{&list, &info, &watch, &lights};
        if (!isScript) {
            CLI::App& run = addCommand("run", "Run the commands of a script in one session");
            run.allow_extras();
            run.footer(scriptHelp);
            formatter->usages[&run] = "SCRIPT|-";
            all.push_back(&run);
        }
        for (const Model& model : models()) {
            CLI::App& command = addCommand(std::string(model.command), std::string(model.summary));
            command.group("Models");
            command.allow_extras(); // CLI11 would take brackets and commas out of JSON
            command.footer([&model] { return listOperations(model); });
            formatter->usages[&command] = "[OPERATION [ARGUMENT...]]";
            addDevice(command);
            if (!model.monitored.empty()) {
                command.add_option("--for", to.command.seconds, "\"monitor\" ends after this time")
                    ->type_name("SECONDS");
                command.add_option("--count", to.command.count, "\"monitor\" ends after so many times")
                    ->type_name("N");
            }
            all.push_back(&command);
        }
        for (CLI::App* const command : all) {
            addStyle(*command);
            if (!isScript)
                addSetup(*command);
        }
        app.footer(exitCodes); // after the commands, which would take it over
    }

    void parse(std::vector<std::string> words)
    {
        std::ranges::reverse(words); // as CLI11 wants them
        try {
            app.parse(words);
            finish();
        } catch (const CLI::CallForHelp&) {
            help();
        } catch (const CLI::Error& error) {
            throw UsageError(error.what());
        }
    }

private:
    CLI::App& addCommand(std::string name, std::string description)
    {
        CLI::App& command = *app.add_subcommand(std::move(name), std::move(description));
        command.group("Commands");
        return command;
    }

    void addStyle(CLI::App& command)
    {
        command.add_flag("--json", to.command.style.json, "Give results as JSON");
        command.add_flag("--quiet", to.command.style.quiet, "Give results and errors only");
    }

    void addDevice(CLI::App& command)
    {
        command.add_option("--device", to.command.device, "The device, where several are attached")
            ->type_name("PATH");
    }

    void addSetup(CLI::App& command)
    {
        command.add_option("--simulate", simulate, "Plug simulated devices in, instead of the real ones")
            ->type_name("MODELS");
        command.add_flag("--trace", to.setup.trace, "Show the bytes on the wire (simulated devices)");
        command.add_flag("--debug", to.setup.debug, "Show the library's debug output");
    }

    const CLI::App* selected() const
    {
        const auto commands = app.get_subcommands();
        return commands.empty() ? nullptr : commands.front();
    }

    void finish()
    {
        if (version) {
            to.text = "pyruxctl " PYRUX_VERSION;
            return;
        }
        const CLI::App* const command = selected();
        if (!command)
            throw UsageError("a command is required; --help lists them");
        to.command.name = command->get_name();
        to.command.words = command->remaining();
        for (const std::string& word : to.command.words)
            if (word.starts_with("--") ||
                (word.size() == 2 && word[0] == '-' && std::isalpha(static_cast<unsigned char>(word[1]))))
                throw UsageError("unknown option " + word);
        to.setup.simulate = splitAtCommas(simulate);
        if (to.command.seconds && !(*to.command.seconds >= 0))
            throw UsageError("--for takes a number of seconds");
        if (to.setup.trace && to.setup.simulate.empty())
            throw UsageError("--trace shows simulated devices only (--simulate)");
        if (findModel(to.command.name) && to.command.words.empty())
            help();
    }

    void help()
    {
        const CLI::App* const command = selected();
        const Model* const model = command ? findModel(command->get_name()) : nullptr;
        const auto words = command ? command->remaining() : std::vector<std::string>();
        const Operation* const operation =
            model && !words.empty() ? model->findOperation(words.front()) : nullptr;
        to.text = operation ? operationHelp(*model, *operation) : app.help();
        while (to.text->ends_with('\n'))
            to.text->pop_back();
    }

    CommandLine& to;
    std::string simulate;
    bool version = false;
    std::shared_ptr<HelpFormatter> formatter = std::make_shared<HelpFormatter>();
    CLI::App app;
};

} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& words)
{
    CommandLine line;
    Grammar(line, false).parse(words);
    return line;
}

CommandLine parseScriptLine(const std::vector<std::string>& words, const Style& style)
{
    CommandLine line;
    line.command.style = style;
    Grammar(line, true).parse(words);
    return line;
}

} // namespace pyrux::ctl
