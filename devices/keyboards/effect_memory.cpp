#include "devices/keyboards/effect_memory.h"

#include "devices/keyboards/keyboard_commands.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

namespace pyrux {

namespace {

namespace cmd {                              // numbers are report bytes; a reply counts from 0
constexpr Report getDescriptor{0x56, 0x14};  // 3: effect; reply 4: frames, 5: extra words, 6: header
constexpr Report setDescriptor{0x56, 0x15};  // 3: effect, 5: frames, 6: extra words, 7: header, 9: word
constexpr Report getPage{0x56, 0x20};        // 3: page; reply 4 to 63
constexpr Report setPage{0x56, 0x21};        // 3: page, 5 to 64
constexpr Report previewEffect{0x56, 0x81};  // 5: effect, 9: frames, 13: word
constexpr Report setPreviewPage{0x56, 0x83}; // 3: page, 5 to 64
} // namespace cmd

constexpr std::size_t pageBytes = 60;
constexpr std::size_t memoryBytes = 3072; // what lies after the last page reads as zeros

/// Whether a reply is the answer to a command.
bool answers(const Reply& reply, const Report& command)
{
    return std::ranges::equal(reply.part(0, keys::numberedMatch),
                              command.payload().first(keys::numberedMatch));
}

/// A page of an image, filled up with zeros.
Report pageOf(const Report& command, std::span<const std::uint8_t> image, std::size_t page)
{
    const std::size_t from = std::min(page * pageBytes, image.size());
    return command.at(3, std::uint8_t(page))
        .at(5, image.subspan(from, std::min(pageBytes, image.size() - from)));
}

} // namespace

EffectMemory::Loaded EffectMemory::load(EffectCache& cache)
{
    constexpr Loaded silent{.complete = false, .result = E_INVALID_GET};
    Reply reply;
    Descriptors descriptors{};
    for (std::uint8_t effect = 0; effect < effectCount; ++effect) {
        const Report command = cmd::getDescriptor.at(3, effect);
        if (link.get(command, reply, keys::numberedMatch))
            return silent;
        if (answers(reply, command))
            descriptors[effect] = {reply[4], reply[5], reply.u16(6)};
    }
    std::array<std::uint8_t, memoryBytes> memory{};
    for (std::size_t page = 0; page < layout.pages; ++page) {
        const Report command = cmd::getPage.at(3, std::uint8_t(page));
        if (link.get(command, reply, keys::numberedMatch))
            return silent;
        if (answers(reply, command))
            std::ranges::copy(reply.part(4, pageBytes), memory.begin() + std::ptrdiff_t(page * pageBytes));
    }
    const bool read = readImage(layout, descriptors, memory, cache);
    return {.complete = true, .result = read ? E_OK : E_INVALID_GET};
}

_error EffectMemory::store(const EffectCache& cache)
{
    const std::optional<EffectImage> image = storedImage(layout, cache);
    if (!image)
        return E_INVALID_SET;
    Reply reply;
    for (std::uint8_t effect = 0; effect < effectCount; ++effect) {
        const Descriptor& descriptor = image->descriptors[effect];
        const Report command = cmd::setDescriptor.at(3, effect)
                                   .at(5, descriptor.frames)
                                   .at(6, descriptor.extraWords)
                                   .at16(7, descriptor.header)
                                   .at32(9, layout.rows[effect].word);
        if (const _error failure = link.get(command, reply, keys::numberedMatch))
            return failure;
    }
    // Deliberate: always as many pages, whatever the image's size; a longer one is cut.
    for (std::size_t page = 0; page < layout.pages; ++page)
        if (const _error failure =
                link.get(pageOf(cmd::setPage, image->memory, page), reply, keys::numberedMatch))
            return failure;
    return E_OK;
}

_error EffectMemory::preview(std::uint8_t effect, const EffectData& data)
{
    const std::optional<std::vector<std::uint8_t>> image = previewImage(layout, effect, data);
    if (!image)
        return E_INVALID_SET;
    Reply reply;
    const EffectRow& row = layout.rows[effect];
    const Report announcement = cmd::previewEffect.at(5, effect).at(9, row.frames).at32(13, row.word);
    if (const _error failure = link.get(announcement, reply, keys::numberedMatch))
        return failure;
    // Deliberate: an image of whole pages has one more, empty page after it.
    for (std::size_t page = 0; page <= image->size() / pageBytes; ++page)
        if (const _error failure =
                link.get(pageOf(cmd::setPreviewPage, *image, page), reply, keys::numberedMatch))
            return failure;
    link.get(keys::editOn, reply);
    link.get(keys::showPreview, reply);
    return E_OK;
}

} // namespace pyrux
