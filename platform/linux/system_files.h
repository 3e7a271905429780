#pragma once

#include "platform/hardware_facts.h"
#include "platform/system_load.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

/// @file
/// What the files of a Linux system tell of the computer. Each takes the folder that stands for "/".

namespace pyrux::platform {

/// The first text of a file without its line end; empty when it cannot be read.
std::string firstLine(const std::filesystem::path& file);

/// From proc/stat: the times of all processors in ticks.
std::optional<CpuTimes> cpuTimes(const std::filesystem::path& root);

/// From proc/meminfo.
std::uint32_t memoryLoad(const std::filesystem::path& root);

/// The texts of udev's databases: of a device's property, and of the hardware database for a modalias.
struct NameDatabase {
    std::function<std::string(const std::filesystem::path& device, const char* property)> device;
    std::function<std::string(const std::string& modalias, const char* property)> hardware;
};

/// The system's own.
NameDatabase udevNames();

/// Processor: proc/cpuinfo. Board: sys/class/dmi/id. Memory: the SMBIOS tables, which are root's alone to
/// read, else what udev has taken from them. Graphics card: sys/bus/pci, named by udev's hardware database;
/// the card that the system was started with, or the first one.
HardwareFacts hardwareFacts(Hardware part, const std::filesystem::path& root, const NameDatabase& names);

/// The keyboard layout that the system is set up with, such as "de" (etc/default/keyboard, else
/// etc/vconsole.conf); empty without one.
std::string systemKeyboardLayout(const std::filesystem::path& root);

/// The primary language id of an XKB layout, with Windows' numbers; 0 for any other.
std::uint16_t languageOfLayout(std::string_view layout);

} // namespace pyrux::platform
