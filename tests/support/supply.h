#pragma once

#include "tests/support/mouse.h"
#include "tests/support/supply_texts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// @file
/// The power supplies, for tests that hold for both classes.

namespace pyrux::test {

struct VoltgridModel {
    using Interface = PYRUX_VOLTGRID_Base;
    using Fan = VoltgridFan;
    static constexpr auto factory = &voltgrid;
    static constexpr const char* name = "VOLTGRID";
    static constexpr const char* tag = "[PYRUX][VOLTGRID]";
    static constexpr std::uint16_t pid = 0x0030;
    static constexpr bool isPsuCtrl = false;
};

struct PsuCtrlModel {
    using Interface = PYRUX_PSUCTRL_Base;
    using Fan = PsuCtrlFan;
    static constexpr auto factory = &psuCtrl;
    static constexpr const char* name = "PSUCTRL";
    static constexpr const char* tag = "[PYRUX][AU_LINE_550_MULTI]"; // the whole series has this one
    static constexpr std::uint16_t pid = 0x01A5;                     // SILENT_1300: any of the series will do
    static constexpr bool isPsuCtrl = true;
};

using SupplyModels = testing::Types<VoltgridModel, PsuCtrlModel>;

struct SupplyModelName {
    template <class Model>
    static std::string GetName(int)
    {
        return Model::name;
    }
};

template <class Model>
sim::Identity supplyIdentity()
{
    sim::Identity identity;
    identity.pid = Model::pid;
    identity.product = Model::name;
    identity.collections = {{-1, 0xFF00, 0x0001}};
    identity.controlInterface = -1;
    return identity;
}

/// A supply that says nothing but what the test has laid down, and answers the question for its rail mode.
template <class Model>
class SupplyOf : public OpenedMouse<typename Model::Interface> {
public:
    SupplyOf()
        : OpenedMouse<typename Model::Interface>(Model::factory, supplyIdentity<Model>(),
                                                 [](ScriptedDevice& device) {
                                                     device.silence("");
                                                     device.answer(ascii("[OQ]"), ascii("[O1]"));
                                                 })
    {
    }

    /// The supply answers a text, each time with the next of the replies and with the last one for ever.
    void answers(const char* command, const std::vector<std::string>& replies)
    {
        std::vector<std::string> raw;
        for (const std::string& reply : replies)
            raw.push_back(ascii(reply));
        this->device->answers(ascii(command), raw);
    }
    void answer(const char* command, const char* reply) { answers(command, {reply}); }

    /// The supply sends texts, and the host has read them when this returns.
    void tell(const std::vector<std::string>& texts)
    {
        std::size_t unread = 0;
        for (const std::string& text : texts) {
            this->device->send(ascii(text));
            if (++unread % 32 == 0) // a device keeps 64 at most
                awaitRead();
        }
        awaitRead();
        this->asked();
    }

    /// What the host has sent since the last call.
    std::string asked(std::size_t atLeast = 0) { return takeTexts(this->path, atLeast); }

private:
    /// A reply comes behind all that was sent before.
    void awaitRead()
    {
        std::uint8_t mode = 0;
        EXPECT_EQ(this->host->getMultiRail(&mode), E_OK);
    }
};

/// A log line of a model's host object.
template <class Model>
std::string supplyLine(const std::string& text)
{
    return std::string(Model::tag) + "PYRUX::PYRUX_" + Model::name + "::" + text;
}

} // namespace pyrux::test
