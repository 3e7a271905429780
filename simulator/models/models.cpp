#include "simulator/models.h"

#include "simulator/models/glow_hub.h"
#include "simulator/models/glow_hub2.h"
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
    {"rd110", make<RD110Firmware>},
    {"rd210", make<RD210Firmware>},
    {"rd215", make<RD215Firmware>},
    {"rd230", make<RD230Firmware>},
    {"rd240", make<RD240Firmware>},
    {"silent_1300", makeLine<8>},
    {"strandhub", make<StrandHubFirmware>},
    {"strandhubv2", make<StrandHubV2Firmware>},
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
