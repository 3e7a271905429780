#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Bytes as people write them: "51 00 00 00 04", one report from the next by " | ".

namespace pyrux::test {

using ByteVector = std::vector<std::uint8_t>;

/// "51 00 0f" to bytes. Throws std::invalid_argument for anything else than pairs of hexadecimal digits.
ByteVector bytes(std::string_view text);

/// Bytes to "51 00 0F".
std::string hex(std::span<const std::uint8_t> values);

/// The pieces of "41 80 | 51 00".
std::vector<std::string> reports(std::string_view text);

/// A payload as expectations show it: without the zeros at its end, which fill the report; "00" where nothing
/// is left.
std::string shortened(std::span<const std::uint8_t> payload);

/// Reports in the form in which `written` gives them, so that an expectation may keep zeros at the end of a
/// command where they tell something: "52 00" and "52" are the same report.
std::string wire(std::string_view text);

/// Pieces joined by " | "; empty ones are left out.
std::string joined(const std::vector<std::string>& pieces);

/// A byte as text.
std::string hexByte(int value);

/// The same bytes again and again: "01 02 03" three times.
std::string times(std::size_t count, const std::string& bytes);

/// Bytes that count up from `first`, wrapping around.
std::string counting(int first, std::size_t count);

} // namespace pyrux::test
