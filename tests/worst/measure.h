#pragma once

#include "tests/support/slots.h"
#include "tests/worst/device_time.h"

#include <cstddef>
#include <vector>

namespace pyrux::test {

/// Measures a call of an entry of a model's virtual table.
/// @return its ms
int measuredCall(Trouble trouble, const SlotTable& table, const Slot& slot, std::size_t number);

/// Measures a model's factory.
int measuredOpening(Trouble trouble, const ModelFacts& facts);

} // namespace pyrux::test
