#include "transport/multi_frame.h"

#include <algorithm>

namespace pyrux {

namespace {

/// The bytes of a stream that one frame carries, off its beginning.
template <class Byte>
std::span<Byte> take(std::span<Byte>& stream, std::size_t room)
{
    const std::span<Byte> piece = stream.first(std::min(room, stream.size()));
    stream = stream.subspan(piece.size());
    return piece;
}

} // namespace

void cutStream(const FrameShape& shape, std::span<const std::uint8_t> stream, std::span<Report> frames)
{
    for (std::size_t i = 0; i < frames.size(); ++i)
        frames[i] =
            frames[i].at(1, frameNumber(i, frames.size())).at(shape.dataByte(i), take(stream, shape.room(i)));
}

void joinStream(const FrameShape& shape, std::span<const Reply> replies, std::span<std::uint8_t> stream)
{
    for (std::size_t i = 0; i < replies.size(); ++i) {
        const std::span<std::uint8_t> piece = take(stream, shape.room(i));
        // A reply counts from 0, without the report id.
        std::ranges::copy(replies[i].part(shape.dataByte(i) - 1, piece.size()), piece.begin());
    }
}

} // namespace pyrux
