#include "devices/mice/mouse_protocol.h"

namespace pyrux {

void MouseModes::release()
{
    if (link.isOpen())
        link.set(modes::configOff);
}

Report repeated(const Report& command, const Reply& reply)
{
    return command.at(3, reply.part(2, Report::size));
}

} // namespace pyrux
