#pragma once

#include "pyrux/keyboard_records.h"
#include "pyrux/pyrux.h"
#include "tests/support/keyboard_images.h"
#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The keyboards QW210 and QW220, for tests that hold for both.

namespace pyrux::test {

struct QW210Model : ModelOf<&qw210> {
    static constexpr NamedModel own{"qw210", "QW210", 0x0147, 36, "QW205V2"};
    static constexpr int directLeds = 139;
    static constexpr std::size_t zoneBytes = 192;
    static constexpr std::size_t maskBytes = 24;
    static constexpr const EffectImage& factoryImage = factoryImage210;
    static constexpr const EffectImage& bareImage = bareImage210;
    static constexpr const EffectImage& changedImage = changedImage210;
};

struct QW220Model : ModelOf<&qw220> {
    static constexpr NamedModel own{"qw220", "QW220", 0x0145, 36, "QW225V2"};
    static constexpr int directLeds = 137;
    static constexpr std::size_t zoneBytes = 160;
    static constexpr std::size_t maskBytes = 20;
    static constexpr const EffectImage& factoryImage = factoryImage220;
    static constexpr const EffectImage& bareImage = bareImage220;
    static constexpr const EffectImage& changedImage = changedImage220;
};

using KeyboardModels = testing::Types<QW210Model, QW220Model>;

/// A scripted keyboard that is open, its start behind it. It echoes, so that its effect memory reads as
/// zeros.
template <class Model>
class KeyboardOf : public Opened<Model> {
public:
    using Opened<Model>::Opened;

    /// When a reply has come, everything that was sent before it has been looked at.
    void settle() { EXPECT_EQ(this->host->startRecordMacro(), E_OK); }
};

/// A test of a keyboard of each model.
template <class Model>
class KeyboardTest : public testing::Test {
protected:
    KeyboardOf<Model> keyboard;
};

/// A command for each number from 0 on: "56 14 00 | 56 14 01".
std::string eachOf(const char* command, std::size_t count);

/// What every read of a copy that has become stale sends.
std::string reloading();

/// The reports of a preview: 56 81, the pages of the image, one more than are whole, and the selection.
std::string previewOf(std::uint8_t effect, std::uint8_t frames, const char* word, const std::string& image);

/// A record from "effect red green blue speed option brightness direction back red, green, blue, back
/// brightness".
EffectRecord effect(std::string_view bytesText);

/// The bytes of a record as such a text.
std::string textOf(const EffectRecord& record);

} // namespace pyrux::test
