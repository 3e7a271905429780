#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace pyrux::platform {

/// A memory module that is in its socket.
struct MemoryModule {
    std::string manufacturer;
    std::string partNumber;
    std::uint64_t bytes = 0;
};

/// The first module that the SMBIOS tables describe. Tables that end early or point outside themselves end
/// the search.
std::optional<MemoryModule> firstMemoryModule(std::span<const std::uint8_t> tables);

} // namespace pyrux::platform
