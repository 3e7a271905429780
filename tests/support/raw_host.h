#pragma once

#include "tests/support/member_call.h"

#include <cstddef>
#include <cstdint>

/// @file
/// Host objects as a host without headers sees them: nothing here uses the interfaces' declarations.

namespace pyrux::test {

/// Calls the N-th entry of an object's first virtual table.
template <class Result = std::int32_t, class... Values>
Result callEntry(void* object, std::size_t number, Values... values)
{
    using Operation = Result(PYRUX_MEMBER_CALL*)(void*, Values...);
    return reinterpret_cast<Operation>((*static_cast<void***>(object))[number])(object, values...);
}

/// What stands in a host object.
struct RawHost {
    void* table;
    void* hooks;
    std::int32_t openFailed;
    void* device;
    std::int32_t closed;
};

inline RawHost& rawHost(void* object)
{
    return *static_cast<RawHost*>(object);
}

/// The core's hooks, by their entries in the object's second table.
enum class Hook : std::size_t { preInit, postInit, preExit, postExit, exit };

/// Calls one of the core's hooks. `gone`: the device is not there any more.
inline std::int32_t callHook(void* object, Hook hook, bool gone)
{
    const std::uint8_t flag = gone ? 1 : 0;
    return callEntry(&rawHost(object).hooks, std::size_t(hook), &flag);
}

} // namespace pyrux::test
