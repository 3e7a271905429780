#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace pyrux {

/// An output report: byte 0 the report id, then the payload. Commands are constants whose
/// braces hold the payload as it stands on the wire; arguments are set by report byte on a copy.
template <std::size_t reportBytes>
class ReportOf {
public:
    static constexpr std::size_t size = reportBytes;

    constexpr ReportOf() = default;
    constexpr ReportOf(std::initializer_list<std::uint8_t> payload)
    {
        std::ranges::copy(payload, bytes_.begin() + 1);
    }

    /// A report with one value in every byte, the report id included.
    static constexpr ReportOf filled(std::uint8_t value)
    {
        ReportOf report;
        report.bytes_.fill(value);
        return report;
    }

    /// A copy with `value` in a report byte.
    constexpr ReportOf at(std::size_t byte, std::uint8_t value) const
    {
        ReportOf copy = *this;
        copy.bytes_.at(byte) = value;
        return copy;
    }

    /// A copy with `values` from a report byte on; what would stand after the report's end is left out.
    constexpr ReportOf at(std::size_t byte, std::span<const std::uint8_t> values) const
    {
        ReportOf copy = *this;
        for (std::size_t i = 0; i < values.size() && byte + i < size; ++i)
            copy.bytes_[byte + i] = values[i];
        return copy;
    }

    /// Copies with a little-endian value from a report byte on.
    constexpr ReportOf at16(std::size_t byte, std::uint16_t value) const
    {
        return at(byte, std::uint8_t(value)).at(byte + 1, std::uint8_t(value >> 8));
    }
    constexpr ReportOf at32(std::size_t byte, std::uint32_t value) const
    {
        return at16(byte, std::uint16_t(value)).at16(byte + 2, std::uint16_t(value >> 16));
    }

    constexpr std::uint8_t operator[](std::size_t byte) const { return bytes_.at(byte); }
    constexpr std::span<const std::uint8_t, size> bytes() const { return bytes_; }
    constexpr std::span<const std::uint8_t> payload() const { return std::span(bytes_).subspan(1); }

    constexpr bool operator==(const ReportOf&) const = default;

private:
    std::array<std::uint8_t, size> bytes_{};
};

/// The report of all devices but those with wide ones.
using Report = ReportOf<65>;

/// The report of the devices that take and send 512 bytes.
using WideReport = ReportOf<513>;

/// An input report: up to the bytes of the widest one, counted from 0, zeros after what the device has sent.
/// A read outside gives 0.
class Reply {
public:
    static constexpr std::size_t size = WideReport::size;

    constexpr Reply() = default;
    constexpr explicit Reply(std::span<const std::uint8_t> input)
    {
        std::ranges::copy(input.first(std::min(input.size(), size)), bytes_.begin());
    }

    constexpr std::uint8_t operator[](std::size_t byte) const
    {
        return byte < size ? bytes_[byte] : std::uint8_t{0};
    }
    constexpr std::uint16_t u16(std::size_t byte) const
    {
        return std::uint16_t((*this)[byte] | (*this)[byte + 1] << 8);
    }
    constexpr bool begins(std::initializer_list<std::uint8_t> bytes) const
    {
        return std::ranges::equal(bytes, std::span(bytes_).first(std::min(bytes.size(), size)));
    }
    constexpr std::span<const std::uint8_t, size> bytes() const { return bytes_; }

    /// The bytes from `first` on, as many as there are up to `count`.
    constexpr std::span<const std::uint8_t> part(std::size_t first, std::size_t count) const
    {
        const std::size_t from = std::min(first, size);
        return std::span(bytes_).subspan(from, std::min(count, size - from));
    }

private:
    std::array<std::uint8_t, size> bytes_{};
};

/// A record as the bytes that it is made of.
template <class Record>
std::span<const std::uint8_t> bytesOf(const Record& record)
{
    return {reinterpret_cast<const std::uint8_t*>(&record), sizeof record};
}
template <class Record>
std::span<std::uint8_t> bytesOf(Record& record)
{
    return {reinterpret_cast<std::uint8_t*>(&record), sizeof record};
}

} // namespace pyrux
