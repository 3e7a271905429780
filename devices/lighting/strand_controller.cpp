#include "devices/lighting/strand_controller.h"

#include "transport/multi_frame.h"

#include <algorithm>
#include <optional>
#include <span>

namespace pyrux {

namespace cmd {                                   // numbers are report bytes; a reply counts from 0
constexpr Report hostDriven{0x80, 0x01, 0x02};    // 4: 1 on, 0 off
constexpr Report setEffect{0x80, 0x03, 0x02};     // 4: M, 5: S, 6: effect and the rest
constexpr Report getEffect{0x80, 0x03, 0x01};     // 4: M, 5: S; reply 5: effect and the rest
constexpr Report getAnyEffect{0x80, 0x04, 0x01};  // 4: M, 5: S, 6: effect; reply as above
constexpr Report setGen1Size{0x80, 0x06, 0x02};   // 4: port, 5: chain length, 6: LEDs
constexpr Report getGen1Size{0x80, 0x06, 0x01};   // 4: M; reply 4: chain length, 5: LEDs
constexpr Report getGen2Size{0x80, 0x07, 0x01};   // 4: M; reply 4: count, 5 to 9: LEDs
constexpr Report setCustom{0x00, 0x08, 0x02};     // 1: frame, 4: M, 5: S, 6: colors
constexpr Report getCustom{0x00, 0x08, 0x01};     // 1: frame, 4: M, 5: S; reply 5: colors
constexpr Report firstDirect{0x00, 0x09};         // 1: frame, 3: M, 4: S, 5: LEDs, 6: colors
constexpr Report nextDirect{0x00, 0x09};          // 1: frame, 3: colors
constexpr Report identify{0x80, 0x0A, 0x02};      // 4: M, 5: S
constexpr Report setType{0x80, 0x0B, 0x02};       // 4: M, 5: type
constexpr Report getType{0x80, 0x0B, 0x01};       // 4: M; reply 4: type
constexpr Report getAllEffects{0x80, 0x0C, 0x01}; // 1: 80, then 81; 4: M, 5: S; reply 6, then 5: entries
constexpr Report remap{0x80, 0x0D, 0x02};         // 4: M, 5: pairs of S
constexpr Report setOverlay{0x80, 0x10, 0x02};    // 4: M, 5: parameters, 33: the last one
constexpr Report getOverlay{0x80, 0x10, 0x01};    // 4: M; reply 4: parameters, 32: the last one
constexpr Report setOverlayMode{0x80, 0x11, 0x02, 0x00, 0x32}; // 4: value
constexpr Report getOverlayMode{0x80, 0x11, 0x01};             // reply 3: value
constexpr Report saveConfig{0x80, 0xB0, 0x02};
constexpr Report resetConfig{0x80, 0xB1, 0x02}; // 4: value
constexpr Report refreshPort{0x80, 0xB2, 0x02}; // 4: M
constexpr Report getVersion{0x80, 0xB4, 0x01};  // reply 3: version
constexpr Report setUid{0x80, 0xB5, 0x02};      // 4: M, 5: id
constexpr Report getUid{0x80, 0xB5, 0x01};      // reply 3: id
constexpr Report resetData{0x80, 0xB6, 0x02};
constexpr Report setMultilayer{0x80, 0xC0, 0x02}; // 4: value
constexpr Report getMultilayer{0x80, 0xC0, 0x01}; // reply 3: value
} // namespace cmd

namespace {

constexpr std::uint8_t all = 255;
constexpr std::uint8_t ports = 3;
constexpr std::uint8_t fans = 5;
constexpr std::uint8_t sixthMask = 0x20; // S of a zone's digit 6
constexpr std::size_t lanesPerPort = 6;
constexpr std::uint8_t mostLeds = 60; // of a zone
constexpr std::size_t bytesPerLed = 3;
constexpr std::uint8_t longestChain = 10;
constexpr std::uint8_t leastLeds = 4; // of a device, and of a zone that has not told
constexpr std::uint8_t highestReset = 2;
constexpr std::size_t uidBytes = 32;
constexpr std::size_t entryBytes = 8; // of `getAllEffectParameter`
constexpr std::size_t entriesInFirst = 7;
constexpr std::uint8_t secondReply = 0x81;

constexpr FrameShape customShape{.firstData = 6, .nextData = 6};
constexpr FrameShape directShape{.firstData = 6, .nextData = 3};
constexpr std::size_t directFrames = directShape.frames(mostLeds * bytesPerLed);
static_assert(directFrames == 3);

/// A number, or all, as the wire has it: a bit.
constexpr std::uint8_t mask(std::uint8_t number, std::uint8_t most)
{
    if (number == all)
        return 0xFF;
    return number >= 1 && number <= most ? std::uint8_t(1U << (number - 1U)) : std::uint8_t{0};
}
constexpr std::uint8_t portMask(std::uint8_t port)
{
    return mask(port, ports);
}
constexpr std::uint8_t subMask(std::uint8_t subPort)
{
    return mask(subPort, fans);
}

constexpr Report addressed(const Report& command, std::uint8_t port)
{
    return command.at(4, portMask(port));
}
constexpr Report addressed(const Report& command, std::uint8_t port, std::uint8_t subPort)
{
    return addressed(command, port).at(5, subMask(subPort));
}

constexpr bool isPort(std::uint8_t port)
{
    return port >= 1 && port <= ports;
}
constexpr bool isPortOrAll(std::uint8_t port)
{
    return isPort(port) || port == all;
}

/// A zone of `setEffectCustomize`: 1 to 3 the ports themselves, then the fans of each.
struct Place {
    std::uint8_t port, subPort;
};
constexpr Place customPlace(std::uint8_t zone)
{
    if (zone <= ports)
        return {zone, 0};
    const auto fan = std::uint8_t(zone - ports - 1);
    return {std::uint8_t(fan / fans + 1), std::uint8_t(fan % fans + 1)};
}
constexpr std::size_t customIndex(Place place)
{
    return place.subPort == 0 ? place.port - 1U : ports + (place.port - 1U) * fans + place.subPort - 1U;
}
static_assert(customIndex(customPlace(18)) == 17 && customPlace(18).port == 3 &&
              customPlace(18).subPort == 5);

/// The frames of a custom zone.
/// @param bytes   of all colors
/// @param colors  what the frames carry; empty where they ask for them
std::vector<Report> customFrames(const Report& command, std::uint8_t zone, std::size_t bytes,
                                 std::span<const std::uint8_t> colors)
{
    const Place place = customPlace(zone);
    std::vector<Report> frames(customShape.frames(bytes), addressed(command, place.port, place.subPort));
    cutStream(customShape, colors, frames);
    return frames;
}

StrandStoredEffect storedEffect(const Reply& reply, std::size_t from)
{
    return {.effect = reply[from],
            .speed = std::uint8_t(reply[from + 1] + 1),
            .parameterA = reply[from + 2],
            .red = reply[from + 3],
            .green = reply[from + 4],
            .blue = reply[from + 5],
            .parameterB = reply[from + 6],
            .flagA = reply[from + 7]};
}

} // namespace

/// A zone of `DEV_LIGHTING`.
struct StrandController::Zone {
    std::uint8_t portBits, subPortBits;
    std::size_t lane;

    /// The zone of a code: 10 times the port and a digit, or 255.
    static std::optional<Zone> of(std::uint32_t code)
    {
        if (code == strandAllZones)
            return Zone{0xFF, 0xFF, 0};
        const std::uint32_t port = code / 10;
        const std::uint32_t digit = code % 10;
        if (port < 1 || port > ports)
            return std::nullopt;
        const std::size_t lane = digit + lanesPerPort * (port - 1);
        return Zone{.portBits = digit > fans + 1U ? std::uint8_t{0xFF} : portMask(std::uint8_t(port)),
                    .subPortBits = digit == fans + 1U ? sixthMask : subMask(std::uint8_t(digit)),
                    .lane = lane < CmdQueue::laneCount ? lane : 0};
    }

    /// The same for `setLightingPortColor`, which does not know digits above 6.
    static std::optional<Zone> ofPortColor(std::uint32_t code)
    {
        return code == strandAllZones || code % 10 <= fans + 1U ? of(code) : std::nullopt;
    }
};

/// The colors of a zone, as they stand in its frames.
struct StrandController::Colors {
    std::array<std::uint8_t, mostLeds * bytesPerLed> bytes{};

    void set(std::size_t led, std::uint8_t red, std::uint8_t green, std::uint8_t blue)
    {
        if (led < mostLeds)
            std::ranges::copy(std::array{red, green, blue},
                              bytes.begin() + std::ptrdiff_t(led * bytesPerLed));
    }
};

StrandController::StrandController(const std::string& path, const StrandTraits& traits)
    : NotifyingDevice(path, {.model = traits.model, .paceMs = 0, .gap = requestGap}),
      requests(link, traits.model)
{
    for (auto& count : ledCounts)
        count = leastLeds;
    if (link.opened())
        link.start([this](const Reply& reply) { link.deliver(reply); });
}

StrandController::~StrandController()
{
    link.stop();
}

_error StrandController::setLightingInit()
{
    queue().clearLanes();
    write(cmd::hostDriven.at(4, 1));
    setLightingTurnOff();
    queue().paceDelayMs = 0;
    return E_OK;
}

_error StrandController::setLightingUninit()
{
    queue().clearLanes();
    write(cmd::hostDriven);
    return E_OK;
}

_error StrandController::setLightingPortColor(const LightingPortColor* color)
{
    if (!color)
        return E_INVALID_SET;
    const auto& painted = *static_cast<const StrandPortColor*>(color);
    Colors colors;
    for (std::size_t led = 0; led < mostLeds; ++led)
        colors.set(led, painted.red, painted.green, painted.blue);
    for (const std::uint32_t code : painted.zone) {
        if (code == 0)
            continue;
        const std::optional<Zone> zone = Zone::ofPortColor(code);
        if (!zone)
            break; // deliberate: what stands after it is not painted
        paint(*zone, colors);
    }
    return E_OK;
}

_error StrandController::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    for (const LightingLedZone& listed : zones) {
        const std::optional<Zone> zone = Zone::of(listed.zone);
        if (!zone)
            continue;
        Colors colors;
        for (const LightingLed& led : listed.leds)
            colors.set(led.index, led.red, led.green, led.blue);
        paint(*zone, colors);
    }
    return E_OK;
}

_error StrandController::setLightingTurnOff()
{
    queue().clearLanes();
    for (std::uint32_t port = 1; port <= ports; ++port)
        for (std::uint32_t subPort = 0; subPort <= fans; ++subPort)
            paint(*Zone::of(10 * port + subPort), Colors());
    return E_OK;
}

void StrandController::paint(const Zone& zone, const Colors& colors)
{
    std::array<Report, directFrames> frames;
    frames.fill(cmd::nextDirect);
    frames[0] = cmd::firstDirect.at(3, zone.portBits).at(4, zone.subPortBits).at(5, mostLeds);
    cutStream(directShape, colors.bytes, frames);
    queue().push(zone.lane, frames);
}

_error StrandController::setEffectParameter(const StrandEffectParam* effect)
{
    return effect ? writeEffect(__func__, *effect) : E_INVALID_SET;
}

_error StrandController::getEffectParameter(StrandEffectParam* effect)
{
    if (!effect)
        return E_INVALID_GET;
    return readEffect(__func__, addressed(cmd::getEffect, effect->port, effect->subPort), *effect);
}

_error StrandController::getAnyEffectParameter(StrandEffectParam* effect)
{
    if (!effect)
        return E_INVALID_GET;
    const Report command = addressed(cmd::getAnyEffect, effect->port, effect->subPort).at(6, effect->effect);
    return readEffect(__func__, command, *effect);
}

_error StrandController::getAllEffectParameter(StrandEffectTable* table)
{
    if (!table)
        return E_INVALID_GET;
    const Report command = addressed(cmd::getAllEffects, table->port, table->subPort);
    Reply first;
    if (const _error result = requests.request(__func__, command, first))
        return result;
    Reply second;
    if (const _error result = requests.request(__func__, command.at(1, secondReply), second))
        return result;
    for (std::size_t i = 0; i < std::size(table->effects); ++i)
        table->effects[i] = i < entriesInFirst ? storedEffect(first, 6 + i * entryBytes)
                                               : storedEffect(second, 5 + (i - entriesInFirst) * entryBytes);
    return E_OK;
}

_error StrandController::setEffectCustomize(std::uint8_t zone, const StrandCustomBuffer* buffer)
{
    const std::optional<std::size_t> bytes = customBytes(zone);
    if (!buffer || !bytes)
        return E_INVALID_SET;
    const std::span<const std::uint8_t> colors = bytesOf(buffer->leds).first(*bytes);
    for (const Report& frame : customFrames(cmd::setCustom, zone, *bytes, colors)) {
        Reply reply;
        if (const _error result = customFrame(__func__, frame, reply))
            return result;
    }
    return E_OK;
}

_error StrandController::getEffectCustomize(std::uint8_t zone, StrandCustomBuffer* buffer)
{
    const std::optional<std::size_t> bytes = customBytes(zone);
    if (!buffer || !bytes)
        return E_INVALID_GET;
    std::vector<Reply> replies;
    for (const Report& frame : customFrames(cmd::getCustom, zone, *bytes, {}))
        if (const _error result = customFrame(__func__, frame, replies.emplace_back()))
            return result;
    joinStream(customShape, replies, bytesOf(buffer->leds).first(*bytes));
    return E_OK;
}

_error StrandController::setGen1Size(const StrandGen1Size* size)
{
    if (!size || !isPortOrAll(size->port) || size->chainLength < 1 || size->chainLength > longestChain ||
        size->leds < leastLeds || size->leds > mostLeds)
        return E_INVALID_SET;
    const int leds = std::min<int>(size->leds, mostLeds / size->chainLength);
    const int port = size->port == all ? all : size->port - 1; // deliberate: an index here, not a mask
    return requests.request(
        __func__,
        cmd::setGen1Size.at(4, std::uint8_t(port)).at(5, size->chainLength).at(6, std::uint8_t(leds)));
}

_error StrandController::getGen1Size(StrandGen1Size* size)
{
    if (!size || !isPort(size->port))
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(__func__, addressed(cmd::getGen1Size, size->port), reply))
        return result;
    size->chainLength = reply[4];
    size->leds = reply[5];
    ledCounts[customIndex({size->port, 0})] = std::uint16_t(size->chainLength * size->leds);
    return E_OK;
}

_error StrandController::getGen2Size(StrandGen2Size* size)
{
    if (!size || !isPort(size->port))
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(__func__, addressed(cmd::getGen2Size, size->port), reply))
        return result;
    if (reply[4] > fans)
        return E_INVALID_GET; // there is no room for more
    size->count = reply[4];
    for (std::uint8_t fan = 0; fan < fans; ++fan) {
        const bool present = fan < size->count;
        size->leds[fan] = present ? reply[5U + fan] : std::uint8_t{0};
        ledCounts[customIndex({size->port, std::uint8_t(fan + 1)})] = present ? size->leds[fan] : leastLeds;
    }
    return E_OK;
}

_error StrandController::remapGen2SubPort(const StrandRemap* remap)
{
    if (!remap || !isPort(remap->port))
        return E_INVALID_SET;
    Report command = addressed(cmd::remap, remap->port);
    for (std::size_t i = 0; i < std::size(remap->pairs); ++i)
        command = command.at(5 + 2 * i, subMask(remap->pairs[i].discovered))
                      .at(6 + 2 * i, subMask(remap->pairs[i].wanted));
    return requests.request(__func__, command);
}

_error StrandController::setUID(std::uint8_t port, const std::uint8_t* id)
{
    if (!id)
        return E_INVALID_SET;
    return requests.request(__func__, addressed(cmd::setUid, port).at(5, std::span(id, uidBytes)));
}

_error StrandController::getUID(std::uint8_t* id)
{
    if (!id)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(__func__, cmd::getUid, reply))
        return result;
    std::ranges::copy(reply.part(3, uidBytes), id);
    return E_OK;
}

_error StrandController::setIdentify(std::uint8_t port, std::uint8_t subPort)
{
    if (!isPortOrAll(port))
        return E_INVALID_SET;
    return requests.request(__func__, addressed(cmd::identify, port, subPort));
}

_error StrandController::saveConfig()
{
    return requests.request(__func__, cmd::saveConfig);
}

_error StrandController::resetConfig(std::uint8_t value)
{
    if (value > highestReset)
        return E_INVALID_SET;
    return requests.request(__func__, cmd::resetConfig.at(4, value));
}

_error StrandController::resetData()
{
    return requests.request(__func__, cmd::resetData);
}

_error StrandController::getVersion(std::uint16_t* version)
{
    if (!version)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(__func__, cmd::getVersion, reply))
        return result;
    *version = reply.u16(3);
    return E_OK;
}

_error StrandController::setARGBType(std::uint8_t port, std::uint8_t type)
{
    if (!isPortOrAll(port))
        return E_INVALID_SET;
    const _error result = requests.request(__func__, addressed(cmd::setType, port).at(5, type));
    if (!result)
        refreshPortInfo(port); // its own result does not count
    return result;
}

_error StrandController::getARGBType(std::uint8_t port, std::uint8_t* type)
{
    if (!isPortOrAll(port))
        return E_INVALID_GET;
    return readByte(__func__, addressed(cmd::getType, port), 4, type);
}

_error StrandController::refreshPortInfo(std::uint8_t port)
{
    if (!isPortOrAll(port))
        return E_INVALID_GET;
    return requests.request(__func__, addressed(cmd::refreshPort, port));
}

_error StrandController::setMultilayerMode(std::uint8_t value)
{
    return requests.request(__func__, cmd::setMultilayer.at(4, value));
}

_error StrandController::getMultilayerMode(std::uint8_t* value)
{
    return readByte(__func__, cmd::getMultilayer, 3, value);
}

_error StrandController::setEffectMode(StrandEffectParam* place, std::uint8_t effect)
{
    if (!place)
        return E_INVALID_SET;
    const Report command = addressed(cmd::getAnyEffect, place->port, place->subPort).at(6, effect);
    if (const _error result = readEffect(__func__, command, *place))
        return result;
    return writeEffect(__func__, *place);
}

_error StrandController::getEffectMode(StrandEffectParam* place, std::uint8_t* effect)
{
    if (!place || !effect)
        return E_INVALID_GET;
    const Report command = addressed(cmd::getEffect, place->port, place->subPort);
    if (const _error result = readEffect(__func__, command, *place))
        return result;
    *effect = place->effect;
    return E_OK;
}

_error StrandController::setOverlayMode(std::uint8_t value)
{
    return requests.request(__func__, cmd::setOverlayMode.at(4, value));
}

_error StrandController::getOverlayMode(std::uint8_t* value)
{
    return readByte(__func__, cmd::getOverlayMode, 3, value);
}

_error StrandController::setOverlayEffectParameter(const StrandOverlayParam* overlay)
{
    if (!overlay || !isPort(overlay->port))
        return E_INVALID_SET;
    if (const _error result = setOverlayMode(1))
        return result;
    return requests.request(
        __func__, addressed(cmd::setOverlay, overlay->port).at(5, overlay->parameters).at(33, overlay->last));
}

_error StrandController::getOverlayEffectParameter(StrandOverlayParam* overlay)
{
    if (!overlay || !isPort(overlay->port))
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(__func__, addressed(cmd::getOverlay, overlay->port), reply))
        return result;
    std::ranges::copy(reply.part(4, std::size(overlay->parameters)), overlay->parameters);
    overlay->last = reply[32];
    return E_OK;
}

_error StrandController::getOverlayEffectParameterAll(StrandOverlayParam* overlays)
{
    if (!overlays)
        return E_INVALID_GET;
    for (std::uint8_t port = 1; port <= ports; ++port) {
        StrandOverlayParam& overlay = overlays[port - 1U];
        overlay.port = port;
        if (const _error result = getOverlayEffectParameter(&overlay))
            return result;
    }
    return E_OK;
}

/// Deliberate: parameter A goes ahead of the color, parameter B after it.
_error StrandController::writeEffect(std::string_view operation, const StrandEffectParam& effect)
{
    const std::array bytes{effect.effect,     std::uint8_t(effect.speed - 1),
                           effect.parameterA, effect.red,
                           effect.green,      effect.blue,
                           effect.parameterB};
    return requests.request(operation, addressed(cmd::setEffect, effect.port, effect.subPort).at(6, bytes));
}

_error StrandController::readEffect(std::string_view operation, const Report& command,
                                    StrandEffectParam& effect)
{
    Reply reply;
    if (const _error result = requests.request(operation, command, reply))
        return result;
    effect.effect = reply[5];
    effect.speed = std::uint8_t(reply[6] + 1);
    effect.parameterA = reply[7];
    effect.red = reply[8];
    effect.green = reply[9];
    effect.blue = reply[10];
    effect.parameterB = reply[11];
    return E_OK;
}

_error StrandController::readByte(std::string_view operation, const Report& command, std::size_t place,
                                  std::uint8_t* value)
{
    if (!value)
        return E_INVALID_GET;
    Reply reply;
    if (const _error result = requests.request(operation, command, reply))
        return result;
    *value = reply[place];
    return E_OK;
}

/// The bytes of a custom zone's colors; none for a zone that does not exist, or has more than a buffer holds.
std::optional<std::size_t> StrandController::customBytes(std::uint8_t zone) const
{
    if (zone < 1 || zone > customZones)
        return std::nullopt;
    const std::size_t leds = ledCounts[zone - 1U];
    return leds <= mostLeds ? std::optional(leds * bytesPerLed) : std::nullopt;
}

/// A frame of custom colors, whose answer carries the frame's number.
_error StrandController::customFrame(std::string_view operation, const Report& frame, Reply& reply)
{
    const _error result = requests.request(operation, frame, reply);
    return result == E_WRONG_REPLY && reply[0] != frame[1] ? E_INVALID_GET : result;
}

} // namespace pyrux
