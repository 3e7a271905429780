#include "transport/device_path.h"

#include "core/catalogue.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace pyrux {

namespace {

constexpr char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

/// The pieces of `text` between `separator`s, no more than `most`: what follows is of no interest.
std::vector<std::string_view> split(std::string_view text, char separator, std::size_t most)
{
    std::vector<std::string_view> pieces;
    while (pieces.size() < most) {
        const std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
    return pieces;
}

/// The leading digits of a text as a number of `base`; 0 when it begins with none, or when they say too much.
template <class Number>
Number leadingNumber(std::string_view digits, int base)
{
    Number number{};
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return result.ec == std::errc{} ? number : Number{};
}

/// The four hexadecimal digits after a key such as "VID_".
std::uint16_t idBehind(std::string_view piece, std::string_view key)
{
    const std::size_t place = piece.find(key);
    if (place == std::string_view::npos)
        return 0;
    return leadingNumber<std::uint16_t>(piece.substr(place + key.size(), 4), 16);
}

/// Reads the third piece of the second token: every "MI_0" is removed, the rest is a decimal number. A piece
/// that names no interface, such as the collection of a device that is not composite, gives -1.
std::int32_t interfaceOf(std::string_view piece)
{
    constexpr std::string_view key = "MI_0";
    if (piece.find("MI_") == std::string_view::npos)
        return -1;
    std::string rest(piece);
    for (std::size_t place = rest.find(key); place != std::string::npos; place = rest.find(key, place))
        rest.erase(place, key.size());
    return leadingNumber<std::int32_t>(rest, 10);
}

PathIdentity parse(std::string_view path, bool withInterface)
{
    std::string clean(path);
    std::erase_if(clean, [](char c) { return c == '\\' || c == '?'; });
    PathIdentity identity;
    const auto tokens = split(clean, '#', 2);
    if (tokens.size() < 2 || tokens[0] != "HID")
        return identity;
    const auto pieces = split(tokens[1], '&', 3);
    if (pieces.size() < 2 || pieces[1].size() < 8)
        return identity;
    if (withInterface && pieces.size() > 2)
        identity.interface = interfaceOf(pieces[2]);
    identity.vid = idBehind(pieces[0], "VID_");
    identity.pid = idBehind(pieces[1], "PID_");
    return identity;
}

} // namespace

std::string upperCased(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), upper);
    return result;
}

std::string_view devicePathPiece(std::string_view path, std::size_t index)
{
    const auto tokens = split(path, '#', 2 + 1);
    if (tokens.size() < 2)
        return {};
    const auto pieces = split(tokens[1], '&', index + 2);
    return index < pieces.size() ? pieces[index] : std::string_view{};
}

PathIdentity parseDevicePath(std::string_view path)
{
    return parse(path, true);
}

PathIdentity parseVidPid(std::string_view path)
{
    return parse(path, false);
}

PathIdentity identityOf(std::string_view path)
{
    return parse(upperCased(path), true);
}

bool hasDongleMark(std::string_view path)
{
    return path.size() >= dongleMark.size() &&
           upperCased(path.substr(path.size() - dongleMark.size())) == dongleMark;
}

std::string_view withoutDongleMark(std::string_view path)
{
    return hasDongleMark(path) ? path.substr(0, path.size() - dongleMark.size()) : path;
}

std::string registryKey(std::string_view path)
{
    std::string key(path);
    const PathIdentity identity = identityOf(path);
    const bool receiver = std::ranges::any_of(deviceCatalogue, [&](const DeviceRow& row) {
        return row.vid == identity.vid && row.pid == identity.pid && (row.flags & RowFlag::receiver);
    });
    if (receiver && !hasDongleMark(path))
        key += dongleMark;
    return key;
}

} // namespace pyrux
