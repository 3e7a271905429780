#include "devices/keyboards/effect_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace pyrux;

namespace {

std::vector<std::uint8_t> bytesOf(const EffectRecord& effect)
{
    std::vector<std::uint8_t> bytes(sizeof effect);
    std::memcpy(bytes.data(), &effect, sizeof effect);
    return bytes;
}

/// Stores a cache and reads it back.
EffectCache again(const EffectLayout& layout, const EffectCache& cache)
{
    EffectCache read(layout);
    const auto image = storedImage(layout, cache);
    EXPECT_TRUE(image && readImage(layout, image->descriptors, image->memory, read));
    return read;
}

TEST(EffectRoundTrip, keepsSpeedAndDirection)
{
    const EffectLayout layout;
    for (std::uint8_t speed = 1; speed <= 5; ++speed)
        for (std::uint8_t direction = 0; direction < 2; ++direction) {
            EffectCache cache(layout);
            for (std::uint8_t effect : {2, 3, 5, 6, 8, 9, 10, 11, 12, 15, 17})
                cache.slots[effect] = {effect, 1, 2, 3, speed, 0, 77, direction, 0, 0, 0, 0};
            for (std::uint8_t effect : {2, 3, 5, 6, 9, 10, 11, 12, 15, 17}) // those with two frames
                cache.slots[effect].backBrightness = 55;
            const EffectCache read = again(layout, cache);
            for (std::uint8_t effect : {2, 3, 5, 6, 8, 9, 10, 11, 12, 15, 17})
                EXPECT_EQ(bytesOf(read.slots[effect]), bytesOf(cache.slots[effect])) << int(effect);
        }
}

TEST(EffectRoundTrip, keepsTheReverseRun)
{
    const EffectLayout layout;
    for (std::uint8_t speed = 1; speed <= 5; ++speed)
        for (std::uint8_t option : {0, 4}) {
            EffectCache cache(layout);
            cache.slots[13] = {13, 9, 9, 9, speed, option, 44, 1, 0, 0, 0, 0};
            const EffectRecord expected{13, 0, 0, 0, speed, option, 44, 0, 0, 0, 0, 0};
            EXPECT_EQ(bytesOf(again(layout, cache).slots[13]), bytesOf(expected));
        }
}

TEST(EffectRoundTrip, keepsLayersZonesAndMasksOfBothLayouts)
{
    for (const EffectLayout& layout : {EffectLayout{}, EffectLayout{.maskBytes = 20, .zoneBytes = 160}}) {
        EffectCache cache(layout);
        cache.multilayer[1] = {8, 1, 2, 3, 2, 0, 9, 1, 0, 0, 0, 0};
        cache.multilayer[3] = {.effectId = 0, .red = 4, .green = 5, .blue = 6, .speed = 0};
        cache.multizone[2] = {5, 1, 2, 3, 4, 0, 6, 1, 7, 8, 9, 10};
        for (std::size_t i = 0; i < cache.zoneMatrix.size(); ++i)
            cache.zoneMatrix[i] = i % 3 == 0;
        const EffectCache read = again(layout, cache);
        EXPECT_EQ(bytesOf(read.multilayer[1]), bytesOf(cache.multilayer[1]));
        EXPECT_EQ(read.multilayer[3].red, 4);
        EXPECT_EQ(read.multilayer[0].red, 4); // the last layer of effect 0 is the ground of all of them
        EXPECT_EQ(bytesOf(read.multizone[2]), bytesOf(cache.multizone[2]));
        EXPECT_EQ(read.zoneMatrix, cache.zoneMatrix);
    }
}

TEST(EffectPreview, ofTheCustomEffectHas524Bytes)
{
    const EffectLayout layout;
    EffectCache cache(layout);
    const EffectRecord custom{.effectId = 4};
    const auto image = previewImage(
        layout, 4, {.records = {&custom, 1}, .customMatrix = cache.customMatrix, .zoneMatrix = {}});
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), 524U);
    EXPECT_EQ((std::vector<std::uint8_t>(image->begin(), image->begin() + 16)),
              (std::vector<std::uint8_t>{1, 0, 0, 0, 0x80, 1, 0, 0, 0xFF, 0, 0, 0, 0, 0, 0xFF, 0xFF}));
}

} // namespace
