#include "platform/linux/system_files.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace pyrux::platform {
namespace {

/// The value of "NAME: VALUE" or "NAME=VALUE" in a file of such lines.
std::string valueIn(const std::filesystem::path& file, std::string_view name, char separator)
{
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        const auto end = line.find(separator);
        if (end == std::string::npos)
            continue;
        const auto nameEnd = line.find_last_not_of(" \t", end == 0 ? 0 : end - 1) + 1;
        if (std::string_view(line).substr(0, std::min(nameEnd, end)) != name)
            continue;
        const auto begin = line.find_first_not_of(" \t", end + 1);
        return begin == std::string::npos ? std::string() : line.substr(begin);
    }
    return {};
}

std::uint64_t kilobytes(const std::filesystem::path& root, std::string_view name)
{
    std::uint64_t number = 0;
    std::istringstream(valueIn(root / "proc/meminfo", name, ':')) >> number;
    return number;
}

/// The first of the layouts that a shell file sets; its quotes are dropped.
std::string layoutIn(const std::filesystem::path& file, std::string_view name)
{
    std::string value = valueIn(file, name, '=');
    std::erase_if(value, [](char c) { return c == '"' || c == '\''; });
    return value.substr(0, value.find_first_of(", \t"));
}

struct LayoutLanguage {
    std::string_view layout;
    std::uint16_t language;
};

// XKB's layouts, by the language that is written with each.
constexpr LayoutLanguage layoutLanguages[]{
    {"us", 0x09}, {"gb", 0x09}, {"au", 0x09}, {"nz", 0x09},    {"za", 0x09}, {"cn", 0x04}, {"tw", 0x04},
    {"hk", 0x04}, {"fr", 0x0C}, {"ca", 0x0C}, {"de", 0x07},    {"at", 0x07}, {"ch", 0x07}, {"it", 0x10},
    {"jp", 0x11}, {"kr", 0x12}, {"my", 0x3E}, {"pt", 0x16},    {"br", 0x16}, {"ru", 0x19}, {"es", 0x0A},
    {"th", 0x1E}, {"tr", 0x1F}, {"vn", 0x2A}, {"latam", 0x0A},
};

} // namespace

std::string firstLine(const std::filesystem::path& file)
{
    std::string line;
    std::ifstream in(file);
    std::getline(in, line);
    return line;
}

std::optional<CpuTimes> cpuTimes(const std::filesystem::path& root)
{
    std::istringstream line(firstLine(root / "proc/stat"));
    std::string who;
    // user, nice, system, idle, iowait, irq, softirq, steal; what guests use is counted as user and nice.
    std::array<std::uint64_t, 8> ticks{};
    line >> who;
    std::size_t count = 0;
    while (count < ticks.size() && line >> ticks[count])
        ++count;
    if (who != "cpu" || count < 4)
        return {};
    CpuTimes times{.idle = ticks[3] + ticks[4]};
    for (const std::uint64_t each : ticks)
        times.total += each;
    return times;
}

std::uint32_t memoryLoad(const std::filesystem::path& root)
{
    const std::uint64_t total = kilobytes(root, "MemTotal");
    const std::uint64_t available = kilobytes(root, "MemAvailable");
    return total == 0 || available > total ? 0
                                           : static_cast<std::uint32_t>((total - available) * 100 / total);
}

std::string systemKeyboardLayout(const std::filesystem::path& root)
{
    const std::string layout = layoutIn(root / "etc/default/keyboard", "XKBLAYOUT");
    return !layout.empty() ? layout : layoutIn(root / "etc/vconsole.conf", "XKBLAYOUT");
}

std::uint16_t languageOfLayout(std::string_view layout)
{
    const auto* const row = std::find_if(std::begin(layoutLanguages), std::end(layoutLanguages),
                                         [&](const LayoutLanguage& one) { return one.layout == layout; });
    return row == std::end(layoutLanguages) ? 0 : row->language;
}

} // namespace pyrux::platform
