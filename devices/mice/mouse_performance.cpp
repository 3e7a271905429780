#include "devices/mice/mouse_performance.h"

#include "core/log.h"
#include "devices/mice/system_pointer.h"

#include <algorithm>
#include <array>

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes; a reply counts from 0
// 5: place of the current level, 6: enabled levels, 7 to 13: y by place, 14 to 20: x, 21 to 27: doubling
// flags, 28: polling code, 29: options, 30 and 31: surface
constexpr Report setPerformance{0x51, 0x40};
constexpr Report getPerformance{0x52, 0x40}; // reply 4 to 30 as written in 5 to 31
constexpr Report setF0         {0x51, 0xF0}; // 5: settingF0
constexpr Report getF0         {0x52, 0xF0}; // reply 4: settingF0
} // namespace cmd
// clang-format on

constexpr std::uint16_t singleDpiLimit = 16000; // levels above are stored halved
constexpr std::uint8_t mostSpeed = 11;          // index of the system's fastest speed
constexpr std::uint8_t mostBank = 8;
constexpr std::uint8_t optionBase = 2;
constexpr std::uint8_t optionA = 1;
constexpr std::uint8_t optionB = 4;
constexpr std::uint8_t optionsB = 6; // both are set where flag B is
constexpr std::uint8_t defaultF0 = 1;
constexpr std::uint8_t defaultBank = 3;

bool isValid(const PerformanceRecord& record)
{
    return record.currentLevel < DpiOrder::levels && record.pointerSpeed <= mostSpeed &&
           record.doubleClickSpeed <= mostSpeed && record.settingBank <= mostBank;
}

/// The levels as the device wants them.
struct Sorted {
    DpiOrder::Table table;
    std::uint8_t enabled;  ///< How many of them are.
    std::uint8_t position; ///< Place of the current one.
};

/// The enabled levels in their order, then the others in theirs.
Sorted sorted(const PerformanceRecord& record)
{
    DpiOrder::Table table;
    const auto isEnabled = [&](std::uint8_t level) { return record.levelEnabled[level] == 1; };
    const auto others = std::stable_partition(table.levelAt.begin(), table.levelAt.end(), isEnabled);
    return {.table = table,
            .enabled = std::uint8_t(others - table.levelAt.begin()),
            .position = table.placeOf(record.currentLevel).value_or(DpiOrder::levels)};
}

std::uint8_t optionByte(const PerformanceRecord& record)
{
    return std::uint8_t(optionBase + (record.flagA ? optionA : 0) + (record.flagB ? optionB : 0));
}

Report performanceReport(const PerformanceRecord& record, const Sorted& levels)
{
    Report report = cmd::setPerformance.at(5, levels.position).at(6, levels.enabled);
    for (std::size_t place = 0; place < DpiOrder::levels; ++place) {
        const DpiLevel level = record.levels[levels.table.levelAt[place]];
        report = report.at(7 + place, dpi::stored(level.y, singleDpiLimit))
                     .at(14 + place, dpi::stored(level.x, singleDpiLimit))
                     .at(21 + place, dpi::doublingFlags(level, singleDpiLimit));
    }
    return report.at(28, record.pollingCode)
        .at(29, optionByte(record))
        .at(30, record.surfaceA ? record.surfaceA : SurfaceDefaults::a)
        .at(31, record.surfaceB ? record.surfaceB : SurfaceDefaults::b);
}

} // namespace

/// What the device tells of its performance.
struct MousePerformance::Read {
    Reply performance, f0;
    DpiOrder::Table table;
    MouseBank::State bank;

    std::uint8_t position() const { return performance[4]; }
    std::uint8_t enabled() const { return performance[5]; }

    /// Whether it names levels that there are.
    bool isValid() const;
    void fillLevels(PerformanceRecord& record) const;
    void fillSettings(PerformanceRecord& record) const;
};

bool MousePerformance::Read::isValid() const
{
    return position() < DpiOrder::levels &&
           std::ranges::all_of(table.levelAt, [](std::uint8_t level) { return level < DpiOrder::levels; });
}

void MousePerformance::Read::fillLevels(PerformanceRecord& record) const
{
    record.currentLevel = table.levelAt[position()];
    for (std::size_t place = 0; place < DpiOrder::levels; ++place) {
        const std::uint8_t level = table.levelAt[place];
        record.levels[level] =
            dpi::level(performance[13 + place], performance[6 + place], performance[20 + place]);
        record.levelEnabled[level] = !table.stored || place < enabled() ? 1 : 0;
    }
}

void MousePerformance::Read::fillSettings(PerformanceRecord& record) const
{
    const std::uint8_t options = performance[28];
    record.pollingCode = performance[27];
    record.flagA = options & optionA;
    record.flagB = (options & optionsB) == optionsB ? 1 : 0;
    record.surfaceA = performance[29];
    record.surfaceB = performance[30];
    record.settingF0 = f0[4];
    record.settingBank = bank.setting();
}

_error MousePerformance::setPerformance(const PerformanceRecord* record)
{
    if (!record || !isValid(*record))
        return E_INVALID_SET;
    const Sorted levels = sorted(*record);
    if (levels.position >= levels.enabled)
        return E_INVALID_SET;
    modes.configure();
    if (order.write(levels.table.levelAt) || link.set(performanceReport(*record, levels)) ||
        link.set(cmd::setF0.at(5, record->settingF0)))
        return E_INVALID_SET;
    MouseBank::State state;
    const bool known = bank.read(state) == E_OK;
    // Deliberate: without an answer the current level stands in its place.
    if (bank.write(known ? state.comboButton() : record->currentLevel, record->settingBank))
        return E_INVALID_SET;
    if (!setSystemPointer(record->pointerSpeed, record->doubleClickSpeed))
        log(model.logCategory, "the system refuses pointer speed and double-click time");
    return E_OK; // the device has taken everything
}

_error MousePerformance::getPerformance(PerformanceRecord* record)
{
    if (!record)
        return E_INVALID_GET;
    modes.configure();
    Read values;
    if (const _error result = read(values))
        return result;
    if (!values.isValid())
        return E_INVALID_GET;
    values.fillLevels(*record);
    values.fillSettings(*record);
    record->pointerSpeed = systemPointerSpeed();
    record->doubleClickSpeed = systemDoubleClickSpeed();
    return record->pointerSpeed && record->doubleClickSpeed ? E_OK : E_INVALID_GET;
}

_error MousePerformance::read(Read& values)
{
    if (const _error result = link.get(cmd::getPerformance, values.performance))
        return result;
    if (const _error result = order.read(values.table))
        return result;
    if (const _error result = link.get(cmd::getF0, values.f0))
        return result;
    return bank.read(values.bank);
}

_error MousePerformance::changeDpiLevel(std::uint8_t level)
{
    if (level >= DpiOrder::levels)
        return E_INVALID_SET;
    modes.configure();
    DpiOrder::Table table;
    order.read(table); // without one the levels stand in their own order
    const std::uint8_t place = table.placeOf(level).value_or(level);
    Reply performance;
    if (link.get(cmd::getPerformance, performance) || place >= performance[5])
        return E_INVALID_SET;
    return link.set(repeated(cmd::setPerformance, performance).at(5, place));
}

_error MousePerformance::restoreDefaults()
{
    if (order.clear() || link.set(cmd::setF0.at(5, defaultF0)))
        return E_INVALID_SET;
    MouseBank::State state;
    if (bank.read(state) || bank.write(state.comboButton(), defaultBank))
        return E_INVALID_SET;
    return setSystemPointer(middleSpeed, middleSpeed) ? E_OK : E_INVALID_SET;
}

} // namespace pyrux
