#include "devices/keyboards/effect_records.h"

#include <algorithm>

namespace pyrux {

namespace {

constexpr std::size_t headByte = 3;
constexpr std::size_t movingByte = 5; // marks the records with a head of `moving`
constexpr std::size_t colorByte = 8;
constexpr std::size_t brightnessByte = 11;
constexpr std::size_t directionByte = 12;
constexpr std::uint8_t still = 0xC1;
constexpr std::uint8_t moving = 0x80;
constexpr std::uint8_t movingMark = 0x10;
constexpr std::uint8_t shortest = 4; // bytes of the record of the system status

constexpr SpeedColumns waveSpeeds{{{4, {23, 14, 11, 10, 4}}, {14, {1, 1, 2, 5, 4}}}};
constexpr SpeedColumns dropSpeeds{{{4, {11, 8, 5, 2, 0}}, {16, {0x08, 0x18, 0x30, 0x38, 0x40}}}};
constexpr SpeedColumns sweepSpeeds{{{4, {54, 24, 12, 6, 2}}}};
constexpr SpeedColumns forwardSpeeds{
    {{4, {4, 4, 4, 4, 4}}, {14, {0, 1, 2, 3, 4}}, {17, {0xC0, 0x80, 0x80, 0x40, 0x00}}}};
constexpr SpeedColumns backwardSpeeds{
    {{4, {4, 4, 4, 4, 4}}, {14, {0xFF, 0xFE, 0xFD, 0xFC, 0xFC}}, {17, {0x40, 0x80, 0x80, 0xC0, 0x00}}}};

} // namespace

// Sizes are those of the device's table, but for the custom effect, whose colors are not counted here.
// The device knows one more opcode, 10 A0, which no effect has: such a record is refused as unknown.
// clang-format off
constinit const std::array<RecordForm, 19> statusKeyboardForms{{
    {.effectId = 0, .opcode = {0x00, 0x01}, .size = 16, .head = still, .colored = true},
    {.effectId = 1, .opcode = {0x00, 0x32}, .size = 20, .head = still, .optionByte = 13,
     .speeds = {{{4, {23, 13, 7, 9, 8}}, {14, {1, 4, 6, 12, 17}}}},
     .fixed = {{{8, {0xFF, 0xFF, 0xFF}}, {16, {0x00, 0x04, 0x08, 0x00}}}}},
    {.effectId = 2, .opcode = {0x00, 0x80}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .directedOpcode = 0x04, .speeds = waveSpeeds,
     .fixed = {{{15, {0x01, 0x03}}}}, .telling = TellingByte{16, 0x03}},
    {.effectId = 3, .opcode = {0x00, 0x80}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .directedOpcode = 0x04, .speeds = waveSpeeds, .telling = TellingByte{16, 0x00}},
    {.effectId = 4, .opcode = {0x80, 0x01}, .size = customColors, .head = 0x00, .matrix = true,
     .fixed = {{{4, {0xFF}}, {10, {0xFF}}}}},
    {.effectId = 5, .opcode = {0x00, 0x40}, .size = 24, .head = moving, .colored = true,
     .direction = {0, 2}, .directedOpcode = 0x08,
     .speeds = {{{4, {23, 14, 8, 10, 10}}, {14, {1, 1, 1, 2, 4}}}},
     .fixed = {{{16, {0x01, 0x10, 0x08, 0x01, 0x10}}}}},
    {.effectId = 6, .opcode = {0x81, 0x40}, .size = 24, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = dropSpeeds,
     .fixed = {{{14, {3}}, {17, {0xFF, 0x10, 0x10, 0x01, 0x40}}}}, .telling = TellingByte{21, 0x40}},
    {.effectId = 7, .opcode = {0x00, 0x31}, .size = 20, .head = still,
     .speeds = {{{4, {16, 12, 8, 4, 0}}}}, .fixed = {{{8, {0x40, 0x00, 0xFF}}, {14, {3}}}}},
    {.effectId = 8, .opcode = {0x00, 0x30}, .size = 20, .head = still, .colored = true,
     .direction = {1, 3}, .speeds = {{{4, {8, 10, 12, 7, 9}}, {14, {1, 2, 4, 4, 9}}}}},
    {.effectId = 9, .opcode = {0x01, 0x82}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = sweepSpeeds, .fixed = {{{14, {1}}, {17, {0x01}}}},
     .telling = TellingByte{17, 0x01}},
    {.effectId = 10, .opcode = {0x28, 0x80}, .size = 16, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = {{{4, {14, 10, 7, 4, 1}}}}, .fixed = {{{14, {1}}}}},
    {.effectId = 11, .opcode = {0x20, 0xA0}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = {{{4, {32, 32, 32, 32, 32}}, {14, {1, 2, 3, 5, 9}}}},
     .fixed = {{{16, {0x02, 0xFF, 0x00, 0x03}}}}, .telling = TellingByte{16, 0x02}},
    {.effectId = 12, .opcode = {0x20, 0xA0}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = {{{4, {16, 16, 16, 16, 16}}, {14, {1, 2, 3, 5, 9}}}},
     .fixed = {{{16, {0x01, 0x08, 0x09, 0x04}}}}, .telling = TellingByte{16, 0x01}},
    {.effectId = 13, .opcode = {0x00, 0x34}, .size = 24, .head = still,
     .speeds = forwardSpeeds, .reversed = backwardSpeeds,
     .fixed = {{{4, {4}}, {10, {0xFF}}, {19, {0x04, 0xA0, 0x00, 0x30}}}}},
    {.effectId = 14, .opcode = {0x00, 0x83}, .size = 24, .head = still,
     .speeds = forwardSpeeds, .reversed = backwardSpeeds,
     .fixed = {{{4, {4}}, {10, {0xFF}}, {19, {0x00, 0x30, 0x00, 0x10}}}}},
    {.effectId = 15, .opcode = {0x01, 0x82}, .size = 20, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = sweepSpeeds, .fixed = {{{14, {6}}, {17, {0x90, 0x14, 0x20}}}},
     .telling = TellingByte{17, 0x90}},
    {.effectId = 16, .opcode = {0x10, 0x00}, .size = 8, .head = still, .bright = false},
    {.effectId = 17, .opcode = {0x81, 0x40}, .size = 24, .head = moving, .colored = true,
     .direction = {0, 2}, .speeds = dropSpeeds,
     .fixed = {{{14, {3}}, {17, {0x18, 0x04, 0x10, 0x01}}}}, .telling = TellingByte{21, 0x00}},
    {.effectId = 20, .opcode = {0x04, 0xF0}, .size = shortest, .head = still, .bright = false},
}};
// clang-format on

namespace {

/// Place of a speed in the columns: what is not 1 to 5 counts as 5.
std::size_t speedPlace(std::uint8_t speed)
{
    return speed >= 1 && speed <= 5 ? speed - 1U : 4U;
}

/// The columns that go with an option; none: deliberately, the record keeps no speed then, but its period.
const SpeedColumns* columnsOf(const RecordForm& form, std::uint8_t option)
{
    if (!form.reversed || option == 0)
        return &form.speeds;
    return option == reverseOption ? &*form.reversed : nullptr;
}

void writeSpeed(std::vector<std::uint8_t>& record, const SpeedColumns& columns, std::uint8_t speed)
{
    for (const SpeedColumn& column : columns)
        if (column.byte)
            record[column.byte] = column.values[speedPlace(speed)];
}

/// @return no value: bytes that are in no row of the columns
std::optional<std::uint8_t> readSpeed(std::span<const std::uint8_t> record, const SpeedColumns& columns)
{
    for (std::uint8_t place = 0; place < 5; ++place)
        if (std::ranges::all_of(columns, [&](const SpeedColumn& column) {
                return !column.byte || record[column.byte] == column.values[place];
            }))
            return std::uint8_t(place + 1);
    return std::nullopt;
}

bool hasSpeed(const RecordForm& form)
{
    return form.speeds[0].byte != 0;
}

const RecordForm* formOf(std::span<const RecordForm> all, std::span<const std::uint8_t> memory)
{
    for (const RecordForm& form : all)
        if (memory.size() >= form.size && memory[1] == form.opcode[1] &&
            (memory[0] == form.opcode[0] || memory[0] == form.directedOpcode) &&
            (!form.telling || memory[form.telling->byte] == form.telling->value))
            return &form;
    return nullptr;
}

bool directionOf(const RecordForm& form, std::span<const std::uint8_t> record)
{
    if (form.directedOpcode)
        return record[0] == form.directedOpcode;
    return form.direction[0] != form.direction[1] && record[directionByte] == form.direction[1];
}

} // namespace

std::optional<std::vector<std::uint8_t>> encodeRecord(std::span<const RecordForm> all,
                                                      const EffectRecord& effect,
                                                      std::span<const std::uint8_t> customMatrix)
{
    const auto form = std::ranges::find(all, effect.effectId, &RecordForm::effectId);
    if (form == all.end())
        return std::nullopt;
    std::vector<std::uint8_t> record(form->size);
    std::ranges::copy(form->opcode, record.begin());
    if (effect.direction && form->directedOpcode)
        record[0] = *form->directedOpcode;
    record[headByte] = form->head;
    if (form->head == moving)
        record[movingByte] = movingMark;
    for (const FixedBytes& bytes : form->fixed)
        for (std::size_t i = 0; i < bytes.values.size(); ++i)
            if (bytes.values[i])
                record[bytes.from + i] = bytes.values[i];
    if (form->colored)
        std::ranges::copy(std::array{effect.red, effect.green, effect.blue}, record.begin() + colorByte);
    if (form->bright)
        record[brightnessByte] = effect.brightness;
    if (form->size > directionByte)
        record[directionByte] = form->direction[effect.direction ? 1 : 0];
    if (form->optionByte)
        record[*form->optionByte] = effect.option;
    if (const SpeedColumns* columns = columnsOf(*form, effect.option))
        writeSpeed(record, *columns, effect.speed);
    if (form->matrix)
        record.insert(record.end(), customMatrix.begin(), customMatrix.end());
    return record;
}

std::optional<EffectRecord> decodeRecord(std::span<const RecordForm> all,
                                         std::span<const std::uint8_t> memory)
{
    if (memory.size() < shortest)
        return std::nullopt;
    const RecordForm* form = formOf(all, memory);
    if (!form)
        return std::nullopt;
    const auto record = memory.first(form->size);
    EffectRecord effect = clearedEffect;
    effect.effectId = form->effectId;
    if (form->colored) {
        effect.red = record[colorByte];
        effect.green = record[colorByte + 1];
        effect.blue = record[colorByte + 2];
    }
    if (form->bright)
        effect.brightness = record[brightnessByte];
    effect.direction = directionOf(*form, record) ? 1 : 0;
    if (form->optionByte)
        effect.option = record[*form->optionByte];
    if (!hasSpeed(*form))
        return effect;
    std::optional<std::uint8_t> speed = readSpeed(record, form->speeds);
    if (!speed && form->reversed) {
        speed = readSpeed(record, *form->reversed);
        effect.option = reverseOption;
    }
    if (!speed)
        return std::nullopt;
    effect.speed = *speed;
    return effect;
}

} // namespace pyrux
