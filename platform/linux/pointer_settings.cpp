#include "platform/pointer_settings.h"

#include "platform/linux/gnome_settings.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace pyrux::platform {
namespace {

/// What is kept where no desktop has these settings: the middle of both scales.
std::atomic<int> ownSpeed{10};
std::atomic<int> ownDoubleClickMs{550};

const GnomeSettings* desktop()
{
    static const GnomeSettings* found =
        GnomeSettings::find("org.gnome.desktop.peripherals.mouse", {"speed", "double-click"});
    return found;
}

/// GNOME's speed runs from -1 to 1. The middles of both scales, 0 and 10, fall together, and so do the ends,
/// so that one step is 1/9 below the middle and 1/10 above it.
double toGnome(int speed)
{
    return speed < 10 ? (speed - 10) / 9.0 : (speed - 10) / 10.0;
}

int fromGnome(double speed)
{
    const double inRange = std::clamp(speed, -1.0, 1.0);
    return 10 + static_cast<int>(std::lround(inRange < 0 ? inRange * 9 : inRange * 10));
}

} // namespace

std::optional<int> pointerSpeed()
{
    if (const GnomeSettings* settings = desktop())
        return fromGnome(settings->getDouble("speed"));
    return ownSpeed.load();
}

bool setPointerSpeed(int speed)
{
    if (speed < 1 || speed > 20)
        return false;
    if (const GnomeSettings* settings = desktop())
        return settings->setDouble("speed", toGnome(speed));
    ownSpeed = speed;
    return true;
}

std::optional<int> doubleClickTimeMs()
{
    if (const GnomeSettings* settings = desktop())
        return settings->getInt("double-click");
    return ownDoubleClickMs.load();
}

bool setDoubleClickTimeMs(int ms)
{
    if (ms < 1)
        return false;
    if (const GnomeSettings* settings = desktop())
        return settings->setInt("double-click", ms);
    ownDoubleClickMs = ms;
    return true;
}

} // namespace pyrux::platform
