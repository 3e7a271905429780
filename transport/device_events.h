#pragma once

#include "transport/report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace pyrux {

/// How a report begins.
class ReportHead {
public:
    consteval ReportHead(std::initializer_list<std::uint8_t> head) : count(head.size())
    {
        std::ranges::copy(head, bytes.begin());
    }

    bool begins(const Reply& report) const
    {
        return std::ranges::equal(std::span(bytes).first(count), report.part(0, count));
    }

private:
    std::array<std::uint8_t, 4> bytes{};
    std::size_t count;
};

/// A report that a device sends by itself, and what comes of it, in the order of the fields.
template <class Record>
struct DeviceEvent {
    ReportHead head;
    std::optional<std::size_t> flagByte{}; ///< The byte that must be 1, where one must.
    std::string_view
        text{}; ///< Written to the debug output, after the model's name where it begins with a blank.
    std::optional<Report> acknowledgement{};
    Record (*record)(const Reply& report); ///< What the host's callback gets.

    bool fits(const Reply& report) const
    {
        return head.begins(report) && (!flagByte || report[*flagByte] == 1);
    }
};

} // namespace pyrux
