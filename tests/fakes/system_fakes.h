#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// A library that stands for others which the library under test loads by name: the hook library (it has that
/// one's file name), NVIDIA's two, and the X library.

#if defined(_WIN32)
#define PYRUX_FAKE extern "C" __declspec(dllexport)
#else
#define PYRUX_FAKE extern "C" __attribute__((visibility("default")))
#endif

namespace pyrux::test {

/// What the functions answer, and what they were told.
struct SystemFakes {
    // Hook library
    int hookCalls = 0;
    std::uint32_t hookThread = 0;
    void* hookWindow = nullptr;
    int hookKind = 0;

    // NVIDIA's libraries
    enum class GpuStep { none, start, list, empty, load } failing = GpuStep::none;
    std::uint32_t missing = 0; ///< NVAPI's number of a function that is not there.
    std::uint32_t gpuLoad = 0; ///< Of the first card.
    int gpuStarts = 0;         ///< NVML: starts without a shutdown.

    // X library
    bool display = true;
    bool property = true;
    bool atom = true;
    int stateResult = 0;
    const char* rules = nullptr; ///< _XKB_RULES_NAMES
    std::size_t rulesLength = 0;
    unsigned char group = 0;
    int open = 0; ///< Displays and blocks that are not released.
};

/// The one set, which the functions read.
PYRUX_FAKE SystemFakes* systemFakes();

/// Sets it back for a test.
inline SystemFakes& freshSystemFakes()
{
    return *systemFakes() = {};
}

} // namespace pyrux::test
