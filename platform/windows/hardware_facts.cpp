#include "platform/hardware_facts.h"

#include "platform/windows/wmi.h"

#include <algorithm>
#include <array>

namespace pyrux::platform {
namespace {

struct Question {
    const wchar_t* query;
    std::array<const wchar_t*, 3> properties; ///< Ended by null where there are fewer.
};

/// By `Hardware`. Two blanks after two of the FROMs: as it has always been sent.
constexpr Question questions[]{
    {L"SELECT * FROM Win32_Processor", {L"Name"}},
    {L"SELECT * FROM  Win32_BaseBoard", {L"Manufacturer", L"Product"}},
    {L"SELECT * FROM  Win32_PhysicalMemory", {L"Manufacturer", L"Model", L"Capacity"}},
    {L"SELECT * FROM Win32_VideoController", {L"Name"}},
};

/// By `WmiAnswer::Failure`.
constexpr HardwareFacts::Failure failures[]{HardwareFacts::Failure::none, HardwareFacts::Failure::locator,
                                            HardwareFacts::Failure::server, HardwareFacts::Failure::query};

} // namespace

HardwareFacts hardwareFacts(Hardware part)
{
    const Question& question = questions[static_cast<std::size_t>(part)];
    const auto end = std::find(question.properties.begin(), question.properties.end(), nullptr);
    const WmiAnswer answer = firstObject(question.query, {question.properties.begin(), end});
    HardwareFacts facts{failures[static_cast<std::size_t>(answer.failure)], answer.code};
    for (const auto& text : answer.texts)
        facts.texts.push_back(text.value_or(""));
    return facts;
}

} // namespace pyrux::platform
