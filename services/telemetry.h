#pragma once

#include "services/polled_service.h"
#include "services/service_manager.h"

namespace pyrux {

/// Asks the resident service for the temperatures every 800 ms and tells MSG_TEMPERATURE; nothing when the
/// service does not answer.
class SERVICE_TEMP final : public PolledService<MSG_TEMPERATURE> {
public:
    explicit SERVICE_TEMP(const ServiceSettings& with);
};

/// Tells MSG_CPU_USAGE every 200 ms.
class SERVICE_CPUUSAGE final : public PolledService<MSG_CPU_USAGE> {
public:
    explicit SERVICE_CPUUSAGE(const ServiceSettings& with);
};

/// Asks the resident service for the system record every 1000 ms and tells MSG_SYSTEM_INFO, with the last
/// record when the service does not answer.
class SERVICE_SYSTEMINFO final : public PolledService<MSG_SYSTEM_INFO> {
public:
    explicit SERVICE_SYSTEMINFO(const ServiceSettings& with);
};

} // namespace pyrux
