#include "devices/macro_codec.h"

namespace pyrux::macros {

namespace {

constexpr std::size_t eventsPerChunk = 15;
constexpr std::size_t eventsInFullChunks = 195;
constexpr std::size_t eventsLastChunk = 5; // as many as are asked for after those
constexpr std::uint8_t wheelUpStep = 0x01; // first byte of an event of the wheel
constexpr std::uint8_t wheelDownStep = 0xFF;
constexpr std::array<std::uint8_t, 3> modeBases{0x3C, 0x5C, 0x7C};

} // namespace

bool isEmptyPlace(const Reply& place)
{
    return place[4] == 0xFF && (place[5] == 0x3F || place[5] == 0xFF);
}

std::uint8_t modeByte(std::uint8_t mode, std::uint8_t lowBits)
{
    return std::uint8_t(modeBases.at(mode) + lowBits);
}

std::uint8_t modeOf(std::uint8_t modeByte)
{
    const int mode = modeByte >> 4;
    return mode == 5 ? 1 : mode == 7 ? 2 : 0;
}

std::array<std::uint8_t, bytesPerStep> encode(const Step& step)
{
    const auto delay = std::uint16_t(step.delay * 2); // deliberate: the top bit is lost
    const auto delayLow = std::uint8_t(delay);
    const auto delayHigh = std::uint8_t(delay >> 8);
    if (step.code == wheelUp || step.code == wheelDown)
        return {step.code == wheelUp ? wheelUpStep : wheelDownStep, wheelKind, delayLow, delayHigh};
    const std::uint8_t kind = step.kind == 0 ? 0x5C : step.kind == 1 ? 0x3C : endKind;
    return {std::uint8_t(step.code), std::uint8_t((step.code >> 8) + kind), delayLow, delayHigh};
}

Step decode(const Reply& reply, std::size_t from)
{
    const std::uint8_t first = reply[from];
    const std::uint8_t second = reply[from + 1];
    const auto delay = std::uint16_t(reply.u16(from + 2) / 2);
    if (second == wheelKind && (first == wheelUpStep || first == wheelDownStep))
        return {.code = first == wheelUpStep ? wheelUp : wheelDown, .kind = 2, .delay = delay};
    return {.code = std::uint16_t(first | (second & 0x03) << 8),
            .kind = std::uint8_t(second >> 5 == 1 ? 1 : 0),
            .delay = delay};
}

std::vector<Report> eventReports(std::span<const Step> steps, Tail tail)
{
    std::vector<Report> reports;
    const bool more = steps.size() % eventsPerChunk != 0 || tail == Tail::emptyChunk;
    const std::size_t chunks = steps.size() / eventsPerChunk + (more ? 1 : 0);
    for (std::size_t chunk = 0; chunk < chunks; ++chunk) {
        const auto rest = steps.subspan(chunk * eventsPerChunk);
        const auto part = rest.first(std::min(eventsPerChunk, rest.size()));
        Report report = writeEvents.at(2, chunk ? 1 : 0).at(3, std::uint8_t(part.size()));
        for (std::size_t i = 0; i < part.size(); ++i)
            report = report.at(5 + i * bytesPerStep, encode(part[i]));
        reports.push_back(report);
    }
    return reports;
}

std::size_t Collector::chunkSize() const
{
    return steps.size() < eventsInFullChunks ? eventsPerChunk : eventsLastChunk;
}

Report Collector::command() const
{
    const std::uint8_t kind = steps.size() < eventsPerChunk ? 0x10 : 0x11;
    return readEvents.at(2, kind).at(3, std::uint8_t(chunkSize()));
}

Collector::State Collector::take(const Reply& chunk)
{
    const std::size_t size = chunkSize();
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t from = 4 + i * bytesPerStep;
        if (chunk[from + 1] == endKind)
            return State::complete;
        if (steps.size() == most)
            return State::overfull;
        steps.push_back(decode(chunk, from));
    }
    return State::reading;
}

} // namespace pyrux::macros
