#pragma once

#include "services/service.h"

#include <memory>

/// @file
/// The services that stand on the system's audio. They have their subscribers; nothing feeds them yet.

namespace pyrux {

/// Volume, mute and device changes of the default endpoints. Tells MSG_RENDER_VOLUME, MSG_CAPTURE_VOLUME,
/// MSG_AUDIO_DEVICE_CHANGED and MSG_AUDIO_DEVICE_STATE.
class SERVICE_AUDIO final : public Service {
public:
    SERVICE_AUDIO() : Service("audio", std::make_shared<Subscribers>()) {}
};

/// The spectrum of what is played. Tells MSG_AMPLITUDE.
class SERVICE_AMPLITUDE final : public Service {
public:
    SERVICE_AMPLITUDE() : Service("amplitude", std::make_shared<Outlet<MSG_AMPLITUDE>>()) {}
};

/// Holds the meter of the default output. Tells nothing.
class SERVICE_PEAKMETER final : public Service {
public:
    SERVICE_PEAKMETER() : Service("peakmeter", std::make_shared<Subscribers>()) {}
};

/// Holds the bridge to the audio chip's driver. Tells nothing.
class SERVICE_CMEDIA final : public Service {
public:
    SERVICE_CMEDIA() : Service("cmedia", std::make_shared<Subscribers>()) {}
};

} // namespace pyrux
