#include "platform/apartment.h"

namespace pyrux::platform {

void enterApartment() {}

void leaveApartment() {}

} // namespace pyrux::platform
