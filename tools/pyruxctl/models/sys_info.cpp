#include "models.h"

#include "pyrux/sys_info.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace pyrux::ctl {

namespace {

/// `SysHardwareNames` as memory that can be copied; texts that are too long are cut.
struct HardwareNames {
    char cpuName[256];
    char gpuName[256];
    char ramManufacturer[256];
    char ramModel[256];
    std::int32_t ramCapacityGiB;
    char boardManufacturer[256];
    char boardProduct[256];
};

template <std::size_t size>
void copyText(char (&to)[size], const std::string& from)
{
    to[from.copy(to, size - 1)] = '\0';
}

/// The last of a kind of record that a callback has brought, for whoever waits for the next one.
template <class Record>
class Newest {
public:
    void put(const Record& record)
    {
        const std::lock_guard lock(mutex);
        newest = record;
        arrived.notify_all();
    }

    _error await(Record* out)
    {
        constexpr std::chrono::seconds limit{3};
        std::unique_lock lock(mutex);
        newest.reset();
        if (!arrived.wait_for(lock, limit, [&] { return newest.has_value(); }))
            return E_INVALID_GET;
        *out = *newest;
        return E_OK;
    }

private:
    std::mutex mutex;
    std::condition_variable arrived;
    std::optional<Record> newest;
};

// Callbacks carry no context, and may come while the process ends.
auto& newestStatus = *new Newest<SysStatusRecord>;
auto& newestDetails = *new Newest<SysDetailRecord>;

/// The object of the export, with operations that this program can call.
class Computer {
public:
    explicit Computer(SYS_INFO_Base* owned) : object(owned) {}
    ~Computer() { object->destroy(1); }
    Computer(const Computer&) = delete;
    Computer& operator=(const Computer&) = delete;

    _error getHardwareNames(HardwareNames* names)
    {
        SysHardwareNames found{};
        const _error result = object->getHardwareNames(&found);
        copyText(names->cpuName, found.cpuName);
        copyText(names->gpuName, found.gpuName);
        copyText(names->ramManufacturer, found.ramManufacturer);
        copyText(names->ramModel, found.ramModel);
        names->ramCapacityGiB = found.ramCapacityGiB;
        copyText(names->boardManufacturer, found.boardManufacturer);
        copyText(names->boardProduct, found.boardProduct);
        return result;
    }
    _error getSysTemp(std::int32_t* cpu, std::int32_t* gpu) { return object->getSysTemp(cpu, gpu); }
    _error getSysCore(std::int32_t* first, std::int32_t* second) { return object->getSysCore(first, second); }
    _error getCpuUsage(std::int32_t* percent) { return object->getCpuUsage(percent); }
    _error getGpuUsage(std::int32_t* percent) { return object->getGpuUsage(percent); }
    _error getRamUsage(std::int32_t* percent) { return object->getRamUsage(percent); }

    /// Waits for what the status callback gets next.
    _error awaitStatus(SysStatusRecord* status)
    {
        object->registerStatusNotify([](SysStatusRecord record) { newestStatus.put(record); });
        return newestStatus.await(status);
    }
    /// Waits for what the info callback gets next.
    _error awaitDetails(SysDetailRecord* details)
    {
        object->registerInfoNotify([](SysDetailRecord record) { newestDetails.put(record); });
        return newestDetails.await(details);
    }

private:
    SYS_INFO_Base* const object;
};

} // namespace

template <>
struct Layout<HardwareNames> {
    using R = HardwareNames;
    static constexpr Field fields[]{
        FIELD(cpuName),        FIELD(gpuName),           FIELD(ramManufacturer), FIELD(ramModel),
        FIELD(ramCapacityGiB), FIELD(boardManufacturer), FIELD(boardProduct),
    };
};

template <>
struct Layout<SysStatusRecord> {
    using R = SysStatusRecord;
    static constexpr Field fields[]{FIELD(cpuTemp), FIELD(gpuTemp), FIELD(ramUsage), FIELD(cpuUsage),
                                    FIELD(gpuUsage)};
};

template <>
struct Layout<SysDetailRecord> {
    using R = SysDetailRecord;
    static constexpr Field fields[]{
        FIELD(field0),  FIELD(field1),  FIELD(field2),  FIELD(field3),  FIELD(field4),
        FIELD(field5),  FIELD(field6),  FIELD(field7),  FIELD(field8),  FIELD(field9),
        FIELD(field10), FIELD(field11), FIELD(field12), FIELD(field13), FIELD(field14),
    };
};

Model models_of::sysInfo()
{
    using Interface = Computer;
    return {
        .command = "sysInfo",
        .summary = "This computer: loads, temperatures, names of its parts",
        .identities = {},
        .events = {},
        .operations = {OP(getHardwareNames, out("names")), OP(getSysTemp, out("cpu"), out("gpu")),
                       OP(getSysCore, out("first"), out("second")), OP(getCpuUsage, out("percent")),
                       OP(getGpuUsage, out("percent")), OP(getRamUsage, out("percent")),
                       OP(awaitStatus, out("status")), OP(awaitDetails, out("details"))},
        .calls = {.create = [](void* factory, const char*) -> void* {
                      SYS_INFO_Base* const made = reinterpret_cast<SYS_INFO_Base* (*)()>(factory)();
                      return made ? new Computer(made) : nullptr;
                  },
                  .listen = [](void*, std::size_t) {},
                  .stopListening = [](void*) -> std::int32_t { return E_OK; },
                  .destroy = [](void* host) { delete static_cast<Computer*>(host); }},
    };
}

} // namespace pyrux::ctl
