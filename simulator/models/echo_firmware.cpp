#include "simulator/models/echo_firmware.h"

#include <algorithm>

namespace pyrux::sim {

namespace {

constexpr std::size_t eventSize = MacroEvent().size();
constexpr std::size_t mostChunkEvents = 15;
constexpr std::uint8_t keyIsUp = 0x40;
constexpr std::uint8_t keyIsDown = 0xC0;

} // namespace

void fillWith(const MacroEvent& event, std::span<std::uint8_t> area)
{
    for (std::size_t i = 0; i < area.size(); ++i)
        area[i] = event[i % event.size()];
}

std::vector<Row> EchoFirmware::macroRows(States taken)
{
    return {
        {"53 00/01", taken, [this](auto& c) { return writeEvents(c); }},
        {"53 10/11", taken, [this](auto& c) { return readEvents(c); }},
    };
}

Answer EchoFirmware::writeEvents(const Command& command)
{
    if (!cursor || command[2] < rules.leastWritten || command[2] > mostChunkEvents)
        return refused();
    const std::span<std::uint8_t> area = macroArea(cursor->area);
    const std::size_t begin = command[1] & 1 ? cursor->event : 0;
    const std::size_t end = begin + command[2];
    if (eventSize * end > area.size())
        return refused();
    if (begin == 0)
        fillWith(rules.end, area);
    command.copy(dataFrom, area.subspan(eventSize * begin, eventSize * command[2]));
    cursor->event = end;
    return accepted();
}

Answer EchoFirmware::readEvents(const Command& command)
{
    if (!cursor || command[2] == 0 || command[2] > mostChunkEvents)
        return refused();
    const std::span<const std::uint8_t> area = macroArea(cursor->area);
    const std::size_t begin = command[1] & 1 ? cursor->event : 0;
    cursor->event = begin + command[2];
    std::vector<std::uint8_t> events;
    for (std::size_t at = eventSize * begin; at < eventSize * cursor->event; ++at)
        events.push_back(at < area.size() ? area[at] : rules.beyond[at % eventSize]);
    return told(events);
}

Answer EchoFirmware::keyReport(const std::vector<int>& values)
{
    const int state = values[1] == 0 ? keyIsUp : values[1] == 1 ? keyIsDown : values[1];
    return report(joined(0x43, 0x01, 0x00, 0x00, values[0], state));
}

} // namespace pyrux::sim
