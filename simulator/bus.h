#pragma once

#include "simulator/firmware.h"
#include "simulator/models.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// @file
/// The bus of the hidapi stand-in: which firmware models are plugged in, how they misbehave, and what passed
/// on the wire. Exported by the stand-in for tests and hosts that are built with it.

#if defined(_WIN32)
#if defined(PYRUX_STANDIN_BUILDING)
#define PYRUX_SIM_API __declspec(dllexport)
#else
#define PYRUX_SIM_API __declspec(dllimport)
#endif
#else
#define PYRUX_SIM_API __attribute__((visibility("default")))
#endif

namespace pyrux::sim {

/// How a plugged device treats its reports. Default: well. A write that is under way keeps to the conduct
/// that it began with.
struct Conduct {
    std::chrono::milliseconds writeTime{0}; ///< Each hid_write takes this long (a slow or stalled device).
    std::chrono::milliseconds replyTime{0}; ///< Each input report comes this much later.
    bool silent = false;                    ///< Takes reports; none of the model's comes back.
    bool refuseWrites = false;              ///< hid_write gives -1, the model does not see the report.
    bool failReads = false;                 ///< hid_read gives -1, a waiting one at once.
    std::size_t readFailures = 0;           ///< So many times hid_read gives -1, then it works again.
    bool garbage = false;                   ///< Every byte of an input report is turned into another one.
    std::size_t shortReads = SIZE_MAX;      ///< Input reports are cut to this many bytes.
};

/// One report on the wire.
struct WireRecord {
    enum class Direction { toDevice, toHost } direction;
    /// To the device: as passed to hid_write, with report id. To the host: as hid_read gives it, with the id
    /// only where the interface's reports have one.
    std::vector<std::uint8_t> bytes;
};

/// Plugs a device in and gives it power. As with every pull, the library in this process is told as the
/// system would tell it.
/// @param instance  the piece of the path that tells this plug from others; empty: a new one, from "sim-0001"
///                  up. A device that comes back to the port that it was pulled out of has its old path.
/// @return the device path of the control interface, as hid_enumerate gives it
PYRUX_SIM_API std::string plug(std::shared_ptr<Firmware> device, std::string instance = "");

/// The paths of a device's collections, in the order of its identity. `path` is one of them.
PYRUX_SIM_API std::vector<std::string> pathsOf(const std::string& path);

/// Pulls a device out: reads and writes fail from now on, waiting ones at once. Its traffic can still be
/// taken.
PYRUX_SIM_API void unplug(const std::string& path);

/// Pulls all devices out and forgets all traffic, faults and counters. Handles stay to be closed, and paths
/// are not given out again.
PYRUX_SIM_API void reset();

/// Sets the conduct of a plugged device.
PYRUX_SIM_API void setConduct(const std::string& path, const Conduct& conduct);

/// Lets a stalled write, and those waiting after it, end now: the device has taken their reports.
PYRUX_SIM_API void releaseWrites(const std::string& path);

/// Reports to and from the interface of a path since the last call, in order. Waits up to `limit` until
/// `count` are there. The newest 65536 are kept.
PYRUX_SIM_API std::vector<WireRecord> takeTraffic(const std::string& path, std::size_t count = 0,
                                                  std::chrono::milliseconds limit = std::chrono::seconds(5));

/// Output reports since the last call as text: payload bytes in upper-case hexadecimal without the zeros at
/// the end, one report from the next by " | ", such as "41 80 | 51 00 00 00 C4". So 52 00 is "52", and a
/// payload of zeros is "00". Traffic of the interface towards the host is forgotten with them. A report of
/// other length than 65, or with a report id, is written in full in brackets.
PYRUX_SIM_API std::string takeWritten(const std::string& path);

/// Sends an input report as hid_read is to give it, with an id where the interface's reports have one, to the
/// host, on the interface of the path, past the firmware model and its conduct. It is cut to 64 bytes, or to
/// the interface's longest report where that is longer.
PYRUX_SIM_API void inject(const std::string& path, std::vector<std::uint8_t> report);

/// Handles that hid_open_path has given out and hid_close has not taken back.
PYRUX_SIM_API int openHandles();

/// Threads that are inside hid_write at this moment, waiting for a stalled device.
PYRUX_SIM_API int writersInside();

/// Waits up to `limit` until there are `count` such threads at least.
PYRUX_SIM_API bool awaitWritersInside(int count, std::chrono::milliseconds limit = std::chrono::seconds(5));

/// Waits up to `limit` until whoever reads a device has come back for more, with every input report so far
/// in hand. False also where nobody has ever read.
PYRUX_SIM_API bool awaitReader(const std::string& path,
                               std::chrono::milliseconds limit = std::chrono::seconds(5));

/// How often hid_read, hid_read_timeout were called for the interface of a path since the device was plugged
/// in or `reset` ran.
PYRUX_SIM_API int readWakeups(const std::string& path);

/// How often hid_init, hid_exit, hid_enumerate, hid_open, hid_open_path or hid_close began while another of
/// them was running: hidapi itself is not safe against that.
PYRUX_SIM_API int overlaps();

/// Calls with a handle that was not open, and calls of hid_close while another call used the handle. They do
/// no harm here; in hidapi they would touch freed memory.
PYRUX_SIM_API int misuses();

} // namespace pyrux::sim

/// The part of the stand-in that a host reaches without being built with it: pyruxctl loads the stand-in,
/// then the library. Paths and texts are NUL-terminated; results 0 or -1.
extern "C" {
/// Plugs a model in by name; its path goes to `path` (1024 bytes).
PYRUX_SIM_API int pyrux_sim_plug(const char* model, char* path);
PYRUX_SIM_API int pyrux_sim_unplug(const char* path);
/// Plugs a device that was pulled out in again, where it was before: it has its old path, and what it had
/// saved.
PYRUX_SIM_API int pyrux_sim_replug(const char* path);
/// Lets a device do something by itself: `event` as in Firmware::happen, its values in `values`.
PYRUX_SIM_API int pyrux_sim_event(const char* path, const char* event, const int* values, int count);
/// Tells what the LEDs of a device show now, as Firmware::picture: `zone` is called for each of its zones,
/// with the zone's name and three bytes (red, green, blue) for each LED, which are valid during the call.
/// @param context  handed on to `zone`
/// @return the number of zones, 0 for a device without lights; -1: no such device
PYRUX_SIM_API int pyrux_sim_picture(const char* path,
                                    void (*zone)(void* context, const char* name, const unsigned char* colors,
                                                 int leds),
                                    void* context);
/// Calls back for each report on the wire, on the thread that moves it and one call at a time: direction 0 to
/// the device (with report id), 1 to the host. The callback does not call the stand-in. Null ends it; no call
/// comes after that.
PYRUX_SIM_API void pyrux_sim_trace(void (*callback)(const char* path, int direction,
                                                    const unsigned char* bytes, int length));
/// The names of the models, separated by commas.
PYRUX_SIM_API const char* pyrux_sim_models();
}
