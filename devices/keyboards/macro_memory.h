#pragma once

#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "transport/device_link.h"
#include "transport/report.h"

#include <atomic>
#include <cstdint>

namespace pyrux {

/// A keyboard's macros: twenty places.
class MacroMemory {
public:
    /// @param closed  set once the host object is closed: a read that goes on ends
    MacroMemory(DeviceLink& link, const std::atomic<bool>& closed) : link(link), closed(closed) {}

    _error set(MacroRecord* record);
    _error get(MacroRecord* record);
    _error getAll(MacroList* list);
    _error clear(std::uint8_t index);

private:
    _error read(const Report& mode, MacroRecord& record);
    void readName(MacroRecord& record);
    _error readEvents(MacroRecord& record);
    _error remove(std::uint8_t index);

    DeviceLink& link;
    const std::atomic<bool>& closed;
};

} // namespace pyrux
