#include "devices/mice/surface_learning.h"

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report state{0x80, 0x00}; // reply 4: state
constexpr Report stop {0x80, 0x01};
constexpr Report start{0x80, 0x01, 0x00, 0x00, 0x01};
} // namespace cmd
// clang-format on

} // namespace

_error SurfaceLearning::startSurfaceLearning()
{
    modes.configure();
    return link.set(cmd::start);
}

_error SurfaceLearning::stopSurfaceLearning()
{
    return link.set(cmd::stop);
}

_error SurfaceLearning::getSurfaceLearningStatus(std::uint8_t* status)
{
    if (!status)
        return E_INVALID_GET;
    modes.configure();
    Reply reply;
    if (const _error result = link.get(cmd::state, reply))
        return result;
    *status = reply[4];
    return E_OK;
}

_error SurfaceLearning::getSurfaceLearningResult(std::uint8_t* a, std::uint8_t* b)
{
    if (!a || !b)
        return E_INVALID_GET;
    PerformanceRecord record{};
    const _error result = performance.getPerformance(&record);
    *a = result ? SurfaceDefaults::a : record.surfaceA;
    *b = result ? SurfaceDefaults::b : record.surfaceB;
    return result;
}

} // namespace pyrux
