#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

/// @file
/// The values that cross the boundary, described once: what a number, a text, an array or a record looks like
/// in memory, and its JSON both ways. A record is described by the list of its fields:
///
///     template <> struct Layout<DpiLevel> {
///         using R = DpiLevel;
///         static constexpr Field fields[]{FIELD(x), FIELD(y)};
///     };

namespace pyrux::ctl {

using Json = nlohmann::ordered_json; ///< Keys in the order of the record's fields.

struct Type;

struct Field {
    const char* name;
    std::size_t offset;
    const Type* type;
    /// An array with a variable number of elements: the number stands in a byte of the record at this offset,
    /// and appears in JSON as the length of the array alone.
    std::ptrdiff_t countOffset = -1;
};

struct Type {
    enum class Kind { unsignedNumber, signedNumber, floatNumber, text, array, record };

    Kind kind;
    std::size_t size;                ///< In bytes.
    const Type* element = nullptr;   ///< Of an array.
    std::span<const Field> fields{}; ///< Of a record.

    std::size_t length() const { return size / element->size; }
    /// One word on the command line can say it; otherwise it takes JSON.
    bool isPlain() const { return kind != Kind::array && kind != Kind::record; }
};

/// The fields of a record; specialised for each. Bytes that no field names are 0 and do not appear in JSON.
template <class Record>
struct Layout;

template <class T>
constexpr Type makeType()
{
    if constexpr (std::is_enum_v<T>)
        return makeType<std::underlying_type_t<T>>();
    else if constexpr (std::is_floating_point_v<T>)
        return {Type::Kind::floatNumber, sizeof(T)};
    else if constexpr (std::is_integral_v<T>)
        return {std::is_signed_v<T> ? Type::Kind::signedNumber : Type::Kind::unsignedNumber, sizeof(T)};
    else
        return {Type::Kind::record, sizeof(T), nullptr, Layout<T>::fields};
}
template <class T>
inline constexpr Type typeOf = makeType<std::remove_cv_t<T>>();
template <class T, std::size_t N>
inline constexpr Type typeOf<T[N]>{Type::Kind::array, sizeof(T[N]), &typeOf<T>};
template <std::size_t N>
inline constexpr Type typeOf<char[N]>{Type::Kind::text, N};

/// A field of the record R, under its own name. `offsetof` and not a pointer to the member: packed members
/// are not aligned, and are only ever copied.
#define FIELD(member)                                                                                        \
    ::pyrux::ctl::Field                                                                                      \
    {                                                                                                        \
#member, offsetof(R, member), &::pyrux::ctl::typeOf < decltype(R::member)>                           \
    }
/// An array of which the first `count` elements are in use.
#define FIELD_COUNTED(member, count)                                                                         \
    ::pyrux::ctl::Field                                                                                      \
    {                                                                                                        \
#member, offsetof(R, member), &::pyrux::ctl::typeOf < decltype(R::member)>, offsetof(R, count)       \
    }

/// The value in `memory` as JSON. A text whose bytes are no clean text (not UTF-8, or something after the
/// first NUL) is given as the array of its bytes, so that nothing is lost.
Json toJson(const Type& type, const std::byte* memory);

/// Writes a JSON value to `memory`. Throws UsageError, naming the place, for a key that is missing or
/// unknown, a value of another kind, and a number that its field cannot hold.
void fromJson(const Type& type, const Json& json, std::byte* memory, const std::string& place);

/// Writes one word of the command line to `memory`: a number (decimal or 0x...), a text, or JSON; an array of
/// numbers also as a list with commas. Throws UsageError.
void fromWord(const Type& type, std::string_view word, std::byte* memory, const std::string& place);

/// Parses a JSON text. Throws UsageError.
Json parseJson(std::string_view text, const std::string& place);

/// JSON as one line of text; bytes that are not UTF-8 are replaced.
std::string toText(const Json& json);
/// JSON as text over several lines, with small arrays and records on one line.
std::string toPrettyText(const Json& json);

/// The type in a few words for a help text, such as "0 to 255" or "13 of 0 to 65535".
std::string describe(const Type& type);
std::string describe(const Field& field);

/// The field of a record type with this name, or null.
const Field* findField(const Type& record, std::string_view name);

} // namespace pyrux::ctl
