#include "command.h"

#include "failure.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace pyrux::gadget {

namespace {

using Words = std::vector<std::string>;

constexpr auto ok = "ok";

Answer error(const std::string& text)
{
    return {.text = "error " + text};
}

Words split(std::string_view line)
{
    constexpr std::string_view blanks = " \t\r";
    line = line.substr(0, line.find('#'));
    Words words;
    for (;;) {
        const std::size_t begin = line.find_first_not_of(blanks);
        if (begin == std::string_view::npos)
            return words;
        line.remove_prefix(begin);
        const std::size_t length = std::min(line.find_first_of(blanks), line.size());
        words.emplace_back(line.substr(0, length));
        line.remove_prefix(length);
    }
}

std::optional<int> number(const std::string& word)
{
    int value = 0;
    const char* const end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, value);
    return result.ec == std::errc{} && result.ptr == end ? std::optional(value) : std::nullopt;
}

Answer plug(const Words&, ServedModel& device)
{
    if (device.isPlugged())
        return error("is plugged in already");
    device.plug();
    return {.text = "ok " + device.whereabouts()};
}

Answer unplug(const Words&, ServedModel& device)
{
    if (!device.isPlugged())
        return error("is not plugged in");
    device.unplug();
    return {.text = ok};
}

Answer silent(const Words& words, ServedModel& device)
{
    if (words[1] != "on" && words[1] != "off")
        return error("silent on, or silent off");
    device.setSilent(words[1] == "on");
    return {.text = ok};
}

Answer event(const Words& words, ServedModel& device)
{
    std::vector<int> values;
    for (std::size_t i = 2; i < words.size(); ++i) {
        const std::optional<int> value = number(words[i]);
        if (!value)
            return error("\"" + words[i] + "\" is no number");
        values.push_back(*value);
    }
    return device.happen(words[1], values) ? Answer{.text = ok}
                                           : error("no such event, or it cannot happen now");
}

Answer events(const Words&, ServedModel& device)
{
    std::string list;
    for (const std::string& one : device.events())
        list += (list.empty() ? "" : ", ") + one;
    return {.text = "ok " + list};
}

Answer quit(const Words&, ServedModel&)
{
    return {.text = ok, .quit = true};
}

struct Command {
    const char* name;
    std::size_t leastWords; ///< The command itself included.
    std::size_t mostWords;
    Answer (*run)(const Words& words, ServedModel& device);
};

constexpr Command commands[]{
    {"plug", 1, 1, plug},    {"unplug", 1, 1, unplug}, {"silent", 2, 2, silent},
    {"event", 2, 16, event}, {"events", 1, 1, events}, {"quit", 1, 1, quit},
};

} // namespace

Answer execute(std::string_view line, ServedModel& device)
{
    const Words words = split(line);
    if (words.empty())
        return {};
    const auto* const command = std::ranges::find(commands, words.front(), &Command::name);
    if (command == std::end(commands))
        return error("there is no command \"" + words.front() + "\"");
    if (words.size() < command->leastWords || words.size() > command->mostWords)
        return error("wrong number of words behind \"" + words.front() + "\"");
    try {
        return command->run(words, device);
    } catch (const Failure& failure) {
        return error(failure.what());
    }
}

} // namespace pyrux::gadget
