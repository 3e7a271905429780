#pragma once

#include "pyrux/sys_info.h"

#include <string_view>

namespace pyrux {

/// Takes a record from the resident service's reply, fifteen fields or more between semicolons. With fewer
/// the record stays as it was.
/// @return empty; or why a field could not be read, in which case the record stays as it was too
std::string_view readSystemRecord(std::string_view reply, SysDetailRecord& record);

} // namespace pyrux
