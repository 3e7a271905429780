#include "devices/keyboards/status_effect.h"

#include "pyrux/keyboard_records.h"
#include "services/service_manager.h"
#include "services/spectrum.h"

#include <algorithm>
#include <utility>

namespace pyrux {

StatusEffect::StatusEffect(const StatusChart& chart, Shown shown, Show show)
    : chart(chart), shown(std::move(shown)), show(std::move(show)), levels(std::size_t(chart.columns), -1)
{
    thread = std::thread([this] { run(); });
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return ready; });
    }
    PYRUX_SERVICE& services = PYRUX_SERVICE::instance();
    load = services.subscribe("cpuusage", threadId);
    spectrum = services.subscribe("amplitude", threadId);
}

StatusEffect::~StatusEffect()
{
    askToStop();
    thread.join();
}

void StatusEffect::askToStop()
{
    {
        const std::lock_guard lock(mutex);
        if (stopping)
            return;
        load.end();
        spectrum.end();
        stopping = true;
    }
    changed.notify_all();
    platform::postThreadMessage(threadId, {MSG_QUIT_THREAD});
}

bool StatusEffect::stopWithin(std::chrono::milliseconds limit)
{
    askToStop();
    if (std::this_thread::get_id() == thread.get_id())
        return false;
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, limit, [&] { return finished; });
}

bool StatusEffect::stopAsked()
{
    const std::lock_guard lock(mutex);
    return stopping;
}

void StatusEffect::run()
{
    const auto messages = platform::ThreadMessages::open();
    {
        const std::lock_guard lock(mutex);
        threadId = platform::currentThreadId();
        ready = true;
    }
    changed.notify_all();
    while (!stopAsked())
        if (const auto message = messages->wait(std::chrono::hours(1)))
            take(*message);
    const std::lock_guard lock(mutex);
    finished = true;
    changed.notify_all();
}

void StatusEffect::take(const platform::ThreadMessage& message)
{
    if (message.number != MSG_CPU_USAGE && message.number != MSG_AMPLITUDE)
        return;
    const std::optional<std::uint32_t> type = shown();
    if (!type) {
        // Nobody looks: samples are taken slowly.
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::milliseconds(100), [&] { return stopping; });
        return;
    }
    if (message.number == MSG_CPU_USAGE && *type == STATUS_CPU_USAGE) {
        std::shift_right(levels.begin(), levels.end(), 1);
        levels.front() = levelOfLoad(chart, payloadOf<MSG_CPU_USAGE>(message));
        draw();
    } else if (message.number == MSG_AMPLITUDE && *type == STATUS_AUDIO_SPECTRUM) {
        levels = spectrumToLevels(payloadOf<MSG_AMPLITUDE>(message), chart.columns, chart.rows);
        draw();
    }
}

void StatusEffect::draw()
{
    const std::vector<std::uint8_t> frame = chartFrame(chart, levels);
    show(frame);
}

} // namespace pyrux
