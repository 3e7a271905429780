#include "script.h"

#include "commands.h"
#include "console.h"
#include "views.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <span>

namespace pyrux::ctl {

namespace {

using Words = std::span<const std::string>;

/// How long an expected event may take.
constexpr std::chrono::seconds eventLimit{5};

std::int32_t numberOf(const std::string& word)
{
    std::array<std::byte, sizeof(std::int32_t)> memory;
    fromWord(typeOf<std::int32_t>, word, memory.data(), "a number is needed here");
    std::int32_t number;
    std::memcpy(&number, memory.data(), sizeof number);
    return number;
}

void expectWords(Words words, std::size_t least, std::size_t most, const char* usage)
{
    if (words.size() < least || words.size() > most)
        throw UsageError(std::string("usage: ") + usage);
}

std::string wordOr(Words words, std::size_t i, const char* otherwise)
{
    return i < words.size() ? words[i] : otherwise;
}

/// The first difference between what is wanted and what is there; empty without one. Keys that are not wanted
/// may be there.
std::string difference(const Json& wanted, const Json& there, const std::string& place)
{
    if (wanted.is_object() && there.is_object()) {
        for (const auto& [key, value] : wanted.items()) {
            if (!there.contains(key))
                return place + ": has no \"" + key + "\"";
            if (auto found = difference(value, there[key], place + "." + key); !found.empty())
                return found;
        }
        return {};
    }
    if (wanted.is_array() && there.is_array() && wanted.size() == there.size()) {
        for (std::size_t i = 0; i < wanted.size(); ++i)
            if (auto found = difference(wanted[i], there[i], place + "[" + std::to_string(i) + "]");
                !found.empty())
                return found;
        return {};
    }
    return wanted == there ? "" : place + ": is " + toText(there) + ", not " + toText(wanted);
}

class Script {
public:
    Script(Session& on, const Style& shown, Documents from)
        : session(on), style(shown), documents(std::move(from))
    {
    }

    Exit run(std::istream& lines)
    {
        session.listen();
        std::string line;
        int number = 0;
        for (std::string part; std::getline(lines, part);) {
            ++number;
            if (part.ends_with('\r'))
                part.pop_back();
            line += part;
            if (!style.quiet && !style.json)
                echo(part, line.size() > part.size());
            if (line.ends_with('\\') && lines.peek() != std::istream::traits_type::eof()) {
                line.pop_back();
                continue;
            }
            if (const Exit result = runLine(std::exchange(line, {})); result != Exit::fine) {
                console::note("pyruxctl: stopped at line " + std::to_string(number));
                return result;
            }
        }
        return Exit::fine;
    }

private:
    /// Comments and empty lines are shown as they stand: they are what a script has to say to its reader.
    void echo(const std::string& part, bool continues) const
    {
        const bool says = part.empty() || part.starts_with('#');
        console::print(continues ? "> " + part : says ? part : "$ " + part);
    }

    Exit runLine(const std::string& line)
    {
        try {
            const std::vector<std::string> words = splitWords(line);
            return words.empty() ? Exit::fine : runWords(words);
        } catch (const Failure& failure) {
            console::note(std::string("pyruxctl: ") + failure.what());
            return failure.exit;
        }
    }

    Exit runWords(Words words)
    {
        struct Directive {
            std::string_view name;
            Exit (Script::*run)(Words);
        };
        static constexpr Directive directives[]{
            {"open", &Script::open},       {"plug", &Script::plug},
            {"unplug", &Script::unplug},   {"trace", &Script::trace},
            {"event", &Script::event},     {"expect-event", &Script::expectEvent},
            {"expect", &Script::expect},   {"match", &Script::match},
            {"!", &Script::expectFailure}, {"expect-lights", &Script::expectLights},
            {"replug", &Script::replug},
        };
        for (const Directive& directive : directives)
            if (words.front() == directive.name)
                return (this->*directive.run)(words.subspan(1));
        const CommandLine line = parse(words);
        if (!line.text)
            return execute(session, line.command, documents);
        console::print(*line.text);
        return Exit::fine;
    }

    CommandLine parse(Words words) const { return parseScriptLine({words.begin(), words.end()}, style); }

    /// The rest of a line must be an operation of a model.
    Command parseOperation(Words words) const
    {
        CommandLine line = parse(words);
        if (line.text || !findModel(line.command.name))
            throw UsageError("needs an operation of a model");
        return line.command;
    }

    void say(const std::string& text) const
    {
        if (!style.quiet && !style.json)
            console::print(text);
    }

    Exit open(Words words)
    {
        expectWords(words, 1, 2, "open MODEL [PATH]");
        const Model* const model = findModel(words[0]);
        if (!model)
            throw UsageError("there is no model \"" + words[0] + "\"");
        say("opened " + session.open(*model, wordOr(words, 1, "")).path);
        return Exit::fine;
    }

    Exit plug(Words words)
    {
        expectWords(words, 1, 1, "plug MODEL");
        say("plugged in " + session.simulator().plug(words[0]));
        return Exit::fine;
    }

    Exit unplug(Words words)
    {
        expectWords(words, 0, 1, "unplug [MODEL|PATH]");
        const std::string path = session.simulator().unplug(wordOr(words, 0, ""));
        session.awaitClosed(path);
        say("pulled out " + path);
        return Exit::fine;
    }

    Exit replug(Words words)
    {
        expectWords(words, 0, 0, "replug");
        say("plugged in " + session.simulator().replug());
        return Exit::fine;
    }

    Exit trace(Words words)
    {
        expectWords(words, 1, 1, "trace on|off");
        if (words[0] != "on" && words[0] != "off")
            throw UsageError("usage: trace on|off");
        session.simulator().trace(words[0] == "on");
        return Exit::fine;
    }

    /// "event dpi 2" or "event rd210 dpi 2": a first word that is a model or a path names the device.
    Exit event(Words words)
    {
        expectWords(words, 1, 16, "event [MODEL|PATH] NAME [VALUE...]");
        std::string which;
        if (findModel(words[0]) || words[0].starts_with('\\') || words[0].starts_with('/')) {
            which = words[0];
            words = words.subspan(1);
            expectWords(words, 1, 16, "event [MODEL|PATH] NAME [VALUE...]");
        }
        std::vector<int> values;
        for (const std::string& word : words.subspan(1))
            values.push_back(numberOf(word));
        session.simulator().event(which, words[0], values);
        return Exit::fine;
    }

    Exit expectEvent(Words words)
    {
        expectWords(words, 1, 2, "expect-event EVENT [VALUE]");
        const auto event = events().pop(EventQueue::Clock::now() + eventLimit);
        if (!event) {
            console::note("pyruxctl: no event within " + std::to_string(eventLimit.count()) + " s");
            return Exit::refused;
        }
        showEvent(session, *event, style);
        if (isEvent(*event, words))
            return Exit::fine;
        console::note("pyruxctl: another event than expected");
        return Exit::refused;
    }

    static bool isEvent(const Event& event, Words words)
    {
        if (const auto* const hotplug = std::get_if<HotplugEvent>(&event))
            return words.size() == 1 && words[0] == (hotplug->plugged == 1 ? "plugged" : "unplugged");
        const auto& own = std::get<DeviceEvent>(event);
        if (words[0] == "plugged" || words[0] == "unplugged")
            return false;
        return own.event == static_cast<std::uint32_t>(numberOf(words[0])) &&
               (words.size() == 1 || own.value == static_cast<std::uint32_t>(numberOf(words[1])));
    }

    /// The queue of a lit device sends at its own pace, so the picture may come some time later.
    Exit expectLights(Words words)
    {
        constexpr auto usage = "expect-lights JSON [MODEL|PATH]";
        expectWords(words, 1, 2, usage);
        const Json wanted = parseJson(readDocument(words[0], documents), "expect-lights");
        if (!wanted.is_object())
            throw UsageError(std::string("usage: ") + usage);
        const auto limit = EventQueue::Clock::now() + eventLimit;
        Picture picture;
        std::string found;
        do {
            picture = session.simulator().picture(wordOr(words, 1, ""));
            found = difference(wanted, asJson(picture), "lights");
        } while (!found.empty() && EventQueue::Clock::now() < limit &&
                 console::sleepUntil(EventQueue::Clock::now() + std::chrono::milliseconds(5)));
        say(asText(picture, console::isScreen()));
        if (found.empty())
            return Exit::fine;
        console::note("pyruxctl: " + found);
        return Exit::refused;
    }

    Exit expect(Words words)
    {
        expectWords(words, 2, words.size() + 2, "expect CODE COMMAND");
        const std::int32_t wanted = numberOf(words[0]);
        const Command command = parseOperation(words.subspan(1));
        const Result result = callOperation(session, command, documents);
        if (result.code != wanted) {
            console::note(resultLine(command, result.code) + ", expected " + words[0]);
            return Exit::refused;
        }
        if (result.code < 0)
            console::print(resultLine(command, result.code));
        else
            showResult(command, result);
        return Exit::fine;
    }

    Exit match(Words words)
    {
        expectWords(words, 2, words.size() + 2, "match JSON COMMAND");
        const Json wanted = parseJson(readDocument(words[0], documents), "match");
        const Command command = parseOperation(words.subspan(1));
        const Result result = callOperation(session, command, documents);
        showResult(command, result);
        if (result.code < 0)
            return Exit::refused;
        const std::string found = difference(wanted, valueOf(result), command.words.front());
        if (found.empty())
            return Exit::fine;
        console::note("pyruxctl: " + found);
        return Exit::refused;
    }

    Exit expectFailure(Words words)
    {
        expectWords(words, 1, words.size() + 1, "! COMMAND");
        try {
            if (runWords(words) != Exit::fine)
                return Exit::fine;
        } catch (const Failure& failure) {
            console::note(std::string("pyruxctl: ") + failure.what());
            return Exit::fine;
        }
        console::note("pyruxctl: expected to fail");
        return Exit::refused;
    }

    Session& session;
    Style style;
    Documents documents;
};

} // namespace

std::vector<std::string> splitWords(std::string_view line)
{
    std::vector<std::string> words;
    bool inWord = false;
    char quote = 0;
    for (const char c : line) {
        const bool blank = c == ' ' || c == '\t';
        if (quote == 0 && !inWord && c == '#')
            break;
        if (quote == 0 && blank) {
            inWord = false;
            continue;
        }
        if (!inWord)
            words.emplace_back();
        inWord = true;
        if (quote == 0 && (c == '\'' || c == '"'))
            quote = c;
        else if (c == quote)
            quote = 0;
        else
            words.back() += c;
    }
    if (quote != 0)
        throw UsageError("a quote is not closed");
    return words;
}

Exit runScript(Session& session, const std::string& file, const Style& style)
{
    if (file == "-")
        return Script(session, style, {.folder = {}, .standardInput = false}).run(std::cin);
    std::ifstream lines(file);
    if (!lines)
        throw UsageError("cannot read " + file);
    return Script(session, style, {.folder = std::filesystem::path(file).parent_path()}).run(lines);
}

} // namespace pyrux::ctl
