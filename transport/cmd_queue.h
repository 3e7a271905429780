#pragma once

#include "pyrux/error.h"
#include "transport/clock.h"
#include "transport/report.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

namespace pyrux {

class usbHid;

/// Decouples a producer of reports, such as an animation, from the wire. A caller puts a group of reports
/// into one of the lanes and returns at once; a thread sends them, keeps only the newest group of each lane
/// when it falls after, paces the writes, and gives up on a device that stops taking them. Reports that need
/// a reply never go this way.
///
/// What may replace each other goes into one lane. A round of the thread takes one group of each lane, lane 0
/// first; the reports of a group go out one right after the other. All functions may be called from any
/// thread.
class CmdQueue {
public:
    static constexpr std::size_t laneCount = 21;

    using Packet = std::span<const std::uint8_t>;

    /// Sends one packet, with a result as of `usbHid::writeWatched`.
    using Write = std::function<_error(Packet packet)>;

    explicit CmdQueue(Clock& clock = Clock::steady());

    /// Waits for the thread to be out of a write; what is queued is dropped.
    ~CmdQueue();
    CmdQueue(const CmdQueue&) = delete;
    CmdQueue& operator=(const CmdQueue&) = delete;

    // Settings. A device sets them once its channel is open, the first two whenever its mode changes.
    std::atomic<std::int32_t> paceDelayMs{10};  ///< Pause after each group while pacing is on, in ms.
    std::atomic<std::int32_t> paceWindowMs{10}; ///< Rounds that begin closer than this, in ms, are paced.
    std::atomic<bool> forcePacing{false};       ///< Pacing is always on.
    std::atomic<std::uint32_t> minGapMs{0};     ///< Least time between rounds, in ms; 0 for none.
    std::atomic<std::size_t> packetSize{Report::size}; ///< Bytes of every packet.

    /// Where the packets go. Before it is set nothing is written; a group whose turn comes after it was taken
    /// away is thrown away.
    void setChannel(usbHid* channel);
    void setChannel(Write write);

    /// Puts a group into a lane: a copy of the packets, each cut or filled with zeros to `packetSize`. Does
    /// not block. Once the thread has given up, a call starts it anew and loses its own packets; the groups
    /// that were left in the lanes go out then. A lane that does not exist takes nothing.
    void push(std::size_t lane, std::span<const Packet> packets);
    void push(std::size_t lane, std::span<const Report> packets);
    void push(std::size_t lane, const Report& packet) { push(lane, std::span(&packet, 1)); }

    /// Empties the lanes.
    void clearLanes();

    /// Ends the thread for good. Gives up after `limit`, for a thread that is held by a write; it still ends
    /// after that write.
    /// @return whether the thread has ended
    bool stopWithin(std::chrono::milliseconds limit);

    /// Whether the thread has given up, or was ended.
    bool ended() const { return !running; }

    /// Groups that were pushed and have been neither sent nor replaced. Deliberate: `clearLanes` leaves the
    /// count as it is, so that from then on it is ahead of the truth.
    std::int32_t queuedCount() const;

    /// Bytes of all packets that wait.
    std::size_t queuedBytes() const;

private:
    /// The packets of one `push`, one after the other.
    struct PacketGroup {
        std::vector<std::uint8_t> bytes;
        std::size_t packetSize = 0;
    };

    /// A lane as a queue of which only the ends are kept: the thread takes the group at the front at most
    /// once before it drops all but the newest, so that nothing between them can ever go out. Memory is
    /// bounded however long the thread is held.
    struct Lane {
        PacketGroup front;
        PacketGroup newest;
        int groups = 0;            ///< 0, 1 (`front`) or 2 (both).
        std::int32_t replaced = 0; ///< Groups that stood between the two, still in `queued`.
    };

    template <class Source>
    void pushCopies(std::size_t lane, std::span<const Source> packets);
    void append(std::size_t lane, PacketGroup group);
    bool revive();
    void start();
    void run();
    void rounds(std::unique_lock<std::mutex>& guard);
    bool coalesce();
    bool take(Lane& lane, PacketGroup& group);
    bool send(const Write& write, const PacketGroup& group, int& failures);
    void choosePacing();
    void keepGap(std::unique_lock<std::mutex>& guard);
    void pause(std::unique_lock<std::mutex>& guard, std::chrono::milliseconds time);

    Clock& clock;

    mutable std::mutex lock; ///< Guards what follows up to `threadLock`; never held while copying or writing.
    std::condition_variable changed; ///< Wakes the thread.
    std::condition_variable left;    ///< Told when the thread ends.
    bool wake = false;               ///< Set while a lane may hold work.
    Write channel;
    std::array<Lane, laneCount> lanes;
    std::int32_t queued = 0;
    bool pacing = false; ///< Of this round.
    std::uint32_t lastRoundTick;
    std::uint32_t lastSendTick = 0; ///< End of the last round that sent; kept only while there is a gap.

    std::atomic<bool> stopFlag{false};
    std::atomic<bool> running{false};
    std::mutex threadLock; ///< Guards `thread`. Taken before `lock`.
    std::thread thread;
};

} // namespace pyrux
