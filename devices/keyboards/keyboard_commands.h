#pragma once

#include "pyrux/error.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <cstddef>

/// @file
/// What several parts of a keyboard send. Numbers are report bytes; a reply counts from 0.

namespace pyrux::keys {

// What the keyboard is ready for: command 41 and a mode.
inline constexpr Report editEnds{0x41, 0x00};
inline constexpr Report serviceOn{0x41, 0x01}; ///< A reset, a commit or the recording of a macro.
inline constexpr Report macroListOn{0x41, 0x02};
inline constexpr Report hostDriven{0x41, 0x03};
inline constexpr Report macroOfListOn{0x41, 0x03}; // deliberate: the same as `hostDriven`
inline constexpr Report editOn{0x41, 0x80};        ///< One read or write.

inline constexpr Report commit{0x50, 0x55};
inline constexpr Report setEffect{0x51, 0x28}; // 5: effect number
inline constexpr Report showPreview{0x51, 0x28, 0x00, 0x00, 0xFF};

// Bytes of a command that its reply repeats, where they are more than the link's two.
inline constexpr std::size_t numberedMatch = 3; ///< Its index or page too.
inline constexpr std::size_t mappingMatch = 4;  ///< And the first byte of an action.

/// Sends a command whose reply does not matter but for coming.
/// @return as `DeviceLink::get`. Deliberate: E_INVALID_GET for a reply that does not come in time, also where
///         the command sets something
inline _error set(DeviceLink& link, const Report& command, std::size_t matchLength = DeviceLink::plainMatch)
{
    Reply reply;
    return link.get(command, reply, matchLength);
}

inline void endEdit(DeviceLink& link)
{
    if (link.isOpen())
        set(link, editEnds);
}

} // namespace pyrux::keys
