#pragma once

#include "pyrux/error.h"
#include "services/tw_service.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

/// @file
/// What the library asks the resident service of the LumaDesk host.
///
/// Results, beside those of `TW_SERVICE::queryDeskService`: E_INVALID_GET for a null pointer, before anything
/// is sent, and for a reply in which a text stands where a number belongs. Outputs change on success alone.

namespace pyrux::resident {

/// What the export `getSysTemp` does, its log line included: temperatures of the processor and the graphics
/// card in degrees Celsius. A reply of fewer than two fields
/// is a success that changes nothing.
_error temperatures(std::int32_t* cpu, std::int32_t* gpu, PipeLimits limits = {});

/// What the export `getSysCore` does: the service's two core counts, likewise.
_error coreCounts(std::int32_t* first, std::int32_t* second, PipeLimits limits = {});

/// The service's version.
_error version(float* value, PipeLimits limits = {});

/// Simulated temperatures: switches them on, and takes one step. What the service replies does not matter.
_error enableFakeTemperature(PipeLimits limits = {});
_error stepFakeTemperature(PipeLimits limits = {});

/// The first two fields of a reply of numbers between semicolons.
struct NumberPair {
    enum class Found { both, tooFewFields, noNumber } found = Found::tooFewFields;
    std::int32_t first = 0;
    std::int32_t second = 0;
};
NumberPair readNumberPair(std::string_view reply);

/// The number that a text begins with, after blanks and an optional sign.
/// @return no error; invalid_argument: no number; result_out_of_range: none that fits
template <class Number>
std::errc readNumber(std::string_view text, Number& number);
extern template std::errc readNumber(std::string_view text, std::int32_t& number);
extern template std::errc readNumber(std::string_view text, float& number);

/// The same; no value in both cases.
template <class Number>
std::optional<Number> readNumber(std::string_view text);
extern template std::optional<std::int32_t> readNumber(std::string_view text);
extern template std::optional<float> readNumber(std::string_view text);

} // namespace pyrux::resident
