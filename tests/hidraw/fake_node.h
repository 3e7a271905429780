#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// @file
/// A hidraw node without a kernel behind it, for the real hidapi: this program's own `open`, `ioctl`,
/// `write`, `poll` and `free` stand before the C library's.

namespace pyrux::test {

/// One node. As in the kernel, each open descriptor gets every input report, in a queue of its own.
class FakeNode {
public:
    FakeNode();
    ~FakeNode();
    FakeNode(const FakeNode&) = delete;
    FakeNode& operator=(const FakeNode&) = delete;

    /// "/dev/hidraw" and a number that no node of the machine has.
    const std::string& path() const;

    /// An input report for all that have the node open.
    void send(const std::vector<std::uint8_t>& report);

    /// What has been written, in its order, through whichever descriptor.
    std::vector<std::vector<std::uint8_t>> takeWritten();

    /// Writes fail with EIO from now on, or don't.
    void refuseWrites(bool refuse);

    /// The device goes: reads fail.
    void unplug();

    /// Descriptors of the node that are open.
    int openDescriptors() const;

    /// Somebody waits in poll for the node and for something else.
    bool isAwaited() const;

    struct State;

private:
    std::shared_ptr<State> state;
};

/// While it lives, every release of memory by hidapi takes a while, and those of one block that overlap are
/// counted and kept from happening twice.
class SlowRelease {
public:
    explicit SlowRelease(std::chrono::microseconds time);
    ~SlowRelease();
    SlowRelease(const SlowRelease&) = delete;
    SlowRelease& operator=(const SlowRelease&) = delete;

    static int releases();
    static int doubleReleases();
};

/// Calls of poll that have come back from having waited, in the whole program.
int pollWakeups();

} // namespace pyrux::test
