// The operations of the models as pyruxctl describes them: words in, the right slot with the right values,
// JSON out.

#include "fake_mouse.h"

#include "tools/pyruxctl/call.h"
#include "tools/pyruxctl/failure.h"
#include "tools/pyruxctl/models.h"

#include <gtest/gtest.h>

namespace {

using namespace pyrux::ctl;

const Operation& rd210Operation(const std::string& name)
{
    return *findModel("rd210")->findOperation(name);
}

/// The host object as the library hands it out.
void* hostOf(FakeMouse& mouse)
{
    return static_cast<PYRUX_RD210_Base*>(&mouse);
}

struct Outcome {
    std::int32_t code;
    std::string outputs;
};

Outcome call(FakeMouse& mouse, const std::string& name, const std::vector<std::string>& words)
{
    Call call(rd210Operation(name), words, {});
    const auto code = call.on(hostOf(mouse));
    return {code, toText(call.outputs())};
}

std::string usageError(const std::string& name, const std::vector<std::string>& words)
{
    try {
        Call(rd210Operation(name), words, {});
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

struct OperationCase {
    const char* name;
    std::vector<std::string> words;
    const char* called;
    const char* outputs;
};

const OperationCase cases[]{
    {"changeProfileId", {"4"}, "changeProfileId 4", "{}"},
    {"getCurrProfileId", {}, "getCurrProfileId", R"({"profile":17})"},
    {"resetProfile", {"1"}, "resetProfile 1", "{}"},
    {"resetPartial", {"2"}, "resetPartial 2", "{}"},
    {"setKeyMapping", {"12", "0x01E6"}, "setKeyMapping 12 486", "{}"},
    {"setKeyMappingAll", {"0,1,2,3,4,5,6,7,8,9,10,11,12"}, "setKeyMappingAll", "{}"},
    {"getKeyMappingAll", {}, "getKeyMappingAll", R"({"map":[0,0,0,0,0,0,0,0,0,0,0,0,0]})"},
    {"setMouseCombo", {"1"}, "setMouseCombo 1", "{}"},
    {"getMouseCombo", {}, "getMouseCombo", R"({"on":17})"},
    {"startRecordMacro", {}, "startRecordMacro", "{}"},
    {"stopRecordMacro", {}, "stopRecordMacro", "{}"},
    {"setMacro", {R"({"button":1,"name":"","mode":0,"events":[]})"}, "setMacro", "{}"},
    {"getMacro", {"7"}, "getMacro 7", R"({"macro":{"button":7,"name":"","mode":0,"events":[]}})"},
    {"clearMacro", {"9"}, "clearMacro 9", "{}"},
    {"changeDpiLevel", {"255"}, "changeDpiLevel 255", "{}"},
    {"startSurfaceLearning", {}, "startSurfaceLearning", "{}"},
    {"stopSurfaceLearning", {}, "stopSurfaceLearning", "{}"},
    {"getSurfaceLearningStatus", {}, "getSurfaceLearningStatus", R"({"status":17})"},
    {"getSurfaceLearningResult", {}, "getSurfaceLearningResult", R"({"a":17,"b":34})"},
    {"saveConfig", {}, "saveConfig", "{}"},
    {"exit_device", {"1"}, "exit_device 1", "{}"},
};

TEST(Operations, callTheirSlotWithTheirArguments)
{
    for (const OperationCase& c : cases) {
        SCOPED_TRACE(c.name);
        FakeMouse mouse;
        const Outcome outcome = call(mouse, c.name, c.words);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.outputs, c.outputs);
        EXPECT_EQ(mouse.calls, std::vector<std::string>{c.called});
    }
}

TEST(Operations, areThoseOfTheInterfaceWithoutTheCallbacks)
{
    std::string names;
    for (const Operation& operation : findModel("rd210")->operations)
        names += std::string(operation.name) + " ";
    EXPECT_EQ(
        names,
        "changeProfileId getCurrProfileId resetProfile resetPartial setKeyMapping setKeyMappingAll "
        "getKeyMappingAll setMouseCombo getMouseCombo startRecordMacro stopRecordMacro setMacro getMacro "
        "clearMacro setPerformance getPerformance changeDpiLevel startSurfaceLearning "
        "stopSurfaceLearning getSurfaceLearningStatus getSurfaceLearningResult saveConfig exit_device ");
}

TEST(Operations, giveTheResultCodeOn)
{
    FakeMouse mouse;
    mouse.result = E_WRITE_TIMEOUT;
    EXPECT_EQ(call(mouse, "changeDpiLevel", {"3"}).code, -12);
}

TEST(Operations, tellTheirArguments)
{
    EXPECT_EQ(rd210Operation("setKeyMapping").synopsis(), "setKeyMapping BUTTON CODE");
    EXPECT_EQ(rd210Operation("getMacro").synopsis(), "getMacro BUTTON -> macro");
    EXPECT_EQ(rd210Operation("getSurfaceLearningResult").synopsis(), "getSurfaceLearningResult -> a, b");
    EXPECT_EQ(rd210Operation("saveConfig").synopsis(), "saveConfig");
}

TEST(Operations, refuseOtherNumbersOfArguments)
{
    EXPECT_EQ(usageError("changeDpiLevel", {}), "takes 1 argument, not 0");
    EXPECT_EQ(usageError("setKeyMapping", {"1"}), "takes 2 arguments, not 1");
    EXPECT_EQ(usageError("saveConfig", {"1"}), "takes 0 arguments, not 1");
}

TEST(Operations, refuseWhatAFieldCannotHold)
{
    EXPECT_EQ(usageError("changeDpiLevel", {"256"}), "level: 256 is not in 0 to 255");
    EXPECT_EQ(usageError("changeDpiLevel", {"-1"}), "level: -1 is not in 0 to 255");
    EXPECT_EQ(usageError("changeDpiLevel", {"0x100"}), "level: 256 is not in 0 to 255");
    EXPECT_EQ(usageError("changeDpiLevel", {"99999999999999999999"}),
              "level: 99999999999999999999 is not in 0 to 255");
    EXPECT_EQ(usageError("changeDpiLevel", {"three"}), "level: \"three\" is not a number");
    EXPECT_EQ(usageError("changeDpiLevel", {""}), "level: \"\" is not a number");
    EXPECT_EQ(usageError("changeDpiLevel", {"3x"}), "level: \"3x\" is not a number");
    EXPECT_EQ(usageError("changeDpiLevel", {"--3"}), "level: \"--3\" is not a number");
    EXPECT_EQ(usageError("setKeyMapping", {"1", "65536"}), "code: 65536 is not in 0 to 65535");
}

TEST(Operations, takeTheWholeRangeOfAField)
{
    FakeMouse mouse;
    call(mouse, "setKeyMapping", {"0", "65535"});
    call(mouse, "setKeyMapping", {"255", "0X0"});
    EXPECT_EQ(mouse.calls, (std::vector<std::string>{"setKeyMapping 0 65535", "setKeyMapping 255 0"}));
}

TEST(KeyMap, isThirteenCodesAsJsonOrAsAList)
{
    FakeMouse mouse;
    call(mouse, "setKeyMappingAll", {"[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 65535]"});
    EXPECT_EQ(call(mouse, "getKeyMappingAll", {}).outputs, R"({"map":[1,2,3,4,5,6,7,8,9,10,11,12,65535]})");
    call(mouse, "setKeyMappingAll", {"0x500,0x501,3,4,5,6,7,8,9,10,11,12,0x3ff"});
    EXPECT_EQ(call(mouse, "getKeyMappingAll", {}).outputs,
              R"({"map":[1280,1281,3,4,5,6,7,8,9,10,11,12,1023]})");

    EXPECT_EQ(usageError("setKeyMappingAll", {"[1,2]"}), "map: must be an array of 13 elements");
    EXPECT_EQ(usageError("setKeyMappingAll", {"1,2"}), "map: takes 13 values, not 2");
    EXPECT_EQ(usageError("setKeyMappingAll", {"1,2,3,4,5,6,7,8,9,10,11,12,13,14"}),
              "map: takes 13 values, not 14");
    EXPECT_EQ(usageError("setKeyMappingAll", {"1,2,3,4,5,6,7,8,9,10,11,,13"}),
              "map[11]: \"\" is not a number");
    EXPECT_EQ(usageError("setKeyMappingAll", {"[1,2,3,4,5,6,7,8,9,10,11,65536,13]"}),
              "map[11]: 65536 is not in 0 to 65535");
    EXPECT_EQ(usageError("setKeyMappingAll", {"[1,2,3,4,5,6,7,8,9,10,11,12,1.5]"}),
              "map[12]: must be a whole number in 0 to 65535");
    EXPECT_EQ(usageError("setKeyMappingAll", {"[1,2,"}), "map: no valid JSON at byte 6");
    EXPECT_EQ(usageError("setKeyMappingAll", {"[1,2,1e999]"}), "map: a number is too large");
}

constexpr auto performance =
    R"({"currentLevel":2,"levels":[{"x":100,"y":200},{"x":300,"y":400},{"x":500,"y":600},{"x":700,"y":800},)"
    R"({"x":900,"y":1000},{"x":1100,"y":1200},{"x":16000,"y":26000}],"levelEnabled":[1,0,1,1,0,0,1],)"
    R"("pollingCode":3,"flagA":1,"flagB":0,"surfaceA":20,"surfaceB":30,"settingF0":4,"pointerSpeed":5,)"
    R"("doubleClickSpeed":6,"settingBank":7})";

TEST(PerformanceJson, stands)
{
    FakeMouse mouse;
    call(mouse, "setPerformance", {performance});
    EXPECT_EQ(mouse.performance.currentLevel, 2);
    EXPECT_EQ(+mouse.performance.levels[0].x, 100);
    EXPECT_EQ(+mouse.performance.levels[6].y, 26000);
    EXPECT_EQ(mouse.performance.levelEnabled[1], 0);
    EXPECT_EQ(mouse.performance.levelEnabled[6], 1);
    EXPECT_EQ(mouse.performance.pollingCode, 3);
    EXPECT_EQ(mouse.performance.reserved[0], 0);
    EXPECT_EQ(mouse.performance.flagA, 1);
    EXPECT_EQ(mouse.performance.flagB, 0);
    EXPECT_EQ(mouse.performance.surfaceA, 20);
    EXPECT_EQ(mouse.performance.surfaceB, 30);
    EXPECT_EQ(mouse.performance.settingF0, 4);
    EXPECT_EQ(mouse.performance.pointerSpeed, 5);
    EXPECT_EQ(mouse.performance.doubleClickSpeed, 6);
    EXPECT_EQ(mouse.performance.settingBank, 7);
    EXPECT_EQ(call(mouse, "getPerformance", {}).outputs, R"({"record":)" + std::string(performance) + "}");
}

TEST(PerformanceJson, takesItsKeysInAnyOrder)
{
    FakeMouse mouse;
    Json json = Json::parse(performance);
    const Json bank = json["settingBank"];
    json.erase("settingBank");
    Json other = {{"settingBank", bank}};
    other.update(json);
    call(mouse, "setPerformance", {other.dump()});
    EXPECT_EQ(call(mouse, "getPerformance", {}).outputs, R"({"record":)" + std::string(performance) + "}");
}

std::string performanceError(const std::function<void(Json&)>& spoil)
{
    Json json = Json::parse(performance);
    spoil(json);
    return usageError("setPerformance", {json.dump()});
}

TEST(PerformanceJson, namesWhatIsWrong)
{
    EXPECT_EQ(performanceError([](Json& j) { j.erase("pollingCode"); }),
              "record: missing key \"pollingCode\"");
    EXPECT_EQ(performanceError([](Json& j) {
                  j["reserved"] = {0, 0, 0};
              }),
              "record: unknown key \"reserved\"");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"][3].erase("y"); }),
              "record.levels[3]: missing key \"y\"");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"][3]["z"] = 1; }),
              "record.levels[3]: unknown key \"z\"");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"][6]["x"] = 70000; }),
              "record.levels[6].x: 70000 is not in 0 to 65535");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"].erase(6); }),
              "record.levels: must be an array of 7 elements");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"] = 3; }),
              "record.levels: must be an array of 7 elements");
    EXPECT_EQ(performanceError([](Json& j) { j["levels"][0] = 3; }),
              "record.levels[0]: must be a record, {\"x\": ...}");
    EXPECT_EQ(performanceError([](Json& j) { j["flagA"] = -1; }), "record.flagA: -1 is not in 0 to 255");
    EXPECT_EQ(performanceError([](Json& j) { j["flagA"] = true; }),
              "record.flagA: must be a whole number in 0 to 255");
    EXPECT_EQ(performanceError([](Json& j) { j["flagA"] = "1"; }),
              "record.flagA: must be a whole number in 0 to 255");
    EXPECT_EQ(performanceError([](Json& j) { j = Json::array(); }),
              "record: must be a record, {\"currentLevel\": ...}");
}

TEST(MacroJson, keepsNameAndEvents)
{
    FakeMouse mouse;
    call(mouse, "setMacro",
         {R"({"button":4,"name":"héllo","mode":2,"events":[{"code":1280,"kind":2,"delay":7},)"
          R"({"code":1023,"kind":1,"delay":32767}]})"});
    EXPECT_EQ(mouse.macro.button, 4);
    EXPECT_STREQ(mouse.macro.name, "h\xC3\xA9llo");
    EXPECT_EQ(mouse.macro.mode, 2);
    EXPECT_EQ(mouse.macro.count, 2);
    EXPECT_EQ(+mouse.macro.events[0].code, 0x0500);
    EXPECT_EQ(+mouse.macro.events[0].kind, 2);
    EXPECT_EQ(+mouse.macro.events[0].delay, 7);
    EXPECT_EQ(+mouse.macro.events[1].code, 0x03FF);
    EXPECT_EQ(+mouse.macro.events[1].kind, 1);
    EXPECT_EQ(+mouse.macro.events[1].delay, 0x7FFF);
    EXPECT_EQ(+mouse.macro.events[2].code, 0);
    EXPECT_EQ(call(mouse, "getMacro", {"4"}).outputs,
              R"({"macro":{"button":4,"name":"héllo","mode":2,"events":[{"code":1280,"kind":2,"delay":7},)"
              R"({"code":1023,"kind":1,"delay":32767}]}})");
}

std::string macroJson(const std::string& name, int events)
{
    std::string list;
    for (int i = 0; i < events; ++i)
        list += std::string(i == 0 ? "" : ",") + R"({"code":1,"kind":0,"delay":0})";
    return R"({"button":0,"name":")" + name + R"(","mode":0,"events":[)" + list + "]}";
}

TEST(MacroJson, refusesWhatDoesNotFit)
{
    FakeMouse mouse;
    call(mouse, "setMacro", {macroJson(std::string(40, 'x'), 199)});
    EXPECT_EQ(mouse.macro.count, 199); // too many for the device: the library says so, not pyruxctl
    EXPECT_EQ(mouse.macro.name[39], 'x');
    EXPECT_EQ(usageError("setMacro", {macroJson("", 200)}),
              "macro.events: must be an array of at most 199 elements");
    EXPECT_EQ(usageError("setMacro", {macroJson(std::string(41, 'x'), 0)}),
              "macro.name: longer than 40 bytes");
}

TEST(MacroJson, survivesACountBeyondTheRecord)
{
    FakeMouse mouse;
    mouse.macro.count = 255;
    const Outcome outcome = call(mouse, "getMacro", {"0"});
    EXPECT_EQ(Json::parse(outcome.outputs)["macro"]["events"].size(), 199u);
}

TEST(MacroJson, givesANameThatIsNoTextAsItsBytesAndTakesItBack)
{
    FakeMouse mouse;
    std::memset(mouse.macro.name, 0xFF, sizeof mouse.macro.name);
    const Json macro = Json::parse(call(mouse, "getMacro", {"1"}).outputs)["macro"];
    EXPECT_EQ(macro["name"], Json(std::vector<int>(40, 255)));
    mouse.macro = {};
    call(mouse, "setMacro", {macro.dump()});
    EXPECT_EQ(static_cast<unsigned char>(mouse.macro.name[39]), 0xFF);

    std::memcpy(mouse.macro.name, "ab\0c", 5); // something after the end of the text
    std::memset(mouse.macro.name + 5, 0, 35);
    EXPECT_EQ(Json::parse(call(mouse, "getMacro", {"1"}).outputs)["macro"]["name"][3], 'c');
    EXPECT_EQ(usageError("setMacro", {R"({"button":0,"name":[1,2],"mode":0,"events":[]})"}),
              "macro.name: neither a text nor its bytes: must be an array of 40 elements");
}

TEST(Listening, givesEachDeviceACallbackOfItsOwn)
{
    const HostCalls& calls = findModel("rd210")->calls;
    FakeMouse first, second;
    calls.listen(hostOf(first), 0);
    calls.listen(hostOf(second), 31);
    ASSERT_TRUE(first.callback && second.callback);
    NotifyRecord dpi{RD210_DPI_CHANGED, 0}, key{RD210_KEY_DOWN, 0x2A};
    second.callback(&key);
    first.callback(&dpi);

    const auto now = EventQueue::Clock::now();
    const auto one = std::get<DeviceEvent>(*events().pop(now));
    EXPECT_EQ(one.slot, 31u);
    EXPECT_EQ(one.event, 2u);
    EXPECT_EQ(one.value, 0x2Au);
    const auto two = std::get<DeviceEvent>(*events().pop(now));
    EXPECT_EQ(two.slot, 0u);
    EXPECT_EQ(two.event, 1u);
    EXPECT_FALSE(events().pop(now));

    calls.stopListening(hostOf(first));
    EXPECT_EQ(first.callback, nullptr);
    EXPECT_EQ(findModel("rd210")->eventText(1), "DPI level changed");
    EXPECT_EQ(findModel("rd210")->eventText(77), "unknown event");
}

TEST(Models, areFoundByNameAndByIdentity)
{
    EXPECT_EQ(findModel("rd210"), findModel(0x3A7E, 0x012F));
    EXPECT_EQ(findName(0x3A7E, 0x012F), "RD210");
    EXPECT_EQ(findModel("RD210"), nullptr);
    EXPECT_EQ(findModel(0x3A7E, 0x0130), nullptr);
}

} // namespace
