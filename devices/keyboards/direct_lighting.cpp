#include "devices/keyboards/direct_lighting.h"

#include "devices/keyboards/keyboard_commands.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <span>
#include <utility>

namespace pyrux {

namespace {

namespace cmd {                        // numbers are report bytes
constexpr Report allKeys{0xC0, 0x00};  // 5 to 7: color
constexpr Report someKeys{0xC0, 0x01}; // 3: count, 5: LED and color of each key
constexpr Report drive{0xC0, 0xF0, 0x00, 0x00, 0x01};
} // namespace cmd

constexpr std::size_t colorBytes = 3;
constexpr std::size_t bytesPerKey = 4; // in a frame
constexpr std::size_t keysPerFrame = 15;
constexpr std::size_t frameLane = 0; // a frame replaces the one before, whatever its kind

/// Cuts a frame of a host into reports. Keys that the list does not name go black.
class FrameReports {
public:
    explicit FrameReports(const DirectLightRow& row) : row(row)
    {
        if (row.skippedLed)
            done.set(*row.skippedLed);
    }

    std::vector<Report> cut(const std::vector<DirectKeyColor>& list)
    {
        for (const DirectKeyColor& key : list) {
            if (takes(key.key))
                put({std::uint8_t(key.key), key.red, key.green, key.blue});
            else
                put({}); // deliberate: keeps its place
        }
        finish();
        for (std::uint8_t led = 0; led < row.leds; ++led)
            if (!done[led])
                put({led});
        finish();
        return std::move(reports);
    }

private:
    bool takes(std::int32_t led)
    {
        if (led < 0 || led >= row.leds || done[std::size_t(led)])
            return false;
        done.set(std::size_t(led));
        return true;
    }

    void put(const std::array<std::uint8_t, bytesPerKey>& entry)
    {
        if (count == keysPerFrame)
            finish();
        current = current.at(5 + count++ * bytesPerKey, entry);
    }

    void finish()
    {
        if (count)
            reports.push_back(current.at(3, std::uint8_t(count)));
        current = cmd::someKeys;
        count = 0;
    }

    const DirectLightRow& row;
    std::bitset<256> done;
    std::vector<Report> reports;
    Report current = cmd::someKeys;
    std::size_t count = 0;
};

} // namespace

_error DirectLighting::init()
{
    link.queue().clearLanes();
    const std::array results{link.send(keys::hostDriven), link.send(cmd::drive), link.send(cmd::allKeys)};
    {
        const std::lock_guard lock(mutex);
        frame = cmd::allKeys;
    }
    link.queue().paceDelayMs = row.frameGapMs;
    const auto failure = std::ranges::find_if(results, [](_error result) { return result != E_OK; });
    return failure == results.end() ? E_OK : *failure;
}

_error DirectLighting::uninit()
{
    link.queue().clearLanes();
    return keys::set(link, keys::editEnds);
}

_error DirectLighting::paint(const std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_SET;
    // Deliberate: without an `init` before, the report has no command.
    const std::lock_guard lock(mutex);
    frame = frame.at(5, std::span(rgb, colorBytes));
    link.queue().push(frameLane, frame);
    return E_OK;
}

_error DirectLighting::paintKeys(const std::vector<DirectKeyColor>& list)
{
    if (!list.empty())
        link.queue().push(frameLane, FrameReports(row).cut(list));
    return E_OK;
}

_error DirectLighting::turnOff()
{
    link.queue().clearLanes();
    return link.send(cmd::allKeys);
}

} // namespace pyrux
