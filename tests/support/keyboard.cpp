#include "tests/support/keyboard.h"

#include <algorithm>
#include <cstring>

namespace pyrux::test {

std::string eachOf(const char* command, std::size_t count)
{
    std::vector<std::string> pieces;
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = std::uint8_t(i);
        pieces.push_back(std::string(command) + " " + hex(std::span(&number, 1)));
    }
    return joined(pieces);
}

std::string reloading()
{
    return wire(joined({readingOfImage(), "41 80 | 52 28"}));
}

std::string previewOf(std::uint8_t effect, std::uint8_t frames, const char* word, const std::string& image)
{
    constexpr std::size_t pageSize = 60;
    const ByteVector all = bytes(image);
    const ByteVector head{0x56, 0x81, 0, 0, effect, 0, 0, 0, frames, 0, 0, 0};
    std::vector<std::string> pieces{hex(head) + " " + word};
    for (std::size_t page = 0; page <= all.size() / pageSize; ++page) {
        ByteVector report{0x56, 0x83, std::uint8_t(page), 0};
        const std::size_t begin = page * pageSize;
        report.insert(report.end(), all.begin() + std::ptrdiff_t(begin),
                      all.begin() + std::ptrdiff_t(std::min(begin + pageSize, all.size())));
        pieces.push_back(hex(report));
    }
    pieces.emplace_back("41 80 | 51 28 00 00 FF");
    return wire(joined(pieces));
}

EffectRecord effect(std::string_view bytesText)
{
    const ByteVector all = bytes(bytesText);
    EffectRecord record;
    std::memset(static_cast<void*>(&record), 0, sizeof record);
    std::memcpy(static_cast<void*>(&record), all.data(), std::min(all.size(), sizeof record));
    return record;
}

std::string textOf(const EffectRecord& record)
{
    return hex(std::span(reinterpret_cast<const std::uint8_t*>(&record), sizeof record));
}

} // namespace pyrux::test
