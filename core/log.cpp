#include "core/log.h"

#include "core/models.h"
#include "platform/debug_output.h"
#include "platform/standard_output.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace pyrux {

namespace {

struct Category {
    int number;
    std::string_view name;
};

/// The categories of no model; 53 is not in use.
constexpr std::array<Category, 7> otherCategories{{{0, "SYS"},
                                                   {39, "QT154"},
                                                   {40, "QT152"},
                                                   {42, "TB305"},
                                                   {47, "FZ140_OLD"},
                                                   {50, "QX310"},
                                                   {53, "TB305"}}};

/// A category without a name logs nothing. Deliberate: those of PD110 and TZ880 have none.
constexpr std::array namelessCategories{modelRow("pd110").logCategory, modelRow("tz880").logCategory};

/// The name of each category: of a model's, that of its family in the catalogue.
constexpr auto categoryNames = [] {
    std::array<std::string_view, 58> names{};
    for (const ModelRow& row : modelRows)
        if (row.logCategory != noCategory)
            names[std::size_t(row.logCategory)] = deviceCatalogue[std::size_t(row.deviceType)].name;
    for (const int category : namelessCategories)
        names[std::size_t(category)] = {};
    for (const Category& category : otherCategories)
        names[std::size_t(category.number)] = category.name;
    return names;
}();

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

namespace {

void put(int category, std::string_view text)
{
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

} // namespace

void log(int category, std::string_view text)
{
    if (debugEnabled)
        attempt([&] { put(category, text); });
}

void logCall(int category, std::string_view name, int line)
{
    logCall(category, {}, name, line);
}

void logCall(int category, std::string_view head, std::string_view name, int line)
{
    log(category, [&] { return std::string(head).append(name).append(", ").append(std::to_string(line)); });
}

void debugText(std::string_view text)
{
    attempt([&] { platform::debugOutput("[PYRUX]" + std::string(text)); });
}

void consoleLine(std::string_view text)
{
    attempt([&] { platform::standardOutput(text); });
}

} // namespace pyrux
