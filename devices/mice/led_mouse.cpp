#include "devices/mice/led_mouse.h"

#include <algorithm>
#include <array>
#include <optional>

namespace pyrux {

// clang-format off
namespace cmd {                                 // numbers are report bytes; a reply counts from 0
constexpr Report hostDriven      {0x41, 0x02};  // the host drives the lights
constexpr Report profileOn       {0x42, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01, 0x01};
constexpr Report profileAck      {0x42, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01, 0x01}; // of the effects too
constexpr Report dpiOn           {0x42, 0x00, 0x40, 0x00, 0x01};
constexpr Report dpiAck          {0x42, 0x10, 0x40, 0x00, 0x01};
constexpr Report setEffectMode   {0x51, 0x28};  // 5: mode
constexpr Report setGeneralEffect{0x51, 0x2B};  // 5: mode, 6: speed, 7: direction, 10: brightness, 11 to 13: color
constexpr Report setCustomEffect {0x51, 0xA8};  // 5 to 10: colors
constexpr Report getEffectMode   {0x52, 0x28};  // reply 4: mode
constexpr Report getGeneralEffect{0x52, 0x2B};  // 5: mode; reply 4 to 12 as written in 5 to 13
constexpr Report getCustomEffect {0x52, 0xA8};  // reply 4 to 9: colors
constexpr Report allLeds         {0xC0, 0x00};  // 5 to 7: color
constexpr Report someLeds        {0xC0, 0x01};  // 3: count, 5: index and color of each LED
constexpr Report drive           {0xC0, 0xF0, 0x00, 0x00, 0x01};
} // namespace cmd
// clang-format on

namespace {

constexpr std::array startUp{cmd::profileOn, cmd::profileAck, cmd::dpiOn, cmd::dpiAck};

// clang-format off
constexpr std::array<DeviceEvent<NotifyRecord>, 4> events{{
    // head of the report, byte that must be 1, text after the model's name, answer, event for the host
    {{0x42, 0x20, 0x40}, 4, " dpi change", cmd::dpiAck, changed<LED_MOUSE_DPI_CHANGED>},
    {{0x42, 0x20, 0x00}, 4, " profile change", cmd::profileAck, changed<LED_MOUSE_PROFILE_CHANGED>},
    {{0x42, 0x20, 0x00}, 7, " effect mode change", cmd::profileAck, changed<LED_MOUSE_EFFECT_MODE_CHANGED>},
    {{0x42, 0x20, 0x00}, 8, " effect data change", cmd::profileAck, changed<LED_MOUSE_EFFECT_DATA_CHANGED>},
}};
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
constexpr std::size_t bytesPerLed = 4; // in a frame
constexpr std::uint8_t ledsPerFrame = 15;
constexpr std::size_t frameLane = 0; // a frame replaces the one before
constexpr std::int32_t slowPaceMs = 100;
constexpr std::int32_t fastPaceMs = 10;

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

LedMouseTraits ledMouseTraits(const ModelRow& model, std::atomic<bool>& shift,
                              std::span<const std::uint8_t> effectModes)
{
    return {.mouse = {.model = model,
                      .startUp = startUp,
                      .events = events,
                      .keyDownEvent = LED_MOUSE_KEY_DOWN,
                      .keyUpEvent = LED_MOUSE_KEY_UP,
                      .keyValues = wiredKeyValues,
                      .shift = shift,
                      .paceMs = slowPaceMs},
            .effectModes = effectModes};
}

LedMouse::LedMouse(const std::string& path, const LedMouseTraits& traits)
    : WiredMouse(path, traits.mouse), effectModes(traits.effectModes)
{
}

_error LedMouse::setLightingInit()
{
    link.queue().clearLanes();
    const _error taken = link.send(cmd::hostDriven);
    const _error driven = link.send(cmd::drive);
    setLightingTurnOff();
    link.queue().paceDelayMs = fastPaceMs;
    return taken ? taken : driven;
}

_error LedMouse::setLightingUninit()
{
    link.queue().clearLanes();
    const _error result = link.send(cmd::configOff);
    link.queue().paceDelayMs = slowPaceMs;
    return result;
}

_error LedMouse::setLightingPortColor(const LightingPortColor*)
{
    return E_NOT_SUPPORTED;
}

_error LedMouse::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    Report frame = cmd::someLeds;
    std::uint8_t count = 0;
    for (const LightingLedZone& zone : zones)
        for (const LightingLed& led : zone.leds) {
            if (count == ledsPerFrame || led.index > 0xFF)
                continue; // no place for it in the frame
            const std::array<std::uint8_t, bytesPerLed> bytes{std::uint8_t(led.index), led.red, led.green,
                                                              led.blue};
            frame = frame.at(5 + count * bytesPerLed, bytes);
            ++count;
        }
    link.queue().push(frameLane, frame.at(3, count));
    return E_OK;
}

_error LedMouse::setLightingTurnOff()
{
    link.queue().clearLanes();
    link.queue().push(frameLane, cmd::allLeds);
    return E_OK;
}

bool LedMouse::hasMode(std::uint8_t mode) const
{
    return std::ranges::find(effectModes, mode) != effectModes.end();
}

_error LedMouse::setEffectMode(std::uint8_t mode)
{
    if (!hasMode(mode))
        return E_INVALID_SET;
    set(cmd::configOn);
    return set(cmd::setEffectMode.at(5, mode));
}

_error LedMouse::getEffectMode(std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    set(cmd::configOn);
    Reply reply;
    if (const _error result = get(cmd::getEffectMode, reply))
        return result;
    *mode = reply[4];
    return E_OK;
}

_error LedMouse::setGeneralEffect(const MouseEffectRecord* effect)
{
    if (!effect || !hasMode(effect->mode))
        return E_INVALID_SET;
    set(cmd::configOn); // deliberate: also ahead of a speed that is refused
    const std::optional<std::uint8_t> speed = speedCode(effect->mode, effect->speed);
    if (!speed)
        return E_INVALID_PARAM;
    if (set(effectReport(*effect, *speed)))
        return E_INVALID_SET;
    return setEffectMode(effect->mode);
}

_error LedMouse::getGeneralEffect(MouseEffectRecord* effect)
{
    if (!effect)
        return E_INVALID_GET;
    const std::uint8_t mode = effect->mode;
    set(cmd::configOn);
    Reply reply;
    if (const _error result = get(cmd::getGeneralEffect.at(5, mode), reply))
        return result;
    effect->speed = speedIndex(mode, reply[5]);
    effect->direction = reply[6] & directionBit ? 1 : 0;
    effect->brightness = mode == halvedMode ? wholeBrightness(reply[9]) : reply[9];
    effect->red = reply[10];
    effect->green = reply[11];
    effect->blue = reply[12];
    return E_OK;
}

_error LedMouse::setCustomEffect(const std::uint8_t* colors)
{
    if (!colors)
        return E_INVALID_SET;
    set(cmd::configOn);
    if (const _error result = set(cmd::setCustomEffect.at(5, std::span(colors, colorBytes))))
        return result;
    return setEffectMode(customEffect);
}

_error LedMouse::getCustomEffect(std::uint8_t* colors)
{
    if (!colors)
        return E_INVALID_GET;
    set(cmd::configOn);
    Reply reply;
    if (const _error result = get(cmd::getCustomEffect, reply))
        return result;
    std::ranges::copy(reply.part(4, colorBytes), colors);
    return E_OK;
}

} // namespace pyrux
