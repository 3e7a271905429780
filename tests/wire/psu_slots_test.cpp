// The slots of the power supplies.

#include "tests/support/slots.h"
#include "tests/support/supply_texts.h"

namespace pyrux::test {
namespace {

// The supply has told 200.0 V and 41.5 degrees. The memory's first byte is a fan mode.

std::vector<Slot> voltgridSlots()
{
    return {
        {"getInput", with(memory), "04", "", "00 00 48 43 " + times(20, "00")},
        {"getOutput", with(memory), "04", "", times(40, "00")},
        {"getFan", with(memory), "04", "[MQ]", "03 " + times(19, "00")},
        {"getThermal", with(memory), "04", "", "00 00 26 42"},
        {"getMultiRail", with(memory), "04", "[OQ]", "02"},
        {"setFan", with(memory), "04", "[M4]"},
        {"setMultiRail", with(Byte{3}), "", "[O3]"},
        {"getVersion", with(at(0), at(1), at(2)), "", "[SQ]", "00 0C 22"},
        {"exit_device", with(Byte{0}), "", "", "", Sort::exit},
    };
}

std::vector<Slot> psuCtrlSlots()
{
    const auto logged = [](const char* text) { return std::string("getPsuCtrlDeviceLog") + text; };
    return {
        {"getInput", with(memory), "04", "", "00 00 48 43 " + times(20, "00")},
        {"getOutput", with(memory), "04", "", times(40, "00")},
        {"getFan",
         with(memory),
         "04",
         "[MQ]",
         "03 " + times(11, "00"),
         Sort::logged,
         0,
         {"getPsuCtrlDeviceFan,ret=0"}},
        {"getThermal", with(memory), "04", "", "00 00 26 42"},
        {"getMultiRail", with(memory), "04", "[OQ]", "02"},
        {"getLog",
         with(memory),
         "",
         "",
         "00 00 48 43 " + times(52, "00") + " 00 00 26 42",
         Sort::logged,
         0,
         {logged("TEMP=41.5"), logged("VOUT_V12=0"), logged(",IOUT_V12=0"), logged(",POUT_V12=0"),
          logged(",VOUT_V5=0"), logged(",IOUT_V5=0"), logged(",POUT_V5=0"), logged("VOUT_V3d3=0"),
          logged(",IOUT_V3d3=0"), logged(",POUT_V3d3=0"), logged(",speed=0"), logged(",P_IN=0"),
          logged(",P_OUT=0"), logged(",V_AC=200"), logged("I_AC=0")}},
        {"setFan", with(memory), "04", "[M4]", "", Sort::logged, 0, {"setPsuCtrlDeviceFan end.ret=0"}},
        {"setMultiRail", with(Byte{3}), "", "[O3]"},
        {"getVersion", with(at(0), at(1), at(2)), "", "[SQ]", "00 0C 22"},
        {"exit_device", with(Byte{0}), "", "", "", Sort::exit},
    };
}

void answer(ScriptedDevice& device)
{
    device.answer(ascii("[MQ]"), ascii("[M3]"));
    device.answer(ascii("[OQ]"), ascii("[O2]"));
    device.answer(ascii("[SQ]"), ascii("C12.34"));
}

/// The supply tells of itself; the reply to getMultiRail comes after that.
void tell(ScriptedDevice& device, void* host)
{
    device.send(ascii("[V1200.0]"));
    device.send(ascii("[T1041.5]"));
    Byte mode = 0;
    callEntry(host, 4, &mode);
}

SlotTable tableOf(const char* model, std::vector<Slot> slots)
{
    return {.model = model, .slots = std::move(slots), .prepare = answer, .begin = tell, .fill = 0xEE};
}

const AddSlotTables supplies([] {
    return std::vector<SlotTable>{tableOf("voltgrid", voltgridSlots()), tableOf("psuCtrl", psuCtrlSlots())};
});

} // namespace
} // namespace pyrux::test
