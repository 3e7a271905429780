#include "platform/pointer_settings.h"

#include <windows.h>

namespace pyrux::platform {

std::optional<int> pointerSpeed()
{
    int speed = 0;
    if (!SystemParametersInfoW(SPI_GETMOUSESPEED, 0, &speed, 0))
        return {};
    return speed;
}

bool setPointerSpeed(int speed)
{
    if (speed < 1 || speed > 20)
        return false;
    // Windows takes the speed itself in the pointer's place, Wine in the number's.
    auto* argument = reinterpret_cast<void*>(static_cast<INT_PTR>(speed));
    return SystemParametersInfoW(SPI_SETMOUSESPEED, static_cast<UINT>(speed), argument, 0) != FALSE;
}

std::optional<int> doubleClickTimeMs()
{
    return static_cast<int>(GetDoubleClickTime());
}

bool setDoubleClickTimeMs(int ms)
{
    return ms >= 1 && SetDoubleClickTime(static_cast<UINT>(ms)) != FALSE;
}

} // namespace pyrux::platform
