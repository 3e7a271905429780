#pragma once

#include "pyrux/error.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <cstdint>

namespace pyrux {

/// The bank: a record of the device with the button that acts as the shift of the others, and a setting that
/// is carried through. Sends 51 10 and 52 10.
class MouseBank {
public:
    static constexpr std::uint8_t noCombo = 0xFF; ///< No button is the shift.

    struct State {
        Reply reply;

        std::uint8_t comboButton() const { return reply[12]; }
        std::uint8_t setting() const { return reply[16]; }
    };

    explicit MouseBank(DeviceLink& link) : link(link) {}

    _error read(State& state);

    /// Deliberate: all other bytes of the bank are written as zeros.
    _error write(std::uint8_t comboButton, std::uint8_t setting);

    /// Writes what is read, but for the combo button.
    _error writeComboButton(std::uint8_t button);

private:
    DeviceLink& link;
};

} // namespace pyrux
