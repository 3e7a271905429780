#include "simulator/models.h"

#include "simulator/models/glow_hub.h"
#include "simulator/models/glow_hub2.h"
#include "simulator/models/keyboard.h"
#include "simulator/models/led_mouse.h"
#include "simulator/models/play_dock.h"
#include "simulator/models/rd210.h"
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

constexpr Model models[]{
    {"glow2", make<GlowHub2Firmware>},    {"glow_hub", make<GlowHubFirmware>},
    {"playdock", make<PlayDockFirmware>}, {"qw210", make<QW210Firmware>},
    {"qw220", make<QW220Firmware>},       {"rd110", make<RD110Firmware>},
    {"rd210", make<RD210Firmware>},       {"rd215", make<RD215Firmware>},
    {"rd230", make<RD230Firmware>},       {"rd240", make<RD240Firmware>},
    {"tint_hub", make<TintHubFirmware>},
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
