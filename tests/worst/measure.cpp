#include "tests/worst/measure.h"

#include "tests/support/opened_device.h"

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

int measuredCall(Trouble which, const SlotTable& table, const Slot& slot, std::size_t number)
{
    const ModelFacts& facts = factsOf(table.model);
    OpenedDevice<void> device(facts.factory, identityOf(facts), [&](ScriptedDevice& fresh) {
        facts.prepare(fresh);
        if (table.prepare)
            table.prepare(fresh);
        if (slot.prepare)
            slot.prepare(fresh);
    });
    if (table.begin)
        table.begin(*device.device, device.host);
    ByteVector memory = bytes(slot.memory);
    memory.resize(table.room, table.fill);
    trouble(device.path, which);
    DeviceTime::begin(which, [&] {
        sim::unplug(device.path);
        callHook(device.host, Hook::preExit, true);
    });
    slot.call(device.host, number, memory.data());
    const int ms = DeviceTime::end();
    if (slot.sort == Sort::destructor)
        device.release();
    return ms;
}

int measuredOpening(Trouble which, const ModelFacts& facts)
{
    const auto device = std::make_shared<ScriptedDevice>(identityOf(facts));
    facts.prepare(*device);
    const std::string path = sim::plug(device);
    trouble(path, which);
    DeviceTime::begin(which);
    void* const host = facts.factory(path.c_str());
    const int ms = DeviceTime::end();
    sim::unplug(path);
    if (host)
        callHook(host, Hook::exit, true);
    return ms;
}

} // namespace pyrux::test
