#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// What the computer's parts are called.

namespace pyrux::platform {

enum class Hardware {
    cpu,    ///< Name.
    board,  ///< Manufacturer, product.
    memory, ///< Manufacturer, model and capacity in bytes (a decimal number) of the first module.
    gpu,    ///< Name.
};

/// What came of a question for a part.
struct HardwareFacts {
    /// The step that failed; the system's locator, server and query, in this order.
    enum class Failure { none, locator, server, query } failure = Failure::none;
    std::uint32_t code = 0; ///< The system's error code of that step.

    /// The part's texts in the order that `Hardware` gives, empty where the system has none. No texts: it has
    /// no such part.
    std::vector<std::string> texts{};
};

/// Asks WMI on Windows; files and udev on Linux. Blocks for as long as the system takes.
HardwareFacts hardwareFacts(Hardware part);

} // namespace pyrux::platform
