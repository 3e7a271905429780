#pragma once

#include "commands.h"

/// @file
/// What goes on being shown: the lights of simulated devices, the measurements of a device.

namespace pyrux::ctl {

/// A picture zone by zone, each with its name. On a screen every LED is a block of its color; elsewhere the
/// colors are written out, equal neighbours as one: "ff0000 x20 000000 x28".
std::string asText(const Picture& picture, bool onScreen);

/// The same as an object: "ff0000 x20 000000 x28" by the names of the zones.
Json asJson(const Picture& picture);

/// Shows the lights of the simulated devices, or of the one that is named; again and again, where they
/// change, as long as `command.seconds` says.
void showLights(Session& session, const Command& command);

/// After a model's name: shows what its operations give, once a second.
inline constexpr std::string_view monitorWord = "monitor";
Exit monitor(Session& session, const Command& command);

} // namespace pyrux::ctl
