#pragma once

#include "devices/keyboards/keyboard_layout.h"
#include "devices/keyboards/profiles.h"
#include "devices/keyboards/status_painter.h"
#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "transport/device_link.h"
#include "transport/notify.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

namespace pyrux {

/// The effect that charts what the computer does. The service's library, in background mode, paints the
/// keyboard; an application's asks the service for it and hands the frames to a callback of the host.
class StatusEffect {
public:
    /// @param effect  its number among the keyboard's effects
    StatusEffect(DeviceLink& link, const StatusRow& row, std::uint8_t effect, ProfileState& state);

    _error set(const SystemStatusEffect* params);
    _error registerNotify(SystemStatusCallback callback);
    _error unRegisterNotify();

    /// Begins with the parameters that were set last.
    void beginAgain();

    /// Ends for the sake of the custom effect, on a keyboard where that is so.
    void giveWay();

    // The thread that paints, as `StatusPainter` has it.
    bool start() { return painter.start(); }
    void askToStop() { painter.askToStop(); }
    bool stopWithin(std::chrono::milliseconds limit) { return painter.stopWithin(limit); }

private:
    _error begin(const SystemStatusEffect& params);
    _error prepareFrames();
    void askService(std::uint32_t wanted);
    std::optional<std::uint32_t> shown() const;
    void show(std::span<const std::uint8_t> frame);
    void paint(std::span<const std::uint8_t> frame);

    DeviceLink& link;
    const StatusRow& row;
    const std::uint8_t effect;
    ProfileState& state;
    Notify<SystemStatusCallback> notify;
    std::atomic<std::uint32_t> type{0};
    std::atomic<std::uint32_t> companion{0};
    StatusPainter painter; // ends before what it uses goes
};

} // namespace pyrux
