#include "tests/support/models.h"

#include "tests/support/keyboard.h"
#include "tests/support/keyboard_images.h"
#include "tests/support/led_mouse.h"
#include "tests/support/supply_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <stdexcept>

namespace pyrux::test {
namespace {

constexpr const char* mouseOpening = "42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01 | 42 00 40 00 01 | "
                                     "42 10 40 00 01 | 43 00 00 00 01";
constexpr const char* ledMouseOpening = "42 00 00 00 01 00 00 01 01 | 42 10 00 00 01 00 00 01 01 | "
                                        "42 00 40 00 01 | 42 10 40 00 01 | 43 00 00 00 01";
constexpr const char* mouseGoodbye = "41 01 | 41 00";
constexpr const char* keyboardGoodbye = "41 01 | 41 00 | 41 00";

std::string keyboardOpening()
{
    return joined({"41 01 | 41 00", readingOfImage(), "41 80 | 52 28",
                   "42 00 00 00 01 00 00 01 | 42 10 00 00 01 00 00 01 | 43 00 00 00 01"});
}

/// A device that answers nothing but what is laid down.
void quiet(ScriptedDevice& device)
{
    device.silence("");
}

void glowHub(ScriptedDevice& device)
{
    quiet(device);
    device.answer("80 01 05", "80 01 05 03");
    device.answer("80 0B 01", "80 0B 03 01 00 00 02 FF");
}

/// Says 03, success, to each of the commands.
void accept(ScriptedDevice& device, const std::vector<std::string>& commands)
{
    quiet(device);
    for (const std::string& command : commands)
        device.answer("80 " + command, "80 " + command + " 03");
}

void playDock(ScriptedDevice& device)
{
    accept(device, {"01", "03", "04", "06", "11", "B0", "B1", "B6"});
}

void strandHub(ScriptedDevice& device)
{
    accept(device,
           {"03", "04", "06", "07", "08", "0A", "0B", "0D", "10", "11", "B0", "B1", "B2", "B5", "B6", "C0"});
}

void supply(ScriptedDevice& device)
{
    quiet(device);
    device.answer(ascii("[OQ]"), ascii("[O1]"));
}

/// The row of a model, from what its family has in common.
template <class Model>
ModelFacts factsIn(ModelFacts family)
{
    constexpr const NamedModel& own = Model::own;
    const std::string name(own.name), tag(own.tag);
    family.factoryName = own.factoryName;
    family.factory = made<Model::factory>;
    family.hostClass = "PYRUX_" + name;
    family.tag = tag;
    family.model = name;
    family.pid = own.pid;
    family.slots = own.slots;
    family.reader = "[PYRUX][" + tag + "]" + name + " USB fail";
    return family;
}

std::vector<ModelFacts> madeRows()
{
    // All inside: the names of typed tests ask for rows before main.
    const std::vector<sim::Collection> mouse{{0, 0x0001, 0x0002}, {1, 0xFF00, 0x0001}};
    const std::vector<sim::Collection> keyboard{{0, 0x0001, 0x0006}, {1, 0xFF00, 0x0001}};
    const std::vector<sim::Collection> hubOnZero{{0, 0xFF00, 0x0001}, {1, 0xFF01, 0x0001}};
    const std::vector<sim::Collection> hubOnOne{{1, 0xFF00, 0x0001}, {0, 0xFF01, 0x0001}};
    const std::vector<sim::Collection> single{{-1, 0xFF00, 0x0001}};

    // clang-format off
    std::vector<ModelFacts> all{
        {"rd210", made<&rd210>, "PYRUX_RD210", "RD210", "RD210", 0x012F, mouse, 1, 25,
         "[PYRUX][RD210]RD210 USB fail", mouseOpening, mouseGoodbye, {}, "42"},
        {"glow_hub", made<&glow_hub>, "PYRUX_GLOW", "GLOWHUB", "GLOW HUB", 0x1011, hubOnZero, 0, 29,
         "[PYRUX]Glow hub USB fail", "80 01 05 03 | 80 0B 01 01", "", {}, nullptr, glowHub},
        {"glow2", made<&glow2>, "PYRUX_GLOW2", "GLOWHUB2", "GLOW HUB II", 0x1007, hubOnZero, 0, 19,
         "[PYRUX]GLOW HUB II USB fail", "80 16 02 04", "80 16 02 04", {}, nullptr, quiet},
        {"tint_hub", made<&tint_hub>, "PYRUX_TINT", "TINTHUB", "TINT HUB", 0x004F, hubOnOne, 1, 12,
         "[PYRUX]TINT HUB USB fail", "", "41 00", {}, nullptr, quiet},
        {"playdock", made<&playdock>, "PYRUX_PLAY_DOCK", "PLAY_DOCK", "PLAY DOCK", 0x0153, hubOnZero, 0, 19,
         "[PYRUX]play dock USB fail", "", "", {}, nullptr, playDock},
        {"strandhub", made<&strandhub>, "PYRUX_STRANDHUB", "STRANDHUB", "STRANDHUB", 0x0173, hubOnOne, 1, 37,
         "[PYRUX]STRANDHUB USB fail", "", "", {}, nullptr, strandHub},
        {"strandhubv2", made<&strandhubv2>, "PYRUX_STRANDHUBV2", "STRANDHUBV2", "STRANDHUBV2", 0x01C9,
         hubOnOne, 1, 37, "[PYRUX]STRANDHUBV2 USB fail", "", "", {}, nullptr, strandHub},

        {"voltgrid", made<&voltgrid>, "PYRUX_VOLTGRID", "VOLTGRID", "VOLTGRID", 0x0030, single, -1, 9,
         "[PYRUX]VOLTGRID USB fail", "", "", {}, nullptr, supply, takeTexts},
        // The whole series has the tag of its first member, which stands here for all.
        {"psuCtrl", made<&psuCtrl>, "PYRUX_PSUCTRL", "AU_LINE_550_MULTI", "PSUCTRL", 0x018D, single, -1, 10,
         "[PYRUX]PSUCTRL USB fail", "", "", {}, nullptr, supply, takeTexts},
    };
    // clang-format on
    forEachOf(LedMouseModels(), [&]<class Model>() {
        all.push_back(factsIn<Model>({.collections = mouse,
                                      .interface = 1,
                                      .opening = ledMouseOpening,
                                      .goodbye = mouseGoodbye,
                                      .unanswered = "42"}));
    });
    forEachOf(KeyboardModels(), [&]<class Model>() {
        all.push_back(factsIn<Model>({.collections = keyboard,
                                      .interface = 1,
                                      .opening = keyboardOpening(),
                                      .goodbye = keyboardGoodbye,
                                      .openingLines = {"RAIN effect not found"},
                                      .unanswered = "42"}));
    });
    return all;
}

} // namespace

const std::vector<ModelFacts>& models()
{
    static const std::vector<ModelFacts> all = madeRows();
    return all;
}

const ModelFacts& factsOf(const std::string& factoryName)
{
    const auto found = std::ranges::find(models(), factoryName, &ModelFacts::factoryName);
    if (found == models().end())
        throw std::invalid_argument("no model " + factoryName);
    return *found;
}

const ModelFacts& factsOf(void* (*factory)(const char* path))
{
    const auto found = std::ranges::find(models(), factory, &ModelFacts::factory);
    if (found == models().end())
        throw std::invalid_argument("a model without a row");
    return *found;
}

sim::Identity identityOf(const ModelFacts& facts)
{
    sim::Identity identity;
    identity.pid = facts.pid;
    identity.product = facts.model;
    identity.collections = facts.collections;
    identity.controlInterface = facts.interface;
    return identity;
}

Lines linesOf(const ModelFacts& facts, const std::vector<std::string>& texts)
{
    Lines lines;
    if (!facts.tag.empty())
        for (const std::string& text : texts)
            lines.push_back("[PYRUX][" + facts.tag + "]" + text);
    return lines;
}

std::string hostText(const ModelFacts& facts, const std::string& text)
{
    return "PYRUX::" + facts.hostClass + "::" + text;
}

void PrintTo(const ModelFacts& facts, std::ostream* out)
{
    *out << facts.factoryName;
}

} // namespace pyrux::test
