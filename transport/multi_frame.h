#pragma once

#include "transport/report.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace pyrux {

/// How a stream of bytes, such as colors, is cut over several frames. P0 of a frame is its number from 0,
/// with bit 7 set in the last one. The data fill a frame from a report byte to its end, so that a color may
/// begin in one frame and end in the next.
struct FrameShape {
    std::size_t firstData; ///< Report byte at which the data of the first frame begin,
    std::size_t nextData;  ///< and those of the frames after it.

    constexpr std::size_t dataByte(std::size_t frame) const { return frame == 0 ? firstData : nextData; }
    constexpr std::size_t room(std::size_t frame) const { return Report::size - dataByte(frame); }

    /// Frames that a stream takes, at least one.
    constexpr std::size_t frames(std::size_t bytes) const
    {
        return bytes <= room(0) ? 1 : 1 + (bytes - room(0) + room(1) - 1) / room(1);
    }
};

/// P0 of a frame.
constexpr std::uint8_t frameNumber(std::size_t frame, std::size_t frames)
{
    constexpr std::uint8_t lastFrame = 0x80;
    return std::uint8_t(frame | (frame + 1 == frames ? lastFrame : 0));
}

/// Cuts a stream over frames, as many as there are: their heads stand already, but for P0. Frames that the
/// stream does not reach keep what they hold.
void cutStream(const FrameShape& shape, std::span<const std::uint8_t> stream, std::span<Report> frames);

/// Puts the replies of a transfer of the same shape together again.
void joinStream(const FrameShape& shape, std::span<const Reply> replies, std::span<std::uint8_t> stream);

} // namespace pyrux
