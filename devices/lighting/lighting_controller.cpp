#include "devices/lighting/lighting_controller.h"

namespace pyrux {

namespace {

ReaderRules readerRules(const ControllerTraits& traits)
{
    using std::chrono::milliseconds;
    return {.survivedFailures = 29, // the 30th ends the reader
            .failurePause = milliseconds(100),
            .polledPause = milliseconds(5),
            .failureText = traits.failureText,
            .logCategory = {}};
}

} // namespace

LightingController::LightingController(const std::string& path, const ControllerTraits& traits)
    : channel(path), exchange(channel, controllerRules(traits.model, traits.wait, traits.gap)),
      reader(channel, readerRules(traits))
{
    opened = channel.open(traits.mode);
    if (!opened)
        return;
    queue.paceDelayMs = traits.paceMs;
    queue.setChannel(&channel);
}

void LightingController::setUnplugged(bool gone)
{
    unplugged = gone;
    if (gone)
        queue.stopWithin(std::chrono::milliseconds(0)); // frames that wait are not sent any more
}

bool LightingController::endThreads(std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    queue.stopWithin(std::chrono::milliseconds(0)); // both threads end at the same time
    const bool readerEnded = reader.stopWithin(limit);
    channel.closeChannel();
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return queue.stopWithin(left) && readerEnded;
}

void LightingController::write(std::initializer_list<Report> commands)
{
    for (const Report& command : commands)
        write(command);
}

} // namespace pyrux
