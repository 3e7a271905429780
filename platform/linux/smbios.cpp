#include "platform/linux/smbios.h"

#include <algorithm>
#include <string_view>

namespace pyrux::platform {
namespace {

constexpr std::size_t headerSize = 4; // type, length, and the handle in two bytes
constexpr std::uint8_t memoryDevice = 17;
constexpr std::uint8_t endOfTable = 127;

/// One structure: its fixed part, and the texts after it.
class Structure {
public:
    Structure(std::span<const std::uint8_t> fixedPart, std::string_view textPart)
        : fixed(fixedPart), texts(textPart)
    {
    }

    /// A little-endian number; 0 where an older table ends before it.
    std::uint32_t number(std::size_t offset, std::size_t size) const
    {
        if (offset + size > fixed.size())
            return 0;
        std::uint32_t value = 0;
        for (std::size_t i = size; i-- > 0;)
            value = value << 8 | fixed[offset + i];
        return value;
    }

    /// The text whose number, counted from 1, stands at an offset. Blanks at its end are dropped.
    std::string text(std::size_t offset) const
    {
        std::uint32_t index = number(offset, 1);
        std::string_view rest = texts;
        for (; index > 1 && !rest.empty(); --index)
            rest.remove_prefix(std::min(rest.find('\0'), rest.size() - 1) + 1);
        if (index == 0)
            return {};
        const std::string_view found = rest.substr(0, rest.find('\0'));
        return std::string(found.substr(0, found.find_last_not_of(' ') + 1));
    }

private:
    std::span<const std::uint8_t> fixed;
    std::string_view texts;
};

/// Bytes of a module; 0: the socket is empty, or the size is not known.
std::uint64_t sizeOf(const Structure& device)
{
    const std::uint32_t size = device.number(0x0C, 2);
    if (size == 0xFFFF)
        return 0;
    if (size == 0x7FFF) // too large for the field: the extended size in MiB
        return std::uint64_t(device.number(0x1C, 4) & 0x7FFFFFFF) << 20;
    return size & 0x8000 ? std::uint64_t(size & 0x7FFF) << 10 : std::uint64_t(size) << 20;
}

} // namespace

std::optional<MemoryModule> firstMemoryModule(std::span<const std::uint8_t> tables)
{
    while (tables.size() >= headerSize) {
        const std::uint8_t type = tables[0];
        const std::size_t length = tables[1];
        if (type == endOfTable || length < headerSize || length > tables.size())
            break;
        const std::string_view behind(reinterpret_cast<const char*>(tables.data()) + length,
                                      tables.size() - length);
        // Two NULs end the texts, also where there is none.
        const auto end = behind.find(std::string_view("\0", 2));
        if (end == std::string_view::npos)
            break;
        const Structure structure(tables.first(length), behind.substr(0, end + 1));
        if (type == memoryDevice)
            if (const std::uint64_t bytes = sizeOf(structure))
                return MemoryModule{structure.text(0x17), structure.text(0x1A), bytes};
        tables = tables.subspan(length + end + 2);
    }
    return {};
}

} // namespace pyrux::platform
