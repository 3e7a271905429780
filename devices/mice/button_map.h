#pragma once

#include "devices/mice/dpi_order.h"
#include "devices/mice/mouse_bank.h"
#include "devices/mice/mouse_macros.h"
#include "devices/mice/mouse_protocol.h"
#include "devices/mice/wheel_tilt.h"
#include "pyrux/error.h"
#include "pyrux/mouse_records.h"
#include "transport/device_link.h"

#include <array>
#include <cstdint>

namespace pyrux {

/// What the buttons of a mouse do. Sends 51 20 and 52 20; steps go to the macro memory or to the wheel, DPI
/// levels are numbered by the order table, and the bank tells which button is the shift: that one has its
/// code elsewhere.
class ButtonMap {
public:
    ButtonMap(DeviceLink& link, MouseModes& modes, MouseBank& bank, WheelTilt& wheel, DpiOrder& order,
              MouseMacros& macros)
        : link(link), modes(modes), bank(bank), wheel(wheel), order(order), macros(macros)
    {
    }

    _error setKeyMapping(std::uint8_t button, std::uint16_t code);
    _error setKeyMappingAll(const std::uint16_t* map);
    _error getKeyMappingAll(std::uint16_t* map);

    /// Writes a button's code and leaves its place in the macro memory alone.
    _error write(std::uint8_t button, std::uint16_t code);

private:
    using Codes = std::array<std::uint16_t, mouse::buttons>;

    _error read(std::uint8_t button, std::uint16_t& code);
    _error writeAlone(std::uint8_t button, std::uint16_t code);
    _error writeAction(std::uint8_t button, std::uint16_t code);
    void readCombo(Codes& codes);
    void readWheel(Codes& codes);

    DeviceLink& link;
    MouseModes& modes;
    MouseBank& bank;
    WheelTilt& wheel;
    DpiOrder& order;
    MouseMacros& macros;
};

} // namespace pyrux
