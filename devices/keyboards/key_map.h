#pragma once

#include "pyrux/error.h"
#include "pyrux/keyboard_records.h"
#include "transport/device_link.h"

#include <cstdint>

namespace pyrux {

/// What the keys of a keyboard do. Actions are passed through as they stand.
class KeyMap {
public:
    explicit KeyMap(DeviceLink& link) : link(link) {}

    _error set(std::uint32_t count, const KeyMapEntry* entries);
    _error setAll(const KeyMapTable* table);
    _error getAll(KeyMapTable* table);

private:
    DeviceLink& link;
};

} // namespace pyrux
