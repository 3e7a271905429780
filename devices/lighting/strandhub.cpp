#include "devices/lighting/strandhub.h"

#include "pyrux/pyrux.h"

PYRUX_FACTORY(strandhub, pyrux::PYRUX_STRANDHUB)
