#include "devices/lighting/strandhubv2.h"

#include "pyrux/pyrux.h"

PYRUX_FACTORY(strandhubv2, pyrux::PYRUX_STRANDHUBV2)
