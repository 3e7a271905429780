#include "devices/keyboards/profiles.h"

#include "devices/keyboards/keyboard_commands.h"

namespace pyrux {

namespace {

namespace cmd {                          // numbers are report bytes; a reply counts from 0
constexpr Report reset{0x50, 0x10};      // 5: 0xFF for all profiles
constexpr Report setProfile{0x51, 0x00}; // 5: profile
constexpr Report resetPart{0x51, 0x98};  // 3: mask
constexpr Report getProfile{0x52, 0x00}; // reply 4: profile
} // namespace cmd

} // namespace

std::uint8_t ProfileState::effect() const
{
    const std::uint8_t profile = current;
    return profile < count ? effects[profile].load() : std::uint8_t{0};
}

void ProfileState::setEffect(std::uint8_t effect)
{
    const std::uint8_t profile = current;
    if (profile < count)
        effects[profile] = effect;
}

_error Profiles::change(std::uint8_t id)
{
    if (id >= ProfileState::count)
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    const _error result = keys::set(link, cmd::setProfile.at(5, id));
    if (!result)
        state.current = id;
    state.reloadNeeded = true; // deliberate: also when the device has not answered
    return result;
}

_error Profiles::getCurrent(std::uint8_t* id)
{
    if (!id)
        return E_INVALID_GET;
    keys::set(link, keys::editOn);
    Reply reply;
    const _error result = link.get(cmd::getProfile, reply);
    if (!result && reply.begins({0x52, 0x00})) {
        *id = reply[4];
        state.current = *id;
    }
    return result;
}

_error Profiles::reset(std::uint8_t scope)
{
    keys::set(link, keys::serviceOn);
    const _error result = keys::set(link, cmd::reset.at(5, scope ? 0xFF : 0x00));
    if (!scope)
        keys::set(link, keys::commit); // deliberate: a reset of all profiles is not committed
    keys::endEdit(link);
    state.reloadNeeded = true;
    return result;
}

_error Profiles::resetPartial(std::uint8_t part)
{
    if (part >= partialResets)
        return E_INVALID_SET;
    keys::set(link, keys::editOn);
    const _error result = keys::set(link, cmd::resetPart.at(3, std::uint8_t(1 << part)));
    if (part == 0 && !result)
        state.reloadNeeded = true;
    return result;
}

} // namespace pyrux
