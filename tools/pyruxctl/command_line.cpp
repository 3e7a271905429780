#include "command_line.h"

#include "failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>

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
  plug MODEL                  plug a simulated device in
  unplug [MODEL|PATH]         pull it out
  event [MODEL|PATH] NAME [VALUE...]
                              let it do something by itself: "event rd210 dpi 2"
  expect-event EVENT [VALUE]  wait for the next event, which must be this one;
                              EVENT is a number, "plugged" or "unplugged"
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
        return "Usage: " + std::string(isTop || name.empty() ? "pyruxctl" : name) + " [OPTIONS]" +
               (found == usages.end() ? "" : " " + found->second) + "\n";
    }
};

std::string listOperations(const Model& model)
{
    std::string text = "Operations:\n";
    for (const Operation& operation : model.operations)
        text += "  " + operation.synopsis() + "\n";
    text += "\nEvents:\n";
    for (const EventName& event : model.events)
        text += "  " + std::to_string(event.event) + "  " + std::string(event.text) + "\n";
    return text + "\n\"pyruxctl " + std::string(model.command) + " OPERATION --help\" tells the arguments.";
}

std::string operationHelp(const Model& model, const Operation& operation)
{
    std::string text =
        "Usage: pyruxctl [OPTIONS] " + std::string(model.command) + " " + operation.synopsis() + "\n";
    for (const Word& word : operation.words())
        text += "\n" + std::string(word.name) + ": " + describe(*word.type) +
                (word.type->isPlain() ? "" : "\n  as JSON, @FILE, or - for the standard input");
    for (const Argument& argument : operation.arguments)
        if (argument.isOutput())
            text += "\ngives " + std::string(argument.name) + ": " + describe(*argument.type);
    return text;
}

/// The grammar of a command line, and where its words go.
class Grammar {
public:
    Grammar(CommandLine& line, bool isScript) : to(line)
    {
        app.formatter(formatter);
        app.description("Shows and drives PYRUX devices.");
        app.footer(exitCodes);
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
        watch.add_option("--for", to.command.seconds, "End after this time")
            ->type_name("SECONDS")
            ->check(CLI::NonNegativeNumber);
        watch.add_option("--count", to.command.count, "End after so many events")->type_name("N");
        std::vector<CLI::App*> all{&list, &info, &watch};
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
            all.push_back(&command);
        }
        for (CLI::App* const command : all) {
            addStyle(*command);
            if (!isScript)
                addSetup(*command);
        }
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
        return *app.add_subcommand(std::move(name), std::move(description));
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
        command
            .add_option("--simulate", to.setup.simulate,
                        "Plug these simulated devices in, instead of the real ones")
            ->type_name("MODEL,...")
            ->delimiter(',')
            ->allow_extra_args(false);
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
