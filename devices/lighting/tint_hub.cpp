#include "devices/lighting/tint_hub.h"

#include <algorithm>
#include <array>
#include <optional>

namespace pyrux {

namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report leave{0x41, 0x00};
constexpr Report effectSession{0x41, 0x01};
constexpr Report hostMode{0x41, 0x03};
constexpr Report colorSession{0x41, 0x80};
constexpr Report store{0x50, 0x55};
constexpr Report apply{0x51, 0x28};       // 5: mode
constexpr Report writeEffect{0x51, 0x2B}; // 3: layer, 5: mode, 6: speed, 7 to 9, 10: brightness, 11: color
/// 10: brightness. All but what is named is 0xFF.
constexpr Report colorBlock = Report::filled(0xFF)
                                  .at(0, std::array<std::uint8_t, 8>{0x00, 0x51, 0x2C, 0, 0, 0x04, 0, 0})
                                  .at(14, std::array<std::uint8_t, 3>{});
constexpr Report colorPreamble{0x51, 0x30};
constexpr Report layerColor{0x51, 0xA0, 0x01, 0x00, 0x00, 0x01}; // 9: color, 12: last byte
constexpr Report setColors{0x51, 0xA8};                          // 5 to 16: colors of the ports
constexpr Report getMode{0x52, 0x28};                            // reply 3: mode
constexpr Report getEffect{0x52, 0x2C}; // 5: mode; reply 3: mode, 4: speed, 8: brightness, 9: color
constexpr Report getColorBlock =
    Report::filled(0xFF).at(0, std::array<std::uint8_t, 3>{0x00, 0x52, 0x2C}).at(5, 0x04); // reply 8
constexpr Report getColors{0x52, 0xA8}; // reply 3 to 14: colors
constexpr Report drive{0xC0, 0xF0};
constexpr Report directFrame{0xC0, 0x02}; // 5 to 16: colors
} // namespace cmd

namespace {

constexpr std::uint32_t portCount = 4;
constexpr std::size_t colorBytes = 3;
constexpr std::size_t portBytes = portCount * colorBytes;
constexpr std::size_t framePorts = 5;         // byte of the first port in a direct frame
constexpr std::uint8_t multiColorMode = 4;    // shows the colors of the ports
constexpr std::uint8_t multilayerMode = 0xE0; // shows the layers
constexpr std::uint8_t lastLevelledMode = 3;  // modes above have brightness as it stands
constexpr std::uint8_t noLevel = 0xFF;

/// Codes of the levels 1 to 5.
using Codes = std::array<std::uint8_t, 5>;

struct SpeedTable {
    std::uint8_t mode;
    Codes written;
    Codes read;
};
constexpr std::array<SpeedTable, 3> speedTables{{
    {1, {60, 55, 49, 44, 38}, {60, 55, 49, 44, 38}},
    {2, {150, 140, 128, 110, 104}, {150, 140, 128, 142, 104}}, // deliberate: 110 is not known again
    {3, {70, 65, 60, 55, 50}, {70, 65, 60, 55, 50}},
}};
constexpr Codes brightnessCodes{63, 90, 127, 153, 255};
constexpr Codes dimmerCodes{63, 90, 127, 153, 223};
constexpr std::uint8_t dimmerMode = 2; // it also has colors of its own

constexpr ControllerTraits traits{
    .model = TINT_HUB::model, .mode = usbHid::Mode::blocking, .wait = std::chrono::milliseconds(1500)};

const SpeedTable* speedTable(std::uint8_t mode)
{
    const auto table = std::ranges::find(speedTables, mode, &SpeedTable::mode);
    return table == speedTables.end() ? nullptr : table;
}

const Codes& brightnessTable(std::uint8_t mode)
{
    return mode == dimmerMode ? dimmerCodes : brightnessCodes;
}

std::optional<std::uint8_t> codeOf(const Codes& codes, std::uint8_t level)
{
    if (level < 1 || level > codes.size())
        return std::nullopt;
    return codes[level - 1U];
}

std::optional<std::uint8_t> levelOf(const Codes& codes, std::uint8_t code)
{
    const auto found = std::ranges::find(codes, code);
    if (found == codes.end())
        return std::nullopt;
    return std::uint8_t(found - codes.begin() + 1);
}

std::optional<std::uint8_t> speedCode(std::uint8_t mode, std::uint8_t level)
{
    constexpr Codes asItStands{1, 2, 3, 4, 5};
    const SpeedTable* table = speedTable(mode);
    return codeOf(table ? table->written : asItStands, level);
}

/// A code without a level stays as it is.
std::uint8_t speedLevel(std::uint8_t mode, std::uint8_t code)
{
    const SpeedTable* table = speedTable(mode);
    return table ? levelOf(table->read, code).value_or(code) : code;
}

std::optional<std::uint8_t> brightnessCode(std::uint8_t mode, std::uint8_t level)
{
    return mode > lastLevelledMode ? level : codeOf(brightnessTable(mode), level);
}

std::optional<std::uint8_t> brightnessLevel(std::uint8_t mode, std::uint8_t code)
{
    return mode > lastLevelledMode ? code : levelOf(brightnessTable(mode), code);
}

} // namespace

TINT_HUB::TINT_HUB(const std::string& path) : LightingController(path, traits)
{
    if (link.opened())
        link.start([this](const Reply& reply) { link.deliver(reply); });
}

void TINT_HUB::sayGoodbye()
{
    if (link.unplugged())
        return;
    commitPortMultiColor();
    write(cmd::leave);
}

_error TINT_HUB::setLightingInit()
{
    write({cmd::hostMode, cmd::drive});
    setLightingTurnOff();
    const std::lock_guard lock(frameMutex);
    frame = cmd::directFrame;
    return E_OK;
}

_error TINT_HUB::setLightingUninit()
{
    write(cmd::leave);
    return E_OK;
}

_error TINT_HUB::setLightingPortColor(const LightingPortColor* color)
{
    if (!color)
        return E_INVALID_SET;
    const auto& paint = *static_cast<const LightingPortColorOf<portCount>*>(color);
    const std::array rgb{paint.red, paint.green, paint.blue};
    std::unique_lock lock(frameMutex);
    for (const std::uint32_t zone : paint.zone)
        if (const std::uint32_t port = zone - 1; port < portCount)
            frame = frame.at(framePorts + port * colorBytes, rgb);
    const Report painted = frame;
    lock.unlock();
    write(painted); // deliberate: at once, not through the queue
    return E_OK;
}

/// Deliberate: does nothing; a port is one color.
_error TINT_HUB::setSyncLightingData(const std::vector<LightingLedZone>&)
{
    return E_OK;
}

_error TINT_HUB::setLightingTurnOff()
{
    write(cmd::directFrame);
    return E_OK;
}

_error TINT_HUB::setEffectParameter(std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                                    const std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_SET;
    return writeEffect(Layer::effect, mode, speed, brightness, std::span(rgb, colorBytes));
}

_error TINT_HUB::writeEffect(Layer layer, std::uint8_t mode, std::uint8_t speed, std::uint8_t brightness,
                             std::span<const std::uint8_t> color)
{
    constexpr std::array<std::uint8_t, colorBytes> ownColors{0xFF, 0xFF, 0xFF};
    write(cmd::effectSession); // deliberate: also ahead of a level that is refused
    const auto speedByte = speedCode(mode, speed);
    const auto brightnessByte = brightnessCode(mode, brightness);
    if (!speedByte || !brightnessByte)
        return E_INVALID_PARAM;
    const std::array<std::uint8_t, 6> parameters{
        mode, *speedByte,     std::uint8_t(mode == 1 ? 0x20 : 0x00), std::uint8_t(mode == 3 ? 0x19 : 0xFF),
        0xFF, *brightnessByte};
    write({cmd::writeEffect.at(3, std::uint8_t(layer))
               .at(5, parameters)
               .at(11, mode == dimmerMode ? std::span<const std::uint8_t>(ownColors) : color),
           cmd::apply.at(5, mode), cmd::store, cmd::leave});
    return E_OK;
}

_error TINT_HUB::getEffectParameter(std::uint8_t* mode, std::uint8_t* speed, std::uint8_t* brightness,
                                    std::uint8_t* rgb)
{
    if (!mode || !speed || !brightness || !rgb)
        return E_INVALID_GET;
    Reply reply;
    const _error result = link.get(cmd::getEffect.at(5, *mode), reply);
    if (result || !reply.begins({0x52, 0x2C}))
        return result;
    const std::uint8_t readMode = reply[3];
    const auto level = brightnessLevel(readMode, reply[8]);
    if (!level)
        return E_INVALID_PARAM;
    *mode = readMode;
    *speed = speedLevel(readMode, reply[4]);
    *brightness = *level;
    std::ranges::copy(reply.part(9, colorBytes), rgb);
    return E_OK;
}

_error TINT_HUB::getEffectStandardMode(std::uint8_t* mode)
{
    if (!mode)
        return E_INVALID_GET;
    Reply reply;
    const _error result = link.get(cmd::getMode, reply);
    if (!result && reply.begins({0x52, 0x28}))
        *mode = reply[3];
    return result;
}

_error TINT_HUB::setPortMultiColor(const TintMultiColor* colors)
{
    if (!colors)
        return E_INVALID_SET;
    const std::uint8_t brightness = codeOf(brightnessCodes, colors->brightness).value_or(noLevel);
    write({cmd::colorSession, cmd::apply.at(5, multiColorMode), cmd::colorPreamble,
           cmd::setColors.at(5, bytesOf(colors->ports)), cmd::colorBlock.at(10, brightness)});
    pendingCommit = true; // the flash is not written at every change
    return E_OK;
}

void TINT_HUB::commitPortMultiColor()
{
    if (pendingCommit.exchange(false))
        write(cmd::store);
}

_error TINT_HUB::getPortMultiColor(TintMultiColor* colors)
{
    if (!colors)
        return E_INVALID_GET;
    write(cmd::colorSession);
    Reply reply;
    if (!link.get(cmd::getColors, reply) && reply.begins({0x52, 0xA8}))
        std::ranges::copy(reply.part(3, portBytes), bytesOf(colors->ports).begin());
    if (!link.get(cmd::getColorBlock, reply) && reply.begins({0x52, 0x2C}))
        colors->brightness = levelOf(brightnessCodes, reply[8]).value_or(colors->brightness);
    return E_OK; // deliberate: in any case
}

_error TINT_HUB::setEffectMultilayer(const TintMultilayer* effect)
{
    if (!effect)
        return E_INVALID_SET;
    for (const TintLayer& layer : effect->layers) // deliberate: a layer that is refused does not matter
        writeEffect(Layer::multilayer, layer.mode, layer.speed, noLevel, bytesOf(layer).subspan(2));
    write({cmd::effectSession, cmd::layerColor.at(9, bytesOf(*effect).subspan(sizeof effect->layers)),
           cmd::apply.at(5, multilayerMode), cmd::store, cmd::leave});
    return E_OK;
}

} // namespace pyrux

PYRUX_FACTORY(tint_hub, pyrux::PYRUX_TINT)
