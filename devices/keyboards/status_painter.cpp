#include "devices/keyboards/status_painter.h"

#include "pyrux/keyboard_records.h"
#include "services/service_manager.h"
#include "services/spectrum.h"

#include <algorithm>
#include <utility>

namespace pyrux {

namespace {

constexpr std::chrono::milliseconds idlePause{100}; // between samples while nobody looks

} // namespace

StatusPainter::StatusPainter(const StatusChart& chart, Shown shown, Show show)
    : chart(chart), shown(std::move(shown)), show(std::move(show)), levels(std::size_t(chart.columns), -1)
{
}

bool StatusPainter::start()
{
    if (!thread.start([this](const platform::ThreadMessage& message) { take(message); }))
        return false;
    PYRUX_SERVICE& services = PYRUX_SERVICE::instance();
    load = services.subscribe("cpuusage", thread.id());
    spectrum = services.subscribe("amplitude", thread.id());
    return true;
}

void StatusPainter::askToStop()
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
    thread.askToStop();
}

bool StatusPainter::stopWithin(std::chrono::milliseconds limit)
{
    askToStop();
    return thread.stopWithin(limit);
}

bool StatusPainter::stopAsked()
{
    const std::lock_guard lock(mutex);
    return stopping;
}

void StatusPainter::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(mutex);
    changed.wait_for(lock, time, [&] { return stopping; });
}

void StatusPainter::take(const platform::ThreadMessage& message)
{
    const bool sample = message.number == MSG_CPU_USAGE || message.number == MSG_AMPLITUDE;
    if (!sample || stopAsked())
        return;
    const std::optional<std::uint32_t> type = shown();
    if (!type) {
        pause(idlePause);
    } else if (message.number == MSG_CPU_USAGE && *type == STATUS_CPU_USAGE) {
        std::shift_right(levels.begin(), levels.end(), 1);
        levels.front() = levelOfLoad(chart, payloadOf<MSG_CPU_USAGE>(message));
        draw();
    } else if (message.number == MSG_AMPLITUDE && *type == STATUS_AUDIO_SPECTRUM) {
        levels = spectrumToLevels(payloadOf<MSG_AMPLITUDE>(message), chart.columns, chart.rows);
        draw();
    }
}

void StatusPainter::draw()
{
    const std::vector<std::uint8_t> frame = chartFrame(chart, levels);
    show(frame);
}

} // namespace pyrux
