#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// @file
/// Device paths of the form `\\?\HID#VID_3A7E&PID_012F&MI_01&Col01#instance#{class}`.

namespace pyrux {

/// What a device path says of its device.
struct PathIdentity {
    std::uint16_t vid = 0;
    std::uint16_t pid = 0;
    std::int32_t interface = -1; ///< -1: the path names none.
};

/// Reads identity and interface out of a path, whose keys stand in upper case. What is missing or malformed
/// leaves its value as `PathIdentity` starts.
PathIdentity parseDevicePath(std::string_view path);

/// Reads the identity alone; the interface stays -1.
PathIdentity parseVidPid(std::string_view path);

/// The identity of a path in any case, for classes that look at their own path.
PathIdentity identityOf(std::string_view path);

/// A piece of the second token of a path, such as "Col01" in the example above, counted from 0; empty when
/// there is none.
std::string_view devicePathPiece(std::string_view path, std::size_t index);

/// Letters A to Z only, as paths are compared.
std::string upperCased(std::string_view text);

/// The mark that a path carries when it stands for the device behind a receiver.
constexpr std::string_view dongleMark = "&ISDONGLE";

/// Whether a path ends in the mark, in any case.
bool hasDongleMark(std::string_view path);

/// A path without the mark.
std::string_view withoutDongleMark(std::string_view path);

/// The key of a path in the registry: the mark is added to the path of a receiver that lacks it, so that both
/// spellings find one object.
std::string registryKey(std::string_view path);

} // namespace pyrux
