#include "core/log.h"

#include "platform/debug_output.h"
#include "platform/standard_output.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace pyrux {

namespace {

/// Catalogue name of each category. A category without a name logs nothing; 53 is not in use.
constexpr std::array<std::string_view, 58> categoryNames{
    "SYS",        "RD410",    "PD210",     "QW410",       "HS310",
    "GLOWHUB",    "TINTHUB",  "",          "VK530",       "VK410",
    "PW520",      "HS410",    "VK320",     "VIEWSONIC24", "VIEWSONIC35",
    "FZ140",      "VOLTGRID", "",          "GLOWHUB2",    "HS220",
    "QT151B",     "HS210",    "QT131B",    "VOXDOCK",     "KX9",
    "DECKPANELG", "RD210",    "PD120M",    "RD215",       "RD415",
    "TB310",      "QW205V2",  "QW225V2",   "QT122B",      "FZ280",
    "RD230",      "QW110",    "STRANDHUB", "QT120B",      "QT154",
    "QT152",      "RD240",    "TB305",     "TB320",       "AU_LINE_550_MULTI",
    "QT153",      "RD245",    "FZ140_OLD", "QW310",       "RD110",
    "QX310",      "RD220",    "RD115",     "TB305",       "STRANDHUBV2",
    "VK950",      "HS110",    "PLAY_DOCK",
};

constexpr const char* logFile = "PYRUX_debug.txt";

/// Appends a line to the log file, which is never created: deliberate, its existence is the switch. The file
/// is opened for each line, so that others can read it and take it away.
void appendToFile(const std::string& line)
{
    // "r+" opens only what is there; "a" keeps lines of several processes whole.
    std::FILE* there = std::fopen(logFile, "r+b");
    if (!there)
        return;
    std::fclose(there);
    if (std::FILE* file = std::fopen(logFile, "ab")) {
        std::fwrite(line.data(), 1, line.size(), file);
        std::fclose(file);
    }
}

} // namespace

bool categoryTag(int category, std::string& tag)
{
    const bool known =
        category >= 0 && category < std::ssize(categoryNames) && !categoryNames[category].empty();
    tag = known ? "[" + std::string(categoryNames[category]) + "]" : "[UNKNW]";
    return known;
}

void log(int category, std::string_view text)
{
    if (!debugEnabled)
        return;
    std::string line;
    if (!categoryTag(category, line))
        return;
    line += text;
    switch (debugType) {
    case 1:
        debugText(line);
        break;
    case 2:
        consoleLine("[PYRUX]" + line);
        break;
    default:
        appendToFile(line + "\r\n");
        break;
    }
}

void logCall(int category, std::string_view name, int line)
{
    log(category, [&] { return std::string(name) + ", " + std::to_string(line); });
}

void debugText(std::string_view text)
{
    platform::debugOutput("[PYRUX]" + std::string(text));
}

void consoleLine(std::string_view text)
{
    platform::standardOutput(text);
}

} // namespace pyrux
