#include "devices/mice/wired_mouse.h"

namespace pyrux {

namespace {

namespace cmd {
constexpr Report hello{0x43, 0x00, 0x00, 0x00, 0x01};
}

} // namespace

WiredMouse::WiredMouse(const std::string& path, const ModelRow& model, const MouseTraits& traits)
    : NotifyingDevice(path, {.model = model, .paceMs = traits.paceMs}), MouseParts(link, row, closed),
      traits(traits), keys(model, traits.keys)
{
    if (!link.opened())
        return;
    link.start([this](const Reply& reply) { take(reply); });
    for (const Report& report : traits.startUp)
        link.write(report);
    link.set(cmd::hello);
}

WiredMouse::~WiredMouse()
{
    link.stop();
}

void WiredMouse::sayGoodbye()
{
    if (link.unplugged())
        return;
    link.resume();
    modes.serve();
    modes.release();
}

void WiredMouse::take(const Reply& reply)
{
    if (takeEvents(traits.events, reply))
        return;
    if (!MouseKeys::isKey(reply))
        link.deliver(reply);
    else if (const std::optional<NotifyRecord> record = keys.take(reply))
        tell(*record);
}

} // namespace pyrux
