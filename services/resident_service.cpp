#include "services/resident_service.h"

#include "core/log.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace pyrux::resident {
namespace {

_error askForPair(const char* request, std::int32_t* first, std::int32_t* second, PipeLimits limits)
{
    if (!first || !second)
        return E_INVALID_GET;
    std::string text = request;
    if (const _error failure = TW_SERVICE(limits).queryDeskService(text))
        return failure;
    const NumberPair pair = readNumberPair(text);
    switch (pair.found) {
    case NumberPair::Found::noNumber:
        return E_INVALID_GET;
    case NumberPair::Found::both:
        *first = pair.first;
        *second = pair.second;
        break;
    case NumberPair::Found::tooFewFields:
        break;
    }
    return E_OK;
}

_error tell(std::string request, PipeLimits limits)
{
    return TW_SERVICE(limits).queryDeskService(request);
}

} // namespace

_error temperatures(std::int32_t* cpu, std::int32_t* gpu, PipeLimits limits)
{
    logCall(systemCategory, "PYRUX::getSysTemp", __LINE__);
    return askForPair("temp", cpu, gpu, limits);
}

_error coreCounts(std::int32_t* first, std::int32_t* second, PipeLimits limits)
{
    logCall(systemCategory, "PYRUX::getSysCore", __LINE__);
    return askForPair("getcorenum", first, second, limits);
}

_error version(float* value, PipeLimits limits)
{
    if (!value)
        return E_INVALID_GET;
    std::string text = "version";
    if (const _error failure = TW_SERVICE(limits).queryDeskService(text))
        return failure;
    const auto number = readNumber<float>(text);
    if (!number)
        return E_INVALID_GET;
    *value = *number;
    return E_OK;
}

_error enableFakeTemperature(PipeLimits limits)
{
    return tell("fake_temp", limits);
}

_error stepFakeTemperature(PipeLimits limits)
{
    return tell("fake_step", limits);
}

NumberPair readNumberPair(std::string_view reply)
{
    const auto firstEnd = reply.find(';');
    // A semicolon at the end of the reply begins no further field.
    if (firstEnd == std::string_view::npos || firstEnd + 1 == reply.size())
        return {};
    const std::string_view behind = reply.substr(firstEnd + 1);
    const auto first = readNumber<std::int32_t>(reply.substr(0, firstEnd));
    const auto second = readNumber<std::int32_t>(behind.substr(0, behind.find(';')));
    if (!first || !second)
        return {NumberPair::Found::noNumber};
    return {NumberPair::Found::both, *first, *second};
}

// Blind to the host's locale, whose decimal point may be another.
template <class Number>
std::errc readNumber(std::string_view text, Number& number)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    return std::from_chars(text.data(), text.data() + text.size(), number).ec;
}

template <class Number>
std::optional<Number> readNumber(std::string_view text)
{
    Number number{};
    if (readNumber(text, number) != std::errc())
        return {};
    return number;
}

template std::errc readNumber(std::string_view text, std::int32_t& number);
template std::errc readNumber(std::string_view text, float& number);
template std::optional<std::int32_t> readNumber(std::string_view text);
template std::optional<float> readNumber(std::string_view text);

} // namespace pyrux::resident
