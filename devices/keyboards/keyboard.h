#pragma once

#include "devices/keyboards/direct_lighting.h"
#include "devices/keyboards/effects.h"
#include "devices/keyboards/key_map.h"
#include "devices/keyboards/key_reports.h"
#include "devices/keyboards/keyboard_layout.h"
#include "devices/keyboards/macro_memory.h"
#include "devices/keyboards/profiles.h"
#include "devices/keyboards/status_effect.h"
#include "devices/linked_device.h"
#include "pyrux/error.h"
#include "pyrux/records.h"
#include "transport/device_events.h"
#include "transport/report.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace pyrux {

/// The protocol of the wired keyboards: the parts that a keyboard has by its layout, its start and its end.
/// Host operations are those of the parts; the headers of the host interfaces tell arguments, results and
/// bytes.
class KeyboardCore : public LinkedDevice {
public:
    std::int32_t openFailed() const override;
    void noteClosed() override;
    void sayGoodbye() override;
    bool endThreads(std::chrono::steady_clock::time_point deadline) override;

    _error startRecordMacro();
    _error stopRecordMacro();

protected:
    KeyboardCore(const std::string& path, const KeyboardLayout& layout);
    ~KeyboardCore() override = default;

    /// Starts the reader and gets the keyboard ready.
    void begin(std::function<void(const Reply&)> take);

    /// The change of profile or effect that a report tells of.
    const DeviceEvent<NotifyRecord>* changeIn(const Reply& report);

    const std::optional<KeyReports> keyReports; ///< None: the keyboard does not tell of its keys.

private:
    ProfileState state;
    bool threadless = false; ///< The system had no room for the status effect's thread.

public: // what host operations are forwarded to; a part that the layout has no row for is null
    Profiles profiles;
    KeyMap keyMap;
    MacroMemory macros;
    const std::unique_ptr<DirectLighting> lights;
    const std::unique_ptr<StatusEffect> status;
    Effects effects;
};

/// A keyboard that tells the host of its events in records.
class Keyboard : public NotifyingDevice<NotifyCallback, KeyboardCore> {
public:
    using HostCallback = NotifyCallback;

protected:
    Keyboard(const std::string& path, const KeyboardLayout& layout);

private:
    void take(const Reply& report);
};

} // namespace pyrux
