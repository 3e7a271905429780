#include "platform/hardware_facts.h"

#include "platform/linux/smbios.h"
#include "platform/linux/system_files.h"
#include "platform/linux/udev.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>

namespace pyrux::platform {
namespace {

namespace fs = std::filesystem;

constexpr int mostMemoryDevices = 64;
constexpr std::string_view displayClass = "0x03"; // PCI base class of display controllers

HardwareFacts missing(int code)
{
    return {HardwareFacts::Failure::query, static_cast<std::uint32_t>(code)};
}

HardwareFacts processor(const fs::path& root)
{
    constexpr std::string_view key = "model name";
    errno = 0;
    std::ifstream in(root / "proc/cpuinfo");
    if (!in)
        return missing(errno);
    for (std::string line; std::getline(in, line);) {
        const auto colon = line.find(':');
        if (!line.starts_with(key) || colon == std::string::npos)
            continue;
        const auto begin = line.find_first_not_of(' ', colon + 1);
        return {.texts = {begin == std::string::npos ? std::string() : line.substr(begin)}};
    }
    return {.texts = {""}}; // processors of some makes have no name
}

HardwareFacts board(const fs::path& root)
{
    const fs::path folder = root / "sys/class/dmi/id";
    std::error_code error;
    if (!fs::is_directory(folder, error))
        return missing(error ? error.value() : ENOENT);
    return {.texts = {firstLine(folder / "board_vendor"), firstLine(folder / "board_name")}};
}

/// What udev has taken from the tables for everybody to read.
std::optional<MemoryModule> moduleFromUdev(const fs::path& device, const NameDatabase& names)
{
    for (int i = 0; i < mostMemoryDevices; ++i) {
        const auto property = [&](const char* name) {
            return names.device(device, ("MEMORY_DEVICE_" + std::to_string(i) + "_" + name).c_str());
        };
        if (const std::string size = property("SIZE"); !size.empty())
            return MemoryModule{property("MANUFACTURER"), property("PART_NUMBER"),
                                std::strtoull(size.c_str(), nullptr, 10)};
    }
    return {};
}

HardwareFacts memory(const fs::path& root, const NameDatabase& names)
{
    errno = 0;
    std::ifstream in(root / "sys/firmware/dmi/tables/DMI", std::ios::binary);
    const int code = errno;
    const std::vector<char> tables{std::istreambuf_iterator<char>(in), {}};
    auto module = firstMemoryModule({reinterpret_cast<const std::uint8_t*>(tables.data()), tables.size()});
    if (!module)
        module = moduleFromUdev(root / "sys/class/dmi/id", names);
    if (!module)
        return tables.empty() ? missing(code ? code : ENOENT) : HardwareFacts{};
    return {.texts = {module->manufacturer, module->partNumber, std::to_string(module->bytes)}};
}

HardwareFacts graphics(const fs::path& root, const NameDatabase& names)
{
    std::error_code error;
    std::vector<fs::path> cards;
    for (fs::directory_iterator each(root / "sys/bus/pci/devices", error), end; !error && each != end;
         each.increment(error))
        if (firstLine(each->path() / "class").starts_with(displayClass))
            cards.push_back(each->path());
    if (error)
        return missing(error.value());
    if (cards.empty())
        return {};
    std::sort(cards.begin(), cards.end());
    auto card = std::find_if(cards.begin(), cards.end(),
                             [](const fs::path& one) { return firstLine(one / "boot_vga") == "1"; });
    if (card == cards.end())
        card = cards.begin();
    const std::string modalias = firstLine(*card / "modalias");
    const std::string maker = names.hardware(modalias, "ID_VENDOR_FROM_DATABASE");
    const std::string model = names.hardware(modalias, "ID_MODEL_FROM_DATABASE");
    return {.texts = {maker.empty() || model.empty() ? maker + model : maker + " " + model}};
}

std::string deviceProperty(const fs::path& device, const char* property)
{
    const Udev context(udev_new());
    const UdevDevice found(context ? udev_device_new_from_syspath(context.get(), device.c_str()) : nullptr);
    return found ? orEmpty(udev_device_get_property_value(found.get(), property)) : "";
}

std::string hardwareProperty(const std::string& modalias, const char* property)
{
    using UdevHwdb = std::unique_ptr<udev_hwdb, UdevRelease<udev_hwdb_unref>>;
    const Udev context(udev_new());
    const UdevHwdb database(context ? udev_hwdb_new(context.get()) : nullptr);
    udev_list_entry* const list =
        database ? udev_hwdb_get_properties_list_entry(database.get(), modalias.c_str(), 0) : nullptr;
    udev_list_entry* const entry = udev_list_entry_get_by_name(list, property);
    return entry ? orEmpty(udev_list_entry_get_value(entry)) : "";
}

} // namespace

NameDatabase udevNames()
{
    return {deviceProperty, hardwareProperty};
}

HardwareFacts hardwareFacts(Hardware part, const fs::path& root, const NameDatabase& names)
{
    switch (part) {
    case Hardware::cpu:
        return processor(root);
    case Hardware::board:
        return board(root);
    case Hardware::memory:
        return memory(root, names);
    default:
        return graphics(root, names);
    }
}

HardwareFacts hardwareFacts(Hardware part)
{
    return hardwareFacts(part, "/", udevNames());
}

} // namespace pyrux::platform
