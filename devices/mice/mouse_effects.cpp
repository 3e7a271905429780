#include "devices/mice/mouse_effects.h"

#include <algorithm>
#include <optional>

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report setEffectMode   {0x51, 0x28}; // 5: mode
constexpr Report setGeneralEffect{0x51, 0x2B}; // 5: mode, 6: speed, 7: direction, 10: brightness, 11 to 13: color
constexpr Report setCustomEffect {0x51, 0xA8}; // 5 to 10: colors
constexpr Report getEffectMode   {0x52, 0x28}; // reply 4: mode
constexpr Report getGeneralEffect{0x52, 0x2B}; // 5: mode; reply 4 to 12 as written in 5 to 13
constexpr Report getCustomEffect {0x52, 0xA8}; // reply 4 to 9: colors
} // namespace cmd
// clang-format on

/// How a mode keeps its speeds 1 to 5.
struct SpeedTable {
    std::uint8_t mode;
    std::array<std::uint8_t, 5> codes;
};
constexpr std::array<SpeedTable, 2> speedTables{{
    {1, {60, 55, 49, 44, 38}},
    {2, {50, 45, 40, 35, 30}},
}};

constexpr std::uint8_t directedMode = 1;
constexpr std::uint8_t directionSet = 160;
constexpr std::uint8_t directionClear = 32;
constexpr std::uint8_t directionBit = 0x80;
constexpr std::uint8_t halvedMode = 2; // keeps half of its brightness
constexpr std::uint8_t fullHalf = 127; // of 255
constexpr std::uint8_t plainMode = 4;  // has no parameters
constexpr std::size_t colorBytes = 6;  // of the custom effect

const SpeedTable* speedTable(std::uint8_t mode)
{
    const auto table = std::ranges::find(speedTables, mode, &SpeedTable::mode);
    return table == speedTables.end() ? nullptr : table;
}

/// A speed as the device keeps it; none for an index that the mode does not have.
std::optional<std::uint8_t> speedCode(std::uint8_t mode, std::uint8_t speed)
{
    const SpeedTable* table = speedTable(mode);
    if (!table)
        return speed;
    if (speed < 1 || speed > table->codes.size())
        return std::nullopt;
    return table->codes[speed - 1U];
}

/// The other way round; a code that is not in the table stays as it is.
std::uint8_t speedIndex(std::uint8_t mode, std::uint8_t code)
{
    const SpeedTable* table = speedTable(mode);
    if (!table)
        return code;
    const auto found = std::ranges::find(table->codes, code);
    return found == table->codes.end() ? code : std::uint8_t(found - table->codes.begin() + 1);
}

/// Deliberate: the half of 255 reads back as 255, so that 254 does too.
std::uint8_t wholeBrightness(std::uint8_t half)
{
    return half >= fullHalf ? 255 : std::uint8_t(half * 2);
}

Report effectReport(const MouseEffectRecord& effect, std::uint8_t speed)
{
    constexpr std::uint8_t all = 0xFF;
    const Report head = cmd::setGeneralEffect.at(5, effect.mode).at(8, all).at(9, all);
    if (effect.mode == plainMode)
        return head.at(8, 0).at(10, std::array{all, all, all, all});
    const std::uint8_t direction = effect.mode != directedMode ? std::uint8_t{0}
                                   : effect.direction          ? directionSet
                                                               : directionClear;
    const auto brightness =
        std::uint8_t(effect.mode == halvedMode ? effect.brightness / 2 : effect.brightness);
    return head.at(6, speed)
        .at(7, direction)
        .at(10, std::array{brightness, effect.red, effect.green, effect.blue});
}

} // namespace

bool MouseEffects::hasMode(std::uint8_t mode) const
{
    return std::ranges::find(effectModes, mode) != effectModes.end();
}

_error MouseEffects::setEffectMode(std::uint8_t mode)
{
    if (!hasMode(mode))
        return E_INVALID_SET;
    modes.configure();
    return link.set(cmd::setEffectMode.at(5, mode));
}

_error MouseEffects::getEffectMode(std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    modes.configure();
    Reply reply;
    if (const _error result = link.get(cmd::getEffectMode, reply))
        return result;
    *mode = reply[4];
    return E_OK;
}

_error MouseEffects::setGeneralEffect(const MouseEffectRecord* effect)
{
    if (!effect || !hasMode(effect->mode))
        return E_INVALID_SET;
    modes.configure(); // deliberate: also ahead of a speed that is refused
    const std::optional<std::uint8_t> speed = speedCode(effect->mode, effect->speed);
    if (!speed)
        return E_INVALID_PARAM;
    if (link.set(effectReport(*effect, *speed)))
        return E_INVALID_SET;
    return setEffectMode(effect->mode);
}

_error MouseEffects::getGeneralEffect(MouseEffectRecord* effect)
{
    if (!effect)
        return E_INVALID_GET;
    const std::uint8_t mode = effect->mode;
    modes.configure();
    Reply reply;
    if (const _error result = link.get(cmd::getGeneralEffect.at(5, mode), reply))
        return result;
    effect->speed = speedIndex(mode, reply[5]);
    effect->direction = reply[6] & directionBit ? 1 : 0;
    effect->brightness = mode == halvedMode ? wholeBrightness(reply[9]) : reply[9];
    effect->red = reply[10];
    effect->green = reply[11];
    effect->blue = reply[12];
    return E_OK;
}

_error MouseEffects::setCustomEffect(const std::uint8_t* colors)
{
    if (!colors)
        return E_INVALID_SET;
    modes.configure();
    if (const _error result = link.set(cmd::setCustomEffect.at(5, std::span(colors, colorBytes))))
        return result;
    return setEffectMode(customEffect);
}

_error MouseEffects::getCustomEffect(std::uint8_t* colors)
{
    if (!colors)
        return E_INVALID_GET;
    modes.configure();
    Reply reply;
    if (const _error result = link.get(cmd::getCustomEffect, reply))
        return result;
    std::ranges::copy(reply.part(4, colorBytes), colors);
    return E_OK;
}

} // namespace pyrux
