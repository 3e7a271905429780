#include "transport/cmd_queue.h"

#include "core/log.h"
#include "platform/threads.h"
#include "transport/usb_hid.h"

#include <algorithm>
#include <string>
#include <utility>

namespace pyrux {

namespace {

/// The thread gives up at the next failed write after these, without one between them that succeeds.
constexpr int survivedFailures = 5;

/// Bytes of a packet that the line about its failure shows.
constexpr std::size_t shownBytes = 7;

CmdQueue::Packet bytesOf(CmdQueue::Packet packet)
{
    return packet;
}

CmdQueue::Packet bytesOf(const Report& packet)
{
    return packet.bytes();
}

void reportFailure(CmdQueue::Packet packet)
{
    debugText("command queue tx buffer Fail");
    std::string text = "tx buffer Fail = " + std::to_string(packet.size());
    for (const std::uint8_t byte : packet.first(std::min(packet.size(), shownBytes)))
        text += ' ' + std::to_string(byte);
    debugText(text);
}

} // namespace

CmdQueue::CmdQueue(Clock& clock) : clock(clock), lastRoundTick(clock.now())
{
    const std::lock_guard guard(threadLock);
    start();
}

CmdQueue::~CmdQueue()
{
    stopWithin(std::chrono::milliseconds(0));
    const std::lock_guard guard(threadLock);
    if (thread.joinable())
        thread.join();
}

void CmdQueue::setChannel(usbHid* to)
{
    if (to)
        setChannel(Write([to](Packet packet) { return to->writeWatched(packet); }));
    else
        setChannel(Write());
}

void CmdQueue::setChannel(Write write)
{
    {
        const std::lock_guard guard(lock);
        channel.swap(write);
    }
    changed.notify_one();
}

template <class Source>
void CmdQueue::pushCopies(std::size_t lane, std::span<const Source> packets)
{
    if (!running && revive())
        return;
    PacketGroup group{.bytes = {}, .packetSize = packetSize};
    group.bytes.resize(packets.size() * group.packetSize);
    auto to = group.bytes.begin();
    for (const Source& packet : packets) {
        std::ranges::copy(bytesOf(packet).first(std::min(bytesOf(packet).size(), group.packetSize)), to);
        to += std::ptrdiff_t(group.packetSize);
    }
    append(lane, std::move(group));
}

void CmdQueue::push(std::size_t lane, std::span<const Packet> packets)
{
    pushCopies(lane, packets);
}

void CmdQueue::push(std::size_t lane, std::span<const Report> packets)
{
    pushCopies(lane, packets);
}

void CmdQueue::append(std::size_t number, PacketGroup group)
{
    if (number >= laneCount)
        return;
    bool asleep = false;
    {
        const std::lock_guard guard(lock);
        Lane& lane = lanes[number];
        std::swap(lane.groups == 0 ? lane.front : lane.newest,
                  group); // what it replaces goes after the lock
        ++(lane.groups < 2 ? lane.groups : lane.replaced);
        ++queued;
        asleep = !std::exchange(wake, true);
    }
    if (asleep)
        changed.notify_one();
}

void CmdQueue::clearLanes()
{
    std::array<Lane, laneCount> old;
    const std::lock_guard guard(lock);
    lanes.swap(old);
}

std::int32_t CmdQueue::queuedCount() const
{
    const std::lock_guard guard(lock);
    return queued;
}

std::size_t CmdQueue::queuedBytes() const
{
    const std::lock_guard guard(lock);
    std::size_t bytes = 0;
    for (const Lane& lane : lanes)
        bytes += lane.front.bytes.size() + lane.newest.bytes.size();
    return bytes;
}

bool CmdQueue::stopWithin(std::chrono::milliseconds limit)
{
    {
        std::unique_lock guard(lock);
        stopFlag = true;
        changed.notify_one();
        if (!left.wait_for(guard, limit, [&] { return !running; }))
            return false;
    }
    const std::lock_guard guard(threadLock);
    if (thread.joinable())
        thread.join();
    return true;
}

/// Starts the thread again once it has given up.
/// @return whether that, or the end of the queue, takes the packets of the call
bool CmdQueue::revive()
{
    const std::lock_guard guard(threadLock);
    if (running)
        return false; // somebody else was first
    if (stopFlag)
        return true;
    debugText("cmdQueueThread is not running!");
    start();
    return true;
}

/// With `threadLock` held.
void CmdQueue::start()
{
    if (thread.joinable())
        thread.join();
    running = true;
    thread = platform::startThread([this] { run(); });
    if (!thread.joinable())
        running = false; // the next push tries again
}

void CmdQueue::run()
{
    std::unique_lock guard(lock);
    rounds(guard);
    running = false;
    left.notify_all();
}

void CmdQueue::rounds(std::unique_lock<std::mutex>& guard)
{
    int failures = 0;
    for (;;) {
        clock.wait(guard, changed, [&] { return stopFlag || (channel && wake); });
        if (stopFlag)
            return;
        choosePacing();
        if (!coalesce()) {
            wake = false;
            pacing = false;
            continue;
        }
        keepGap(guard);
        for (Lane& lane : lanes) {
            if (stopFlag)
                return;
            PacketGroup group;
            if (!take(lane, group))
                continue;
            if (const Write write = channel) {
                guard.unlock();
                const bool goOn = send(write, group, failures);
                guard.lock();
                if (!goOn)
                    return;
            }
            if (pacing)
                pause(guard, std::chrono::milliseconds(paceDelayMs));
        }
        if (minGapMs)
            lastSendTick = clock.now();
    }
}

/// Pacing begins when rounds come quickly one after the other: when the producer is fast.
void CmdQueue::choosePacing()
{
    pacing = true;
    if (forcePacing)
        return;
    const std::uint32_t tick = clock.now();
    pacing = std::int64_t(tick - lastRoundTick) < paceWindowMs;
    lastRoundTick = tick;
}

/// Drops all but the newest group of each lane.
/// @return whether there is one
bool CmdQueue::coalesce()
{
    bool work = false;
    for (Lane& lane : lanes) {
        const std::int32_t dropped = std::exchange(lane.replaced, 0) + (lane.groups == 2 ? 1 : 0);
        for (std::int32_t i = 0; i < dropped; ++i)
            if (--queued < 0)
                debugText("Error packet counter");
        if (lane.groups == 2) {
            lane.front = std::exchange(lane.newest, {});
            lane.groups = 1;
        }
        work = work || lane.groups > 0;
    }
    return work;
}

/// Moves the group at the front out of a lane.
/// @return false: there is none
bool CmdQueue::take(Lane& lane, PacketGroup& group)
{
    if (lane.groups == 0)
        return false;
    group = std::exchange(lane.front, std::exchange(lane.newest, {}));
    --lane.groups;
    if (--queued < 0)
        debugText("Error packet counter = " + std::to_string(queued));
    return true;
}

/// @return false: the device does not take its reports any more
bool CmdQueue::send(const Write& write, const PacketGroup& group, int& failures)
{
    for (std::size_t from = 0; from < group.bytes.size() && !stopFlag; from += group.packetSize) {
        const Packet packet = Packet(group.bytes).subspan(from, group.packetSize);
        try {
            const _error result = write(packet);
            if (result != E_NOT_OPEN && result != E_WRITE_TIMEOUT) {
                failures = 0;
                continue;
            }
            reportFailure(packet);
        } catch (...) {
            debugText("crash occur!!!");
        }
        if (++failures > survivedFailures)
            return false;
    }
    return true;
}

void CmdQueue::keepGap(std::unique_lock<std::mutex>& guard)
{
    const std::uint32_t gap = minGapMs;
    if (const std::uint32_t since = clock.now() - lastSendTick; gap != 0 && since < gap)
        pause(guard, std::chrono::milliseconds(gap - since));
}

void CmdQueue::pause(std::unique_lock<std::mutex>& guard, std::chrono::milliseconds time)
{
    if (time.count() > 0) // even a sleep of no time gives the processor away
        clock.sleep(guard, changed, time, [&] { return stopFlag.load(); });
}

} // namespace pyrux
