#pragma once

#include "tests/support/mouse.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The wired mice with lights, for tests that hold for all of them.

namespace pyrux::test {

struct RD215Model {
    using Interface = PYRUX_RD215_Base;
    static constexpr auto factory = &rd215;
    static constexpr const char* name = "RD215";
    static constexpr std::uint16_t pid = 0x0101;
    static constexpr const char* modes = "00 01 02 04 B0 FE";
    static constexpr std::size_t slots = 36;
};

struct RD230Model {
    using Interface = PYRUX_RD230_Base;
    static constexpr auto factory = &rd230;
    static constexpr const char* name = "RD230";
    static constexpr std::uint16_t pid = 0x0141;
    static constexpr const char* modes = "00 01 02 04 B0 FE";
    static constexpr std::size_t slots = 36;
};

struct RD240Model {
    using Interface = PYRUX_RD240_Base;
    static constexpr auto factory = &rd240;
    static constexpr const char* name = "RD240";
    static constexpr std::uint16_t pid = 0x0165;
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
    static constexpr std::size_t slots = 36;
};

struct RD110Model {
    using Interface = PYRUX_RD110_Base;
    static constexpr auto factory = &rd110;
    static constexpr const char* name = "RD110";
    static constexpr std::uint16_t pid = 0x015F;
    static constexpr const char* modes = "00 01 02 04 05 B0 FE";
    static constexpr std::size_t slots = 38;
};

using LedMouseModels = testing::Types<RD215Model, RD230Model, RD240Model, RD110Model>;

struct LedMouseModelName {
    template <class Model>
    static std::string GetName(int)
    {
        return Model::name;
    }
};

template <class Model>
sim::Identity identityOf()
{
    sim::Identity identity = rd210Identity();
    identity.pid = Model::pid;
    identity.product = Model::name;
    return identity;
}

template <class Model>
class LedMouseOf : public OpenedMouse<typename Model::Interface> {
public:
    explicit LedMouseOf(const std::function<void(ScriptedDevice&)>& prepare = {})
        : OpenedMouse<typename Model::Interface>(Model::factory, identityOf<Model>(), prepare)
    {
    }
};

/// A log line of a model's host object.
template <class Model>
std::string ownLine(const std::string& text)
{
    return std::string("[PYRUX][") + Model::name + "]PYRUX::PYRUX_" + Model::name + "::" + text;
}

} // namespace pyrux::test
