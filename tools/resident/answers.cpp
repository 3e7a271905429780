#include "tools/resident/answers.h"

namespace pyrux::peer {
namespace {

// Degrees Celsius of the simulated temperature.
constexpr int lowest = 30;
constexpr int highest = 100;
constexpr int step = 5;

constexpr std::string_view acknowledgement = "TW_OK";

} // namespace

std::string Answers::to(std::string_view request)
{
    const std::lock_guard lock(mutex);
    if (request == "temp") {
        const std::string both = std::to_string(simulated);
        return simulated != 0 ? both + ";" + both : temperatures;
    }
    if (request == "getcorenum")
        return cores;
    if (request == "getsysinfo")
        return record;
    if (request == "version")
        return version;
    if (request == "fake_temp")
        simulated = lowest;
    if (request == "fake_step" && simulated != 0)
        simulated = simulated < highest ? simulated + step : lowest;
    return std::string(acknowledgement);
}

} // namespace pyrux::peer
