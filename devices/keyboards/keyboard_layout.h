#pragma once

#include "core/models.h"
#include "devices/keyboards/effect_records.h"
#include "devices/keyboards/status_chart.h"
#include "pyrux/keyboard_records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace pyrux {

/// One effect in the device's memory.
struct EffectRow {
    std::uint8_t frames;     ///< Device records that it needs.
    std::uint8_t extraWords; ///< Words at the head of its header.
    std::uint32_t word;      ///< Part of its descriptor, the device's own.
};

inline constexpr std::size_t effectCount = 21;
inline constexpr std::size_t layerCount = 4; ///< Of the multilayer effect.
inline constexpr std::size_t zoneCount = 4;  ///< Of the multizone effect.

/// The effects of the keyboards with a status effect, by number.
// clang-format off
inline constexpr std::array<EffectRow, effectCount> statusKeyboardEffects{{
    {1, 0, 0x88888888}, // 0
    {1, 0, 0x99999999}, // 1
    {2, 0, 0x88888888}, // 2
    {2, 0, 0x88888888}, // 3
    {1, 0, 0xBBBBBBBB}, // 4, custom
    {2, 0, 0x88888888}, // 5
    {2, 0, 0x88888888}, // 6
    {1, 0, 0x88888888}, // 7
    {1, 0, 0x88888888}, // 8
    {2, 0, 0x88888888}, // 9
    {2, 0, 0x88888888}, // 10
    {2, 0, 0x88888888}, // 11
    {2, 0, 0x88888888}, // 12
    {1, 0, 0x88888888}, // 13
    {1, 0, 0x88888888}, // 14
    {2, 0, 0x88888888}, // 15
    {1, 0, 0xAAAAAAAA}, // 16, the empty frame
    {2, 0, 0x88888888}, // 17, rain
    {5, 1, 0xAAAAAAAA}, // 18, multilayer
    {8, 0, 0x88880888}, // 19, multizone
    {1, 0, 0xAAAAAAAA}, // 20, system status
}};
// clang-format on

/// A keyboard's effect memory.
struct EffectLayout {
    std::span<const EffectRow, effectCount> rows = statusKeyboardEffects;
    std::span<const RecordForm> forms = statusKeyboardForms; ///< The device records of these effects.
    std::uint8_t custom = EFFECT_CUSTOM;
    std::uint8_t empty = EFFECT_EMPTY;
    std::uint8_t rain = EFFECT_RAIN;
    std::uint8_t multilayer = EFFECT_MULTILAYER;
    std::uint8_t multizone = EFFECT_MULTIZONE;
    std::optional<std::uint8_t> systemStatus = EFFECT_SYSTEM_STATUS;
    std::size_t leds = 168;      ///< Of the custom effect.
    std::size_t maskBytes = 24;  ///< Of a mask, one bit per LED.
    std::size_t zoneBytes = 192; ///< Of a zone in the host's matrix, one byte per LED.
    std::size_t pages = 33;      ///< Of the image.

    constexpr std::size_t matrixBytes() const { return leds * 3; }

    /// Device records of an effect; 0 for a number that is no effect.
    constexpr std::uint8_t framesOf(std::uint8_t effect) const
    {
        return effect < rows.size() ? rows[effect].frames : std::uint8_t{0};
    }

    /// Whether an effect can be a layer or a zone.
    constexpr bool isSimple(std::uint8_t effect) const
    {
        return framesOf(effect) == 1 || framesOf(effect) == 2;
    }

    /// Whether an effect is one that `setGeneralEffect` sets.
    constexpr bool isGeneral(std::uint8_t effect) const
    {
        return isSimple(effect) && effect != custom && effect != systemStatus;
    }
};

/// A keyboard's lights under a host's control.
struct DirectLightRow {
    std::uint8_t leds = 139;                  ///< Of a frame key by key.
    std::optional<std::uint8_t> skippedLed{}; ///< One of these that is never sent.
    std::int32_t frameGapMs = 1;              ///< Pause between frames of a fast host, in ms.
};

/// What a keyboard tells of its keys.
struct KeyReportRow {
    std::span<const std::uint16_t> usages; ///< By matrix number; 0 after its end.
    std::uint8_t fnKey = 60;               ///< Matrix number of the Fn key.
    bool fnRaisesItself = false;           ///< While Fn is held its own value is raised too.
};

/// What a status effect type beyond those that there are does.
enum class OtherStatusTypes {
    refused,   ///< Before anything is sent.
    endEffect, ///< The keyboard or the service is told, then the current effect becomes 255.
};

/// The status effect of a keyboard that has one among its effects.
struct StatusRow {
    std::string_view serviceName; ///< The model in commands to the resident service.
    OtherStatusTypes otherTypes = OtherStatusTypes::refused;
    bool customEnds = false; ///< `setEffectMode` with the custom effect ends it.
    StatusChart chart{};
};

/// What tells one keyboard of the family from another. A row that is missing is a part that it lacks.
struct KeyboardLayout {
    const ModelRow& model;
    std::uint8_t partialResets = 3; ///< Parts that `resetPartial` knows.
    EffectLayout effects{};
    std::optional<DirectLightRow> lights{};
    std::optional<KeyReportRow> keys{};
    StatusRow status{};
};

} // namespace pyrux
