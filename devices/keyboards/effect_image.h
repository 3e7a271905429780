#pragma once

#include "devices/keyboards/keyboard_layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pyrux {

/// The effects of a keyboard, as hosts see them.
struct EffectCache {
    explicit EffectCache(const EffectLayout& layout)
        : customMatrix(layout.matrixBytes()), zoneMatrix(zoneCount * layout.zoneBytes)
    {
    }

    std::array<EffectRecord, effectCount> slots{}; ///< By effect number.
    std::array<EffectRecord, layerCount> multilayer{};
    std::array<EffectRecord, zoneCount> multizone{};
    std::vector<std::uint8_t> customMatrix; ///< Red, green and blue of each LED.
    std::vector<std::uint8_t> zoneMatrix;   ///< For each zone one byte per LED.
};

/// What one effect is made of.
struct EffectData {
    std::span<const EffectRecord> records; ///< One; the layers; the zones.
    std::span<const std::uint8_t> customMatrix;
    std::span<const std::uint8_t> zoneMatrix;
};

/// An effect out of a cache; no records for a number that is no effect.
EffectData cachedEffect(const EffectLayout& layout, const EffectCache& cache, std::uint8_t effect);

/// How the device finds an effect in its memory.
struct Descriptor {
    std::uint8_t frames = 0;
    std::uint8_t extraWords = 0;
    std::uint16_t header = 0; ///< Offset in words.
};
using Descriptors = std::array<Descriptor, effectCount>;

// The device's memory, addressed in words of 4 bytes. An effect has a record per frame; a block of masks, one
// bit per LED, when it has more than one frame; and a header: its extra words, the place of the masks, the
// places of the records.

/// The image of an effect alone, as the preview takes it: header, records, masks.
/// @return no value: an effect, or a layer or zone of it, that has no preview
std::optional<std::vector<std::uint8_t>> previewImage(const EffectLayout& layout, std::uint8_t effect,
                                                      const EffectData& data);

struct EffectImage {
    Descriptors descriptors;
    std::vector<std::uint8_t> memory;
};

/// The image of all effects: records, masks and header of one after those of the other.
/// @return no value: an effect in the cache has no record
std::optional<EffectImage> storedImage(const EffectLayout& layout, const EffectCache& cache);

/// Reads an image, whatever is in it, into a cache. What cannot be read leaves zeros in its place.
/// @return whether the last record could be read
bool readImage(const EffectLayout& layout, const Descriptors& descriptors,
               std::span<const std::uint8_t> memory, EffectCache& cache);

/// Fills in what a memory from before the rain effect lacks.
/// @return whether there was something to fill in
bool addMissingEffects(const EffectLayout& layout, EffectCache& cache);

} // namespace pyrux
