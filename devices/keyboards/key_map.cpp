#include "devices/keyboards/key_map.h"

#include "devices/keyboards/keyboard_commands.h"

#include <cstddef>
#include <span>

namespace pyrux {

namespace {

namespace cmd {                       // numbers are report bytes; a reply counts from 0
constexpr Report setKey{0x51, 0x20};  // 3: key, 4 to 6: action
constexpr Report setPage{0x51, 0x21}; // 3: page, 5 to 36: actions
constexpr Report getPage{0x52, 0x21}; // 3: page; reply 4 to 35: actions
} // namespace cmd

constexpr std::uint8_t pages = 16;
constexpr std::size_t keysPerPage = 16;

} // namespace

_error KeyMap::set(std::uint32_t count, const KeyMapEntry* entries)
{
    if (!entries && count)
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    for (const KeyMapEntry& entry : std::span(entries, count)) {
        const Report report = cmd::setKey.at(3, entry.key).at(4, entry.action);
        if (const _error failure = keys::set(link, report, keys::mappingMatch))
            return failure;
    }
    return E_OK;
}

_error KeyMap::setAll(const KeyMapTable* table)
{
    if (!table)
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    for (std::uint8_t page = 0; page < pages; ++page) {
        Report report = cmd::setPage.at(3, page);
        for (std::size_t i = 0; i < keysPerPage; ++i)
            report = report.at16(5 + 2 * i, table->values[page * keysPerPage + i]);
        if (const _error failure = keys::set(link, report, keys::numberedMatch))
            return failure;
    }
    return E_OK;
}

_error KeyMap::getAll(KeyMapTable* table)
{
    if (!table)
        return E_INVALID_GET;
    keys::set(link, keys::editOn);
    for (std::uint8_t page = 0; page < pages; ++page) {
        Reply reply;
        if (const _error failure = link.get(cmd::getPage.at(3, page), reply, keys::numberedMatch))
            return failure;
        if (!reply.begins({0x52, 0x21, page}))
            continue; // the answer to another call
        for (std::size_t i = 0; i < keysPerPage; ++i)
            table->values[page * keysPerPage + i] = reply.u16(4 + 2 * i);
    }
    return E_OK;
}

} // namespace pyrux
