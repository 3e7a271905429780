#include "devices/mice/rd210.h"

#include <array>

namespace pyrux {

namespace {

constexpr Report profileAck{0x42, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01};
constexpr Report dpiAck{0x42, 0x10, 0x40, 0x00, 0x01};

constexpr std::array startUp{
    Report{0x42, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01},
    profileAck,
    Report{0x42, 0x00, 0x40, 0x00, 0x01},
    dpiAck,
};

constexpr std::array<DeviceEvent<NotifyRecord>, 2> events{{
    // head of the report, byte that must be 1, text after the model's name, answer, event for the host
    {{0x42, 0x20, 0x40}, 4, " dpi change", dpiAck, changed<RD210_DPI_CHANGED>},
    {{0x42, 0x20, 0x00}, 4, " profile change", profileAck, changed<RD210_PROFILE_CHANGED>},
}};

constexpr MouseTraits rd210Traits{
    .startUp = startUp,
    .events = events,
    .keys = {.downEvent = RD210_KEY_DOWN, .upEvent = RD210_KEY_UP, .values = wiredKeyValues}};

} // namespace

RD210::RD210(const std::string& path) : WiredMouse(path, model, rd210Traits) {}

} // namespace pyrux

PYRUX_FACTORY(rd210, pyrux::PYRUX_RD210)
