#pragma once

#include "devices/held_key.h"
#include "pyrux/records.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

namespace pyrux {

/// `NotifyRecord::value` of the buttons of all wired mice, by button number; 0 after its end.
inline constexpr std::array<std::uint8_t, 10> wiredKeyValues{0x1E, 0x20, 0x1F, 0x22, 0x21,
                                                             0x23, 0,    0,    0x09, 0x0A};

/// What tells the key reports of one model from another's.
struct MouseKeyFacts {
    std::uint32_t downEvent, upEvent;     ///< `NotifyRecord::event`.
    std::span<const std::uint8_t> values; ///< `NotifyRecord::value` by button number; 0 after its end.
    std::uint8_t shiftKey = 1;            ///< Number of the button that is the shift.
    std::uint16_t shiftValue = 32;        ///< Added to the values of the others while it is held.
};

/// The buttons that a mouse reports by itself, as 43 01. Sends nothing.
class MouseKeys {
public:
    MouseKeys(const ModelRow& model, const MouseKeyFacts& facts) : shift(heldKeyOf(model)), facts(facts) {}

    static bool isKey(const Reply& report) { return report.begins({0x43, 0x01}); }

    /// What the host is told of a key report; none: nothing.
    std::optional<NotifyRecord> take(const Reply& report);

private:
    std::atomic<bool>& shift; ///< Whether it is held.
    const MouseKeyFacts& facts;
};

} // namespace pyrux
