#include "devices/lighting/lighting_controller.h"

namespace pyrux {

LinkRules linkRules(const ControllerTraits& traits)
{
    LinkRules rules = operationLinkRules(traits.model);
    rules.failureText = traits.failureText;
    rules.mode = traits.mode;
    rules.wait = traits.wait;
    rules.gap = traits.gap;
    rules.paceMs = traits.paceMs;
    return rules;
}

} // namespace pyrux
