#include "simulator/models.h"

#include "simulator/models/glow_hub.h"
#include "simulator/models/glow_hub2.h"
#include "simulator/models/keyboard.h"
#include "simulator/models/led_mouse.h"
#include "simulator/models/play_dock.h"
#include "simulator/models/power_supply.h"
#include "simulator/models/rd210.h"
#include "simulator/models/strand_hub.h"
#include "simulator/models/tint_hub.h"

namespace pyrux::sim {

namespace {

struct Model {
    const char* name;
    std::shared_ptr<Firmware> (*make)();
};

template <class Type>
std::shared_ptr<Firmware> make()
{
    return std::make_shared<Type>();
}

std::shared_ptr<Firmware> ledMouse(const char* name, std::uint16_t pid, std::vector<std::uint8_t> effectModes)
{
    return std::make_shared<LedMouseFirmware>(name, pid, std::move(effectModes));
}

std::shared_ptr<Firmware> keyboard(const char* name, std::uint16_t pid, std::size_t rows,
                                   std::size_t maskBytes)
{
    return std::make_shared<KeyboardFirmware>(name, pid, rows, maskBytes);
}

std::shared_ptr<Firmware> strandHub(const char* name, std::uint16_t pid)
{
    return std::make_shared<StrandFirmware>(name, pid);
}

/// One of the lines of PSUCTRL.
template <std::size_t variant>
std::shared_ptr<Firmware> makeLine()
{
    return std::make_shared<PsuCtrlFirmware>(variant);
}

constexpr Model models[]{
    {"au_line_550_single", makeLine<4>},
    {"au_line_650_multi", makeLine<1>},
    {"au_line_650_single", makeLine<5>},
    {"au_line_750_multi", makeLine<2>},
    {"au_line_750_single", makeLine<6>},
    {"au_line_850_multi", makeLine<3>},
    {"au_line_850_single", makeLine<7>},
    {"glow2", make<GlowHub2Firmware>},
    {"glow_hub", make<GlowHubFirmware>},
    {"playdock", make<PlayDockFirmware>},
    {"psuCtrl", makeLine<0>},
    {"pt_line_650_multi", makeLine<9>},
    {"pt_line_750_multi", makeLine<10>},
    {"pt_line_850_multi", makeLine<11>},
    {"qw210", [] { return keyboard("QW210", 0x0147, 7, 24); }},
    {"qw220", [] { return keyboard("QW220", 0x0145, 6, 20); }},
    {"rd110",
     [] {
         return ledMouse("RD110", 0x015F, {0, 1, 2, 4, 5, 176, 254});
     }},
    {"rd210", make<RD210Firmware>},
    {"rd215",
     [] {
         return ledMouse("RD215", 0x0101, {0, 1, 2, 4, 176, 254});
     }},
    {"rd230",
     [] {
         return ledMouse("RD230", 0x0141, {0, 1, 2, 4, 176, 254});
     }},
    {"rd240",
     [] {
         return ledMouse("RD240", 0x0165, {0, 1, 2, 4, 5, 176, 254});
     }},
    {"silent_1300", makeLine<8>},
    {"strandhub", [] { return strandHub("STRANDHUB", 0x0173); }},
    {"strandhubv2", [] { return strandHub("STRANDHUBV2", 0x01C9); }},
    {"tint_hub", make<TintHubFirmware>},
    {"voltgrid", make<VoltgridFirmware>},
};

} // namespace

std::shared_ptr<Firmware> makeFirmware(const std::string& name)
{
    for (const Model& model : models)
        if (name == model.name)
            return model.make();
    return nullptr;
}

std::vector<std::string> firmwareNames()
{
    std::vector<std::string> names;
    for (const Model& model : models)
        names.emplace_back(model.name);
    return names;
}

} // namespace pyrux::sim
