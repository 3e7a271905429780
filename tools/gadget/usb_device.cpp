#include "usb_device.h"

#include "failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <span>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace pyrux::gadget {

namespace fs = std::filesystem;

namespace {

const fs::path gadgets = "/sys/kernel/config/usb_gadget";
const fs::path controllers = "/sys/class/udc";
const fs::path nodes = "/dev";

constexpr auto english = "strings/0x409";
constexpr auto configuration = "configs/c.1";

[[noreturn]] void refuse(const std::string& what, int error)
{
    const Exit why = error == EACCES || error == EPERM ? Exit::noController : Exit::refused;
    throw Failure(why, what + ": " + std::strerror(error));
}

void makeFolder(const fs::path& folder)
{
    if (mkdir(folder.c_str(), 0755) != 0)
        refuse(folder, errno);
}

/// An attribute takes its value in one write.
/// @return 0 or the error
int tryWrite(const fs::path& attribute, std::string_view value)
{
    const FileDescriptor file(open(attribute.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file)
        return errno;
    const ssize_t count = write(file.get(), value.data(), value.size());
    return count < 0 ? errno : count == ssize_t(value.size()) ? 0 : EIO;
}

void setText(const fs::path& attribute, std::string_view value)
{
    if (const int error = tryWrite(attribute, value))
        refuse(attribute, error);
}

void setNumber(const fs::path& attribute, unsigned value)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", value);
    setText(attribute, text.data());
}

/// A string that a device does not have is left out, so that its descriptor says so.
void setString(const fs::path& attribute, const std::string& value)
{
    if (!value.empty())
        setText(attribute, value);
}

std::string functionName(std::size_t interface)
{
    return "hid.usb" + std::to_string(interface);
}

std::vector<fs::path> entriesOf(const fs::path& folder)
{
    std::error_code ignored;
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored))
        entries.push_back(entry.path());
    std::ranges::sort(entries);
    return entries;
}

/// Removes the folders inside `folder`, which the kernel asks to be done one by one; attributes go with them.
void removeFolders(const fs::path& folder)
{
    for (const fs::path& entry : entriesOf(folder))
        if (fs::is_directory(fs::symlink_status(entry)))
            rmdir(entry.c_str());
}

/// Takes a device away, plugged in or not, in the order in which its parts hold each other.
/// @return 0 or the error
int removeDevice(const fs::path& folder)
{
    tryWrite(folder / "UDC", "\n");
    for (const fs::path& one : entriesOf(folder / "configs")) {
        for (const fs::path& entry : entriesOf(one))
            if (fs::is_symlink(fs::symlink_status(entry)))
                unlink(entry.c_str());
        removeFolders(one / "strings");
    }
    removeFolders(folder / "configs");
    removeFolders(folder / "functions");
    removeFolders(folder / "strings");
    return rmdir(folder.c_str()) == 0 ? 0 : errno;
}

/// The lock that tells a device in use from a left-over. The system opens it when its process ends.
FileDescriptor claimFolder(const fs::path& folder)
{
    FileDescriptor claim(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!claim)
        refuse(folder, errno);
    if (flock(claim.get(), LOCK_EX | LOCK_NB) != 0)
        throw Failure(Exit::refused, folder.string() + ": another pyrux-gadget presents this device");
    return claim;
}

FileDescriptor makeDeviceFolder(const fs::path& folder)
{
    if (!fs::exists(gadgets))
        throw Failure(
            Exit::noController,
            gadgets.string() +
                " is not there: load the module libcomposite, and mount configfs on /sys/kernel/config");
    if (fs::exists(folder)) {
        const FileDescriptor leftOver = claimFolder(folder);
        if (const int error = removeDevice(folder))
            refuse(folder, error);
    }
    makeFolder(folder);
    return claimFolder(folder);
}

/// The device number of a function's character device, from text of the form "236:0".
dev_t numberOf(const fs::path& function)
{
    unsigned major = 0;
    unsigned minor = 0;
    char colon = 0;
    std::ifstream attribute(function / "dev");
    if (!(attribute >> major >> colon >> minor))
        throw Failure(Exit::refused, (function / "dev").string() + " has no device number");
    return makedev(major, minor);
}

} // namespace

std::string firstController()
{
    const std::vector<fs::path> all = entriesOf(controllers);
    if (all.empty())
        throw Failure(Exit::noController,
                      "there is no USB device controller; the module dummy_hcd makes one without hardware");
    return all.front().filename();
}

UsbDevice::UsbDevice(const std::string& name, const sim::Identity& identity,
                     const std::vector<HidInterface>& interfaces)
    : folder(gadgets / name), claim(makeDeviceFolder(folder))
{
    try {
        describe(identity, interfaces);
    } catch (const Failure&) {
        removeDevice(folder);
        throw;
    }
}

UsbDevice::~UsbDevice()
{
    if (const int error = removeDevice(folder))
        std::fprintf(stderr, "pyrux-gadget: %s is left behind: %s\n", folder.c_str(), std::strerror(error));
}

void UsbDevice::describe(const sim::Identity& identity, const std::vector<HidInterface>& interfaces)
{
    setNumber(folder / "idVendor", identity.vid);
    setNumber(folder / "idProduct", identity.pid);
    setNumber(folder / "bcdDevice", identity.release);
    setNumber(folder / "bcdUSB", 0x0200);
    makeFolder(folder / english);
    setString(folder / english / "serialnumber", identity.serial);
    setString(folder / english / "product", identity.product);
    setString(folder / english / "manufacturer", identity.manufacturer);
    makeFolder(folder / configuration);
    setText(folder / configuration / "MaxPower", "100"); // mA

    // Interfaces are numbered in the order in which the functions come into the configuration.
    for (std::size_t i = 0; i < interfaces.size(); ++i) {
        const HidInterface& interface = interfaces[i];
        const fs::path function = folder / "functions" / functionName(i);
        makeFolder(function);
        setNumber(function / "subclass", interface.subclass);
        setNumber(function / "protocol", interface.protocol);
        setNumber(function / "report_length", interface.reportLength);
        setNumber(function / "no_out_endpoint", interface.hasOutputEndpoint ? 0 : 1);
        const auto* descriptor = reinterpret_cast<const char*>(interface.descriptor.data());
        setText(function / "report_desc", {descriptor, interface.descriptor.size()});
        const fs::path link = folder / configuration / functionName(i);
        if (symlink(function.c_str(), link.c_str()) != 0)
            refuse(link, errno);
    }
}

void UsbDevice::plug(const std::string& controller)
{
    if (!fs::exists(controllers / controller))
        throw Failure(Exit::noController, "there is no USB device controller \"" + controller + "\"");
    if (const int error = tryWrite(folder / "UDC", controller))
        refuse(controller, error);
    plugged = true;
}

void UsbDevice::unplug()
{
    if (const int error = tryWrite(folder / "UDC", "\n"))
        refuse(folder / "UDC", error);
    plugged = false;
}

fs::path UsbDevice::node(std::size_t interface) const
{
    const dev_t number = numberOf(folder / "functions" / functionName(interface));
    for (const fs::path& entry : entriesOf(nodes)) {
        struct stat status;
        if (entry.filename().string().starts_with("hidg") && stat(entry.c_str(), &status) == 0 &&
            S_ISCHR(status.st_mode) && status.st_rdev == number)
            return entry;
    }
    throw Failure(Exit::refused, "interface " + std::to_string(interface) + " has no /dev/hidg node");
}

} // namespace pyrux::gadget
