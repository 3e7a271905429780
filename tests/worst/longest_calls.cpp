#include "tests/worst/longest_calls.h"

#include <algorithm>
#include <map>
#include <set>

namespace pyrux::test {
namespace {

/// Where the second record of a call stands.
constexpr std::size_t second = 24000;

const std::vector<LongestCall> mice{
    {"resetProfile", with(Byte{0}), ""},
    {"resetPartial", with(Byte{2}), ""},
    // A tilt of the wheel that goes to a DPI level.
    {"setKeyMapping", with(Byte{6}, std::uint16_t{0x01E0}), ""},
    {"setKeyMappingAll", with(memory), times(13, "E0 01")},
    {"setMouseCombo", with(Byte{1}), ""},
    // 198 events.
    {"setMacro", with(memory), "06 " + times(40, "41") + " 00 C6"},
    {"clearMacro", with(Byte{6}), ""},
};

/// Four effects that show the custom one's colors.
const std::string layers = times(4, "04 FF FF FF 03 00 FF 00 00 00 00 FF");

std::vector<LongestCall> keyboardCalls()
{
    std::vector<LongestCall> calls{
        {"resetProfile", with(Byte{0}), ""},
        {"setKeyMapping", with(std::uint32_t{255}, memory), ""},
        {"setMacro", with(memory), "05 00 00 " + times(16, "41") + " 00 C6"},
        {"clearMacro", with(Byte{255}), ""},
        {"setMultilayerEffect", with(memory), layers, "changeProfileId"},
        {"setMultizoneEffect", with(memory, at(second)), layers, "changeProfileId"},
        {"stopRecordMacro", with(), "", "setMultizoneEffect"},
    };
    // A profile change makes them read all effects first.
    for (const char* operation :
         {"setEffectMode", "getEffectMode", "setGeneralEffect", "getGeneralEffect", "getGeneralEffectAll",
          "setCustomEffect", "getCustomEffect", "getMultilayerEffect", "getMultizoneEffect", "saveConfig"})
        calls.push_back({operation, {}, "", "changeProfileId", true});
    return calls;
}

const std::vector<LongestCall> keyboards = keyboardCalls();

const std::vector<LongestCall> glowHub{
    // The ports have followed the host.
    {"setEffectMode", with(Byte{1}, Byte{12}), ""},
    {"setEffectCustomize", {}, "", "setEffectMode", true},
};

const std::vector<LongestCall> tintHub{
    // Four layers that are sent.
    {"setEffectMultilayer", with(memory), times(4, "04 01 11 12 13")},
    {"exit_device", {}, "", "setPortMultiColor", true},
};

/// A curve of their own.
const std::vector<LongestCall> supplies{{"setFan", with(memory), "05"}};

const std::map<std::string, std::vector<LongestCall>> all{
    {"rd110", mice},       {"rd210", mice},        {"rd215", mice},       {"rd230", mice},
    {"rd240", mice},       {"qw210", keyboards},   {"qw220", keyboards},  {"glow_hub", glowHub},
    {"tint_hub", tintHub}, {"voltgrid", supplies}, {"psuCtrl", supplies},
};

const std::set<std::string> anyMouseOrKeyboard{"getMacro", "getMacroAll", "getKeyMappingAll"};
const std::set<std::string> strandController{"setEffectCustomize", "getEffectCustomize"};
const std::set<std::string> supply{"getFan", "getVersion"};

} // namespace

const std::vector<LongestCall>& longestCalls(const std::string& model)
{
    static const std::vector<LongestCall> none;
    const auto found = all.find(model);
    return found == all.end() ? none : found->second;
}

bool isSumOnly(const std::string& model, const std::string& operation)
{
    if (model.starts_with("rd") || model.starts_with("qw"))
        return anyMouseOrKeyboard.contains(operation) &&
               !(model.starts_with("qw") && operation == "getKeyMappingAll");
    if (model.starts_with("strandhub"))
        return strandController.contains(operation);
    return (model == "voltgrid" || model == "psuCtrl") && supply.contains(operation);
}

} // namespace pyrux::test
