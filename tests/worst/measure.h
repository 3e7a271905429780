#pragma once

#include "tests/support/slots.h"
#include "tests/worst/device_time.h"

#include <cstddef>
#include <functional>
#include <string>

namespace pyrux::test {

/// An entry of a model's virtual table and one way to call it.
struct Measured {
    const Slot& slot;
    Call call;
    std::string memory;
};

/// Calls an entry of a device that works, then measures another one.
/// @param before  no memory that matters, and no time
/// @return the ms of the second call
int measuredCall(Trouble trouble, const SlotTable& table, const Measured& measured,
                 const std::function<void(void* host, Byte* memory)>& before = {});

/// Measures a model's factory.
int measuredOpening(Trouble trouble, const ModelFacts& facts);

/// The entry of a name, by number.
std::size_t numberOf(const SlotTable& table, const std::string& operation);

} // namespace pyrux::test
