#pragma once

#include "transport/report.h"

/// @file
/// Commands of the keyboards that more than one file sends. Numbers are report bytes; a reply counts from 0.

namespace pyrux::keys {

// What the keyboard is ready for: command 41 and a mode.
inline constexpr Report editEnds{0x41, 0x00};
inline constexpr Report serviceOn{0x41, 0x01}; ///< A reset, a commit or the recording of a macro.
inline constexpr Report macroListOn{0x41, 0x02};
inline constexpr Report hostDriven{0x41, 0x03};
inline constexpr Report macroOfListOn{0x41, 0x03}; // deliberate: the same as `hostDriven`
inline constexpr Report editOn{0x41, 0x80};        ///< One read or write.

inline constexpr Report setEffect{0x51, 0x28}; // 5: effect number
inline constexpr Report showPreview{0x51, 0x28, 0x00, 0x00, 0xFF};

} // namespace pyrux::keys
