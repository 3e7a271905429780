#include "tests/kernel/raw_gadget.h"

#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace pyrux::test {

namespace {

namespace fs = std::filesystem;

bool put(const fs::path& attribute, std::string_view value)
{
    const int file = open(attribute.c_str(), O_WRONLY | O_CLOEXEC);
    const bool written = file >= 0 && write(file, value.data(), value.size()) == ssize_t(value.size());
    if (file >= 0)
        close(file);
    return written;
}

std::string hex(unsigned value)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%04x", value);
    return text;
}

std::string functionName(std::size_t number)
{
    return "hid.raw" + std::to_string(number);
}

} // namespace

RawGadget::RawGadget(const std::string& name, int controllerNumber, std::uint16_t pid,
                     const std::vector<Descriptor>& interfaces)
    : folder(fs::path("/sys/kernel/config/usb_gadget") / name),
      controller("dummy_udc." + std::to_string(controllerNumber))
{
    std::error_code ignored;
    fs::create_directory(folder, ignored);
    put(folder / "idVendor", "0x3a7e");
    put(folder / "idProduct", hex(pid));
    put(folder / "bcdDevice", "0x0102");
    fs::create_directory(folder / "configs/c.1", ignored);
    for (const Descriptor& descriptor : interfaces) {
        // Function names count for the whole system.
        const fs::path function = folder / "functions" / (functionName(functions) + name);
        fs::create_directory(function, ignored);
        put(function / "report_length", "64");
        put(function / "report_desc", {reinterpret_cast<const char*>(descriptor.data()), descriptor.size()});
        fs::create_symlink(function, folder / "configs/c.1" / function.filename(), ignored);
        ++functions;
    }
}

RawGadget::~RawGadget()
{
    unplug();
    std::error_code ignored;
    for (const char* part : {"configs/c.1", "functions"})
        for (const auto& entry : fs::directory_iterator(folder / part, ignored))
            if (entry.path().filename().string().starts_with("hid."))
                fs::remove(entry.path(), ignored);
    fs::remove(folder / "configs/c.1", ignored);
    fs::remove(folder, ignored);
}

bool RawGadget::plug()
{
    return put(folder / "UDC", controller);
}

bool RawGadget::unplug()
{
    return put(folder / "UDC", "\n");
}

RawGadget::Descriptor vendorCollections(const std::vector<std::uint16_t>& pages)
{
    RawGadget::Descriptor all;
    std::uint8_t report = 0;
    for (const std::uint16_t page : pages) {
        ++report;
        // Vendor page, usage 1, application collection, a report id where there are several, 8 bytes in and
        // out.
        const RawGadget::Descriptor head{0x06, std::uint8_t(page), std::uint8_t(page >> 8), 0x09, 0x01, 0xA1,
                                         0x01};
        const RawGadget::Descriptor body{0x09, 0x02, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
                                         0x95, 0x08, 0x81, 0x02, 0x09, 0x03, 0x91, 0x02, 0xC0};
        all.insert(all.end(), head.begin(), head.end());
        if (pages.size() > 1)
            all.insert(all.end(), {0x85, report});
        all.insert(all.end(), body.begin(), body.end());
    }
    return all;
}

} // namespace pyrux::test
