#include "devices/keyboards/effect_image.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using namespace pyrux;

namespace {

constexpr EffectLayout layouts[]{{}, {.maskBytes = 20, .zoneBytes = 160}};

/// Takes bytes from the front; zeros after the end.
void fill(std::span<std::uint8_t> to, std::span<const std::uint8_t>& from)
{
    const std::size_t count = std::min(to.size(), from.size());
    std::copy_n(from.begin(), count, to.begin());
    from = from.subspan(count);
}

Descriptors readDescriptors(std::span<const std::uint8_t>& data)
{
    Descriptors descriptors{};
    for (Descriptor& descriptor : descriptors) {
        std::array<std::uint8_t, 4> bytes{};
        fill(bytes, data);
        descriptor = {bytes[0], bytes[1], std::uint16_t(bytes[2] | bytes[3] << 8)};
    }
    return descriptors;
}

/// What was read can be shown and written, and reads back without a failure.
void use(const EffectLayout& layout, const EffectCache& cache)
{
    for (int effect = 0; effect < 256; ++effect)
        previewImage(layout, std::uint8_t(effect), cachedEffect(layout, cache, std::uint8_t(effect)));
    const auto image = storedImage(layout, cache);
    if (!image)
        std::abort();
    EffectCache again(layout);
    readImage(layout, image->descriptors, image->memory, again);
    if (again.zoneMatrix != cache.zoneMatrix)
        std::abort();
}

} // namespace

/// Everything that a keyboard's effect memory can hold: 21 descriptors of 4 bytes, then the pages.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const EffectLayout& layout = layouts[data[0] % std::size(layouts)];
    std::span<const std::uint8_t> rest(data + 1, size - 1);
    const Descriptors descriptors = readDescriptors(rest);
    std::array<std::uint8_t, 3072> memory{};
    fill(memory, rest);
    EffectCache cache(layout);
    readImage(layout, descriptors, memory, cache);
    use(layout, cache);
    addMissingEffects(layout, cache);
    use(layout, cache);
    return 0;
}
