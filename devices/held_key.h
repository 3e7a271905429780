#pragma once

#include "core/models.h"

#include <atomic>

namespace pyrux {

/// Whether the key is held that changes what a model tells of its other keys: a mouse's shift, a keyboard's
/// Fn. Deliberate: one flag for all devices of a model, which outlives them.
std::atomic<bool>& heldKeyOf(const ModelRow& model);

} // namespace pyrux
