#pragma once

#include "core/models.h"
#include "devices/mice/mouse_protocol.h"
#include "pyrux/error.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// The five profiles of a mouse: which is in use, their factory state, and their memory. Sends 51 00 and
/// 52 00, 50 10 and 50 55. The model is for the log.
class MouseProfiles {
public:
    MouseProfiles(DeviceLink& link, MouseModes& modes, const ModelRow& model)
        : link(link), modes(modes), model(model)
    {
    }

    _error changeProfileId(std::uint8_t profile);
    _error getCurrProfileId(std::uint8_t* profile);
    _error resetProfile(std::uint8_t all);
    _error saveConfig();

private:
    DeviceLink& link;
    MouseModes& modes;
    const ModelRow& model;
};

} // namespace pyrux
