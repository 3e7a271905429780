#include "devices/lighting/play_dock.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace pyrux {

namespace cmd { // numbers are report bytes; a reply counts from 0; FF stands for all zones
constexpr Report deviceControl{0x80, 0x01, 0x02};      // 4: 1 the host drives the lights, 0 the device
constexpr Report getEffect{0x80, 0x03, 0x01, 0xFF};    // reply 3: see `EffectBytes`
constexpr Report setEffect{0x80, 0x03, 0x02, 0xFF};    // 5: see `EffectBytes`
constexpr Report getAnyEffect{0x80, 0x04, 0x01, 0xFF}; // 5: effect; reply as `getEffect`
constexpr Report setMode{0x80, 0x06, 0x02, 0xFF};      // 5: effect
constexpr Report zoneFrame{0x80, 0x09};                // 3: zone, 4: 1 for one color, 5 to 7: color
constexpr Report getBottom{0x80, 0x11, 0x01, 0xFF};    // reply 3 to 5: color
constexpr Report setBottom{0x80, 0x11, 0x02, 0xFF};    // 5 to 7: color
constexpr Report save{0x80, 0xB0, 0x02};
constexpr Report resetConfig{0x80, 0xB1, 0x02};
constexpr Report getVersion{0x80, 0xB4, 0x01}; // reply 3: version
constexpr Report resetData{0x80, 0xB6, 0x02};
} // namespace cmd

namespace {

constexpr std::uint32_t zoneCount = 3;
constexpr std::uint32_t minGapMs = 32; // between rounds of the queue
constexpr std::uint8_t effectCount = 9;
constexpr std::uint8_t ratedEffect = 0; // has a rate in place of a speed
constexpr std::uint8_t mostRate = 7;
constexpr std::uint8_t mostSpeed = 3;
constexpr std::uint8_t unset = 0xFF;
constexpr std::size_t colorBytes = 3;

/// An effect as the wire has it, in commands, replies and notifications.
struct EffectBytes {
    std::uint8_t effect;
    std::uint8_t speed; ///< 3 less the speed, or the rate.
    std::uint8_t color[colorBytes];
    std::uint8_t colorCount;
    std::uint8_t data[16];
    std::uint8_t extra[4];
    std::uint8_t tail;
};
static_assert(sizeof(EffectBytes) == 27 && alignof(EffectBytes) == 1);

EffectBytes effectAt(const Reply& reply, std::size_t from)
{
    EffectBytes bytes;
    std::ranges::copy(reply.part(from, sizeof bytes), bytesOf(bytes).begin());
    return bytes;
}

/// What a record says of an effect, but for speed and rate.
EffectBytes toWire(const PlayDockEffect& effect, std::uint8_t speed)
{
    EffectBytes bytes{.effect = effect.effect,
                      .speed = speed,
                      .color = {effect.red, effect.green, effect.blue},
                      .colorCount = effect.colorCount,
                      .data = {},
                      .extra = {},
                      .tail = effect.effectTail};
    std::ranges::copy(effect.effectData, bytes.data);
    std::ranges::copy(effect.effectExtra, bytes.extra);
    return bytes;
}

void fromWire(const EffectBytes& bytes, PlayDockEffect& effect)
{
    effect.effect = bytes.effect;
    effect.red = bytes.color[0];
    effect.green = bytes.color[1];
    effect.blue = bytes.color[2];
    effect.colorCount = bytes.colorCount;
    std::ranges::copy(bytes.data, effect.effectData);
    std::ranges::copy(bytes.extra, effect.effectExtra);
    effect.effectTail = bytes.tail;
}

/// The speed byte of a record; none for a value out of range.
std::optional<std::uint8_t> speedByte(const PlayDockEffect& effect)
{
    if (effect.effect == ratedEffect)
        return effect.rate > mostRate ? std::nullopt : std::optional(effect.rate);
    return effect.speed > mostSpeed ? std::nullopt : std::optional(std::uint8_t(mostSpeed - effect.speed));
}

PlayDockNotify unsetRecord(std::uint8_t kind)
{
    PlayDockNotify record;
    std::ranges::fill(bytesOf(record), unset);
    record.kind = kind;
    return record;
}

PlayDockNotify effectChanged(const Reply& report)
{
    PlayDockNotify record = unsetRecord(0);
    const EffectBytes bytes = effectAt(report, 4);
    fromWire(bytes, record.effect);
    record.effect.speed = std::uint8_t(bytes.speed + 1); // deliberate: not 3 less it, and for every effect
    return record;
}

PlayDockNotify bottomChanged(const Reply& report)
{
    PlayDockNotify record = unsetRecord(1);
    record.effect.red = report[4];
    record.effect.green = report[5];
    record.effect.blue = report[6];
    return record;
}

constexpr std::array<DeviceEvent<PlayDockNotify>, 2> events{{
    {.head = {0x80, 0x10, 0x03}, .text = "notify top&body effect change", .record = effectChanged},
    {.head = {0x80, 0x12, 0x03}, .record = bottomChanged},
}};

constexpr ControllerTraits traits{
    .model = PLAY_DOCK::model, .failureText = "play dock USB fail", .gap = requestGap};

} // namespace

PLAY_DOCK::PLAY_DOCK(const std::string& path)
    : NotifyingController(path, traits, events, First::events), judged(link, model)
{
}

_error PLAY_DOCK::setLightingInit()
{
    queue().minGapMs =
        minGapMs; // deliberate: the pace stays slow, and the gap stays after `setLightingUninit`
    queue().clearLanes();
    const _error result = EnterDeviceControl(__func__, true);
    setLightingTurnOff();
    return result;
}

_error PLAY_DOCK::setLightingUninit()
{
    queue().clearLanes();
    return EnterDeviceControl(__func__, false);
}

_error PLAY_DOCK::setLightingPortColor(const LightingPortColor* color)
{
    if (!color)
        return E_INVALID_SET;
    const auto& paint = *static_cast<const LightingPortColorOf<zoneCount>*>(color);
    const std::array<std::uint8_t, 4> solid{1, paint.red, paint.green, paint.blue};
    for (const std::uint32_t zone : paint.zone)
        if (zone >= 1 && zone <= zoneCount)
            queue().push(zone, cmd::zoneFrame.at(3, std::uint8_t(zone)).at(4, solid));
    return E_OK;
}

_error PLAY_DOCK::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    for (const LightingLedZone& zone : zones) {
        if (zone.zone < 1 || zone.zone > zoneCount || zone.leds.empty())
            continue;
        const LightingLed& led = zone.leds.back();
        const std::array<std::uint8_t, 4> last{0, led.red, led.green, led.blue}; // deliberate: byte 4 stays 0
        queue().push(zone.zone, cmd::zoneFrame.at(3, std::uint8_t(zone.zone)).at(4, last));
    }
    return E_OK;
}

_error PLAY_DOCK::setLightingTurnOff()
{
    queue().clearLanes();
    for (std::uint8_t zone = 1; zone <= zoneCount; ++zone)
        queue().push(zone, cmd::zoneFrame.at(3, zone));
    return E_OK;
}

/// Gives the lights to the host, or back to the device, for the operation that asks for it.
_error PLAY_DOCK::EnterDeviceControl(std::string_view operation, bool on)
{
    return judged.request(operation, cmd::deviceControl.at(4, on ? 1 : 0));
}

_error PLAY_DOCK::setEffectParameter(const PlayDockEffect* effect)
{
    if (!effect || effect->effect >= effectCount)
        return E_INVALID_SET;
    const std::optional<std::uint8_t> speed = speedByte(*effect);
    if (!speed)
        return E_INVALID_SET;
    const EffectBytes bytes = toWire(*effect, *speed);
    return judged.request(__func__, cmd::setEffect.at(5, bytesOf(bytes)));
}

_error PLAY_DOCK::getEffectParameter(PlayDockEffect* effect)
{
    if (!effect || effect->effect >= effectCount)
        return E_INVALID_GET;
    return readEffect(__func__, cmd::getEffect, *effect);
}

_error PLAY_DOCK::getAnyEffectParameter(PlayDockEffect* effect)
{
    if (!effect || effect->effect >= effectCount)
        return E_INVALID_GET;
    return readEffect(__func__, cmd::getAnyEffect.at(5, effect->effect), *effect);
}

_error PLAY_DOCK::readEffect(std::string_view operation, const Report& command, PlayDockEffect& effect)
{
    Reply reply;
    if (const _error result = judged.request(operation, command, reply))
        return result;
    const EffectBytes bytes = effectAt(reply, 3);
    fromWire(bytes, effect);
    if (bytes.effect == ratedEffect)
        effect.rate = bytes.speed;
    else
        effect.speed = std::uint8_t(mostSpeed - bytes.speed);
    return E_OK;
}

_error PLAY_DOCK::setEffectMode(std::uint8_t, std::uint8_t effect)
{
    if (effect >= effectCount)
        return E_INVALID_SET;
    return judged.request(__func__, cmd::setMode.at(5, effect));
}

_error PLAY_DOCK::getEffectMode(std::uint8_t, std::uint8_t* effect)
{
    if (!effect)
        return E_INVALID_GET;
    PlayDockEffect record{};
    if (const _error result = readEffect(__func__, cmd::getEffect, record))
        return result;
    *effect = record.effect;
    return E_OK;
}

_error PLAY_DOCK::setBottomEffectParameter(const std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_SET;
    return judged.request(__func__, cmd::setBottom.at(5, std::span(rgb, colorBytes)));
}

_error PLAY_DOCK::getBottomEffectParameter(std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = judged.request(__func__, cmd::getBottom, reply))
        return result;
    std::ranges::copy(reply.part(3, colorBytes), rgb);
    return E_OK;
}

_error PLAY_DOCK::saveConfig()
{
    return judged.request(__func__, cmd::save);
}

_error PLAY_DOCK::resetConfig(std::uint8_t)
{
    return judged.request(__func__, cmd::resetConfig);
}

_error PLAY_DOCK::resetData()
{
    return judged.request(__func__, cmd::resetData);
}

_error PLAY_DOCK::getVersion(std::uint16_t* version)
{
    if (!version)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = judged.request(__func__, cmd::getVersion, reply))
        return result;
    *version = reply.u16(3);
    return E_OK;
}

} // namespace pyrux

PYRUX_FACTORY(playdock, pyrux::PYRUX_PLAY_DOCK)
