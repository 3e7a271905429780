// Words that pyruxctl does not take, its help, and the manual.

#include "program.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace {

struct UsageCase {
    std::vector<std::string> words;
    const char* message;
};

/// Each is told before the library is loaded.
const UsageCase cases[]{
    {{}, "a command is required; --help lists them"},
    {{"lists"}, "The following argument was not expected: lists"},
    {{"list", "more"}, "The following argument was not expected: more"},
    {{"--color", "list"}, "The following argument was not expected: --color"},
    {{"rd210", "--color"}, "unknown option --color"},
    {{"list", "--for", "3"}, "The following arguments were not expected: 3 --for"},
    {{"watch", "--for"}, "--for: 1 required SECONDS missing"},
    {{"watch", "--for", "long"}, "Could not convert: --for = long"},
    {{"watch", "--for", "-1"}, "--for takes a number of seconds"},
    {{"watch", "--count", "-1"}, "Could not convert: --count = -1"},
    {{"list", "--trace"}, "--trace shows simulated devices only (--simulate)"},
    {{"run"}, "run takes one script, or - for the standard input"},
    {{"run", "a", "b"}, "run takes one script, or - for the standard input"},
    {{"run", "there-is-no-such-script"}, "cannot read there-is-no-such-script"},
    {{"lights"}, "works with simulated devices only (--simulate)"},
    {{"lights", "--count", "1"}, "The following arguments were not expected: 1 --count"},
    {{"psuCtrl", "--for", "long", "monitor"}, "Could not convert: --for = long"},
    {{"psuCtrl", "monitor", "fast"}, "psuCtrl monitor takes no arguments"},
    {{"rd210", "monitor"}, "rd210 has no operation \"monitor\""},
    {{"rd210", "fly"}, "rd210 has no operation \"fly\""},
    {{"rd210", "changeDpiLevel"}, "rd210 changeDpiLevel LEVEL: takes 1 argument, not 0"},
    {{"rd210", "changeDpiLevel", "256"}, "rd210 changeDpiLevel LEVEL: level: 256 is not in 0 to 255"},
    {{"rd210", "changeDpiLevel", "-1"}, "rd210 changeDpiLevel LEVEL: level: -1 is not in 0 to 255"},
    {{"rd210", "setMacro", "{}"}, "rd210 setMacro MACRO: macro: missing key \"button\""},
    {{"rd210", "setMacro", "@there-is-no-such-file"},
     "rd210 setMacro MACRO: cannot read there-is-no-such-file"},
    {{"rd210", "setKeyMappingAll", "1,2,3"}, "rd210 setKeyMappingAll MAP: map: takes 13 values, not 3"},
};

TEST(Usage, errorsEndWithTwoAndAMessage)
{
    Program program;
    program.set("PYRUX_LIBRARY", "there-is-no-such.lib");
    for (const UsageCase& c : cases) {
        const Finished run = program.run(c.words);
        EXPECT_EQ(run.exit, 2) << c.message;
        EXPECT_EQ(run.err, std::string("pyruxctl: ") + c.message + "\n");
        EXPECT_EQ(run.out, "");
    }
}

TEST(Usage, takesARecordFromTheStandardInput)
{
    Program program;
    const Finished run = program.run({"rd210", "setPerformance", "-"}, R"({"currentLevel":1})");
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err, "pyruxctl: rd210 setPerformance RECORD: record: missing key \"levels\"\n");
}

TEST(Help, ofAnOperationTellsItsArguments)
{
    Program program;
    program.set("PYRUX_LIBRARY", "there-is-no-such.lib");
    EXPECT_EQ(program.run({"rd210", "getMacro", "--help"}).out,
              "Usage: pyruxctl [OPTIONS] rd210 getMacro BUTTON -> macro\n"
              "\n"
              "Takes\n"
              "  button: 0 to 255\n"
              "\n"
              "Gives\n"
              "  macro:\n"
              "    button: 0 to 255\n"
              "    name: text of at most 40 bytes\n"
              "    mode: 0 to 255\n"
              "    events: at most 199 of {code: 0 to 65535, kind: 0 to 255, delay: 0 to 65535}\n");
    EXPECT_EQ(program.run({"rd210", "setKeyMappingAll", "-h"}).out,
              "Usage: pyruxctl [OPTIONS] rd210 setKeyMappingAll MAP\n"
              "\n"
              "Takes\n"
              "  map: 13 of 0 to 65535\n"
              "    as JSON, as @FILE, or - for the standard input\n");
}

TEST(Help, ofAModelListsItsOperationsAndEvents)
{
    Program program;
    const Finished bare = program.run({"rd210"});
    EXPECT_EQ(bare.exit, 0);
    EXPECT_EQ(bare.out, program.run({"rd210", "--help"}).out);
    EXPECT_EQ(linesWith(bare.out, "  changeDpiLevel"), std::vector<std::string>{"  changeDpiLevel LEVEL"});
    EXPECT_EQ(linesWith(bare.out, "  getSurface"),
              (std::vector<std::string>{"  getSurfaceLearningStatus -> status",
                                        "  getSurfaceLearningResult -> a, b"}));
    EXPECT_EQ(linesWith(bare.out, "  1  "), std::vector<std::string>{"  1  DPI level changed"});
}

TEST(Help, tellsTheVersion)
{
    Program program;
    const Finished run = program.run({"--version"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "pyruxctl 3.86.0\n");
}

std::string manual()
{
    std::ifstream stream(PYRUX_MANUAL);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The words of a text that begin so, each up to the first character that is no part of a name.
std::set<std::string> wordsWith(const std::string& text, const std::string& beginning)
{
    std::set<std::string> found;
    for (std::size_t at = text.find(beginning); at != std::string::npos; at = text.find(beginning, at)) {
        const std::size_t from = at;
        for (at += beginning.size(); at < text.size(); ++at)
            if (text[at] != '_' && !std::isalnum(static_cast<unsigned char>(text[at])))
                break;
        found.insert(text.substr(from, at - from));
    }
    return found;
}

/// The first words of the lines from a heading to the next empty line, those that stand two blanks from the
/// left.
std::set<std::string> firstWords(const std::string& text, const std::string& heading)
{
    std::set<std::string> found;
    std::istringstream lines(text.substr(std::min(text.find(heading), text.size())));
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty())
        if (line.size() > 2 && line.starts_with("  ") && line[2] != ' ')
            found.insert(line.substr(2, line.find(' ', 2) - 2));
    return found;
}

using Names = std::set<std::string>;

TEST(Manual, namesEveryCommandAndOptionOfTheHelp)
{
    Program program;
    const std::string text = manual();
    ASSERT_FALSE(text.empty());
    const auto names = [&](const std::string& entry) {
        return text.find("\n.It " + entry) != std::string::npos;
    };
    const std::string top = program.run({"--help"}).out;
    ASSERT_EQ(firstWords(top, "Commands:"), (Names{"list", "info", "watch", "lights", "run"}));
    ASSERT_TRUE(firstWords(top, "Models:").contains("rd210"));
    std::string help = top;
    for (const std::string& command : firstWords(top, "Commands:")) {
        EXPECT_TRUE(names("Cm " + command)) << command;
        help += program.run({command, "--help"}).out;
    }
    EXPECT_TRUE(names("Cm sysInfo"));
    EXPECT_TRUE(names("Ar MODEL"));
    for (const std::string& model : firstWords(top, "Models:"))
        help += program.run({model, "--help"}).out;
    const Names options = wordsWith(help, "--");
    ASSERT_EQ(options, (Names{"--count", "--debug", "--device", "--for", "--help", "--json", "--quiet",
                              "--simulate", "--trace", "--version"}));
    for (const std::string& option : options) {
        const std::string entry = "Fl Fl " + option.substr(2);
        EXPECT_TRUE(names(entry + "\n") || names(entry + " ") || names("Fl h , " + entry + "\n")) << option;
    }
    const Names directives = firstWords(program.run({"run", "--help"}).out, "A line is");
    ASSERT_EQ(directives, (Names{"!", "event", "expect", "expect-event", "expect-lights", "match", "open",
                                 "plug", "replug", "trace", "unplug"}));
    for (const std::string& directive : directives)
        EXPECT_TRUE(names("Cm " + (directive == "!" ? "\\&!" : directive))) << directive;

    const Names variables = wordsWith(top, "PYRUX_");
    ASSERT_EQ(variables, (Names{"PYRUX_LIBRARY", "PYRUX_SIMULATOR", "PYRUX_DEBUG_OUTPUT"}));
    for (const std::string& variable : variables)
        EXPECT_TRUE(names("Ev " + variable + "\n")) << variable;
    const Names codes = firstWords(top, "Exit codes:");
    ASSERT_EQ(codes, (Names{"0", "1", "2", "3", "4"}));
    for (const std::string& code : codes)
        EXPECT_TRUE(names(code + "\n")) << code;
}

} // namespace
