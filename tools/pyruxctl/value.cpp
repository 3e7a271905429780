#include "value.h"

#include "failure.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace pyrux::ctl {

namespace {

using Kind = Type::Kind;

std::uint64_t largest(const Type& type)
{
    const unsigned bits = static_cast<unsigned>(type.size) * 8;
    return std::numeric_limits<std::uint64_t>::max() >> (64 - bits + (type.kind == Kind::signedNumber));
}

/// How far below 0 it reaches.
std::uint64_t lowest(const Type& type)
{
    return type.kind == Kind::signedNumber ? largest(type) + 1 : 0;
}

std::string range(const Type& type)
{
    const auto low = lowest(type);
    return (low != 0 ? "-" : "") + std::to_string(low) + " to " + std::to_string(largest(type));
}

/// Both systems are little-endian, and so is a number of any width in memory.
void storeNumber(const Type& type, bool negative, std::uint64_t magnitude, std::byte* memory,
                 const std::string& place)
{
    if (magnitude > (negative ? lowest(type) : largest(type)))
        throw UsageError(place + ": " + (negative ? "-" : "") + std::to_string(magnitude) + " is not in " +
                         range(type));
    const std::uint64_t bits = negative ? 0 - magnitude : magnitude;
    std::memcpy(memory, &bits, type.size);
}

void storeFloat(const Type& type, double value, std::byte* memory)
{
    if (type.size == sizeof(float)) {
        const auto narrow = static_cast<float>(value);
        std::memcpy(memory, &narrow, sizeof narrow);
    } else {
        std::memcpy(memory, &value, sizeof value);
    }
}

void storeText(const Type& type, std::string_view text, std::byte* memory, const std::string& place)
{
    if (text.size() > type.size)
        throw UsageError(place + ": longer than " + std::to_string(type.size) + " bytes");
    std::memset(memory, 0, type.size);
    std::memcpy(memory, text.data(), text.size());
}

Json numberToJson(const Type& type, const std::byte* memory)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, memory, type.size);
    if (type.kind == Kind::unsignedNumber)
        return bits;
    const unsigned spare = 64 - static_cast<unsigned>(type.size) * 8;
    return static_cast<std::int64_t>(bits << spare) >> spare;
}

/// A float as the shortest decimal number that stands for it: 3.86, not 3.8599998950958252.
Json floatToJson(const Type& type, const std::byte* memory)
{
    double value;
    if (type.size == sizeof(float)) {
        float narrow;
        std::memcpy(&narrow, memory, sizeof narrow);
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, narrow).ptr;
        std::from_chars(text, end, value);
    } else {
        std::memcpy(&value, memory, sizeof value);
    }
    return value;
}

bool isUtf8(const std::string& text)
{
    try {
        return !Json(text).dump().empty();
    } catch (const Json::type_error&) {
        return false;
    }
}

Json textToJson(const Type& type, const std::byte* memory)
{
    const auto* begin = reinterpret_cast<const char*>(memory);
    const auto* end = begin + type.size;
    const auto* stop = std::find(begin, end, '\0');
    std::string text(begin, stop);
    if (std::all_of(stop, end, [](char c) { return c == '\0'; }) && isUtf8(text))
        return text;
    Json bytes = Json::array();
    for (const auto* at = begin; at != end; ++at)
        bytes.push_back(static_cast<unsigned char>(*at));
    return bytes;
}

Json arrayToJson(const Type& type, std::size_t length, const std::byte* memory)
{
    Json array = Json::array();
    for (std::size_t i = 0; i < length; ++i)
        array.push_back(toJson(*type.element, memory + i * type.element->size));
    return array;
}

Json recordToJson(const Type& type, const std::byte* memory)
{
    Json record = Json::object();
    for (const Field& field : type.fields) {
        const std::byte* at = memory + field.offset;
        if (field.countOffset < 0) {
            record[field.name] = toJson(*field.type, at);
        } else { // what the device claims may be more than there is room for
            const auto count = std::to_integer<std::size_t>(memory[field.countOffset]);
            record[field.name] = arrayToJson(*field.type, std::min(count, field.type->length()), at);
        }
    }
    return record;
}

void arrayFromJson(const Type& type, const Json& json, std::byte* memory, const std::string& place)
{
    std::size_t i = 0;
    for (const Json& element : json) {
        fromJson(*type.element, element, memory + i * type.element->size,
                 place + "[" + std::to_string(i) + "]");
        ++i;
    }
}

void expectArray(const Json& json, std::size_t least, std::size_t most, const std::string& place)
{
    if (json.is_array() && json.size() >= least && json.size() <= most)
        return;
    throw UsageError(place + ": must be an array of " + (least == most ? "" : "at most ") +
                     std::to_string(most) + " elements");
}

void recordFromJson(const Type& type, const Json& json, std::byte* memory, const std::string& place)
{
    if (!json.is_object())
        throw UsageError(place + ": must be a record, {\"" + type.fields.front().name + "\": ...}");
    for (const auto& [key, value] : json.items())
        if (!findField(type, key))
            throw UsageError(place + ": unknown key \"" + key + "\"");
    for (const Field& field : type.fields) {
        const auto found = json.find(field.name);
        if (found == json.end())
            throw UsageError(place + ": missing key \"" + field.name + "\"");
        const std::string inner = place + "." + field.name;
        if (field.countOffset < 0) {
            fromJson(*field.type, *found, memory + field.offset, inner);
        } else {
            expectArray(*found, 0, std::min<std::size_t>(field.type->length(), 255), inner);
            arrayFromJson(*field.type, *found, memory + field.offset, inner);
            memory[field.countOffset] = static_cast<std::byte>(found->size());
        }
    }
}

void numberFromWord(const Type& type, std::string_view word, std::byte* memory, const std::string& place)
{
    std::string_view digits = word;
    const bool negative = digits.starts_with('-');
    if (negative)
        digits.remove_prefix(1);
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
        base = 16;
    }
    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (error == std::errc::result_out_of_range)
        throw UsageError(place + ": " + std::string(word) + " is not in " + range(type));
    if (error != std::errc() || end != digits.data() + digits.size())
        throw UsageError(place + ": \"" + std::string(word) + "\" is not a number");
    storeNumber(type, negative, magnitude, memory, place);
}

void floatFromWord(const Type& type, std::string_view word, std::byte* memory, const std::string& place)
{
    double value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size())
        throw UsageError(place + ": \"" + std::string(word) + "\" is not a number");
    storeFloat(type, value, memory);
}

/// "1,0x1E0,3" for an array of numbers.
void listFromWord(const Type& type, std::string_view word, std::byte* memory, const std::string& place)
{
    std::size_t i = 0;
    for (bool more = true; more; ++i) {
        const auto comma = word.find(',');
        more = comma != std::string_view::npos;
        if (i < type.length())
            fromWord(*type.element, word.substr(0, comma), memory + i * type.element->size,
                     place + "[" + std::to_string(i) + "]");
        if (more)
            word.remove_prefix(comma + 1);
    }
    if (i != type.length())
        throw UsageError(place + ": takes " + std::to_string(type.length()) + " values, not " +
                         std::to_string(i));
}

} // namespace

const Field* findField(const Type& record, std::string_view name)
{
    const auto found =
        std::ranges::find(record.fields, name, [](const Field& f) { return std::string_view(f.name); });
    return found == record.fields.end() ? nullptr : &*found;
}

Json toJson(const Type& type, const std::byte* memory)
{
    switch (type.kind) {
    case Kind::unsignedNumber:
    case Kind::signedNumber:
        return numberToJson(type, memory);
    case Kind::floatNumber:
        return floatToJson(type, memory);
    case Kind::text:
        return textToJson(type, memory);
    case Kind::array:
        return arrayToJson(type, type.length(), memory);
    case Kind::record:
        return recordToJson(type, memory);
    }
    return nullptr;
}

void fromJson(const Type& type, const Json& json, std::byte* memory, const std::string& place)
{
    switch (type.kind) {
    case Kind::unsignedNumber:
    case Kind::signedNumber:
        if (!json.is_number_integer())
            throw UsageError(place + ": must be a whole number in " + range(type));
        if (json.is_number_unsigned() || json.get<std::int64_t>() >= 0)
            return storeNumber(type, false, json.get<std::uint64_t>(), memory, place);
        return storeNumber(type, true, 0 - static_cast<std::uint64_t>(json.get<std::int64_t>()), memory,
                           place);
    case Kind::floatNumber:
        if (!json.is_number())
            throw UsageError(place + ": must be a number");
        return storeFloat(type, json.get<double>(), memory);
    case Kind::text:
        if (json.is_string())
            return storeText(type, json.get_ref<const std::string&>(), memory, place);
        expectArray(json, type.size, type.size, place + ": neither a text nor its bytes");
        return arrayFromJson({Kind::array, type.size, &typeOf<std::uint8_t>}, json, memory, place);
    case Kind::array:
        expectArray(json, type.length(), type.length(), place);
        return arrayFromJson(type, json, memory, place);
    case Kind::record:
        return recordFromJson(type, json, memory, place);
    }
}

void fromWord(const Type& type, std::string_view word, std::byte* memory, const std::string& place)
{
    switch (type.kind) {
    case Kind::unsignedNumber:
    case Kind::signedNumber:
        return numberFromWord(type, word, memory, place);
    case Kind::floatNumber:
        return floatFromWord(type, word, memory, place);
    case Kind::text:
        return storeText(type, word, memory, place);
    case Kind::array:
        if (type.element->isPlain() && !word.starts_with('['))
            return listFromWord(type, word, memory, place);
        [[fallthrough]];
    case Kind::record:
        return fromJson(type, parseJson(word, place), memory, place);
    }
}

Json parseJson(std::string_view text, const std::string& place)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw UsageError(place + ": no valid JSON at byte " + std::to_string(error.byte));
    } catch (const Json::out_of_range&) {
        throw UsageError(place + ": a number is too large");
    }
}

std::string toText(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string toPrettyText(const Json& json)
{
    constexpr std::size_t lineWidth = 100;
    const auto write = [](const auto& self, const Json& value, std::size_t indent) -> std::string {
        const std::string line = toText(value);
        if (!value.is_structured() || line.size() + indent <= lineWidth)
            return line;
        std::string text;
        for (const auto& [key, inner] : value.items()) {
            text += text.empty() ? "\n" : ",\n";
            text += std::string(indent + 2, ' ');
            if (value.is_object())
                text += toText(key) + ": ";
            text += self(self, inner, indent + 2);
        }
        const auto [open, close] = value.is_object() ? std::pair{'{', '}'} : std::pair{'[', ']'};
        return open + text + "\n" + std::string(indent, ' ') + close;
    };
    return write(write, json, 0);
}

std::string describe(const Field& field)
{
    return (field.countOffset < 0 ? "" : "at most ") + describe(*field.type);
}

std::string describe(const Type& type)
{
    switch (type.kind) {
    case Kind::unsignedNumber:
    case Kind::signedNumber:
        return range(type);
    case Kind::floatNumber:
        return "a number";
    case Kind::text:
        return "text of at most " + std::to_string(type.size) + " bytes";
    case Kind::array:
        return std::to_string(type.length()) + " of " + describe(*type.element);
    case Kind::record:
        break;
    }
    std::string text;
    for (const Field& field : type.fields)
        text += (text.empty() ? "{" : ", ") + std::string(field.name) + ": " + describe(field);
    return text + "}";
}

} // namespace pyrux::ctl
