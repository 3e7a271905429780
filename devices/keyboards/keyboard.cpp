#include "devices/keyboards/keyboard.h"

#include "core/log.h"
#include "devices/keyboards/keyboard_commands.h"

#include <algorithm>
#include <bitset>
#include <span>
#include <string>
#include <string_view>

namespace pyrux {

namespace {

namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report changesOn{0x42, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01};
constexpr Report changeAck{0x42, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01};
constexpr Report keysOn{0x43, 0x00, 0x00, 0x00, 0x01};
constexpr Report resetProfile{0x50, 0x10}; // 5: 0xFF for all profiles
constexpr Report commit{0x50, 0x55};
constexpr Report setProfile{0x51, 0x00}; // 5: profile
constexpr Report setKey{0x51, 0x20};     // 3: key, 4 to 6: action
constexpr Report setKeys{0x51, 0x21};    // 3: page, 5 to 36: actions
constexpr Report resetPart{0x51, 0x98};  // 3: mask
constexpr Report getProfile{0x52, 0x00}; // reply 4: profile
constexpr Report getKeys{0x52, 0x21};    // 3: page; reply 4 to 35: actions
constexpr Report allKeys{0xC0, 0x00};    // 5 to 7: color
constexpr Report someKeys{0xC0, 0x01};   // 3: count, 5: LED and color of each key
constexpr Report drive{0xC0, 0xF0, 0x00, 0x00, 0x01};
} // namespace cmd

template <std::uint32_t event>
NotifyRecord changed(const Reply&)
{
    return {.event = event, .value = 0};
}

/// What a keyboard reports by itself. Deliberate: of two changes in one report only the first is told.
constexpr std::array<DeviceEvent<NotifyRecord>, 2> changes{{
    // head of the report, byte that must be 1, text after the model's name, answer, event for the host
    {{0x42, 0x20, 0x00}, 4, " profile change", cmd::changeAck, changed<KEYBOARD_PROFILE_CHANGED>},
    {{0x42, 0x20, 0x00}, 7, " effect change", cmd::changeAck, changed<KEYBOARD_EFFECT_CHANGED>},
}};

constexpr std::int32_t firstPaceMs = 10; // until a host drives the lights
constexpr std::uint8_t keyMapPages = 16;
constexpr std::size_t keysPerPage = 16;
constexpr std::size_t colorBytes = 3;
constexpr std::size_t bytesPerKey = 4; // in a frame
constexpr std::size_t keysPerFrame = 15;
constexpr std::chrono::milliseconds frameTime{150}; // a status frame takes less, unless the device hangs
constexpr std::size_t frameLane = 0;                // a frame replaces the one before, whatever its kind

/// Cuts a frame of a host into reports. Keys that the list does not name go black.
class FrameReports {
public:
    explicit FrameReports(const KeyboardLayout& layout) : layout(layout)
    {
        if (layout.skippedLed)
            done.set(*layout.skippedLed);
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
        for (std::uint8_t led = 0; led < layout.directLeds; ++led)
            if (!done[led])
                put({led});
        finish();
        return std::move(reports);
    }

private:
    bool takes(std::int32_t led)
    {
        if (led < 0 || led >= layout.directLeds || done[std::size_t(led)])
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

    const KeyboardLayout& layout;
    std::bitset<256> done;
    std::vector<Report> reports;
    Report current = cmd::someKeys;
    std::size_t count = 0;
};

} // namespace

Keyboard::Keyboard(const std::string& path, const KeyboardLayout& layout)
    : NotifyingDevice(path, {.model = layout.model,
                             .mode = usbHid::Mode::timed,
                             .wait = std::chrono::milliseconds(3000),
                             .runningMatchCount = true,
                             .paceMs = firstPaceMs}),
      layout(layout), effectMemory(link, layout.effects), effects(layout.effects)
{
    if (!link.opened())
        return;
    link.start([this](const Reply& reply) { take(reply); });
    set(keys::serviceOn);
    set(keys::editEnds);
    loadEffects();
    setActiveEffect(readEffectMode());
    send(cmd::changesOn);
    send(cmd::changeAck);
    set(cmd::keysOn);
    if (layout.effects.systemStatus)
        statusEffect = std::make_unique<StatusEffect>(
            layout.chart, [this] { return statusShown(); },
            [this](std::span<const std::uint8_t> frame) { showStatus(frame); });
}

Keyboard::~Keyboard()
{
    statusEffect.reset();
    link.stop();
}

void Keyboard::noteClosed()
{
    LinkedDevice::noteClosed();
    if (statusEffect)
        statusEffect->askToStop();
}

void Keyboard::sayGoodbye()
{
    if (link.unplugged())
        return;
    if (statusEffect)
        statusEffect->stopWithin(frameTime);
    link.resume();
    set(keys::serviceOn);
    endEdit();
    endEdit(); // deliberate: twice
}

bool Keyboard::endThreads(std::chrono::steady_clock::time_point deadline)
{
    const bool linkEnded = link.endThreads(deadline);
    return (!statusEffect || statusEffect->stopWithin(timeUntil(deadline))) && linkEnded;
}

_error Keyboard::get(const Report& command, Reply& reply, std::size_t matchLength)
{
    return link.get(command, reply, matchLength);
}

_error Keyboard::set(const Report& command, std::size_t matchLength)
{
    Reply reply;
    return get(command, reply, matchLength);
}

void Keyboard::endEdit()
{
    if (link.isOpen())
        set(keys::editEnds);
}

_error Keyboard::setLightingInit()
{
    link.queue().clearLanes();
    const std::array results{send(keys::hostDriven), send(cmd::drive), send(cmd::allKeys)};
    {
        const std::lock_guard lock(frameLock);
        lightingReport = cmd::allKeys;
    }
    link.queue().paceDelayMs = layout.frameGapMs;
    const auto failure = std::ranges::find_if(results, [](_error result) { return result != E_OK; });
    return failure == results.end() ? E_OK : *failure;
}

_error Keyboard::setLightingUninit()
{
    link.queue().clearLanes();
    return set(keys::editEnds);
}

_error Keyboard::setLightingPortColor(const std::uint8_t* rgb)
{
    if (!rgb)
        return E_INVALID_SET;
    // Deliberate: without a `setLightingInit` before, the report has no command.
    const std::lock_guard lock(frameLock);
    lightingReport = lightingReport.at(5, std::span(rgb, colorBytes));
    link.queue().push(frameLane, lightingReport);
    return E_OK;
}

_error Keyboard::setSyncLightingData(const std::vector<DirectKeyColor>& list)
{
    if (!list.empty())
        link.queue().push(frameLane, FrameReports(layout).cut(list));
    return E_OK;
}

_error Keyboard::setLightingTurnOff()
{
    link.queue().clearLanes();
    return send(cmd::allKeys);
}

_error Keyboard::changeProfileId(std::uint8_t id)
{
    if (id >= profiles)
        return E_INVALID_SET;
    set(keys::editOn);
    const _error result = set(cmd::setProfile.at(5, id));
    if (!result)
        currentProfile = id;
    reloadNeeded = true; // deliberate: also when the device has not answered
    return result;
}

_error Keyboard::getCurrProfileId(std::uint8_t* id)
{
    if (!id)
        return E_INVALID_GET;
    set(keys::editOn);
    Reply reply;
    const _error result = get(cmd::getProfile, reply);
    if (!result && reply.begins({0x52, 0x00})) {
        *id = reply[4];
        currentProfile = *id;
    }
    return result;
}

_error Keyboard::resetProfile(std::uint8_t scope)
{
    set(keys::serviceOn);
    const _error result = set(cmd::resetProfile.at(5, scope ? 0xFF : 0x00));
    if (!scope)
        set(cmd::commit); // deliberate: a reset of all profiles is not committed
    endEdit();
    reloadNeeded = true;
    return result;
}

_error Keyboard::resetPartial(std::uint8_t part)
{
    if (part >= layout.partialResets)
        return E_INVALID_SET;
    set(keys::editOn);
    const _error result = set(cmd::resetPart.at(3, std::uint8_t(1 << part)));
    if (part == 0 && !result)
        reloadNeeded = true;
    return result;
}

_error Keyboard::setKeyMapping(std::uint32_t count, const KeyMapEntry* entries)
{
    if (!entries && count)
        return E_INVALID_SET;
    set(keys::editOn);
    for (const KeyMapEntry& entry : std::span(entries, count))
        if (const _error failure = set(cmd::setKey.at(3, entry.key).at(4, entry.action), mappingMatch))
            return failure;
    return E_OK;
}

_error Keyboard::setKeyMappingAll(const KeyMapTable* table)
{
    if (!table)
        return E_INVALID_SET;
    set(keys::editOn);
    for (std::uint8_t page = 0; page < keyMapPages; ++page) {
        Report report = cmd::setKeys.at(3, page);
        for (std::size_t i = 0; i < keysPerPage; ++i)
            report = report.at16(5 + 2 * i, table->values[page * keysPerPage + i]);
        if (const _error failure = set(report, numberedMatch))
            return failure;
    }
    return E_OK;
}

_error Keyboard::getKeyMappingAll(KeyMapTable* table)
{
    if (!table)
        return E_INVALID_GET;
    set(keys::editOn);
    for (std::uint8_t page = 0; page < keyMapPages; ++page) {
        Reply reply;
        if (const _error failure = get(cmd::getKeys.at(3, page), reply, numberedMatch))
            return failure;
        if (!reply.begins({0x52, 0x21, page}))
            continue; // the answer to another call
        for (std::size_t i = 0; i < keysPerPage; ++i)
            table->values[page * keysPerPage + i] = reply.u16(4 + 2 * i);
    }
    return E_OK;
}

void Keyboard::take(const Reply& reply)
{
    if (takeChange(reply))
        return;
    if (reply.begins({0x43, 0x01}))
        takeKey(reply[4], reply[5]);
    else
        link.deliver(reply);
}

bool Keyboard::takeChange(const Reply& reply)
{
    for (const DeviceEvent<NotifyRecord>& change : changes) {
        if (!change.fits(reply))
            continue;
        if (&change == &changes.front())
            reloadNeeded = true; // before a host that is told can ask
        tell(change, reply);
        return true;
    }
    return false;
}

void Keyboard::takeKey(std::uint8_t number, std::uint8_t state)
{
    constexpr std::uint8_t up = 0x40;
    constexpr std::uint8_t down = 0xC0;
    if (state != up && state != down)
        return;
    if (number == layout.fnKey)
        layout.fnHeld = state == down;
    std::uint16_t value = USAGE_NO_KEY;
    if (number < layout.keyUsages.size())
        value = layout.keyUsages[number];
    if (layout.fnHeld && (value != USAGE_FN || layout.fnRaisesItself))
        value = std::uint16_t(value + USAGE_FN);
    tell(NotifyRecord{.event = state == down ? KEYBOARD_KEY_DOWN : KEYBOARD_KEY_UP, .value = value});
}

} // namespace pyrux
