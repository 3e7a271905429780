#include "platform/profile_file.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ini.h>
#include <memory>
#include <optional>
#include <string_view>

namespace pyrux::platform {
namespace {

struct Search {
    std::string_view section;
    std::string_view key;
    std::optional<std::string> value;
};

/// Independent of the host's locale.
char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalWithoutCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

/// The first entry of a name counts.
int takeEntry(void* user, const char* section, const char* key, const char* value)
{
    auto& search = *static_cast<Search*>(user);
    if (!search.value && equalWithoutCase(section, search.section) && equalWithoutCase(key, search.key))
        search.value = value ? value : "";
    return 1;
}

void skipRestOfLine(std::FILE* file)
{
    for (int c = std::fgetc(file); c != EOF && c != '\n'; c = std::fgetc(file)) {
    }
}

/// Hands the parser one line of at most `size` - 1 characters, made so that its dialect becomes that of the
/// private-profile calls: blanks before a name mean nothing (to the parser they continue the value before),
/// and only
/// "=" ends a key (to the parser ":" does too).
char* readLine(char* line, int size, void* stream)
{
    auto* file = static_cast<std::FILE*>(stream);
    if (!std::fgets(line, size, file))
        return nullptr;
    if (!std::strchr(line, '\n'))
        skipRestOfLine(file);
    const char* text = line + std::strspn(line, " \t");
    std::memmove(line, text, std::strlen(text) + 1);
    if (line[std::strcspn(line, "=:")] == ':' && line[0] != '[')
        line[0] = '\0';
    return line;
}

std::string_view withoutQuotes(std::string_view value)
{
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && std::strchr("\"'", value.front());
    return quoted ? value.substr(1, value.size() - 2) : value;
}

/// A number too large for 32 bits wraps, as in the private-profile calls.
int leadingNumber(std::string_view value, int fallback)
{
    const bool negative = value.starts_with('-');
    if (negative)
        value.remove_prefix(1);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (value.empty() || !isDigit(value.front()))
        return fallback;
    std::uint32_t number = 0;
    for (const char c : value) {
        if (!isDigit(c))
            break;
        number = number * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return static_cast<int>(negative ? 0 - number : number);
}

} // namespace

int readProfileInt(const std::filesystem::path& file, const std::string& section, const std::string& key,
                   int fallback)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream{std::fopen(file.c_str(), "re"), std::fclose};
    if (!stream)
        return fallback;
    Search search{section, key, {}};
    ini_parse_stream(readLine, stream.get(), takeEntry, &search);
    return search.value ? leadingNumber(withoutQuotes(*search.value), fallback) : fallback;
}

} // namespace pyrux::platform
