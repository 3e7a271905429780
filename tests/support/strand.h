#pragma once

#include "pyrux/pyrux.h"
#include "tests/support/scripted_device.h"

#include <cstdint>
#include <string>

/// @file
/// The strand controllers, for tests that hold for both of them and for other lighting controllers.

namespace pyrux::test {

/// What both have in common: everything but their names.
struct StrandModel {
    static constexpr int interface = 1;
    static constexpr std::size_t slots = 37;
    static constexpr int replyMs = 1000;
    static constexpr const char* opening = "";
    static constexpr const char* goodbye = "";

    static constexpr const char* question = "80 B4 01";
    static constexpr const char* answer = "80 B4 03 34 12";
    static constexpr int value = 0x1234;
    static constexpr int untouched = 0xEEEE;
    static _error ask(STRANDHUB_Operations* host, int& value)
    {
        std::uint16_t version = 0xEEEE;
        const _error result = host->getVersion(&version);
        value = version;
        return result;
    }

    static void prepare(ScriptedDevice& device)
    {
        for (const char* command :
             {"03", "04", "06", "07", "08", "0A", "0B", "0D", "10", "11", "B0", "B1", "B2", "B5", "B6", "C0"})
            device.answer(std::string("80 ") + command, std::string("80 ") + command + " 03");
    }
};

struct StrandHubModel : StrandModel {
    using Interface = PYRUX_STRANDHUB_Base;
    static constexpr auto factory = &strandhub;
    static constexpr const char* exportName = "strandhub";
    static constexpr const char* name = "PYRUX_STRANDHUB";
    static constexpr const char* tag = "STRANDHUB";
    static constexpr const char* exitText = "exit devie STRANDHUB by probe";
    static constexpr const char* readerText = "STRANDHUB USB fail";
    static constexpr std::uint16_t pid = 0x0173;
};

struct StrandHubV2Model : StrandModel {
    using Interface = PYRUX_STRANDHUBV2_Base;
    static constexpr auto factory = &strandhubv2;
    static constexpr const char* exportName = "strandhubv2";
    static constexpr const char* name = "PYRUX_STRANDHUBV2";
    static constexpr const char* tag = "STRANDHUBV2";
    static constexpr const char* exitText = "exit devie STRANDHUBV2 by probe";
    static constexpr const char* readerText = "STRANDHUBV2 USB fail";
    static constexpr std::uint16_t pid = 0x01C9;
};

} // namespace pyrux::test
