#include "devices/mice/button_map.h"

#include <algorithm>

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report setButton   {0x51, 0x20};       // 3: address, 4: page, 5 and 6: code
constexpr Report getButton   {0x52, 0x20};       // 3: address, 4: page; reply 4 and 5: code
constexpr Report getComboCode{0x52, 0x20, 0xD8}; // reply 4 and 5: what the combo button does otherwise
} // namespace cmd
// clang-format on

constexpr std::size_t addressedMatch = 4;    // a reply repeats address and page too
constexpr std::uint8_t addressedButtons = 8; // those on the first page
constexpr std::uint8_t comboButtons = 6;     // those that can be the shift
constexpr std::uint16_t noFunction = 0x00FF;
constexpr std::uint16_t disabled = 0x0181; // read as 0

constexpr bool isDpiLevel(std::uint16_t code)
{
    return code >= KEY_DPI_LEVEL && code < KEY_DPI_LEVEL + DpiOrder::levels;
}

/// The level that a code of `KEY_DPI_LEVEL` goes to.
constexpr std::uint8_t levelOf(std::uint16_t code)
{
    return std::uint8_t(code - KEY_DPI_LEVEL);
}

constexpr bool isStep(std::uint16_t code)
{
    return code == KEY_STEP_UP || code == KEY_STEP_DOWN;
}

/// Whether the wheel itself makes the step, in the direction of its tilt.
constexpr bool isOwnStep(std::uint8_t button, std::uint16_t code)
{
    return (button == mouse::tiltUp && code == KEY_STEP_UP) ||
           (button == mouse::tiltDown && code == KEY_STEP_DOWN);
}

} // namespace

_error ButtonMap::setKeyMapping(std::uint8_t button, std::uint16_t code)
{
    if (button >= mouse::buttons)
        return E_INVALID_SET;
    modes.configure();
    MouseBank::State state;
    if (bank.read(state))
        return E_INVALID_SET;
    WheelTilt::State tilt;
    if (mouse::isTilt(button) && wheel.read(tilt))
        return E_INVALID_SET;
    if (button == state.comboButton() || code == KEY_MACRO)
        return E_OK;
    if (mouse::isTilt(button) && wheel.writeOne(button, isOwnStep(button, code), tilt))
        return E_INVALID_SET;
    return writeAction(button, code);
}

_error ButtonMap::setKeyMappingAll(const std::uint16_t* map)
{
    if (!map)
        return E_INVALID_SET;
    modes.configure();
    MouseBank::State state;
    if (bank.read(state))
        return E_INVALID_SET;
    if (wheel.write(map[mouse::tiltDown] == KEY_STEP_DOWN, map[mouse::tiltUp] == KEY_STEP_UP))
        return E_INVALID_SET;
    _error result = E_OK; // deliberate: of the last button alone
    for (std::uint8_t button = 0; button < mouse::buttons; ++button)
        if (button != state.comboButton() && map[button] != KEY_MACRO)
            result = writeAction(button, map[button]);
    return result;
}

_error ButtonMap::getKeyMappingAll(std::uint16_t* map)
{
    if (!map)
        return E_INVALID_GET;
    modes.configure();
    Codes codes{};
    for (std::uint8_t button = 0; button < mouse::buttons; ++button) {
        if (const std::optional<std::uint16_t> held = macros.codeOf(button))
            codes[button] = *held;
        else if (read(button, codes[button]))
            return E_INVALID_GET;
    }
    readCombo(codes);
    readWheel(codes);
    std::ranges::copy(codes, map);
    return E_OK;
}

void ButtonMap::readCombo(Codes& codes)
{
    MouseBank::State state;
    if (bank.read(state) || state.comboButton() >= comboButtons)
        return;
    Reply reply;
    if (!link.get(cmd::getComboCode, reply) && reply[2] == cmd::getComboCode[3])
        codes[state.comboButton()] = reply.u16(4);
}

void ButtonMap::readWheel(Codes& codes)
{
    WheelTilt::State tilt;
    if (wheel.read(tilt))
        return;
    if (tilt.b)
        codes[mouse::tiltUp] = KEY_STEP_UP;
    if (tilt.a)
        codes[mouse::tiltDown] = KEY_STEP_DOWN;
}

_error ButtonMap::write(std::uint8_t button, std::uint16_t code)
{
    if (isDpiLevel(code)) {
        DpiOrder::Table table;
        order.read(table); // without one the levels stand in their own order
        code = std::uint16_t(KEY_DPI_LEVEL + table.placeOf(levelOf(code)).value_or(0));
    }
    return link.set(cmd::setButton.at(3, mouse::address(button)).at(4, mouse::page(button)).at16(5, code),
                    addressedMatch);
}

_error ButtonMap::read(std::uint8_t button, std::uint16_t& code)
{
    Reply reply;
    if (const _error result =
            link.get(cmd::getButton.at(3, mouse::address(button)).at(4, mouse::page(button)), reply))
        return result;
    code = reply.u16(4);
    if (code == noFunction && button < addressedButtons) {
        code = reply[2]; // the button's own function is named by its address
    } else if (code == disabled) {
        code = 0;
    } else if (isDpiLevel(code)) {
        DpiOrder::Table table;
        order.read(table);
        code = std::uint16_t(KEY_DPI_LEVEL + table.levelAt[levelOf(code)]);
    }
    return E_OK;
}

/// Writes a button's code and takes away what its place in the macro memory holds.
_error ButtonMap::writeAlone(std::uint8_t button, std::uint16_t code)
{
    const _error result = write(button, code);
    macros.remove(button);
    return result;
}

_error ButtonMap::writeAction(std::uint8_t button, std::uint16_t code)
{
    if (isOwnStep(button, code))
        return writeAlone(button, noFunction); // the wheel itself makes the step
    return isStep(code) ? macros.writeStep(button, code) : writeAlone(button, code);
}

} // namespace pyrux
