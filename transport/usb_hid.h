#pragma once

#include "pyrux/error.h"
#include "transport/hid_handle.h"
#include "transport/watched_writer.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>

namespace pyrux {

/// What the reads give for a closed channel or when nothing came. No result code: callers compare it with 0.
constexpr int nothingRead = 404;

/// One open device: serialised writes and the few forms of read that the devices need. A channel is opened
/// once; a closed one stays closed.
class usbHid {
public:
    /// How the handle is opened, and what a read that finds nothing does: it waits, returns at once, or waits
    /// on a handle that does not block by itself.
    enum class Mode { blocking, polled, timed };

    /// @param path  the device path; "&ISDONGLE" at its end, in any case, is not part of what is opened
    explicit usbHid(std::string path);
    virtual ~usbHid();
    usbHid(const usbHid&) = delete;
    usbHid& operator=(const usbHid&) = delete;

    const std::string& path() const { return path_; }

    /// Opens the device. False when that fails.
    bool open(Mode mode);
    bool isOpen() const { return current() != nullptr; }

    /// Closes the channel; calls that are inside are let out.
    void closeChannel();

    /// The normal way to send: one write at a time, also across threads.
    /// @return E_OK, also for a write that the system refused; E_NOT_OPEN; E_WRITE_TIMEOUT after 1000 ms, the
    ///         channel having been locked for that long
    _error writeWatched(std::span<const std::uint8_t> report);

    /// Sends on the caller's thread, past the lock of the watched writes.
    /// @return E_OK; E_NOT_OPEN; E_WRITE_TIMEOUT when the system refuses
    _error writeDirect(std::span<const std::uint8_t> report);

    /// Waits for an input report; on a polled channel looks for one. `closeChannel` and `endReads` get it to
    /// return, at once from a device that has been silent for a while, else within 100 ms.
    /// @return hidapi's count, -1 for an error; `nothingRead` for a closed channel
    int readBlocking(std::span<std::uint8_t> buffer);

    /// Waits 1000 ms for an input report of up to 65 bytes.
    /// @return 0 or `nothingRead`
    int read1000(std::span<std::uint8_t, 65> buffer);

    /// Waits 3000 ms for an input report.
    /// @return 0 or `nothingRead`
    int read3000(std::span<std::uint8_t> buffer);

    /// Asks for an input report of 5 bytes.
    /// @return E_OK or E_INVALID_GET
    _error getInputReport(std::span<std::uint8_t, 5> buffer);

    /// For readers of a polled channel that have found nothing for a while: from now on input ends a wait.
    /// One more look has to follow, and then `awaitInput`.
    /// @return false: the system cannot wait for this device
    bool markInput();

    /// Waits for input since `markInput`, for the end of the reads, or one second.
    void awaitInput();

    /// Lets blocking reads return `nothingRead` from now on, and ends waits for input.
    void endReads();

private:
    std::shared_ptr<HidHandle> current() const;
    int readAfterSilence(HidHandle& from, std::span<std::uint8_t> buffer) const;
    int readLimited(std::span<std::uint8_t> buffer, int limitMs);

    std::string path_;
    mutable std::mutex handleMutex;
    std::shared_ptr<HidHandle> handle;
    Mode mode = Mode::blocking;
    std::atomic<bool> readsEnded{false};
    WatchedWriter writer;
};

} // namespace pyrux
