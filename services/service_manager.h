#pragma once

#include "services/service.h"
#include "services/tw_service.h"
#include "transport/clock.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace pyrux {

/// One service in the manager's list; both point to the same object.
struct ServiceEntry {
    Service* object = nullptr;
    SERVICE_PROBE* probe = nullptr;
};

/// What services are made with.
struct ServiceSettings {
    Clock& clock = Clock::steady();
    PipeLimits limits{}; ///< Of the services that ask the resident service.
};

/// The manager of the services. Each is made when it is first asked for and lives until `releaseAll`, however
/// many subscribers come and go. Safe from any thread.
///
/// The names are "audio", "temp", "cmedia", "peakmeter", "cpuusage", "amplitude" and "systeminfo".
class PYRUX_SERVICE {
public:
    explicit PYRUX_SERVICE(const ServiceSettings& settings = {}) : with(settings) {}
    virtual ~PYRUX_SERVICE() { releaseAll(); }
    PYRUX_SERVICE(const PYRUX_SERVICE&) = delete;
    PYRUX_SERVICE& operator=(const PYRUX_SERVICE&) = delete;

    /// The library's manager. Never destroyed.
    static PYRUX_SERVICE& instance();

    /// Makes a service, unless it is there.
    /// @return E_OK; E_INVALID_SET: no service has this name
    _error createService(std::string_view name);

    /// @param out  the service, valid until `releaseAll`; left alone when it is not there
    /// @return E_OK; E_INVALID_GET: not there
    _error findService(SERVICE_PROBE*& out, std::string_view name);

    /// Makes the service unless it is there, and puts a thread among its subscribers. The thread must have
    /// its message queue. Holds nothing when no service has this name.
    Subscription subscribe(std::string_view name, platform::ThreadId thread);

    /// Releases all services, in the order in which they were made.
    void releaseAll();

private:
    _error create(std::string_view name);
    ServiceEntry* find(std::string_view name);

    const ServiceSettings with;
    std::mutex mutex;
    std::vector<std::string> names;
    std::vector<ServiceEntry> entries;
};

} // namespace pyrux
