// The keyboards against their firmware models: what is set reads back, also by an object made anew, and the
// device shows it.

#include "simulator/models/keyboard.h"
#include "tests/support/keyboard.h"
#include "tests/support/notifications.h"
#include "tests/support/simulated_device.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <thread>

namespace pyrux::test {
namespace {

using sim::Light;

template <class Model>
class SimulatedKeyboard : public Simulated<sim::KeyboardFirmware, Model> {
protected:
    Light light(int led) const { return this->device->lights().at(std::size_t(led)); }

    std::uint8_t mode()
    {
        std::uint8_t id = 0xEE;
        EXPECT_EQ(this->host->getEffectMode(&id), E_OK);
        return id;
    }
};
TYPED_TEST_SUITE(SimulatedKeyboard, KeyboardModels, ModelName);

TYPED_TEST(SimulatedKeyboard, isAskedForItsReportsOnce)
{
    EXPECT_EQ(this->device->acknowledgements(), 1);
    EXPECT_EQ(this->device->state(), sim::KeyboardFirmware::State::configuration);
    EXPECT_EQ(this->mode(), 0);
}

TYPED_TEST(SimulatedKeyboard, keepsACustomEffect)
{
    std::array<std::uint8_t, 504> matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix[i] = std::uint8_t(255 - i % 200);
    EffectRecord custom = effect("04 00 00 00 00 00 FF");
    ASSERT_EQ(this->host->setCustomEffect(&custom, matrix.data()), E_OK);
    EXPECT_TRUE(this->device->previewing());
    for (int led = 0; led < 168; ++led)
        EXPECT_EQ(this->light(led),
                  (Light{std::uint8_t(255 - 3 * led % 200), std::uint8_t(255 - (3 * led + 1) % 200),
                         std::uint8_t(255 - (3 * led + 2) % 200)}))
            << led;
    ASSERT_EQ(this->host->saveConfig(), E_OK);
    EXPECT_EQ(this->device->saves(), 1);
    EXPECT_FALSE(this->device->previewing());

    this->powerCycle();
    EXPECT_EQ(this->mode(), 4);
    EffectRecord got = effect("EE");
    std::array<std::uint8_t, 504> gotMatrix{};
    ASSERT_EQ(this->host->getCustomEffect(&got, gotMatrix.data()), E_OK);
    EXPECT_EQ(textOf(got), "04 00 00 00 00 00 FF 00 00 00 00 00");
    EXPECT_EQ(gotMatrix, matrix);
    EXPECT_EQ(this->light(1), (Light{252, 251, 250}));
}

TYPED_TEST(SimulatedKeyboard, forgetsWhatWasNotSaved)
{
    std::array<std::uint8_t, 504> matrix{};
    matrix.fill(0x77);
    EffectRecord custom = effect("04 00 00 00 00 00 FF");
    ASSERT_EQ(this->host->setCustomEffect(&custom, matrix.data()), E_OK);
    EXPECT_EQ(this->light(9), (Light{0x77, 0x77, 0x77}));
    this->powerCycle();
    EXPECT_EQ(this->mode(), 0);
    EXPECT_EQ(this->light(9), (Light{255, 255, 255}));
    ASSERT_EQ(this->host->getCustomEffect(&custom, matrix.data()), E_OK);
    EXPECT_EQ(matrix, (std::array<std::uint8_t, 504>{}));
}

TYPED_TEST(SimulatedKeyboard, keepsTheBackgroundOfAnEffect)
{
    const EffectRecord set = effect("05 15 25 35 02 00 A5 01 45 55 65 75");
    ASSERT_EQ(this->host->setGeneralEffect(&set), E_OK);
    EXPECT_EQ(this->light(0), (Light{0x15 * 0xA5 / 255, 0x25 * 0xA5 / 255, 0x35 * 0xA5 / 255}));
    ASSERT_EQ(this->host->saveConfig(), E_OK);
    this->powerCycle();
    EXPECT_EQ(this->mode(), 5);
    EffectRecord got{};
    ASSERT_EQ(this->host->getGeneralEffect(5, &got), E_OK);
    EXPECT_EQ(textOf(got), textOf(set));
}

TYPED_TEST(SimulatedKeyboard, takesAnySpeedAsTheFifth)
{
    for (const std::uint8_t speed : {0, 9}) {
        EffectRecord record = effect("02 11 22 33 00 00 80 01 44 55 66 77");
        record.speed = speed;
        ASSERT_EQ(this->host->setGeneralEffect(&record), E_OK);
        ASSERT_EQ(this->host->saveConfig(), E_OK);
        this->powerCycle();
        ASSERT_EQ(this->host->getGeneralEffect(2, &record), E_OK);
        EXPECT_EQ(textOf(record), "02 11 22 33 05 00 80 01 44 55 66 77");
    }
}

TYPED_TEST(SimulatedKeyboard, keepsLayersAndZones)
{
    const std::array<EffectRecord, 4> layers{
        effect("10 FF FF FF 03 00 FF 00 00 00 00 FF"), effect("00 10 20 30 00 00 FF 00 00 00 00 00"),
        effect("10 FF FF FF 03 00 FF 00 00 00 00 FF"), effect("10 FF FF FF 03 00 FF 00 00 00 00 FF")};
    ASSERT_EQ(this->host->setMultilayerEffect(layers.data()), E_OK);
    EXPECT_EQ(this->light(0), (Light{0x10, 0x20, 0x30}));
    EXPECT_EQ(this->light(159), (Light{0x10, 0x20, 0x30}));
    const std::array<EffectRecord, 4> zones{
        effect("00 11 00 00 00 00 FF 00 00 00 00 00"), effect("00 00 22 00 00 00 FF 00 00 00 00 00"),
        effect("10 FF FF FF 03 00 FF 00 00 00 00 FF"), effect("05 15 25 35 01 00 A5 01 45 55 65 75")};
    ByteVector matrix(4 * TypeParam::zoneBytes);
    for (std::size_t led = 0; led < TypeParam::zoneBytes; ++led)
        matrix[led / 8 % 4 * TypeParam::zoneBytes + led] = 1;
    ASSERT_EQ(this->host->setMultizoneEffect(zones.data(), matrix.data()), E_OK);
    const auto check = [&] {
        EXPECT_EQ(this->light(0), (Light{0x11, 0, 0}));
        EXPECT_EQ(this->light(7), (Light{0x11, 0, 0}));
        EXPECT_EQ(this->light(8), (Light{0, 0x22, 0}));
        EXPECT_EQ(this->light(16), (Light{0, 0, 0}));
        EXPECT_EQ(this->light(32), (Light{0x11, 0, 0}));
    };
    check();
    ASSERT_EQ(this->host->saveConfig(), E_OK);
    check();
    this->powerCycle();
    EXPECT_EQ(this->mode(), 19);
    check();
    std::array<EffectRecord, 4> got{};
    ASSERT_EQ(this->host->getMultilayerEffect(got.data()), E_OK);
    EXPECT_EQ(std::memcmp(got.data(), layers.data(), sizeof got), 0);
    ByteVector gotMatrix(matrix.size());
    ASSERT_EQ(this->host->getMultizoneEffect(got.data(), gotMatrix.data()), E_OK);
    EXPECT_EQ(std::memcmp(got.data(), zones.data(), sizeof got), 0);
    EXPECT_EQ(gotMatrix, matrix);
}

TYPED_TEST(SimulatedKeyboard, hasEffectsForEachProfile)
{
    const EffectRecord first = effect("08 11 22 33 03 00 80 00 00 00 00 00");
    ASSERT_EQ(this->host->setGeneralEffect(&first), E_OK);
    ASSERT_EQ(this->host->saveConfig(), E_OK);
    ASSERT_EQ(this->host->changeProfileId(1), E_OK);
    EXPECT_EQ(this->mode(), 0);
    EffectRecord got{};
    ASSERT_EQ(this->host->getGeneralEffect(8, &got), E_OK);
    EXPECT_EQ(textOf(got), "08 FF FF FF 03 00 FF 00 00 00 00 00");

    Notifications::clear();
    ASSERT_EQ(this->host->registerNotify(Notifications::callback), E_OK);
    EXPECT_TRUE(this->device->happen("profile", {0}));
    EXPECT_EQ(Notifications::await(1), "0:0");
    std::uint8_t profile = 0xEE;
    ASSERT_EQ(this->host->getCurrProfileId(&profile), E_OK);
    EXPECT_EQ(profile, 0);
    ASSERT_EQ(this->host->getGeneralEffect(8, &got), E_OK);
    EXPECT_EQ(textOf(got), textOf(first));
    EXPECT_EQ(this->mode(), 8);
    EXPECT_TRUE(this->device->happen("effect", {3}));
    EXPECT_EQ(Notifications::await(2), "0:0 1:0");
    EXPECT_EQ(this->mode(), 3);
    EXPECT_EQ(this->device->acknowledgements(), 3);
    ASSERT_EQ(this->host->unRegisterNotify(), E_OK);
}

TYPED_TEST(SimulatedKeyboard, reportsItsKeysWithFn)
{
    Notifications::clear();
    ASSERT_EQ(this->host->registerNotify(Notifications::callback), E_OK);
    for (const std::vector<int>& key : {std::vector{60, 1}, {5, 1}, {5, 0}, {60, 0}, {5, 1}, {5, 0}})
        EXPECT_TRUE(this->device->happen("key", key));
    EXPECT_EQ(Notifications::await(6), "2:16384 2:16388 3:16388 3:16384 2:4 3:4");
    ASSERT_EQ(this->host->unRegisterNotify(), E_OK);
}

TYPED_TEST(SimulatedKeyboard, keepsItsKeys)
{
    KeyMapTable set{};
    for (int i = 0; i < 256; ++i)
        set.values[i] = std::uint16_t(0x0300 + i);
    ASSERT_EQ(this->host->setKeyMappingAll(&set), E_OK);
    const KeyMapEntry entry{0x42, {0, 0x34, 0x12}};
    ASSERT_EQ(this->host->setKeyMapping(1, &entry), E_OK);
    set.values[0x42] = 0x1234;
    this->powerCycle();
    KeyMapTable got{};
    ASSERT_EQ(this->host->getKeyMappingAll(&got), E_OK);
    EXPECT_EQ(std::memcmp(&got, &set, sizeof got), 0);
    ASSERT_EQ(this->host->resetPartial(1), E_OK);
    ASSERT_EQ(this->host->getKeyMappingAll(&got), E_OK);
    EXPECT_EQ(got.values[0x42], 0x00FF);
}

TYPED_TEST(SimulatedKeyboard, keepsMacros)
{
    const auto set = std::make_unique<MacroRecord>();
    const auto got = std::make_unique<MacroRecord>();
    for (const int count : {0, 14, 15, 198}) {
        std::memset(static_cast<void*>(set.get()), 0, sizeof *set);
        set->index = std::uint8_t(count % 20);
        set->boundKey = std::uint16_t(0x0100 + count);
        std::memcpy(set->name, "name of a macro", 16);
        set->triggerMode = std::uint8_t(count % 3);
        set->eventCount = std::uint8_t(count);
        for (int i = 0; i < count; ++i)
            set->events[i] = {std::uint16_t(i % 0x400), std::uint8_t(i % 2), std::uint16_t(i * 165)};
        if (count == 15)
            set->events[3] = {0x0500, 2, 9};
        ASSERT_EQ(this->host->setMacro(set.get()), E_OK);
        std::memset(static_cast<void*>(got.get()), 0, sizeof *got);
        got->index = set->index;
        ASSERT_EQ(this->host->getMacro(got.get()), E_OK);
        EXPECT_EQ(+got->eventCount, count);
        EXPECT_EQ(std::memcmp(got.get(), set.get(), 21 + 5 * std::size_t(count)), 0) << count;
    }
    const auto list = std::make_unique<MacroList>();
    ASSERT_EQ(this->host->getMacroAll(list.get()), E_OK);
    ASSERT_EQ(list->count, 4U);
    EXPECT_EQ(+list->macros[0].index, 0);
    EXPECT_EQ(+list->macros[3].index, 18);
    EXPECT_EQ(std::memcmp(&list->macros[3], set.get(), 21 + 5 * 198), 0);
    ASSERT_EQ(this->host->clearMacro(14), E_OK);
    got->index = 14;
    ASSERT_EQ(this->host->getMacro(got.get()), E_OK);
    EXPECT_EQ(+got->triggerMode, 3);
    ASSERT_EQ(this->host->clearMacro(255), E_OK);
    ASSERT_EQ(this->host->getMacroAll(list.get()), E_OK);
    EXPECT_EQ(list->count, 0U);
}

TYPED_TEST(SimulatedKeyboard, losesHalfOfALongDelay)
{
    const auto record = std::make_unique<MacroRecord>();
    std::memset(static_cast<void*>(record.get()), 0, sizeof *record);
    record->index = 5;
    record->eventCount = 2;
    record->events[0] = {0x0004, 0, 0x8000};
    record->events[1] = {0x0501, 0, 0x8001};
    ASSERT_EQ(this->host->setMacro(record.get()), E_OK);
    ASSERT_EQ(this->host->getMacro(record.get()), E_OK);
    EXPECT_EQ(+record->events[0].delay, 0);
    EXPECT_EQ(+record->events[1].code, 0x0501);
    EXPECT_EQ(+record->events[1].kind, 2);
    EXPECT_EQ(+record->events[1].delay, 1);
}

TYPED_TEST(SimulatedKeyboard, isResetToWhatItCameWith)
{
    const EffectRecord first = effect("08 11 22 33 03 00 80 00 00 00 00 00");
    ASSERT_EQ(this->host->setGeneralEffect(&first), E_OK);
    ASSERT_EQ(this->host->saveConfig(), E_OK);
    ASSERT_EQ(this->host->resetPartial(0), E_OK);
    EffectRecord got{};
    ASSERT_EQ(this->host->getGeneralEffect(8, &got), E_OK);
    EXPECT_EQ(textOf(got), "08 FF FF FF 03 00 FF 00 00 00 00 00");
    this->powerCycle(); // nothing was saved
    ASSERT_EQ(this->host->getGeneralEffect(8, &got), E_OK);
    EXPECT_EQ(textOf(got), textOf(first));
    ASSERT_EQ(this->host->resetProfile(0), E_OK);
    this->powerCycle();
    ASSERT_EQ(this->host->getGeneralEffect(8, &got), E_OK);
    EXPECT_EQ(textOf(got), "08 FF FF FF 03 00 FF 00 00 00 00 00");
    EXPECT_EQ(this->mode(), 0);
}

TYPED_TEST(SimulatedKeyboard, showsItsEffectAgainBehindARecording)
{
    const EffectRecord set = effect("08 11 22 33 03 00 FF 00 00 00 00 00");
    ASSERT_EQ(this->host->setGeneralEffect(&set), E_OK);
    EXPECT_EQ(this->light(0), (Light{0x11, 0x22, 0x33}));
    ASSERT_EQ(this->host->startRecordMacro(), E_OK);
    EXPECT_EQ(this->light(0), (Light{255, 255, 255}));
    ASSERT_EQ(this->host->stopRecordMacro(), E_OK);
    EXPECT_EQ(this->light(0), (Light{0x11, 0x22, 0x33}));
}

TYPED_TEST(SimulatedKeyboard, showsFramesOfTheHost)
{
    ASSERT_EQ(this->host->setLightingInit(), E_OK);
    const auto awaitFrames = [&](int count) {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (this->device->frames() < count && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_GE(this->device->frames(), count);
    };
    awaitFrames(1);
    EXPECT_TRUE(this->device->driven());
    EXPECT_EQ(this->light(5), (Light{0, 0, 0}));
    const std::uint8_t rgb[]{1, 2, 3};
    ASSERT_EQ(this->host->setLightingPortColor(rgb), E_OK);
    awaitFrames(2);
    EXPECT_EQ(this->light(5), (Light{1, 2, 3}));
    ASSERT_EQ(this->host->setSyncLightingData({{5, 9, 8, 7, 0}, {136, 6, 5, 4, 0}}), E_OK);
    awaitFrames(2 + 1 + (TypeParam::directLeds - 2 + 14) / 15); // fifteen of the others to a report
    EXPECT_EQ(this->light(5), (Light{9, 8, 7}));
    EXPECT_EQ(this->light(136), (Light{6, 5, 4}));
    EXPECT_EQ(this->light(6), (Light{0, 0, 0}));
    ASSERT_EQ(this->host->setLightingUninit(), E_OK);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (this->device->driven() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(this->light(6), (Light{255, 255, 255}));
}

TYPED_TEST(SimulatedKeyboard, isLeftOff)
{
    const auto type = this->device;
    EXPECT_EQ(this->host->exit_device(0), E_OK);
    EXPECT_EQ(type->state(), sim::KeyboardFirmware::State::off);
    EXPECT_EQ(this->host->changeProfileId(1), E_CLOSED);
}

} // namespace
} // namespace pyrux::test
