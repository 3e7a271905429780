#pragma once

#include "devices/mice/button_map.h"
#include "devices/mice/mouse_bank.h"
#include "devices/mice/mouse_protocol.h"
#include "pyrux/error.h"

#include <cstdint>

namespace pyrux {

/// Whether a button of a mouse acts as the shift of the others. It stands in the bank; the button gets a code
/// of its own, through the button map.
class MouseCombo {
public:
    MouseCombo(MouseModes& modes, MouseBank& bank, ButtonMap& buttons)
        : modes(modes), bank(bank), buttons(buttons)
    {
    }

    _error setMouseCombo(std::uint8_t on);
    _error getMouseCombo(std::uint8_t* on);

private:
    MouseModes& modes;
    MouseBank& bank;
    ButtonMap& buttons;
};

} // namespace pyrux
