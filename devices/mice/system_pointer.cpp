#include "devices/mice/system_pointer.h"

#include "platform/pointer_settings.h"

#include <array>
#include <optional>

namespace pyrux {

namespace {

struct SpeedRow {
    std::uint8_t index;
    int mouseSpeed;
    int doubleClickMs;
};

constexpr std::array<SpeedRow, 11> speedTable{{
    {1, 1, 900},
    {2, 2, 830},
    {3, 4, 760},
    {4, 6, 690},
    {5, 8, 620},
    {6, 10, 550},
    {7, 12, 480},
    {8, 14, 410},
    {9, 16, 340},
    {10, 18, 270},
    {11, 20, 200},
}};

const SpeedRow& speedRow(std::uint8_t index)
{
    const bool known = index >= 1 && index <= speedTable.size();
    return speedTable[(known ? index : middleSpeed) - 1];
}

} // namespace

bool setSystemPointer(std::uint8_t pointerSpeed, std::uint8_t doubleClickSpeed)
{
    const bool speedSet = platform::setPointerSpeed(speedRow(pointerSpeed).mouseSpeed);
    return platform::setDoubleClickTimeMs(speedRow(doubleClickSpeed).doubleClickMs) && speedSet;
}

std::uint8_t systemPointerSpeed()
{
    const std::optional<int> speed = platform::pointerSpeed();
    std::uint8_t index = 0;
    for (const SpeedRow& row : speedTable)
        if (speed && *speed >= row.mouseSpeed)
            index = row.index;
    return index;
}

std::uint8_t systemDoubleClickSpeed()
{
    const std::optional<int> ms = platform::doubleClickTimeMs();
    if (!ms || *ms <= 0)
        return 0;
    for (const SpeedRow& row : speedTable)
        if (*ms >= row.doubleClickMs)
            return row.index;
    return speedTable.back().index;
}

} // namespace pyrux
