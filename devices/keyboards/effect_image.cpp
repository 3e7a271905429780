#include "devices/keyboards/effect_image.h"

#include <algorithm>

namespace pyrux {

namespace {

constexpr std::size_t wordBytes = 4;
constexpr std::uint8_t allLeds = 0xFF;
constexpr std::uint8_t layeredFrames = 5; // a ground and the layers
constexpr std::uint8_t zonedFrames = 8;   // a background and an effect of each zone

using Bytes = std::vector<std::uint8_t>;

constexpr EffectRecord emptyFrame(const EffectLayout& layout)
{
    return {.effectId = layout.empty};
}

/// The ground of an effect with two frames.
constexpr EffectRecord background(const EffectRecord& effect)
{
    return {.effectId = EFFECT_STEADY,
            .red = effect.backRed,
            .green = effect.backGreen,
            .blue = effect.backBlue,
            .brightness = effect.backBrightness};
}

/// An effect as it is read back from its two frames.
constexpr EffectRecord onBackground(EffectRecord effect, const EffectRecord& ground)
{
    effect.backRed = ground.red;
    effect.backGreen = ground.green;
    effect.backBlue = ground.blue;
    effect.backBrightness = ground.brightness;
    return effect;
}

std::vector<EffectRecord> layerFrames(const EffectLayout& layout, std::span<const EffectRecord> layers)
{
    std::vector<EffectRecord> frames{emptyFrame(layout)};
    for (const EffectRecord& layer : layers) {
        const bool ground = layer.effectId == EFFECT_STEADY;
        if (ground)
            frames.front() = layer;
        frames.push_back(ground ? emptyFrame(layout) : layer);
    }
    return frames;
}

std::vector<EffectRecord> zoneFrames(const EffectLayout& layout, std::span<const EffectRecord> zones)
{
    std::vector<EffectRecord> frames;
    for (const EffectRecord& zone : zones) {
        const std::uint8_t own = layout.framesOf(zone.effectId);
        frames.push_back(own == 1 ? emptyFrame(layout) : own == 2 ? background(zone) : EffectRecord{});
        frames.push_back(zone);
    }
    return frames;
}

/// The frames of an effect, by the number that its row has, whatever effect the record is of.
std::vector<EffectRecord> framesOf(const EffectLayout& layout, std::uint8_t effect,
                                   std::span<const EffectRecord> records)
{
    switch (layout.framesOf(effect)) {
    case 1:
        return {records.front()};
    case 2:
        return {background(records.front()), records.front()};
    case layeredFrames:
        return layerFrames(layout, records);
    default:
        return zoneFrames(layout, records);
    }
}

std::optional<std::vector<Bytes>> encodeFrames(const EffectLayout& layout, std::uint8_t effect,
                                               const EffectData& data)
{
    std::vector<Bytes> records;
    for (const EffectRecord& frame : framesOf(layout, effect, data.records)) {
        std::optional<Bytes> record = encodeRecord(layout.forms, frame, data.customMatrix);
        if (!record)
            return std::nullopt;
        records.push_back(std::move(*record));
    }
    return records;
}

/// The masks of the zones, each twice: for a zone's background and for its effect.
Bytes zoneMasks(const EffectLayout& layout, std::span<const std::uint8_t> zoneMatrix)
{
    Bytes masks;
    for (std::size_t zone = 0; zone < zoneCount; ++zone) {
        Bytes mask(layout.maskBytes);
        const auto leds = zoneMatrix.subspan(zone * layout.zoneBytes, layout.zoneBytes);
        for (std::size_t led = 0; led < leds.size(); ++led)
            mask[led / 8] = std::uint8_t(mask[led / 8] | (leds[led] & 1) << led % 8);
        for (int copy = 0; copy < 2; ++copy)
            masks.insert(masks.end(), mask.begin(), mask.end());
    }
    return masks;
}

Bytes masksOf(const EffectLayout& layout, std::uint8_t effect, const EffectData& data)
{
    const std::uint8_t frames = layout.framesOf(effect);
    return frames == zonedFrames ? zoneMasks(layout, data.zoneMatrix)
                                 : Bytes(frames * layout.maskBytes, allLeds);
}

std::uint16_t wordOffset(std::size_t bytes)
{
    return std::uint16_t(bytes / wordBytes);
}

std::uint8_t low(std::uint16_t value)
{
    return std::uint8_t(value);
}

std::uint8_t high(std::uint16_t value)
{
    return std::uint8_t(value >> 8);
}

void append(Bytes& to, std::span<const std::uint8_t> bytes)
{
    to.reserve(to.size() + bytes.size());
    for (const std::uint8_t byte : bytes)
        to.push_back(byte);
}

/// Puts down the records from a place on.
/// @return the places, in words
std::vector<std::uint16_t> placesOf(const std::vector<Bytes>& records, std::size_t from)
{
    std::vector<std::uint16_t> places;
    for (const Bytes& record : records) {
        places.push_back(wordOffset(from));
        from += record.size();
    }
    return places;
}

/// The places of the masks, for an effect that has any, and of the records.
Bytes pointersOf(std::span<const std::uint16_t> records, std::uint16_t masks)
{
    Bytes pointers;
    if (records.size() > 1)
        append(pointers, std::array{low(masks), high(masks), low(masks), high(masks)});
    for (std::size_t frame = 0; frame < records.size(); ++frame)
        append(pointers,
               std::array{low(records[frame]), high(records[frame]), std::uint8_t(frame), std::uint8_t{0}});
    return pointers;
}

std::size_t sizeOf(const std::vector<Bytes>& records)
{
    std::size_t size = 0;
    for (const Bytes& record : records)
        size += record.size();
    return size;
}

/// Memory that nothing is known of.
class Memory {
public:
    explicit Memory(std::span<const std::uint8_t> bytes) : bytes(bytes) {}

    /// All bytes from a place on; none after the end.
    std::span<const std::uint8_t> from(std::size_t place) const
    {
        return bytes.subspan(std::min(place, bytes.size()));
    }

    /// A number of bytes; no value where there are less.
    std::optional<std::span<const std::uint8_t>> part(std::size_t place, std::size_t count) const
    {
        const auto rest = from(place);
        if (rest.size() < count)
            return std::nullopt;
        return rest.first(count);
    }

    /// The place that a pointer at a place leads to.
    std::optional<std::size_t> follow(std::size_t place) const
    {
        const auto pointer = part(place, 2);
        if (!pointer)
            return std::nullopt;
        return wordBytes * ((*pointer)[0] | std::size_t{(*pointer)[1]} << 8);
    }

private:
    std::span<const std::uint8_t> bytes;
};

/// One frame as it was read; all zeros when that failed.
struct Frame {
    EffectRecord effect = clearedEffect;
    bool failed = true;
};

class ImageReader {
public:
    ImageReader(const EffectLayout& layout, std::span<const std::uint8_t> memory, EffectCache& cache)
        : layout(layout), memory(memory), cache(cache)
    {
    }

    /// Reads one effect.
    void read(std::uint8_t effect, const Descriptor& descriptor)
    {
        cache.slots[effect] = clearedEffect;
        const std::size_t header = descriptor.header * wordBytes;
        const std::size_t masks = header + descriptor.extraWords * wordBytes;
        const std::size_t entries = masks + (descriptor.frames > 1 ? wordBytes : 0);
        std::vector<Frame> frames;
        for (std::size_t i = 0; i < descriptor.frames; ++i)
            frames.push_back(readFrame(memory.follow(entries + i * wordBytes)));
        if (!frames.empty())
            lastFailed = frames.back().failed;
        switch (frames.size()) {
        case 1:
            cache.slots[effect] = frames[0].effect;
            break;
        case 2:
            cache.slots[effect] = onBackground(frames[1].effect, frames[0].effect);
            break;
        case layeredFrames:
            if (descriptor.extraWords)
                takeLayers(frames, memory.part(header, layerCount));
            break;
        case zonedFrames:
            takeZones(frames);
            takeMasks(memory.follow(masks));
            break;
        default:
            break;
        }
    }

    bool lastFrameFailed() const { return lastFailed; }

private:
    Frame readFrame(std::optional<std::size_t> place)
    {
        if (!place)
            return {};
        const std::optional<EffectRecord> effect = decodeRecord(layout.forms, memory.from(*place));
        if (!effect)
            return {};
        if (effect->effectId == layout.empty)
            return {emptyFrame(layout), false};
        if (effect->effectId == layout.custom) {
            const auto colors = memory.part(*place + customColors, layout.matrixBytes());
            if (!colors)
                return {};
            cache.customMatrix.assign(colors->begin(), colors->end());
        }
        return {*effect, false};
    }

    /// @param effects  the effects of the layers; a layer of effect 0 is the ground
    void takeLayers(const std::vector<Frame>& frames, std::optional<std::span<const std::uint8_t>> effects)
    {
        if (!effects)
            return;
        for (std::size_t layer = 0; layer < layerCount; ++layer)
            cache.multilayer[layer] = frames[(*effects)[layer] ? layer + 1 : 0].effect;
    }

    /// Deliberate: a zone that cannot be read is left out, and those after it move up.
    void takeZones(const std::vector<Frame>& frames)
    {
        std::size_t taken = 0;
        for (std::size_t zone = 0; zone < zoneCount; ++zone) {
            const Frame& ground = frames[2 * zone];
            const Frame& frame = frames[2 * zone + 1];
            if (frame.failed || !layout.isSimple(frame.effect.effectId))
                continue;
            const bool grounded = layout.framesOf(frame.effect.effectId) == 2;
            cache.multizone[taken++] = grounded ? onBackground(frame.effect, ground.effect) : frame.effect;
        }
    }

    /// Reads the second copy of each zone's mask.
    void takeMasks(std::optional<std::size_t> place)
    {
        if (!place)
            return;
        const auto masks = memory.part(*place, zonedFrames * layout.maskBytes);
        if (!masks)
            return;
        for (std::size_t zone = 0; zone < zoneCount; ++zone) {
            const auto mask = masks->subspan((2 * zone + 1) * layout.maskBytes, layout.maskBytes);
            for (std::size_t led = 0; led < layout.zoneBytes; ++led)
                cache.zoneMatrix[zone * layout.zoneBytes + led] = mask[led / 8] >> led % 8 & 1;
        }
    }

    const EffectLayout& layout;
    const Memory memory;
    EffectCache& cache;
    bool lastFailed = false;
};

/// What a record that was missing begins with.
void makeFresh(EffectRecord& effect, std::uint8_t number)
{
    constexpr EffectRecord fresh;
    effect.effectId = number;
    effect.red = fresh.red;
    effect.green = fresh.green;
    effect.blue = fresh.blue;
    effect.speed = fresh.speed;
    effect.brightness = fresh.brightness;
}

} // namespace

EffectData cachedEffect(const EffectLayout& layout, const EffectCache& cache, std::uint8_t effect)
{
    EffectData data{.records = {}, .customMatrix = cache.customMatrix, .zoneMatrix = cache.zoneMatrix};
    if (effect == layout.multilayer)
        data.records = cache.multilayer;
    else if (effect == layout.multizone)
        data.records = cache.multizone;
    else if (effect < cache.slots.size())
        data.records = std::span(cache.slots).subspan(effect, 1);
    return data;
}

std::optional<std::vector<std::uint8_t>> previewImage(const EffectLayout& layout, std::uint8_t effect,
                                                      const EffectData& data)
{
    if (!layout.framesOf(effect) || effect == layout.systemStatus)
        return std::nullopt;
    if (!layout.isSimple(effect) &&
        !std::ranges::all_of(
            data.records, [&](std::uint8_t id) { return layout.isSimple(id); }, &EffectRecord::effectId))
        return std::nullopt;
    const auto records = encodeFrames(layout, effect, data);
    if (!records)
        return std::nullopt;
    const std::size_t header = wordBytes * (records->size() + (records->size() > 1 ? 1 : 0));
    // Deliberate: no extra words here, not even for the layers.
    Bytes image = pointersOf(placesOf(*records, header), wordOffset(header + sizeOf(*records)));
    for (const Bytes& record : *records)
        append(image, record);
    if (records->size() > 1)
        append(image, masksOf(layout, effect, data));
    return image;
}

std::optional<EffectImage> storedImage(const EffectLayout& layout, const EffectCache& cache)
{
    EffectImage image;
    Bytes& memory = image.memory;
    std::optional<std::uint16_t> sharedMasks; // of all effects with two frames
    for (std::uint8_t effect = 0; effect < effectCount; ++effect) {
        const EffectData data = cachedEffect(layout, cache, effect);
        const auto records = encodeFrames(layout, effect, data);
        if (!records)
            return std::nullopt;
        const auto places = placesOf(*records, memory.size());
        for (const Bytes& record : *records)
            append(memory, record);

        std::uint16_t masks = wordOffset(memory.size());
        if (records->size() == 2 && sharedMasks)
            masks = *sharedMasks;
        else if (records->size() > 1)
            append(memory, masksOf(layout, effect, data));
        if (records->size() == 2)
            sharedMasks = masks;

        const EffectRow& row = layout.rows[effect];
        image.descriptors[effect] = {row.frames, row.extraWords, wordOffset(memory.size())};
        if (row.extraWords)
            for (const EffectRecord& layer : data.records)
                memory.push_back(layer.effectId);
        append(memory, pointersOf(places, masks));
    }
    return image;
}

bool readImage(const EffectLayout& layout, const Descriptors& descriptors,
               std::span<const std::uint8_t> memory, EffectCache& cache)
{
    ImageReader reader(layout, memory, cache);
    for (std::uint8_t effect = 0; effect < effectCount; ++effect)
        reader.read(effect, descriptors[effect]);
    return !reader.lastFrameFailed();
}

/// Deliberate: bytes that are not named here stay as they were read.
bool addMissingEffects(const EffectLayout& layout, EffectCache& cache)
{
    constexpr EffectRecord fresh;
    constexpr std::uint8_t partlyNew = 10; // gets its color and direction anew too
    if (cache.slots[layout.rain].effectId == layout.rain)
        return false;
    makeFresh(cache.slots[layout.rain], layout.rain);
    cache.slots[layout.rain].backBrightness = fresh.backBrightness;
    if (layout.systemStatus)
        cache.slots[*layout.systemStatus].effectId = *layout.systemStatus;
    EffectRecord& changed = cache.slots[partlyNew];
    changed.red = fresh.red;
    changed.green = fresh.green;
    changed.blue = fresh.blue;
    changed.direction = fresh.direction;
    for (EffectRecord& layer : cache.multilayer)
        makeFresh(layer, layout.empty);
    for (EffectRecord& zone : cache.multizone) {
        makeFresh(zone, layout.empty);
        zone.backBrightness = fresh.backBrightness;
    }
    std::ranges::fill(cache.zoneMatrix, std::uint8_t{0});
    return true;
}

} // namespace pyrux
