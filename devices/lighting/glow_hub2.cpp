#include "devices/lighting/glow_hub2.h"

#include "services/service_manager.h"

#include <algorithm>
#include <array>
#include <span>

namespace pyrux {

namespace cmd { // numbers are report bytes; a reply counts from 0; 0F is the mask of all ports
constexpr Report getRgbEffect{0x80, 0x0A, 0x01};           // reply 3: mode, 4: param, 5: speed
constexpr Report setRgbEffect{0x80, 0x0A, 0x02};           // 4: mode, 5: param, 6: speed
constexpr Report showRgbColor{0x80, 0x0A, 0x02, 0x04};     // effect 4
constexpr Report getEffect{0x80, 0x0B, 0x01, 0x0F};        // reply 4 to 8
constexpr Report setEffect{0x80, 0x0B, 0x02, 0x0F};        // 5: effect, param, speed, flag, level
constexpr Report getColors{0x80, 0x10, 0x01, 0x0F, 0x0C};  // reply 5 to 40: colors
constexpr Report setColors{0x80, 0x10, 0x02, 0x0F, 0x0C};  // 6 to 41: colors
constexpr Report getRgbColor{0x80, 0x11, 0x01};            // reply 3 to 5: color
constexpr Report setRgbColor{0x80, 0x11, 0x02};            // 4 to 6: color
constexpr Report stripFrame{0x80, 0x16, 0x02, 0x01, 0x00}; // 6 to 8: color
constexpr Report portFrame{0x80, 0x16, 0x02, 0x02};        // 5: port from 0, 6 to 8: color
constexpr Report lightsBack{0x80, 0x16, 0x02, 0x04};       // the device drives its lights again
constexpr Report selectLayer{0x80, 0x17};                  // 3: value; deliberate: no operation byte
constexpr Report getFollow{0x80, 0x18, 0x01};              // reply 3: source, 4: flag, 5: speed
constexpr Report setFollow{0x80, 0x18, 0x02};              // 4: source, 5: flag, 6: speed
} // namespace cmd

namespace {

constexpr std::uint32_t portCount = 4;
constexpr std::uint32_t stripZone = 5; // in the lane after those of the ports
constexpr std::size_t colorBytes = 3;
constexpr std::size_t customBytes = 12 * colorBytes;
constexpr std::uint8_t shiftedEffect = 3; // its param is less one on the wire
constexpr std::uint8_t followReply = 0x17;
constexpr std::uint32_t audioChanged = 2; // thread message

constexpr GlowHub2Notify resting{.kind = 0,
                                 .effect = 0,
                                 .param = 0,
                                 .speed = 1,
                                 .flag = 0,
                                 .level = 1,
                                 .rgbMode = 0,
                                 .rgbParam = 0,
                                 .rgbSpeed = 1,
                                 .zero = 0,
                                 .one = 1};

/// The five bytes of the ports' effect, which a reply and a notification have in the same places.
std::array<std::uint8_t, 5> effectBytes(const Reply& reply)
{
    const std::uint8_t effect = reply[4];
    return {effect, std::uint8_t(reply[5] + (effect == shiftedEffect ? 1 : 0)), std::uint8_t(reply[6] + 1),
            reply[7], std::uint8_t(reply[8] + 1)};
}

GlowHub2Notify portsChanged(const Reply& report)
{
    const auto bytes = effectBytes(report);
    GlowHub2Notify record = resting;
    record.effect = bytes[0];
    record.param = bytes[1];
    record.speed = bytes[2];
    record.flag = bytes[3];
    record.level = bytes[4];
    return record;
}

GlowHub2Notify stripChanged(const Reply& report)
{
    GlowHub2Notify record = resting;
    record.kind = 1;
    record.rgbMode = report[3];
    record.rgbParam = report[4];
    record.rgbSpeed = std::uint8_t(report[5] + 1);
    return record;
}

constexpr std::array<DeviceEvent<GlowHub2Notify>, 2> events{{
    {.head = {0x80, 0x0B, 0x03}, .record = portsChanged},
    {.head = {0x80, 0x0A, 0x03}, .record = stripChanged},
}};

constexpr ControllerTraits traits{.model = GLOW_HUB2::model, .mode = usbHid::Mode::blocking};

constexpr bool isPort(std::uint8_t port)
{
    return port >= 1 && port <= portCount;
}

constexpr bool isSpeed(std::uint8_t speed)
{
    return speed >= 1 && speed <= 5;
}

constexpr bool isEffect(const GlowHub2Effect& effect)
{
    return effect.effect <= 8 && effect.param <= 7 && isSpeed(effect.speed) && effect.flag <= 1;
}

} // namespace

GLOW_HUB2::GLOW_HUB2(const std::string& path) : NotifyingController(path, traits, events)
{
    if (openFailed())
        return;
    startAudio();
    setLightingUninit();
}

/// The link to the computer's sound: the message thread takes what the audio service posts to it, among whose
/// subscribers it is from when it stands until before it ends.
void GLOW_HUB2::startAudio()
{
    messages.start([this](const platform::ThreadMessage& message) { takeMessage(message); });
    audio = PYRUX_SERVICE::instance().subscribe("audio", messages.id());
}

/// @return whether the thread has ended within `limit`
bool GLOW_HUB2::endAudio(std::chrono::milliseconds limit)
{
    audio.end();
    return messages.stopWithin(limit);
}

void GLOW_HUB2::takeMessage(const platform::ThreadMessage& message)
{
    if (message.number != audioChanged)
        return;
    GlowHub2Notify record = resting;
    record.kind = 2;
    tell(record);
}

void GLOW_HUB2::sayGoodbye()
{
    if (!link.unplugged())
        setLightingUninit();
}

bool GLOW_HUB2::endThreads(std::chrono::steady_clock::time_point deadline)
{
    const bool audioEnded = endAudio(timeUntil(deadline));
    return NotifyingController::endThreads(deadline) && audioEnded;
}

_error GLOW_HUB2::setLightingInit()
{
    queue().clearLanes();
    setLightingTurnOff(); // a frame is what takes the lights over
    queue().paceDelayMs = ControllerTraits::fastPaceMs;
    return E_OK;
}

_error GLOW_HUB2::setLightingUninit()
{
    queue().clearLanes();
    queue().paceDelayMs = ControllerTraits::slowPaceMs;
    write(cmd::lightsBack);
    return E_OK;
}

_error GLOW_HUB2::setLightingPortColor(const LightingPortColor* color)
{
    if (!color)
        return E_INVALID_SET;
    const auto& paint = *static_cast<const LightingPortColorOf<stripZone>*>(color);
    for (const std::uint32_t zone : paint.zone)
        paintZone(zone, paint.red, paint.green, paint.blue);
    return E_OK;
}

_error GLOW_HUB2::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    for (const LightingLedZone& zone : zones)
        if (!zone.leds.empty())
            paintZone(zone.zone, zone.leds.front().red, zone.leds.front().green, zone.leds.front().blue);
    return E_OK;
}

_error GLOW_HUB2::setLightingTurnOff()
{
    queue().clearLanes();
    for (std::uint32_t zone = 1; zone <= stripZone; ++zone)
        paintZone(zone, 0, 0, 0);
    return E_OK;
}

/// Queues the frame of a zone; others are left out.
void GLOW_HUB2::paintZone(std::uint32_t zone, std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    const std::uint32_t lane = zone - 1;
    if (lane >= stripZone)
        return;
    const Report frame = zone == stripZone ? cmd::stripFrame : cmd::portFrame.at(5, std::uint8_t(lane));
    queue().push(lane, frame.at(6, std::array{red, green, blue}));
}

_error GLOW_HUB2::setARGBEffectParameter(std::uint8_t port, GlowHub2Effect effect, std::uint8_t level)
{
    if (!isPort(port) || !isEffect(effect) || level < 1 || level > 4)
        return E_INVALID_SET;
    const auto param = std::uint8_t(effect.param - (effect.effect == shiftedEffect ? 1 : 0));
    const std::array<std::uint8_t, 5> bytes{effect.effect, param, std::uint8_t(effect.speed - 1), effect.flag,
                                            std::uint8_t(level - 1)};
    Reply reply;
    return link.get(cmd::setEffect.at(5, bytes), reply);
}

_error GLOW_HUB2::getARGBEffectParameter(std::uint8_t port, std::uint8_t* bytes)
{
    if (!isPort(port) || !bytes)
        return E_INVALID_GET;
    return get(cmd::getEffect, [&](const Reply& reply) { std::ranges::copy(effectBytes(reply), bytes); });
}

_error GLOW_HUB2::setARGBCustomize(std::uint8_t port, const std::uint8_t* rgb)
{
    if (!isPort(port) || !rgb)
        return E_INVALID_SET;
    queue().push(port, cmd::setColors.at(6, std::span(rgb, customBytes)));
    return E_OK;
}

_error GLOW_HUB2::getARGBCustomize(std::uint8_t port, std::uint8_t* rgb)
{
    if (!isPort(port) || !rgb)
        return E_INVALID_GET;
    return get(cmd::getColors,
               [&](const Reply& reply) { std::ranges::copy(reply.part(5, customBytes), rgb); });
}

_error GLOW_HUB2::setLayerSelect(std::uint8_t value)
{
    write(cmd::selectLayer.at(3, value));
    return E_OK;
}

_error GLOW_HUB2::setRGBEffectParameter(std::uint8_t mode, std::uint8_t param, std::uint8_t speed)
{
    if (mode > 6 || param > (mode == 0 ? 4 : 7) || !isSpeed(speed))
        return E_INVALID_SET;
    Reply reply;
    return link.get(cmd::setRgbEffect.at(4, mode).at(5, param).at(6, std::uint8_t(speed - 1)), reply);
}

_error GLOW_HUB2::getRGBEffectParameter(std::uint8_t* mode, std::uint8_t* param, std::uint8_t* speed)
{
    if (!mode || !param || !speed)
        return E_INVALID_GET;
    return get(cmd::getRgbEffect, [&](const Reply& reply) {
        *mode = reply[3];
        *param = reply[4];
        *speed = std::uint8_t(reply[5] + 1);
    });
}

_error GLOW_HUB2::setRGBCustomize(const std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_SET;
    write(cmd::setRgbColor.at(4, std::span(rgb, colorBytes)));
    Reply reply;
    return link.get(cmd::showRgbColor, reply);
}

_error GLOW_HUB2::getRGBCustomize(std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_GET;
    return get(cmd::getRgbColor,
               [&](const Reply& reply) { std::ranges::copy(reply.part(3, colorBytes), rgb); });
}

_error GLOW_HUB2::setRGBFollowParameter(std::uint8_t source, std::uint8_t flag, std::uint8_t speed)
{
    if (flag > 1 || !isSpeed(speed))
        return E_INVALID_SET;
    write(cmd::setFollow.at(4, source).at(5, flag).at(6, std::uint8_t(speed - 1)));
    return E_OK;
}

_error GLOW_HUB2::getRGBFollowParameter(std::uint8_t* source, std::uint8_t* flag, std::uint8_t* speed)
{
    if (!source || !flag || !speed)
        return E_INVALID_GET;
    // Deliberate: looks for the reply of another command, so that the outputs of most calls stay as they
    // were.
    return get(cmd::getFollow, followReply, [&](const Reply& reply) {
        *source = reply[3];
        *flag = reply[4];
        *speed = std::uint8_t(reply[5] + 1);
    });
}

} // namespace pyrux

PYRUX_FACTORY(glow2, pyrux::PYRUX_GLOW2)
