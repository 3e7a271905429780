#include "devices/keyboards/keyboard.h"

#include "devices/keyboards/keyboard_commands.h"
#include "pyrux/keyboard_records.h"

#include <array>
#include <utility>

namespace pyrux {

namespace {

namespace cmd { // numbers are report bytes
constexpr Report changesOn{0x42, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01};
constexpr Report changeAck{0x42, 0x10, 0x00, 0x00, 0x01, 0x00, 0x00, 0x01};
constexpr Report keysOn{0x43, 0x00, 0x00, 0x00, 0x01};
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

constexpr std::int32_t firstPaceMs = 10;            // until a host drives the lights
constexpr std::chrono::milliseconds frameTime{150}; // a status frame takes less, unless the device hangs

LinkRules linkRules(const KeyboardLayout& layout)
{
    return {.model = layout.model,
            .mode = usbHid::Mode::timed,
            .wait = std::chrono::milliseconds(3000),
            .runningMatchCount = true,
            .paceMs = layout.lights ? std::optional(firstPaceMs) : std::nullopt};
}

std::unique_ptr<DirectLighting> makeLights(DeviceLink& link, const KeyboardLayout& layout)
{
    return layout.lights ? std::make_unique<DirectLighting>(link, *layout.lights) : nullptr;
}

std::unique_ptr<StatusEffect> makeStatus(DeviceLink& link, const KeyboardLayout& layout, ProfileState& state)
{
    const std::optional<std::uint8_t> effect = layout.effects.systemStatus;
    return effect ? std::make_unique<StatusEffect>(link, layout.status, *effect, state) : nullptr;
}

std::optional<KeyReports> makeKeyReports(const KeyboardLayout& layout)
{
    return layout.keys ? std::optional(KeyReports(layout.model, *layout.keys)) : std::nullopt;
}

} // namespace

KeyboardCore::KeyboardCore(const std::string& path, const KeyboardLayout& layout)
    : LinkedDevice(path, linkRules(layout)), keyReports(makeKeyReports(layout)),
      profiles(link, state, layout.partialResets), keyMap(link), macros(link, closed),
      lights(makeLights(link, layout)), status(makeStatus(link, layout, state)),
      effects(link, layout.model, layout.effects, state, status.get())
{
}

void KeyboardCore::begin(std::function<void(const Reply&)> take)
{
    if (link.opened())
        link.start(std::move(take));
    if (!link.opened())
        return;
    keys::set(link, keys::serviceOn);
    keys::set(link, keys::editEnds);
    effects.load();
    link.write({cmd::changesOn, cmd::changeAck});
    if (keyReports)
        keys::set(link, cmd::keysOn);
    threadless = status && !status->start();
}

std::int32_t KeyboardCore::openFailed() const
{
    return threadless ? 1 : LinkedDevice::openFailed();
}

void KeyboardCore::noteClosed()
{
    LinkedDevice::noteClosed();
    if (status)
        status->askToStop();
}

void KeyboardCore::sayGoodbye()
{
    if (link.unplugged())
        return;
    if (status)
        status->stopWithin(frameTime);
    link.resume();
    keys::set(link, keys::serviceOn);
    keys::endEdit(link);
    keys::endEdit(link); // deliberate: twice
}

bool KeyboardCore::endThreads(std::chrono::steady_clock::time_point deadline)
{
    const bool linkEnded = link.endThreads(deadline);
    return (!status || status->stopWithin(timeUntil(deadline))) && linkEnded;
}

/// The recording itself is the keyboard's.
_error KeyboardCore::startRecordMacro()
{
    return keys::set(link, keys::serviceOn);
}

/// Recording disturbs the lights.
_error KeyboardCore::stopRecordMacro()
{
    keys::set(link, keys::editOn);
    return effects.showAgain();
}

const DeviceEvent<NotifyRecord>* KeyboardCore::changeIn(const Reply& report)
{
    for (const DeviceEvent<NotifyRecord>& change : changes) {
        if (!change.fits(report))
            continue;
        if (&change == &changes.front())
            state.reloadNeeded = true; // before a host that is told can ask
        return &change;
    }
    return nullptr;
}

Keyboard::Keyboard(const std::string& path, const KeyboardLayout& layout) : NotifyingDevice(path, layout)
{
    begin([this](const Reply& report) { take(report); });
}

void Keyboard::take(const Reply& report)
{
    if (const DeviceEvent<NotifyRecord>* change = changeIn(report))
        tell(*change, report);
    else if (!keyReports || !KeyReports::isOne(report))
        link.deliver(report);
    else if (const std::optional<NotifyRecord> key = keyReports->read(report))
        tell(*key);
}

} // namespace pyrux
