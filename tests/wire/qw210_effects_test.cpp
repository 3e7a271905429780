// The keyboards: effects that are shown, and the library's copy of them.

#include "tests/support/debug_log.h"
#include "tests/support/effect_rows.h"
#include "tests/support/keyboard.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace pyrux::test {
namespace {

template <class Model>
class KeyboardEffects : public KeyboardTest<Model> {
protected:
    std::uint8_t mode()
    {
        std::uint8_t id = 0xEE;
        EXPECT_EQ(this->keyboard->getEffectMode(&id), E_OK);
        this->keyboard.written();
        return id;
    }

    /// The copy of a general effect.
    std::string copyOf(std::uint8_t id)
    {
        EffectRecord record = effect("EE");
        EXPECT_EQ(this->keyboard->getGeneralEffect(id, &record), E_OK);
        return textOf(record);
    }
};
TYPED_TEST_SUITE(KeyboardEffects, KeyboardModels, ModelName);

constexpr const char* general = "88 88 88 88";

/// Frames and word of the general effects.
struct Kind {
    std::uint8_t effect, frames;
    const char* word;
};
constexpr Kind kinds[]{{0, 1, general},  {1, 1, "99 99 99 99"}, {2, 2, general},  {3, 2, general},
                       {5, 2, general},  {6, 2, general},       {7, 1, general},  {8, 1, general},
                       {9, 2, general},  {10, 2, general},      {11, 2, general}, {12, 2, general},
                       {13, 1, general}, {14, 1, general},      {15, 2, general}, {16, 1, "AA AA AA AA"},
                       {17, 2, general}};

const Kind& kindOf(std::uint8_t effect)
{
    for (const Kind& kind : kinds)
        if (kind.effect == effect)
            return kind;
    throw std::out_of_range("no such effect");
}

std::string pointer(std::size_t offset)
{
    const std::uint8_t value[]{std::uint8_t(offset / 4), std::uint8_t(offset / 4 >> 8)};
    return hex(value);
}

/// The preview of a record with the background 44 55 66 at 77.
template <class Model>
std::string previewOfRow(const EffectRow& row)
{
    const Kind& kind = kindOf(row.effect);
    if (kind.frames == 1)
        return previewOf(row.effect, 1, kind.word, std::string("01 00 00 00 ") + row.record);
    const std::string mask = pointer(28 + bytes(row.record).size());
    return previewOf(row.effect, 2, kind.word,
                     mask + " " + mask +
                         " 03 00 00 00 07 00 01 00 00 01 00 C1 00 00 00 00 44 55 66 77 00 00 00 00 " +
                         row.record + " " + times(2 * Model::maskBytes, "FF"));
}

TYPED_TEST(KeyboardEffects, areShownByTheirRows)
{
    for (const EffectRow& row : effectRows) {
        const std::string text = "effect " + std::to_string(row.effect) + ", speed " +
                                 std::to_string(row.speed) + ", option " + std::to_string(row.option) +
                                 ", direction " + std::to_string(row.direction);
        const EffectRecord record{row.effect, 0x11,          0x22, 0x33, row.speed, row.option,
                                  0x80,       row.direction, 0x44, 0x55, 0x66,      0x77};
        EXPECT_EQ(this->keyboard->setGeneralEffect(&record), E_OK) << text;
        EXPECT_EQ(this->keyboard.written(), previewOfRow<TypeParam>(row)) << text;
        EXPECT_EQ(this->copyOf(row.effect), textOf(record)) << text;
        EXPECT_EQ(this->keyboard.written(), "") << text;
    }
}

TYPED_TEST(KeyboardEffects, takeEveryTruthAsDirection)
{
    const EffectRecord record = effect("02 11 22 33 03 00 80 40 44 55 66 77");
    EXPECT_EQ(this->keyboard->setGeneralEffect(&record), E_OK);
    EXPECT_EQ(this->keyboard.written(),
              previewOfRow<TypeParam>(
                  {2, 3, 0, 1, "04 80 00 80 0B 10 00 00 11 22 33 80 02 00 02 01 03 00 00 00", nullptr}));
}

TYPED_TEST(KeyboardEffects, thatAreNotGeneralAreRefused)
{
    for (const std::uint8_t id : {4, 18, 19, 20, 21, 22, 255}) {
        EffectRecord record = effect("00 11 22 33");
        record.effectId = id;
        EXPECT_EQ(this->keyboard->setGeneralEffect(&record), -2) << int(id);
        const EffectRecord before = record;
        EXPECT_EQ(this->keyboard->getGeneralEffect(id, &record), -3) << int(id);
        EXPECT_EQ(textOf(record), textOf(before));
    }
    EXPECT_EQ(this->keyboard.written(), "");
}

TYPED_TEST(KeyboardEffects, areKeptOneByOneAndGivenTogether)
{
    std::array<EffectRecord, 18> set{};
    for (const Kind& kind : kinds) {
        EffectRecord& record = set[kind.effect];
        record = effect("00 11 22 33 03 09 80 05 44 55 66 77");
        record.effectId = kind.effect;
        record.red = kind.effect;
        EXPECT_EQ(this->keyboard->setGeneralEffect(&record), E_OK);
    }
    this->keyboard.written();
    struct {
        std::array<EffectRecord, 18> records;
        std::uint8_t behind[12];
    } got;
    std::memset(static_cast<void*>(&got), 0x5A, sizeof got);
    EXPECT_EQ(this->keyboard->getGeneralEffectAll(got.records.data()), E_OK);
    EXPECT_EQ(this->keyboard.written(), "");
    for (const Kind& kind : kinds)
        EXPECT_EQ(textOf(got.records[kind.effect]), textOf(set[kind.effect])) << int(kind.effect);
    EXPECT_EQ(textOf(got.records[4]), times(12, "00"));
    for (const std::uint8_t byte : got.behind)
        EXPECT_EQ(byte, 0x5A);
}

TYPED_TEST(KeyboardEffects, becomeTheCurrentOne)
{
    this->keyboard.device->answer("52 28", "52 28 00 00 FF"); // a preview is shown
    EXPECT_EQ(this->mode(), 0);
    const EffectRecord record = effect("09 11 22 33");
    EXPECT_EQ(this->keyboard->setGeneralEffect(&record), E_OK);
    EXPECT_EQ(this->mode(), 9);
    EffectRecord custom = effect("09 11 22 33");
    const std::array<std::uint8_t, 504> matrix{};
    EXPECT_EQ(this->keyboard->setCustomEffect(&custom, matrix.data()), E_OK);
    EXPECT_EQ(this->mode(), 4);
    const std::array<EffectRecord, 4> four{};
    EXPECT_EQ(this->keyboard->setMultilayerEffect(four.data()), E_OK);
    EXPECT_EQ(this->mode(), 18);
    const std::array<std::uint8_t, 768> zones{};
    EXPECT_EQ(this->keyboard->setMultizoneEffect(four.data(), zones.data()), E_OK);
    EXPECT_EQ(this->mode(), 19);
}

TYPED_TEST(KeyboardEffects, areChosen)
{
    for (const std::uint8_t id : {0, 3, 19, 21, 255}) {
        EXPECT_EQ(this->keyboard->setEffectMode(id), E_OK);
        EXPECT_EQ(this->keyboard.written(), wire("41 80 | 51 28 00 00 " + hex(std::span(&id, 1))));
    }
    this->keyboard.device->answer("52 28", "52 28 00 00 FF");
    EXPECT_EQ(this->mode(), 21); // 255 is not kept
    this->keyboard.device->answer("52 28", "52 28 77 88 0B 99");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(this->keyboard->getEffectMode(&id), E_OK);
    EXPECT_EQ(id, 11);
    EXPECT_EQ(this->keyboard.written(), wire("41 80 | 52 28"));
    this->keyboard.device->answer("52 28", "52 28 00 00 FF");
    EXPECT_EQ(this->mode(), 21); // what is read is not kept either
}

TYPED_TEST(KeyboardEffects, areCurrentFromTheStartAsTheDeviceTells)
{
    KeyboardOf<TypeParam> other([](ScriptedDevice& device) { device.answer("52 28", "52 28 00 00 0C"); });
    other.device->answer("52 28", "52 28 00 00 FF");
    std::uint8_t id = 0xEE;
    EXPECT_EQ(other->getEffectMode(&id), E_OK);
    EXPECT_EQ(id, 12);
    EXPECT_EQ(other->changeProfileId(2), E_OK);
    other.device->answer("52 28", "52 28 00 00 0D"); // read with the copy
    EffectRecord record{};
    EXPECT_EQ(other->getGeneralEffect(0, &record), E_OK);
    other.device->answer("52 28", "52 28 00 00 FF");
    EXPECT_EQ(other->getEffectMode(&id), E_OK);
    EXPECT_EQ(id, 13);
    EXPECT_EQ(other->changeProfileId(0), E_OK);
    EXPECT_EQ(other->getEffectMode(&id), E_OK);
    EXPECT_EQ(id, 12);
}

TYPED_TEST(KeyboardEffects, ofOneColorForEachLedAreShown)
{
    std::array<std::uint8_t, 504> matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = std::uint8_t(i * 5 + 1);
    EffectRecord record = effect("09 11 22 33 05 06 80 08 44 55 66 77");
    EXPECT_EQ(this->keyboard->setCustomEffect(&record, matrix.data()), E_OK);
    EXPECT_EQ(record.effectId, 4);
    const std::string written = this->keyboard.written();
    EXPECT_EQ(written,
              previewOf(4, 1, "BB BB BB BB",
                        "01 00 00 00 80 01 00 00 FF 00 00 00 00 00 FF 80 00 00 00 00 " + hex(matrix)));
    EXPECT_EQ(reports(written).size(), 1U + 9U + 2U);

    EffectRecord got = effect("EE");
    std::array<std::uint8_t, 504> gotMatrix{};
    EXPECT_EQ(this->keyboard->getCustomEffect(&got, gotMatrix.data()), E_OK);
    EXPECT_EQ(textOf(got), "04 11 22 33 05 06 80 08 44 55 66 77");
    EXPECT_EQ(gotMatrix, matrix);
    EXPECT_EQ(this->keyboard.written(), "");
}

using Four = std::array<EffectRecord, 4>;

/// Effect 0 is the ground, whatever its layer; the header of a preview has no extra word.
TYPED_TEST(KeyboardEffects, ofFourLayersAreShown)
{
    const Four layers{effect("02 12 22 32 03 00 A2 00 42 52 62 72"), effect("00 10 20 30 02 00 A0 00"),
                      effect("10 11 21 31"), effect("0D 1D 2D 3D 04 04 AD 00")};
    EXPECT_EQ(this->keyboard->setMultilayerEffect(layers.data()), E_OK);
    EXPECT_EQ(this->keyboard.written(),
              previewOf(18, 5, "AA AA AA AA",
                        "19 00 19 00 06 00 00 00 0A 00 01 00 0F 00 02 00 11 00 03 00 13 00 04 00 "
                        "00 01 00 C1 00 00 00 00 10 20 30 A0 00 00 00 00 "
                        "00 80 00 80 0B 10 00 00 12 22 32 A2 00 00 02 01 03 00 00 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "00 34 00 C1 04 00 00 00 00 00 FF AD 00 00 FC 00 00 C0 00 04 A0 00 30 00 " +
                            times(5 * TypeParam::maskBytes, "FF")));
    Four got{};
    EXPECT_EQ(this->keyboard->getMultilayerEffect(got.data()), E_OK);
    EXPECT_EQ(std::memcmp(got.data(), layers.data(), sizeof got), 0);
    EXPECT_EQ(this->keyboard.written(), "");
}

/// The last of several grounds counts.
TYPED_TEST(KeyboardEffects, ofSeveralGroundsHaveTheLast)
{
    const Four layers{effect("00 01 01 01 00 00 01"), effect("00 02 02 02 00 00 02"), effect("10"),
                      effect("10")};
    EXPECT_EQ(this->keyboard->setMultilayerEffect(layers.data()), E_OK);
    EXPECT_EQ(this->keyboard.written(),
              previewOf(18, 5, "AA AA AA AA",
                        "12 00 12 00 06 00 00 00 0A 00 01 00 0C 00 02 00 0E 00 03 00 10 00 04 00 "
                        "00 01 00 C1 00 00 00 00 02 02 02 02 00 00 00 00 " +
                            times(4, "10 00 00 C1 00 00 00 00") + " " +
                            times(5 * TypeParam::maskBytes, "FF")));
}

/// A size that divides by 60 is followed by an empty page.
TEST(KeyboardPages, areOneMoreThanAreWhole)
{
    KeyboardOf<QW210Model> keyboard;
    const Four layers{effect("02"), effect("03"), effect("05"), effect("06")};
    EXPECT_EQ(keyboard->setMultilayerEffect(layers.data()), E_OK);
    const std::vector<std::string> pieces = reports(keyboard.written());
    ASSERT_EQ(pieces.size(), 1U + 5U + 2U); // 24 + 8 + 20 + 20 + 24 + 24 + 120 = 240 bytes
    EXPECT_EQ(pieces[4].substr(0, 8), "56 83 03");
    EXPECT_EQ(pieces[4].substr(pieces[4].size() - 5), "FF FF");
    EXPECT_EQ(pieces[5], "56 83 04");
}

TYPED_TEST(KeyboardEffects, ofFourZonesAreShownUnderTheirMasks)
{
    const Four zones{effect("00 10 20 30 02 00 A0 00 40 50 60 70"),
                     effect("05 15 25 35 01 00 A5 01 45 55 65 75"), effect("10 11 21 31"),
                     effect("09 19 29 39 05 00 A9 01 49 59 69 79")};
    const std::size_t leds = TypeParam::zoneBytes;
    ByteVector matrix(4 * leds, 0xFE); // bit 0 counts
    for (std::size_t led = 0; led < leds; ++led)
        matrix[(led % 4) * leds + led] = led % 8 < 4 ? 0x01 : 0xFF;
    EXPECT_EQ(this->keyboard->setMultizoneEffect(zones.data(), matrix.data()), E_OK);
    const std::size_t mask = TypeParam::maskBytes;
    std::string masks;
    for (const char* byte : {"11", "22", "44", "88"})
        masks += " " + times(2 * mask, byte);
    EXPECT_EQ(this->keyboard.written(),
              previewOf(19, 8, "88 08 88 88",
                        "26 00 26 00 09 00 00 00 0B 00 01 00 0F 00 02 00 13 00 03 00 19 00 04 00 1B 00 05 00 "
                        "1D 00 06 00 21 00 07 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "00 01 00 C1 00 00 00 00 10 20 30 A0 00 00 00 00 "
                        "00 01 00 C1 00 00 00 00 45 55 65 75 00 00 00 00 "
                        "08 40 00 80 17 10 00 00 15 25 35 A5 02 00 01 00 01 10 08 01 10 00 00 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "10 00 00 C1 00 00 00 00 "
                        "00 01 00 C1 00 00 00 00 49 59 69 79 00 00 00 00 "
                        "01 82 00 80 02 10 00 00 19 29 39 A9 02 00 01 00 00 01 00 00" +
                            masks));
    Four got{};
    ByteVector gotMatrix(4 * leds + 8, 0x5A);
    EXPECT_EQ(this->keyboard->getMultizoneEffect(got.data(), gotMatrix.data()), E_OK);
    EXPECT_EQ(std::memcmp(got.data(), zones.data(), sizeof got), 0);
    matrix.insert(matrix.end(), 8, 0x5A);
    EXPECT_EQ(gotMatrix, matrix);
    EXPECT_EQ(this->keyboard.written(), "");
}

TYPED_TEST(KeyboardEffects, ofOtherNumbersOfFramesAreNoLayersAndNoZones)
{
    const ByteVector matrix(768);
    for (const std::uint8_t id : {18, 19, 21, 255})
        for (std::size_t place = 0; place < 4; ++place) {
            Four four{effect("02"), effect("02"), effect("02"), effect("02")};
            four[place].effectId = id;
            EXPECT_EQ(this->keyboard->setMultilayerEffect(four.data()), -2) << int(id);
            EXPECT_EQ(this->keyboard->setMultizoneEffect(four.data(), matrix.data()), -2) << int(id);
        }
    EXPECT_EQ(this->keyboard.written(), "");
    Four got{};
    EXPECT_EQ(this->keyboard->getMultilayerEffect(got.data()), E_OK);
    for (const EffectRecord& layer : got) // as the rule for a missing rain effect left them
        EXPECT_EQ(textOf(layer), "10 FF FF FF 03 00 FF 00 00 00 00 FF");
}

/// The custom effect has one frame, so it may be a layer or a zone, with the colors that are kept.
TYPED_TEST(KeyboardEffects, ofOneColorForEachLedMayBeALayer)
{
    std::array<std::uint8_t, 504> matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = std::uint8_t(i * 3 + 7);
    EffectRecord custom = effect("04 00 00 00 00 00 80");
    EXPECT_EQ(this->keyboard->setCustomEffect(&custom, matrix.data()), E_OK);
    this->keyboard.written();
    const Four layers{effect("10"), effect("10"), effect("10"), effect("04 00 00 00 00 00 81")};
    EXPECT_EQ(this->keyboard->setMultilayerEffect(layers.data()), E_OK);
    EXPECT_EQ(this->keyboard.written(),
              previewOf(18, 5, "AA AA AA AA",
                        "90 00 90 00 06 00 00 00 08 00 01 00 0A 00 02 00 0C 00 03 00 0E 00 04 00 " +
                            times(4, "10 00 00 C1 00 00 00 00") +
                            " 80 01 00 00 FF 00 00 00 00 00 FF 81 00 00 00 00 " + hex(matrix) + " " +
                            times(5 * TypeParam::maskBytes, "FF")));
}

/// What a recording has disturbed is shown again.
TYPED_TEST(KeyboardEffects, areShownAgainBehindARecording)
{
    const auto again = [&](const std::string& preview) {
        EXPECT_EQ(this->keyboard->startRecordMacro(), E_OK);
        EXPECT_EQ(this->keyboard.written(), "41 01");
        EXPECT_EQ(this->keyboard->stopRecordMacro(), E_OK);
        EXPECT_EQ(this->keyboard.written(), wire("41 80 | " + preview));
    };
    const EffectRecord record = effect("05 15 25 35 01 00 A5 01 45 55 65 75");
    EXPECT_EQ(this->keyboard->setGeneralEffect(&record), E_OK);
    again(this->keyboard.written());
    EffectRecord custom = effect("04 00 00 00 00 00 80");
    const std::array<std::uint8_t, 504> matrix{1, 2, 3};
    EXPECT_EQ(this->keyboard->setCustomEffect(&custom, matrix.data()), E_OK);
    again(this->keyboard.written());
    const Four layers{effect("02 01"), effect("00 02"), effect("10"), effect("05 03")};
    EXPECT_EQ(this->keyboard->setMultilayerEffect(layers.data()), E_OK);
    again(this->keyboard.written());
    const ByteVector zones(768, 1);
    EXPECT_EQ(this->keyboard->setMultizoneEffect(layers.data(), zones.data()), E_OK);
    again(this->keyboard.written());
    EXPECT_EQ(this->keyboard->setEffectMode(20), E_OK);
    this->keyboard.written();
    EXPECT_EQ(this->keyboard->stopRecordMacro(), -2); // it has no preview
    EXPECT_EQ(this->keyboard.written(), "41 80");
}

/// A recording does not look for another copy.
TYPED_TEST(KeyboardEffects, areNotReadAnewBehindARecording)
{
    EXPECT_EQ(this->keyboard->changeProfileId(0), E_OK);
    this->keyboard.written();
    EXPECT_EQ(this->keyboard->stopRecordMacro(), E_OK);
    EXPECT_EQ(reports(this->keyboard.written()).front(), "41 80");
    EXPECT_EQ(this->copyOf(0), times(12, "00"));
    EXPECT_EQ(this->keyboard.written(), reloading());
}

/// Each operation reads a copy that has become stale, before anything else.
TYPED_TEST(KeyboardEffects, areReadAnewByEachOperation)
{
    static EffectRecord records[18];
    static std::uint8_t matrix[768];
    std::uint8_t id = 0;
    auto& host = *this->keyboard.host;
    const std::vector<std::function<_error()>> calls{
        [&] { return host.setEffectMode(0); },
        [&] { return host.getEffectMode(&id); },
        [&] { return host.setGeneralEffect(records); },
        [&] { return host.getGeneralEffect(0, records); },
        [&] { return host.getGeneralEffectAll(records); },
        [&] { return host.setCustomEffect(records, matrix); },
        [&] { return host.getCustomEffect(records, matrix); },
        [&] { return host.setMultilayerEffect(records); },
        [&] { return host.getMultilayerEffect(records); },
        [&] { return host.setMultizoneEffect(records, matrix); },
        [&] { return host.getMultizoneEffect(records, matrix); },
        [&] { return host.saveConfig(); },
    };
    for (std::size_t i = 0; i < calls.size(); ++i) {
        std::ranges::fill(records, EffectRecord{});
        EXPECT_EQ(host.changeProfileId(0), E_OK);
        this->keyboard.written();
        EXPECT_EQ(calls[i](), E_OK) << i;
        EXPECT_TRUE(this->keyboard.written().starts_with(reloading())) << i;
        std::ranges::fill(records, EffectRecord{});
        EXPECT_EQ(calls[i](), E_OK) << i;
        EXPECT_EQ(this->keyboard.written().find("56 14"), std::string::npos) << i;
    }
}

} // namespace
} // namespace pyrux::test
