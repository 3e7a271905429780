#include "simulator/models.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>

/// @file
/// The program on a machine without a USB device controller.

namespace pyrux::gadget {

namespace {

struct Ended {
    int code;
    std::string output; ///< Both streams.
};

Ended run(const std::string& arguments)
{
    Ended ended{.code = -1, .output = {}};
    FILE* const stream = popen((PYRUX_GADGET " " + arguments + " 2>&1 </dev/null").c_str(), "r");
    std::array<char, 512> piece;
    while (std::fgets(piece.data(), piece.size(), stream))
        ended.output += piece.data();
    const int status = pclose(stream);
    ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

TEST(Program, tellsItsUsage)
{
    const Ended ended = run("--help");
    EXPECT_EQ(ended.code, 0);
    for (const char* word : {"--udc", "--name", "--socket", "--trace", "--list", "--version", "unplug, plug",
                             "event NAME", "silent on|off", "quit", "Exit codes"})
        EXPECT_NE(ended.output.find(word), std::string::npos) << word;
}

TEST(Program, manualNamesEveryOption)
{
    std::ifstream file(PYRUX_GADGET_MANUAL);
    const std::string manual(std::istreambuf_iterator<char>(file), {});
    const std::string help = run("--help").output;
    int count = 0;
    for (std::size_t place = help.find("--"); place != std::string::npos;
         place = help.find("--", place + 1)) {
        const std::string option = help.substr(place + 1, help.find_first_of(" ,\n", place) - place - 1);
        EXPECT_NE(manual.find("Fl " + option), std::string::npos) << option;
        ++count;
    }
    EXPECT_GE(count, 7);
}

TEST(Program, listsItsModels)
{
    const Ended ended = run("--list");
    EXPECT_EQ(ended.code, 0);
    std::string names;
    for (const std::string& name : sim::firmwareNames())
        names += (names.empty() ? "" : ", ") + name;
    EXPECT_EQ(ended.output, names + "\n");
}

TEST(Program, refusesWrongWords)
{
    for (const char* words : {"", "rd211", "rd210 rd210", "--color rd210", "rd210 --udc", "--name a/b rd210",
                              "--name .. rd210"}) {
        const Ended ended = run(words);
        EXPECT_EQ(ended.code, 2) << words;
        EXPECT_TRUE(ended.output.starts_with("pyrux-gadget: ")) << words;
    }
}

TEST(Program, tellsWhenThereIsNoController)
{
    if (std::filesystem::exists("/sys/class/udc") && !std::filesystem::is_empty("/sys/class/udc"))
        GTEST_SKIP() << "this machine has a controller";
    const Ended ended = run("rd210");
    EXPECT_EQ(ended.code, 3);
    EXPECT_EQ(ended.output, "pyrux-gadget: there is no USB device controller; the module dummy_hcd makes one "
                            "without hardware\n");
}

} // namespace

} // namespace pyrux::gadget
