#include "transport/hotplug.h"

#include "core/boundary.h"
#include "core/catalogue.h"
#include "core/log.h"
#include "platform/threads.h"
#include "transport/audio_devices.h"
#include "transport/device_closer.h"
#include "transport/device_path.h"
#include "transport/dongle_manager.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>
#include <thread>
#include <utility>

namespace pyrux {

namespace {

using platform::DeviceChange;

constexpr std::chrono::milliseconds startLimit{1000};
constexpr std::chrono::milliseconds stopLimit{100};

/// The longest name that makes an event: its path has room for the receivers' mark and a NUL.
constexpr std::size_t longestName = sizeof(HotplugEvent::path) - 1 - dongleMark.size();

/// The headset that has events for one of its collections alone.
constexpr std::uint16_t collectionPid = 0x0093;
constexpr std::string_view collectionPiece = "Col03";

/// The thread, with what it shares. Never destroyed: a host's callback may hold the thread to the end of the
/// process.
struct Hotplug {
    std::mutex mutex;
    std::condition_variable changed;
    std::thread thread;
    platform::ThreadId id = 0; ///< Not 0 once the thread listens.
    bool started = false;
    bool finished = false;
    bool stopping = false;
};

Hotplug& hotplug()
{
    static auto& one = *new Hotplug;
    return one;
}

/// The link changes under way. The message carries only the address, so that a message of another program's
/// leads nowhere and a lost one leaks nothing.
class LinkChanges {
public:
    static LinkChanges& instance()
    {
        static auto& all = *new LinkChanges;
        return all;
    }

    std::uintptr_t put(LinkChange change)
    {
        auto record = std::make_unique<LinkChange>(std::move(change));
        const auto address = reinterpret_cast<std::uintptr_t>(record.get());
        const std::lock_guard lock(mutex);
        underWay.emplace(address, std::move(record));
        return address;
    }

    /// Null: no such record.
    std::unique_ptr<LinkChange> take(std::uintptr_t address)
    {
        const std::lock_guard lock(mutex);
        auto record = underWay.extract(address);
        return record ? std::move(record.mapped()) : nullptr;
    }

    void clear()
    {
        const std::lock_guard lock(mutex);
        underWay.clear();
    }

private:
    std::mutex mutex;
    std::map<std::uintptr_t, std::unique_ptr<LinkChange>> underWay;
};

void put(std::span<char> field, std::string_view text)
{
    *std::ranges::copy(text.substr(0, field.size() - 1), field.begin()).out = '\0';
}

HotplugEvent eventOf(const DeviceRow& row, std::string_view path, bool plugged)
{
    HotplugEvent event{};
    put(event.name, row.name);
    put(event.path, upperCased(path));
    event.plugged = plugged;
    event.driverOk = 1;
    event.statusOk = 1;
    return event;
}

/// False: nobody has registered.
bool tellHost(const HotplugEvent& event)
{
    const auto callback = devNotifyCallback.load();
    if (callback)
        callback(event);
    return callback != nullptr;
}

bool takesCollection(const DeviceRow& row, std::string_view name)
{
    const bool chosen = row.usagePage != anyUsagePage && row.pid == collectionPid;
    return !chosen || devicePathPiece(name, 3) == collectionPiece;
}

/// The device behind a receiver goes with it, unless the host knows already that it is not there.
/// @return whether the host is to hear of it
bool receiverGone(std::string_view name)
{
    debugText("dongle plug out");
    DongleDeviceManger& manager = DongleDeviceManger::instance();
    const bool unlinked = manager.linkEntry(name) != 0;
    manager.forget(name);
    if (unlinked)
        debugText("unlinked dongle plug out");
    return !unlinked;
}

void notifyRow(const DeviceRow& row, const std::string& name, bool plugged)
{
    DongleDeviceManger& manager = DongleDeviceManger::instance();
    if (plugged) {
        manager.scanReceivers(name);
    } else {
        closeDeviceByPath(name);
        debugText("device unplug out");
    }
    std::uint16_t vid = row.vid;
    std::uint16_t pid = row.pid;
    const bool receiver = manager.ChangeDonglePidVidToDevicePidVid(vid, pid, !plugged, name) > 0;
    const bool wanted = plugged || !receiver || receiverGone(name);
    HotplugEvent event = eventOf(row, receiver ? name + std::string(dongleMark) : name, plugged);
    event.vid = vid;
    event.pid = pid;
    const AudioState audio = audioStateOf(vid, pid);
    event.driverOk = audio.driverOk;
    event.statusOk = audio.statusOk;
    if (wanted)
        tellHost(event);
}

void takeNotice(const std::string& name, DeviceChange change)
{
    attempt([&] { notifyDevice(name, change); });
    debugText("core usb event notify finish");
}

void takeLinkChange(std::uintptr_t status, std::uintptr_t address)
{
    if (const auto change = LinkChanges::instance().take(address))
        attempt([&] { dongleDeviceChange(*change, status); });
}

void run()
{
    Hotplug& own = hotplug();
    std::unique_ptr<platform::DeviceNotices> notices;
    attempt([&] {
        notices = platform::DeviceNotices::open({.device = takeNotice, .linkChange = takeLinkChange});
    });
    bool wanted = false;
    {
        const std::lock_guard lock(own.mutex);
        own.id = platform::currentThreadId();
        wanted = notices && !own.stopping;
        own.changed.notify_all();
    }
    while (wanted && !attempt([&] { notices->run(); })) {
        // It goes on where it was: at worst a notice is lost.
    }
    notices.reset();
    LinkChanges::instance().clear();
    const std::lock_guard lock(own.mutex);
    own.finished = true;
    own.changed.notify_all();
}

} // namespace

bool startHotplug()
{
    Hotplug& own = hotplug();
    std::unique_lock lock(own.mutex);
    own.thread = platform::startThread(run);
    if (!own.thread.joinable())
        return false;
    own.started = true;
    own.changed.wait_for(lock, startLimit, [&] { return own.id != 0; });
    return true;
}

void stopHotplug()
{
    Hotplug& own = hotplug();
    std::unique_lock lock(own.mutex);
    if (!own.started)
        return;
    own.stopping = true;
    platform::postThreadMessage(own.id, {.number = platform::stopNotices});
    if (!own.changed.wait_for(lock, stopLimit, [&] { return own.finished; }))
        return;
    std::thread ended = std::move(own.thread);
    lock.unlock();
    if (ended.joinable())
        ended.join();
}

bool notifyLinkChange(const std::string& path, std::uint32_t vid, std::uint32_t pid, std::uintptr_t status)
{
    const std::uintptr_t record = LinkChanges::instance().put({vid, pid, path});
    if (platform::postLinkChange(status, record))
        return true;
    LinkChanges::instance().take(record);
    return false;
}

void notifyDevice(const std::string& name, DeviceChange change)
{
    debugText("NotifyDevice");
    // What names no HID interface, or is malformed, leads to no row.
    const PathIdentity identity = name.size() <= longestName ? parseDevicePath(name) : PathIdentity{};
    for (const DeviceRow& row : deviceCatalogue)
        if (row.vid == identity.vid && row.pid == identity.pid && row.interface == identity.interface &&
            takesCollection(row, name))
            notifyRow(row, name, change == DeviceChange::arrival);
    debugText("finish notify");
}

void dongleDeviceChange(const LinkChange& change, std::uintptr_t status)
{
    /// Deliberate: a keyboards' receiver is told as one model, whichever it is linked with.
    struct Forced {
        std::string_view receiver;
        std::uint16_t pid;
    };
    constexpr Forced forced[]{{"QW310_UNIVERSAL_DONGLE", 0x016D}, {"QX310_UNIVERSAL_DONGLE", 0x016F}};

    debugText("DongleDeviceChange");
    DongleDeviceManger& manager = DongleDeviceManger::instance();
    const std::string path(withoutDongleMark(change.path));
    const PathIdentity identity = identityOf(path);
    const bool plugged = status == linkMade;
    for (const DeviceRow& row : deviceCatalogue) {
        if (row.vid != identity.vid || row.pid != identity.pid || path.size() > longestName)
            continue;
        // Who tells the device's identity knows the link; who tells the receiver's lets it be asked.
        const bool known =
            plugged && manager.setLink(path, std::uint16_t(change.vid), std::uint16_t(change.pid));
        std::uint16_t vid = row.vid;
        std::uint16_t pid = row.pid;
        manager.ChangeDonglePidVidToDevicePidVid(vid, pid, known || !plugged, path);
        for (const Forced& one : forced)
            if (one.receiver == row.name)
                pid = one.pid;
        HotplugEvent event = eventOf(row, path + std::string(dongleMark), plugged);
        event.vid = vid;
        event.pid = pid;
        debugText(plugged ? "status=1  else  dongle  in" : "status=0  else  dongle  out");
        if (!plugged)
            manager.removeLink(path);
        if (tellHost(event))
            debugText("callCBFuntion");
    }
    debugText("finish dongle notify");
}

} // namespace pyrux
