#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace pyrux::test {

/// A USB device of the maker's with nothing behind its HID interfaces, one per report descriptor.
class RawGadget {
public:
    using Descriptor = std::vector<std::uint8_t>;

    /// @param controller  number of the virtual device controller
    RawGadget(const std::string& name, int controller, std::uint16_t pid,
              const std::vector<Descriptor>& interfaces);
    ~RawGadget();
    RawGadget(const RawGadget&) = delete;
    RawGadget& operator=(const RawGadget&) = delete;

    bool plug();
    bool unplug();

private:
    const std::filesystem::path folder;
    const std::string controller;
    std::size_t functions = 0;
};

/// A report descriptor with one collection per vendor page.
RawGadget::Descriptor vendorCollections(const std::vector<std::uint16_t>& pages);

} // namespace pyrux::test
