#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pyrux::platform {

/// What came of a question to WMI.
struct WmiAnswer {
    /// The step that failed: making the locator, connecting to the server, the query.
    enum class Failure { none, locator, server, query } failure = Failure::none;
    std::uint32_t code = 0; ///< Its result.
    bool found = false;     ///< There is an object.

    /// The first object's properties as they were asked for: one that is null is empty; no value: the object
    /// has no such property.
    std::vector<std::optional<std::string>> texts{};
};

/// Asks root\CIMV2. Enters the multithreaded apartment for the time of the call.
WmiAnswer firstObject(const std::wstring& query, std::span<const wchar_t* const> properties);

} // namespace pyrux::platform
