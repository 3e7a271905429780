#pragma once

#include "pyrux/keyboard_records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pyrux {

/// A parameter of the device that goes by the speed 1 to 5.
struct SpeedColumn {
    std::uint8_t byte; ///< 0: there is none.
    std::array<std::uint8_t, 5> values;
};

/// How an effect runs: all columns together tell its speed.
using SpeedColumns = std::array<SpeedColumn, 3>;

/// Bytes that are always the same; zeros are not written.
struct FixedBytes {
    std::uint8_t from;
    std::array<std::uint8_t, 5> values;
};

/// A byte that tells an effect from another one with the same opcode.
struct TellingByte {
    std::uint8_t byte;
    std::uint8_t value;
};

/// The device record of one effect: a program for the device's lights. Two opcode bytes, a zero, then
/// parameters: 3 head, 4 period, 5 10 after a head of 80, 8 to 10 color, 11 brightness, 12 direction, 14
/// step, and some of each effect's own. Multiples of 4 bytes.
struct RecordForm {
    std::uint8_t effectId;
    std::array<std::uint8_t, 2> opcode;
    std::uint8_t size;
    std::uint8_t head;
    bool colored = false;
    bool bright = true;
    bool matrix = false; ///< The colors of the LEDs stand after it.
    std::optional<std::uint8_t> optionByte{};
    std::array<std::uint8_t, 2> direction{};      ///< Byte 12 without and with it; equal: there is none.
    std::optional<std::uint8_t> directedOpcode{}; ///< First opcode byte with a direction, told by that alone.
    SpeedColumns speeds{};
    std::optional<SpeedColumns> reversed{}; ///< With `reverseOption`; other options but 0 have no speed.
    std::array<FixedBytes, 3> fixed{};
    std::optional<TellingByte> telling{};
};

/// `EffectRecord::option` that selects the reverse run of an effect that has one.
inline constexpr std::uint8_t reverseOption = 4;

/// The records of the keyboards with a status effect.
extern const std::array<RecordForm, 19> statusKeyboardForms;

/// A record without anything in it.
inline constexpr EffectRecord clearedEffect{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

/// The device record of an effect. That of the custom effect has its colors after it.
/// @return no value: an effect without a device record
std::optional<std::vector<std::uint8_t>> encodeRecord(std::span<const RecordForm> forms,
                                                      const EffectRecord& effect,
                                                      std::span<const std::uint8_t> customMatrix);

/// Reads a device record from the beginning of `memory`. What the record does not hold is 0.
/// @return no value: no record of these effects
std::optional<EffectRecord> decodeRecord(std::span<const RecordForm> forms,
                                         std::span<const std::uint8_t> memory);

/// Where the colors stand in the record of the custom effect.
inline constexpr std::size_t customColors = 16;

} // namespace pyrux
