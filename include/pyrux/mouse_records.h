#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// Records that the mice share.

/// Button codes with a special meaning; all others are passed to the device unchanged.
enum MouseKeyCode : std::uint16_t {
    KEY_MACRO = 0x03FF,     ///< On a read: the button holds a macro. On a write: leave this button alone.
    KEY_STEP_UP = 0x0500,   ///< One step up, kept in the button's macro area.
    KEY_STEP_DOWN = 0x0501, ///< One step down.
    KEY_DPI_LEVEL = 0x01E0, ///< Go to DPI level n: 0x01E0 + n, n from 0 to 6.
    KEY_COMBO = 0x01EA,     ///< The shift button that `setMouseCombo` makes of button 5.
};

#pragma pack(push, 1)

/// One DPI level. Each value is a multiple of 100; above 16000 a multiple of 200.
struct DpiLevel {
    std::uint16_t x;
    std::uint16_t y;
};

/// Argument of `setPerformance` and `getPerformance`.
struct PerformanceRecord {
    std::uint8_t currentLevel;     ///< Level in use, 0 to 6. It must be enabled.
    DpiLevel levels[7];            ///< DPI per level.
    std::uint8_t levelEnabled[7];  ///< 1: the level takes part in the cycle.
    std::uint8_t pollingCode;      ///< Passed to the device and back unchanged.
    std::uint8_t reserved[3];      ///< Neither read nor written.
    std::uint8_t flagA;            ///< Bit 0 of the device's option byte, a truth value.
    std::uint8_t flagB;            ///< Bits 1 and 2 of that byte, a truth value.
    std::uint8_t surfaceA;         ///< Surface tuning; 0 stands for the default of 10.
    std::uint8_t surfaceB;         ///< Surface tuning; 0 stands for the default of 16.
    std::uint8_t settingF0;        ///< Carried to the device and back.
    std::uint8_t pointerSpeed;     ///< The system's pointer speed, 1 to 11; 0 stands for the middle, 6.
    std::uint8_t doubleClickSpeed; ///< The system's double-click speed, likewise.
    std::uint8_t settingBank;      ///< 0 to 8, carried to the device and back.
};

/// One event of a macro.
struct MouseMacroEvent {
    std::uint16_t code;  ///< Key code, 10 bits, or `KEY_STEP_UP` or `KEY_STEP_DOWN`.
    std::uint8_t kind;   ///< 0 and 1: two key classes; 2: the third one.
    std::uint16_t delay; ///< Pause after the event; the device keeps 15 bits.
};

/// Argument of `setMacro` and `getMacro`.
struct MouseMacroRecord {
    std::uint8_t button; ///< 0 to 12.
    char name[40];       ///< Kept in the device as it stands.
    std::uint8_t mode;   ///< 0, 1, 2: play modes of the firmware. 3: no macro.
    std::uint8_t count;  ///< Number of events, at most 198.
    MouseMacroEvent
        events[199]; ///< One place more than `count` can use: `setMacro` writes the end event there.
};

/// What `getMacroAll` fills: the macros that there are.
struct MouseMacroList {
    std::uint32_t count;         ///< Macros in use, at most 13.
    MouseMacroRecord macros[13]; ///< In the order of their buttons.
};

/// Argument of `setGeneralEffect` and `getGeneralEffect`.
struct MouseEffectRecord {
    std::uint8_t mode;  ///< One of the model's effect modes.
    std::uint8_t speed; ///< Modes 1 and 2: 1 (slow) to 5; others: passed to the device and back unchanged.
    std::uint8_t direction;  ///< A truth value; only mode 1 has one.
    std::uint8_t brightness; ///< 0 to 255; mode 2 keeps half of it.
    std::uint8_t red, green, blue;
};

#pragma pack(pop)

static_assert(sizeof(DpiLevel) == 4 && offsetof(DpiLevel, y) == 2);
static_assert(sizeof(PerformanceRecord) == 48 && offsetof(PerformanceRecord, reserved) == 37);
static_assert(offsetof(PerformanceRecord, levels) == 1 && offsetof(PerformanceRecord, levelEnabled) == 29);
static_assert(offsetof(PerformanceRecord, pollingCode) == 36 && offsetof(PerformanceRecord, flagA) == 40);
static_assert(offsetof(PerformanceRecord, flagB) == 41 && offsetof(PerformanceRecord, surfaceA) == 42);
static_assert(offsetof(PerformanceRecord, surfaceB) == 43 && offsetof(PerformanceRecord, settingF0) == 44);
static_assert(offsetof(PerformanceRecord, pointerSpeed) == 45 &&
              offsetof(PerformanceRecord, settingBank) == 47);
static_assert(offsetof(PerformanceRecord, doubleClickSpeed) == 46);
static_assert(sizeof(MouseMacroEvent) == 5 && offsetof(MouseMacroEvent, kind) == 2);
static_assert(offsetof(MouseMacroEvent, delay) == 3);
static_assert(sizeof(MouseMacroRecord) == 43 + 199 * 5);
static_assert(offsetof(MouseMacroRecord, name) == 1 && offsetof(MouseMacroRecord, mode) == 41);
static_assert(offsetof(MouseMacroRecord, count) == 42 && offsetof(MouseMacroRecord, events) == 43);
static_assert(sizeof(MouseMacroList) == 4 + 13 * sizeof(MouseMacroRecord));
static_assert(offsetof(MouseMacroList, macros) == 4);
static_assert(sizeof(MouseEffectRecord) == 7 && offsetof(MouseEffectRecord, speed) == 1);
static_assert(offsetof(MouseEffectRecord, direction) == 2 && offsetof(MouseEffectRecord, brightness) == 3);
static_assert(offsetof(MouseEffectRecord, red) == 4 && offsetof(MouseEffectRecord, green) == 5);
static_assert(offsetof(MouseEffectRecord, blue) == 6);
