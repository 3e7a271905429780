#include "devices/mice/mouse_frames.h"

#include "devices/mice/mouse_protocol.h"

#include <array>

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes
constexpr Report hostDriven{0x41, 0x02}; // the host drives the lights
constexpr Report allLeds   {0xC0, 0x00}; // 5 to 7: color
constexpr Report someLeds  {0xC0, 0x01}; // 3: count, 5: index and color of each LED
constexpr Report drive     {0xC0, 0xF0, 0x00, 0x00, 0x01};
} // namespace cmd
// clang-format on

constexpr std::size_t bytesPerLed = 4; // in a frame
constexpr std::uint8_t ledsPerFrame = 15;
constexpr std::uint16_t mostIndex = 0xFF;
constexpr std::size_t frameLane = 0; // a frame replaces the one before
constexpr std::int32_t drivenPaceMs = 10;

} // namespace

_error MouseFrames::setLightingInit()
{
    link.queue().clearLanes();
    const _error taken = link.send(cmd::hostDriven);
    const _error driven = link.send(cmd::drive);
    setLightingTurnOff();
    link.queue().paceDelayMs = drivenPaceMs;
    return taken ? taken : driven;
}

_error MouseFrames::setLightingUninit()
{
    link.queue().clearLanes();
    const _error result = link.send(modes::configOff);
    link.queue().paceDelayMs = idlePaceMs;
    return result;
}

_error MouseFrames::setLightingPortColor(const LightingPortColor*)
{
    return E_NOT_SUPPORTED;
}

_error MouseFrames::setSyncLightingData(const std::vector<LightingLedZone>& zones)
{
    if (zones.empty())
        return E_INVALID_SET;
    Report frame = cmd::someLeds;
    std::uint8_t count = 0;
    for (const LightingLedZone& zone : zones)
        for (const LightingLed& led : zone.leds) {
            if (count == ledsPerFrame || led.index > mostIndex)
                continue; // no place for it in the frame
            const std::array<std::uint8_t, bytesPerLed> bytes{std::uint8_t(led.index), led.red, led.green,
                                                              led.blue};
            frame = frame.at(5 + count * bytesPerLed, bytes);
            ++count;
        }
    link.queue().push(frameLane, frame.at(3, count));
    return E_OK;
}

_error MouseFrames::setLightingTurnOff()
{
    link.queue().clearLanes();
    link.queue().push(frameLane, cmd::allLeds);
    return E_OK;
}

} // namespace pyrux
