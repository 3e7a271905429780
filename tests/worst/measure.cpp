#include "tests/worst/measure.h"

#include "tests/support/opened_device.h"

#include <algorithm>
#include <chrono>

namespace pyrux::test {
namespace {

/// Lets a device behave so from now on.
void trouble(const std::string& path, Trouble which)
{
    if (which == Trouble::silent)
        sim::setConduct(path, {.silent = true});
    else if (which == Trouble::stalled)
        sim::setConduct(path, {.writeTime = std::chrono::seconds(5)});
    else if (which == Trouble::vanished)
        sim::unplug(path);
}

} // namespace

std::size_t numberOf(const SlotTable& table, const std::string& operation)
{
    return std::size_t(std::ranges::find(table.slots, operation, &Slot::name) - table.slots.begin());
}

int measuredCall(Trouble which, const SlotTable& table, const Measured& measured,
                 const std::function<void(void* host, Byte* memory)>& before)
{
    const ModelFacts& facts = factsOf(table.model);
    OpenedDevice<void> device(facts.factory, identityOf(facts), [&](ScriptedDevice& fresh) {
        facts.prepare(fresh);
        if (table.prepare)
            table.prepare(fresh);
        if (measured.slot.prepare)
            measured.slot.prepare(fresh);
    });
    if (table.begin)
        table.begin(*device.device, device.host);
    if (before) {
        ByteVector memory(table.room, table.fill);
        before(device.host, memory.data());
    }
    ByteVector memory = bytes(measured.memory);
    memory.resize(table.room, table.fill);
    DeviceTime::begin(which, [&] {
        sim::unplug(device.path);
        callHook(device.host, Hook::preExit, true);
    });
    trouble(device.path, which);
    measured.call(device.host, numberOf(table, measured.slot.name), memory.data());
    const int ms = DeviceTime::end();
    if (measured.slot.sort == Sort::destructor)
        device.release();
    return ms;
}

int measuredOpening(Trouble which, const ModelFacts& facts)
{
    const auto device = std::make_shared<ScriptedDevice>(identityOf(facts));
    facts.prepare(*device);
    const std::string path = sim::plug(device);
    DeviceTime::begin(which);
    trouble(path, which);
    void* const host = facts.factory(path.c_str());
    const int ms = DeviceTime::end();
    sim::unplug(path);
    if (host)
        callHook(host, Hook::exit, true);
    return ms;
}

} // namespace pyrux::test
