#include "platform/device_notices.h"

#include "platform/linux/access_watch.h"
#include "platform/linux/hid_node.h"
#include "platform/linux/name_memory.h"
#include "platform/linux/notice_socket.h"
#include "platform/linux/thread_queue.h"
#include "platform/linux/udev.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <poll.h>
#include <set>
#include <string_view>
#include <utility>

namespace pyrux::platform {
namespace {

/// The thread whose queue takes the library's own notices; 0: there is none.
std::atomic<ThreadId> noticeThread{0};

constexpr std::array subsystems{"hidraw", "sound"};

/// Bytes of the monitor's buffer: room for some thousand events while a host's callback takes its time.
constexpr int monitorBuffer = 8 * 1024 * 1024;

/// The name of a sound card on the USB, in the form of the audio device class.
NameMemory::Names soundNames(udev_device* device)
{
    udev_device* const interface =
        udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_interface");
    udev_device* const usb = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    const std::string card = orEmpty(udev_device_get_sysname(device));
    if (!interface || !usb || !card.starts_with("card"))
        return {};
    std::string name = "\\\\?\\USB#VID_";
    name.append(orEmpty(udev_device_get_sysattr_value(usb, "idVendor"))).append("&PID_");
    name.append(orEmpty(udev_device_get_sysattr_value(usb, "idProduct"))).append("&MI_");
    name.append(orEmpty(udev_device_get_sysattr_value(interface, "bInterfaceNumber"))).append("#" + card);
    return {name + "#{6994ad04-93ef-11d0-a3cc-00a0c9223196}"};
}

NameMemory::Names namesOf(udev_device* device)
{
    if (std::string_view(orEmpty(udev_device_get_subsystem(device))) == "sound")
        return soundNames(device);
    NameMemory::Names names;
    if (const auto node = readHidNode(device))
        for (DeviceInterface& one : interfacesOf(*node))
            names.push_back(std::move(one.name));
    return names;
}

class UdevNotices final : public DeviceNotices {
public:
    explicit UdevNotices(Handlers handlers) : handlers(std::move(handlers)), context(udev_new())
    {
        nameMemory().begin();
        noticeThread = currentThreadId();
        startMonitor();
        for (const std::string& place : present())
            adopt(place);
    }

    ~UdevNotices() override
    {
        noticeThread = 0;
        nameMemory().end();
    }

    bool canBeEnded() const { return queue.descriptor() >= 0; }

    void run() override
    {
        for (;;) {
            while (const auto message = queue.take()) {
                if (message->number == stopNotices)
                    return;
                if (message->number == linkChangeNotice)
                    handlers.linkChange(message->first, message->second);
            }
            // A descriptor that is not there is -1, which is passed over.
            std::array<pollfd, 4> ready{{{queue.descriptor(), POLLIN, 0},
                                         {monitor ? udev_monitor_get_fd(monitor.get()) : -1, POLLIN, 0},
                                         {watch.descriptor(), POLLIN, 0},
                                         {socket.descriptor(), POLLIN, 0}}};
            if (poll(ready.data(), ready.size(), -1) < 0)
                continue;
            if (ready[1].revents)
                takeEvents();
            if (ready[2].revents)
                for (const std::string& place : watch.take())
                    tell(nameMemory().recall(place), DeviceChange::arrival);
            if (ready[3].revents)
                if (const auto notice = socket.take())
                    handlers.device(notice->name, notice->change);
        }
    }

private:
    /// Without udev the thread still has its messages.
    void startMonitor()
    {
        // "udev": the events as they come out of udev's rules, which have set the access rights by then.
        monitor.reset(context ? udev_monitor_new_from_netlink(context.get(), "udev") : nullptr);
        if (!monitor)
            return;
        for (const char* subsystem : subsystems)
            udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), subsystem, nullptr);
        udev_monitor_set_receive_buffer_size(monitor.get(), monitorBuffer);
        if (udev_monitor_enable_receiving(monitor.get()) < 0)
            monitor.reset();
    }

    /// After a loss the socket tells of no other one until it has been read empty: only then is the time to catch up.
    void takeEvents()
    {
        bool lost = false;
        for (;;) {
            errno = 0;
            const UdevDevice device(udev_monitor_receive_device(monitor.get()));
            if (device)
                takeEvent(device.get());
            else if (errno == ENOBUFS)
                lost = true;
            else if (std::exchange(lost, false))
                catchUp();
            else
                return;
        }
    }

    void takeEvent(udev_device* device)
    {
        const std::string_view action = orEmpty(udev_device_get_action(device));
        const std::string place = orEmpty(udev_device_get_syspath(device));
        if (action == "add")
            arrive(place, device);
        else if (action == "remove")
            leave(place);
    }

    /// Remembers a device that is there.
    void adopt(const std::string& place)
    {
        const UdevDevice device(udev_device_new_from_syspath(context.get(), place.c_str()));
        if (device)
            learn(place, device.get());
    }

    NameMemory::Names learn(const std::string& place, udev_device* device)
    {
        nameMemory().remember(place, namesOf(device));
        // Also the names of one that has gone again, if a host has found it meanwhile.
        NameMemory::Names names = nameMemory().recall(place);
        if (names.empty())
            return names;
        told.insert(place);
        const std::string node = orEmpty(udev_device_get_devnode(device));
        if (!node.empty())
            watch.accessible(node, place);
        return names;
    }

    void arrive(const std::string& place, udev_device* device)
    {
        tell(learn(place, device), DeviceChange::arrival);
    }

    void leave(const std::string& place)
    {
        watch.forget(place);
        told.erase(place);
        tell(nameMemory().forget(place), DeviceChange::removal);
    }

    void tell(const NameMemory::Names& names, DeviceChange change)
    {
        for (const std::string& name : names)
            handlers.device(name, change);
    }

    /// Events have been lost: what they would have told is found by looking.
    void catchUp()
    {
        const std::set<std::string> now = present();
        std::set<std::string> known = told;
        for (std::string& place : nameMemory().places())
            known.insert(std::move(place));
        for (const std::string& place : known)
            if (!now.contains(place))
                leave(place);
        for (const std::string& place : now) {
            const UdevDevice device(
                told.contains(place) ? nullptr : udev_device_new_from_syspath(context.get(), place.c_str()));
            if (device)
                arrive(place, device.get());
        }
    }

    std::set<std::string> present() const
    {
        std::set<std::string> places;
        const UdevEnumerate list(context ? udev_enumerate_new(context.get()) : nullptr);
        if (!list)
            return places;
        for (const char* subsystem : subsystems)
            udev_enumerate_add_match_subsystem(list.get(), subsystem);
        udev_enumerate_scan_devices(list.get());
        udev_list_entry* entry = nullptr;
        udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get()))
            places.insert(udev_list_entry_get_name(entry));
        return places;
    }

    const Handlers handlers;
    ThreadQueue queue{ThreadQueue::Descriptor::yes};
    Udev context;
    UdevMonitor monitor;
    AccessWatch watch;
    NoticeSocket socket;
    std::set<std::string> told; ///< Places of the devices that have been told of, or were there at the start.
};

} // namespace

std::unique_ptr<DeviceNotices> DeviceNotices::open(Handlers handlers)
{
    auto notices = std::make_unique<UdevNotices>(std::move(handlers));
    // Without it nothing could end the loop.
    return notices->canBeEnded() ? std::move(notices) : nullptr;
}

bool postLinkChange(std::uintptr_t status, std::uintptr_t record)
{
    const ThreadId thread = noticeThread;
    return thread != 0 && postThreadMessage(thread, {linkChangeNotice, status, record}, Post::ifRoom);
}

} // namespace pyrux::platform
