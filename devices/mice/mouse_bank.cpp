#include "devices/mice/mouse_bank.h"

#include "devices/mice/mouse_protocol.h"

namespace pyrux {

namespace {

namespace cmd {                       // numbers are report bytes; a reply counts from 0
constexpr Report setBank{0x51, 0x10}; // 13: combo button, 17: setting
constexpr Report getBank{0x52, 0x10}; // reply 12: combo button, 16: setting
} // namespace cmd

} // namespace

_error MouseBank::read(State& state)
{
    return link.get(cmd::getBank, state.reply);
}

_error MouseBank::write(std::uint8_t comboButton, std::uint8_t setting)
{
    return link.set(cmd::setBank.at(13, comboButton).at(17, setting));
}

_error MouseBank::writeComboButton(std::uint8_t button)
{
    State state;
    if (read(state))
        return E_INVALID_SET;
    return link.set(repeated(cmd::setBank, state.reply).at(13, button));
}

} // namespace pyrux
