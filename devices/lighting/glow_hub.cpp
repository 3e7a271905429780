#include "devices/lighting/glow_hub.h"

#include "transport/multi_frame.h"

#include <algorithm>
#include <span>

namespace pyrux {

namespace cmd {                               // numbers are report bytes; a reply counts from 0
constexpr Report portsBack{0x80, 0x01, 0x01}; // the device drives its ports again
constexpr Report portsDriven{0x80, 0x01, 0x01, 0x02};
constexpr Report portsFollow{0x80, 0x01, 0x02};
constexpr Report stripBack{0x80, 0x01, 0x03}; // likewise its strip
constexpr Report stripDriven{0x80, 0x01, 0x03, 0x02};
constexpr Report stripFollow{0x80, 0x01, 0x04, 0x01};
constexpr Report getStatus{0x80, 0x01, 0x05, 0x03}; // reply 4: the host drives the strip, 5: the ports
constexpr Report setRgbEffect{0x80, 0x04};          // 3 to 9: mode to blue of `ArgbEffectParam`
constexpr Report stripFrame{0x80, 0x05};            // 3 to 5: color
constexpr Report getRgbEffect{0x80, 0x0A, 0x01};    // reply 3 to 9: mode to blue
constexpr Report getEffect{0x80, 0x0B, 0x01};       // 4: mask; reply 4 to 10: mode to blue
constexpr Report setEffect{0x80, 0x0B, 0x02};       // 4: mask, 5 to 11: mode to blue
constexpr Report getUID{0x80, 0x0C, 0x01};          // reply 3 to 34
constexpr Report setUID{0x80, 0x0C, 0x02};          // 4 to 35
constexpr Report getLEDSize{0x80, 0x0D, 0x01};      // 4: mask; reply 4: a, 5: b
constexpr Report setLEDSize{0x80, 0x0D, 0x02};      // 4: mask, 5: a, 6: b
constexpr Report getColors{0x80, 0x10, 0x01};       // 4: port from 0, 5: LEDs
constexpr Report save{0x80, 0x12, 0x5A, 0xA5};
constexpr Report resetConfig{0x80, 0x13, 0x55, 0xAA}; // 5: value
constexpr Report getVersion{0x80, 0x14, 0x01};        // reply 3: version
constexpr Report identify{0x80, 0x15, 0x5E};          // 4: value
constexpr Report resetData{0x80, 0x16, 0x56, 0x78};
constexpr Report getLayers{0x80, 0x17, 0x01};  // reply 3: value
constexpr Report setLayers{0x80, 0x17, 0x02};  // 4: value
constexpr Report setMode{0x80, 0x20};          // 3: mask, 4: mode
constexpr Report setRgbMode{0x80, 0x21};       // 4: mode
constexpr Report portFrame{0x00, 0x07};        // first of three; 3: port from 0, 4: LEDs
constexpr Report colorFrame{0x00, 0x10, 0x02}; // first of three; 4: port from 0, 5: LEDs
constexpr std::array<std::uint8_t, 4> colorsHead{0x00, 0x10,
                                                 0x03}; // of the first reply to getColors; 3: port
} // namespace cmd

namespace {

constexpr std::uint8_t ledsPerPort = 48;
constexpr FrameShape portShape{.firstData = 5, .nextData = 2};
constexpr FrameShape colorShape{.firstData = 6, .nextData = 2};
constexpr std::size_t colorFrames = colorShape.frames(3 * ledsPerPort);
constexpr std::uint32_t stripZone = 5;
constexpr std::size_t stripLane = 4; // after those of the ports
constexpr std::size_t uidBytes = 32;
constexpr std::uint8_t followingMode = 12;
constexpr std::uint8_t followingRgbMode = 7;
constexpr std::uint8_t plainRgbMode = 6; // has no parameters
constexpr std::uint8_t drivenBrightness = 0x55;
constexpr ArgbEffectParam resting{.port = 1,
                                  .mode = 0,
                                  .colorSource = 0,
                                  .speed = 3,
                                  .brightness = 0xFF,
                                  .red = 0xFF,
                                  .green = 0xFF,
                                  .blue = 0xFF};

ArgbEffectNotify portsChanged(const Reply& report)
{
    return {.channel = 0,
            .mode = report[4],
            .colorSource = report[5],
            .speed = std::uint8_t(report[6] + 1),
            .brightness = report[7],
            .parameter = report[8],
            .unused = {}};
}

ArgbEffectNotify stripChanged(const Reply& report)
{
    return {.channel = 1,
            .mode = report[3],
            .colorSource = report[4],
            .speed = std::uint8_t(report[5] + 1),
            .brightness = 0,
            .parameter = 0,
            .unused = {}};
}

constexpr std::array<DeviceEvent<ArgbEffectNotify>, 2> events{{
    {.head = {0x80, 0x0B, 0x03, 0x03}, .text = "notify effect argb change", .record = portsChanged},
    {.head = {0x80, 0x0A, 0x02}, .text = "notify effect rgb change", .record = stripChanged},
}};

constexpr ControllerTraits traits{.model = GLOW_HUB::model, .failureText = "Glow hub USB fail"};

/// Bit of a port, counted from 0; none for one that is not there.
std::optional<std::uint8_t> mask(std::uint8_t port)
{
    if (port >= GLOW_HUB::portCount)
        return std::nullopt;
    return std::uint8_t(1 << port);
}

/// A port as hosts count it, from 0.
std::uint8_t fromZero(std::uint8_t port)
{
    return std::uint8_t(port - 1);
}

/// The fields of an effect from `mode` to `brightness` as the wire has them.
std::array<std::uint8_t, 4> effectBytes(const ArgbEffectParam& record)
{
    return {record.mode, record.colorSource, std::uint8_t(record.speed - 1), record.brightness};
}

std::array<std::uint8_t, 3> colorBytes(const ArgbEffectParam& record)
{
    return {record.red, record.green, record.blue};
}

void takeColor(const Reply& reply, std::size_t from, ArgbEffectParam& record)
{
    record.red = reply[from];
    record.green = reply[from + 1];
    record.blue = reply[from + 2];
}

} // namespace

GLOW_HUB::GLOW_HUB(const std::string& path) : NotifyingController(path, traits, events)
{
    for (std::uint8_t port = 0; port < portCount; ++port)
        portFrames[port].frames.front() = cmd::portFrame.at(3, port).at(4, ledsPerPort);
    if (openFailed())
        return;
    ArgbEffectParam record = resting;
    getEffectParameter(&record);
    followMode = record.mode == followingMode;
}

_error GLOW_HUB::setLightingInit()
{
    queue().clearLanes();
    write({cmd::portsDriven, cmd::stripDriven});
    setLightingTurnOff();
    queue().paceDelayMs = ControllerTraits::fastPaceMs;
    return E_OK;
}

_error GLOW_HUB::setLightingUninit()
{
    queue().clearLanes();
    queue().paceDelayMs = ControllerTraits::slowPaceMs;
    write({cmd::portsBack, cmd::stripBack});
    return E_OK;
}

_error GLOW_HUB::setLightingPortColor(const LightingPortColor* color)
{
    if (!color)
        return E_INVALID_SET;
    const auto& paint = *static_cast<const LightingPortColorOf<portCount + 1>*>(color);
    const std::array rgb{paint.red, paint.green, paint.blue};
    const std::lock_guard lock(framesMutex);
    for (const std::uint32_t zone : paint.zone) {
        if (zone == stripZone)
            queue().push(stripLane, cmd::stripFrame.at(3, rgb));
        const std::uint32_t port = zone - 1;
        if (port >= portCount)
            continue;
        auto& colors = portFrames[port].colors;
        colors.fill(0);
        for (std::size_t led = 0; led < ledsPerPort; ++led)
            std::ranges::copy(rgb, colors.begin() + std::ptrdiff_t(3 * led));
        queuePort(port);
    }
    return E_OK;
}

_error GLOW_HUB::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    const std::lock_guard lock(framesMutex);
    for (const LightingLedZone& zone : zones) {
        const std::uint32_t port = zone.zone - 1; // deliberate: the strip is not served here
        if (port >= portCount)
            continue;
        auto& colors = portFrames[port].colors;
        colors.fill(0);
        for (const LightingLed& led : zone.leds)
            if (led.index < ledPlaces) // deliberate: also where no LED stands
                std::ranges::copy(std::array{led.red, led.green, led.blue},
                                  colors.begin() + std::ptrdiff_t(3 * led.index));
        queuePort(port);
    }
    return E_OK;
}

_error GLOW_HUB::setLightingTurnOff()
{
    queue().clearLanes();
    const std::lock_guard lock(framesMutex);
    for (std::uint32_t port = portCount; port-- > 0;) {
        portFrames[port].colors.fill(0);
        queuePort(port);
    }
    queue().push(stripLane, cmd::stripFrame);
    return E_OK;
}

/// With `framesMutex` held.
void GLOW_HUB::queuePort(std::uint32_t port)
{
    PortFrame& frame = portFrames[port];
    cutStream(portShape, frame.colors, frame.frames);
    queue().push(port, frame.frames);
}

GLOW_HUB::Status GLOW_HUB::status()
{
    Reply reply;
    if (link.get(cmd::getStatus, reply) || !reply.begins({0x80, 0x01, 0x05}))
        return {};
    return {.hostDrivesStrip = reply[4] == 1, .hostDrivesPorts = reply[5] == 1};
}

void GLOW_HUB::follow()
{
    write(cmd::portsFollow);
    followMode = true;
}

void GLOW_HUB::endFollowing()
{
    if (followMode.exchange(false))
        write(cmd::portsBack);
}

_error GLOW_HUB::setEffectParameter(ArgbEffectParam* record)
{
    if (!record)
        return E_INVALID_SET;
    followMode = false; // deliberate: even where the mode is refused
    if (record->mode == 7 || record->mode > followingMode)
        return E_INVALID_MODE;
    --record->port; // deliberate: in place, so that a second call names another port
    const std::optional<std::uint8_t> port = mask(record->port);
    if (!port)
        return E_INVALID_SET;
    if (record->mode == followingMode) {
        follow();
        return E_OK;
    }
    write(
        {cmd::portsBack, cmd::setEffect.at(4, *port).at(5, effectBytes(*record)).at(9, colorBytes(*record))});
    return E_OK;
}

_error GLOW_HUB::getEffectParameter(ArgbEffectParam* record)
{
    if (!record)
        return E_INVALID_GET;
    if (status().hostDrivesPorts) {
        record->mode = followingMode; // `port` and `colorSource` stay
        record->speed = 1;
        record->brightness = drivenBrightness;
        record->red = record->green = record->blue = 0;
        return E_OK;
    }
    --record->port; // deliberate, as in `setEffectParameter`
    const std::optional<std::uint8_t> port = mask(record->port);
    if (!port)
        return E_INVALID_SET; // deliberate: the code of a set
    return get(cmd::getEffect.at(4, *port), [&](const Reply& reply) {
        record->mode = reply[4];
        record->colorSource = reply[5];
        record->speed = std::uint8_t(reply[6] + 1);
        record->brightness = reply[7];
        if (record->colorSource == argbOwnColor)
            takeColor(reply, 8, *record);
    });
}

_error GLOW_HUB::setEffectCustomize(std::uint8_t port, const ArgbCustomBuffer* buffer)
{
    if (!buffer || port >= CmdQueue::laneCount) // deliberate: other ports that are not there go out
        return E_INVALID_SET;
    endFollowing();
    std::array<Report, colorFrames> frames;
    frames.front() = cmd::colorFrame.at(4, fromZero(port)).at(5, ledsPerPort);
    cutStream(colorShape, bytesOf(buffer->leds), frames);
    queue().push(port, frames); // deliberate: not the lane of the port's frames, but the next
    return E_OK;
}

_error GLOW_HUB::getEffectCustomize(std::uint8_t port, ArgbCustomBuffer* buffer)
{
    if (!buffer || !mask(fromZero(port)))
        return E_INVALID_GET;
    const Report command = cmd::getColors.at(4, fromZero(port)).at(5, ledsPerPort);
    auto head = cmd::colorsHead;
    head[3] = fromZero(port);
    std::array<Reply, colorFrames> replies;
    const _error result = link.get(command, head, replies.front());
    if (result || !std::ranges::equal(head, replies.front().part(0, head.size())))
        return result; // deliberate: a reply with another beginning is no error
    for (std::size_t i = 1; i < colorFrames; ++i) {
        const std::array number{frameNumber(i, colorFrames)};
        if (link.get(command, number, replies[i]) || replies[i][0] != number[0])
            return E_INVALID_GET;
    }
    joinStream(colorShape, replies, bytesOf(buffer->leds));
    return E_OK;
}

_error GLOW_HUB::setRgbLightingEffectParameter(const ArgbEffectParam* record)
{
    constexpr std::array<std::uint8_t, 5> speedModes{0, 1, 2, 3, 5};
    if (!record)
        return E_INVALID_SET;
    if (record->mode == plainRgbMode) {
        write({cmd::stripBack, cmd::setRgbEffect.at(3, plainRgbMode)});
        return E_OK;
    }
    if (record->mode == followingRgbMode) {
        write(cmd::stripFollow);
        return E_OK;
    }
    if (!std::ranges::count(speedModes, record->mode) || record->speed < 1 || record->speed > 5)
        return E_INVALID_PARAM;
    const Report command = cmd::setRgbEffect.at(3, effectBytes(*record));
    write(
        {cmd::stripBack, record->colorSource == argbOwnColor ? command.at(7, colorBytes(*record)) : command});
    return E_OK;
}

_error GLOW_HUB::getRgbLightingEffectParameter(ArgbEffectParam* record)
{
    if (!record)
        return E_INVALID_GET;
    if (status().hostDrivesStrip) {
        record->mode = followingRgbMode;
        record->colorSource = 0;
        record->speed = 1;
        return E_OK;
    }
    return get(cmd::getRgbEffect, [&](const Reply& reply) {
        record->mode = reply[3];
        record->colorSource = reply[4];
        record->speed = std::uint8_t(reply[5] + 1);
        if (record->colorSource != argbOwnColor)
            return;
        record->brightness = reply[6];
        takeColor(reply, 7, *record);
    });
}

_error GLOW_HUB::setLEDSize(std::uint8_t port, std::uint8_t a, std::uint8_t b)
{
    const std::optional<std::uint8_t> bit = mask(fromZero(port));
    if (!bit)
        return E_INVALID_SET;
    write(cmd::setLEDSize.at(4, *bit).at(5, a).at(6, b));
    return E_OK;
}

_error GLOW_HUB::getLEDSize(std::uint8_t port, std::uint8_t* a, std::uint8_t* b)
{
    const std::optional<std::uint8_t> bit = mask(fromZero(port));
    if (!bit || !a || !b)
        return E_INVALID_GET;
    return get(cmd::getLEDSize.at(4, *bit), [&](const Reply& reply) {
        *a = reply[4];
        *b = reply[5];
    });
}

_error GLOW_HUB::setUID(const std::uint8_t* bytes)
{
    if (!bytes)
        return E_INVALID_SET;
    write(cmd::setUID.at(4, std::span(bytes, uidBytes)));
    return E_OK;
}

_error GLOW_HUB::getUID(std::uint8_t* bytes)
{
    if (!bytes)
        return E_INVALID_GET;
    return get(cmd::getUID, [&](const Reply& reply) { std::ranges::copy(reply.part(3, uidBytes), bytes); });
}

_error GLOW_HUB::setIdentify(std::uint8_t value)
{
    if ((value < 1 || value > 5) && value != 15)
        return E_INVALID_PARAM;
    write(cmd::identify.at(4, value));
    return E_OK;
}

_error GLOW_HUB::saveConfig()
{
    write(cmd::save);
    return E_OK;
}

_error GLOW_HUB::resetConfig(std::uint8_t value)
{
    write(cmd::resetConfig.at(5, value));
    return E_OK;
}

_error GLOW_HUB::resetData()
{
    write(cmd::resetData);
    followMode = false;
    ArgbEffectParam record = resting;
    getEffectParameter(&record);
    if (record.mode == followingMode)
        return E_OK;
    record = resting;
    record.mode = followingMode;
    setEffectParameter(&record); // deliberate: `followMode` stays set after the next report
    write(cmd::portsBack);
    return E_OK;
}

_error GLOW_HUB::getVersion(std::uint16_t* version)
{
    if (!version)
        return E_INVALID_GET;
    return get(cmd::getVersion, [&](const Reply& reply) { *version = reply.u16(3); });
}

_error GLOW_HUB::setMultilayerMode(std::uint8_t value)
{
    write(cmd::setLayers.at(4, value));
    return E_OK;
}

_error GLOW_HUB::getMultilayerMode(std::uint8_t* value)
{
    if (!value)
        return E_INVALID_GET;
    return get(cmd::getLayers, [&](const Reply& reply) { *value = reply[3]; });
}

_error GLOW_HUB::setEffectMode(std::uint8_t port, std::uint8_t mode)
{
    if (mode > followingMode)
        return E_INVALID_MODE;
    const std::optional<std::uint8_t> bit = mask(fromZero(port));
    if (!bit)
        return E_INVALID_SET;
    if (mode == followingMode)
        follow();
    else
        write({cmd::portsBack, cmd::setMode.at(3, *bit).at(4, mode)}); // deliberate: `followMode` stays
    return E_OK;
}

_error GLOW_HUB::getEffectMode(std::uint8_t, std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    ArgbEffectParam record = resting; // deliberate: port 1, whichever was asked for
    record.mode = *mode;              // stays where the reply does not fit
    const _error result = getEffectParameter(&record);
    *mode = record.mode;
    return result;
}

_error GLOW_HUB::setRgbEffectMode(std::uint8_t, std::uint8_t mode)
{
    if (mode > followingRgbMode)
        return E_INVALID_PARAM;
    if (mode == followingRgbMode)
        write(cmd::stripFollow);
    else
        write({cmd::stripBack, cmd::setRgbMode.at(4, mode)});
    return E_OK;
}

_error GLOW_HUB::getRgbEffectMode(std::uint8_t, std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    ArgbEffectParam record = resting;
    record.mode = *mode; // stays where the reply does not fit
    const _error result = getRgbLightingEffectParameter(&record);
    *mode = record.mode;
    return result;
}

} // namespace pyrux

PYRUX_FACTORY(glow_hub, pyrux::PYRUX_GLOW)
