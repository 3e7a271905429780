#include "devices/mice/mouse_profiles.h"

#include "core/log.h"

#include <string>

namespace pyrux {

namespace {

// clang-format off
namespace cmd { // numbers are report bytes; a reply counts from 0
constexpr Report resetProfile{0x50, 0x10}; // 5: 0xFF for all profiles
constexpr Report save        {0x50, 0x55};
constexpr Report setProfile  {0x51, 0x00}; // 5: profile
constexpr Report getProfile  {0x52, 0x00}; // reply 4: profile
} // namespace cmd
// clang-format on

constexpr std::uint8_t profiles = 5;

} // namespace

_error MouseProfiles::changeProfileId(std::uint8_t profile)
{
    if (profile >= profiles)
        return E_INVALID_SET;
    log(model.logCategory, [&] { return "change profile id = " + std::to_string(profile); });
    modes.configure();
    return link.set(cmd::setProfile.at(5, profile));
}

_error MouseProfiles::getCurrProfileId(std::uint8_t* profile)
{
    if (!profile)
        return E_INVALID_GET;
    modes.configure();
    Reply reply;
    if (const _error result = link.get(cmd::getProfile, reply))
        return result;
    *profile = reply[4];
    log(model.logCategory, [&] { return "get profile id = " + std::to_string(*profile); });
    return E_OK;
}

_error MouseProfiles::resetProfile(std::uint8_t all)
{
    modes.serve();
    const _error result = link.set(cmd::resetProfile.at(5, all ? 0xFF : 0x00));
    if (!all)
        link.set(cmd::save);
    modes.release();
    return result;
}

_error MouseProfiles::saveConfig()
{
    modes.serve();
    const _error result = link.set(cmd::save);
    modes.release();
    return result;
}

} // namespace pyrux
