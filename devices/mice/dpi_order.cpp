#include "devices/mice/dpi_order.h"

#include <algorithm>

namespace pyrux {

namespace {

namespace cmd {                        // numbers are report bytes; a reply counts from 0
constexpr Report setOrder{0x51, 0x9B}; // 5 to 11: level by place
constexpr Report getOrder{0x52, 0x9B}; // reply 4 to 10: level by place
// Deliberate: the whole report but for the command is 0xFF, the report id too.
constexpr Report clearOrder = Report::filled(0xFF).at(1, std::array<std::uint8_t, 4>{0x51, 0x9B, 0x00, 0x00});
} // namespace cmd

constexpr std::uint8_t noTable = 0xFF; // in the first place

} // namespace

std::optional<std::uint8_t> DpiOrder::Table::placeOf(std::uint8_t level) const
{
    const auto found = std::ranges::find(levelAt, level);
    return found == levelAt.end() ? std::nullopt : std::optional(std::uint8_t(found - levelAt.begin()));
}

_error DpiOrder::read(Table& table)
{
    Reply reply;
    if (const _error result = link.get(cmd::getOrder, reply))
        return result;
    table.stored = reply[4] != noTable;
    if (table.stored)
        std::ranges::copy(reply.part(4, levels), table.levelAt.begin());
    return E_OK;
}

_error DpiOrder::write(const std::array<std::uint8_t, levels>& levelAt)
{
    return link.set(cmd::setOrder.at(5, levelAt));
}

_error DpiOrder::clear()
{
    return link.set(cmd::clearOrder);
}

} // namespace pyrux
