// Words that pyruxctl does not take, its help, and the manual.

#include "program.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

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
    {{"--colour", "list"}, "The following argument was not expected: --colour"},
    {{"rd210", "--colour"}, "unknown option --colour"},
    {{"list", "--for", "3"}, "The following arguments were not expected: 3 --for"},
    {{"watch", "--for"}, "--for: 1 required SECONDS missing"},
    {{"watch", "--for", "long"}, "Could not convert: --for = long"},
    {{"watch", "--for", "-1"}, "--for takes a number of seconds"},
    {{"watch", "--count", "-1"}, "Could not convert: --count = -1"},
    {{"list", "--trace"}, "--trace shows simulated devices only (--simulate)"},
    {{"run"}, "run takes one script, or - for the standard input"},
    {{"run", "a", "b"}, "run takes one script, or - for the standard input"},
    {{"run", "there-is-no-such-script"}, "cannot read there-is-no-such-script"},
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

std::set<std::string> matches(const std::string& text, const char* pattern)
{
    std::set<std::string> found;
    const std::regex expression(pattern);
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
        found.insert(at->str(1));
    return found;
}

TEST(Manual, namesEveryCommandAndOptionOfTheHelp)
{
    Program program;
    const std::string text = manual();
    ASSERT_FALSE(text.empty());
    const std::string top = program.run({"--help"}).out;
    const std::set<std::string> commands = matches(top, "\n  ([a-z][a-z0-9_]*)  ");
    ASSERT_EQ(commands, (std::set<std::string>{"list", "info", "watch", "run", "rd210"}));
    std::string help = top;
    for (const std::string& command : commands) {
        EXPECT_NE(text.find("\n.It Cm " + command), std::string::npos) << command;
        help += program.run({command, "--help"}).out;
    }
    const std::set<std::string> options = matches(help, "--([a-z]+)");
    ASSERT_EQ(options, (std::set<std::string>{"count", "debug", "device", "for", "help", "json", "quiet",
                                              "simulate", "trace", "version"}));
    for (const std::string& option : options)
        EXPECT_TRUE(std::regex_search(text, std::regex("\n\\.It (Fl h , )?Fl Fl " + option + "\\b")))
            << option;
    const std::set<std::string> directives = matches(help, "\n  (!|[a-z][a-z-]*) (?:[A-Z]|\\[|on)");
    ASSERT_EQ(directives, (std::set<std::string>{"!", "event", "expect", "expect-event", "match", "open",
                                                 "plug", "trace", "unplug"}));
    for (const std::string& directive : directives)
        EXPECT_NE(text.find("\n.It Cm " + (directive == "!" ? "\\&!" : directive) + " "), std::string::npos)
            << directive;
    for (const std::string& variable : matches(help, "(PYRUX_[A-Z_]+)"))
        EXPECT_NE(text.find("\n.It Ev " + variable + "\n"), std::string::npos) << variable;
    for (const std::string& code : matches(help, "\n  ([0-9])  (?=done|the|usage)"))
        EXPECT_NE(text.find("\n.It " + code + "\n"), std::string::npos) << code;
}

} // namespace
