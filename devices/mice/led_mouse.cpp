#include "devices/mice/led_mouse.h"

#include <array>

namespace pyrux {

namespace {

// clang-format off
namespace cmd {
constexpr Report profileOn {0x42, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01, 0x01};
constexpr Report profileAck{0x42, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01, 0x01}; // of the effects too
constexpr Report dpiOn     {0x42, 0x00, 0x40, 0x00, 0x01};
constexpr Report dpiAck    {0x42, 0x10, 0x40, 0x00, 0x01};
} // namespace cmd
// clang-format on

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

constexpr MouseTraits ledMouseTraits{
    .startUp = startUp,
    .events = events,
    .keys = {.downEvent = LED_MOUSE_KEY_DOWN, .upEvent = LED_MOUSE_KEY_UP, .values = wiredKeyValues},
    .paceMs = MouseFrames::idlePaceMs};

} // namespace

LedMouse::LedMouse(const std::string& path, const LedMouseTraits& traits)
    : WiredMouse(path, traits.model, ledMouseTraits), effects(link, modes, traits.effectModes)
{
}

} // namespace pyrux
