#include "devices/mice/mouse_combo.h"

#include "pyrux/mouse_records.h"

namespace pyrux {

namespace {

constexpr std::uint8_t comboButton = 5; // the one that becomes the shift

std::uint8_t isOn(const MouseBank::State& state)
{
    return state.comboButton() == MouseBank::noCombo ? 0 : 1;
}

} // namespace

_error MouseCombo::setMouseCombo(std::uint8_t on)
{
    modes.configure();
    modes.configure(); // deliberate: this operation sends it twice
    MouseBank::State state;
    if (bank.read(state))
        return E_INVALID_SET;
    if (isOn(state) == on)
        return E_OK;
    if (!on)
        return bank.writeComboButton(MouseBank::noCombo);
    if (buttons.write(comboButton, KEY_COMBO))
        return E_INVALID_SET;
    return bank.writeComboButton(comboButton);
}

_error MouseCombo::getMouseCombo(std::uint8_t* on)
{
    if (!on)
        return E_INVALID_GET;
    modes.configure();
    MouseBank::State state;
    if (bank.read(state))
        return E_INVALID_GET;
    *on = isOn(state);
    return E_OK;
}

} // namespace pyrux
