#pragma once

#include "transport/report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pyrux {

/// How mice and keyboards keep macros: numbered places, each with a place field, a name and up to 198 events
/// of four bytes. Numbers are report bytes; a reply counts from 0.
namespace macros {
// clang-format off
inline constexpr Report setPlace   {0x51, 0x18}; // 3: macro, 5 and 6: place field
inline constexpr Report setName    {0x51, 0x19}; // 3: macro, from 5: name
inline constexpr Report getPlace   {0x52, 0x18}; // 3: macro; reply from 4: place field
inline constexpr Report getName    {0x52, 0x19}; // 3: macro; reply from 4: name
inline constexpr Report writeEvents{0x53, 0x00}; // 2: 1 after the first chunk, 3: count, from 5: events
inline constexpr Report readEvents {0x53, 0x10}; // 2: 0x11 after the first chunk, 3: count; reply from 4
// clang-format on

inline constexpr std::size_t numberedMatch = 3; ///< A reply repeats the macro or the count too.
inline constexpr std::size_t mostEvents = 198;
inline constexpr std::uint8_t noMacro = 3; ///< Play mode of a place without one.

inline constexpr std::uint16_t wheelUp = 0x0500; ///< Codes of events that turn the wheel.
inline constexpr std::uint16_t wheelDown = 0x0501;
inline constexpr std::uint8_t wheelKind = 0x9E; ///< Second byte of such an event.
inline constexpr std::uint8_t endKind = 0xFC;   ///< Second byte of the end of a macro.

/// What ends a macro, as a record of a host. It is written after the last event.
template <class Event>
inline constexpr Event end{.code = 0, .kind = 3, .delay = 0xFFFF};

/// First and second byte of the place field that removes a macro.
inline constexpr std::array<std::uint8_t, 2> emptyPlace{0xFF, 0x3F};

/// Whether a reply to `getPlace` tells of no macro.
bool isEmptyPlace(const Reply& place);

/// Second byte of a place field: a play mode, 0 to 2, and the bits that go with it.
std::uint8_t modeByte(std::uint8_t mode, std::uint8_t lowBits);

/// The play mode in the second byte of a place field.
std::uint8_t modeOf(std::uint8_t modeByte);

/// An event, whatever record of a host it stands in.
struct Step {
    std::uint16_t code = 0;  ///< 10 bits, or `wheelUp` or `wheelDown`.
    std::uint8_t kind = 0;   ///< 0 and 1: two key classes; 2: the wheel.
    std::uint16_t delay = 0; ///< Pause after the event; the device keeps 15 bits.

    bool operator==(const Step&) const = default;
};

inline constexpr std::size_t bytesPerStep = 4;
std::array<std::uint8_t, bytesPerStep> encode(const Step& step);

/// Reads an event from the place in a reply where its four bytes begin.
Step decode(const Reply& reply, std::size_t from);

/// Whether a macro whose last chunk is full is followed by a chunk of no events.
enum class Tail { none, emptyChunk };

/// The reports that carry a macro's events, the end among them.
std::vector<Report> eventReports(std::span<const Step> steps, Tail tail);

template <class Event>
std::vector<Report> eventReports(std::span<const Event> events, Tail tail)
{
    std::vector<Step> steps;
    for (const Event& event : events)
        steps.push_back({.code = event.code, .kind = event.kind, .delay = event.delay});
    return eventReports(std::span<const Step>(steps), tail);
}

/// Puts together the events of a macro that is read in chunks.
class Collector {
public:
    enum class State { reading, complete, overfull };

    /// @param most  events that the macro may have; one more makes it overfull
    explicit Collector(std::size_t most) : most(most) {}

    /// The command that reads the next chunk.
    Report command() const;

    State take(const Reply& chunk);

    std::span<const Step> events() const { return steps; }

    /// Writes the events to the records of a host, which has at least `most` places.
    template <class Event, std::size_t places>
    void copyTo(Event (&records)[places]) const
    {
        std::ranges::transform(steps, records, [](const Step& step) {
            return Event{.code = step.code, .kind = step.kind, .delay = step.delay};
        });
    }

private:
    std::size_t chunkSize() const;

    const std::size_t most;
    std::vector<Step> steps;
};

} // namespace macros
} // namespace pyrux
