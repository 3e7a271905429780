// pyruxctl with the real library on the simulated mouse: results, bytes on the wire, scripts.

#include "program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Lines = std::vector<std::string>;

class Simulated : public testing::Test {
protected:
    Finished rd210(std::vector<std::string> words, const std::string& input = "")
    {
        words.insert(words.begin(), {"--simulate", "rd210", "rd210"});
        return program.run(words, input);
    }
    Finished script(const std::string& lines, std::vector<std::string> options = {"--quiet"})
    {
        options.insert(options.begin(), {"--simulate", "rd210"});
        options.insert(options.end(), {"run", "-"});
        return program.run(options, lines);
    }
    Program program;
};

TEST_F(Simulated, isListed)
{
    const Finished one = program.run({"--simulate", "rd210", "list"});
    EXPECT_EQ(one.exit, 0);
    EXPECT_EQ(one.err, "");
    EXPECT_EQ(one.out,
              R"(NAME   ID         INTERFACE  PRODUCT  SERIAL        RELEASE  DRIVER  STATUS  PATH
RD210  3a7e:012f  1          RD210    RD210-000001  1.03     ok      ok      \\?\hid#vid_3a7e&pid_012f&mi_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}
)");
    const Json two = Json::parse(program.run({"list", "--json", "--simulate", "rd210,rd210"}).out);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[1]["path"],
              R"(\\?\hid#vid_3a7e&pid_012f&mi_01#sim-0002#{4d1e55b2-f16f-11cf-88cb-001111000030})");
}

TEST_F(Simulated, isUnderTheLibrarysVersion)
{
    const Json info = Json::parse(program.run({"--simulate", "rd210", "info", "--json"}).out);
    EXPECT_EQ(info["version"], 3.86);
    EXPECT_EQ(info["devNums"], 1);
    EXPECT_EQ(info["devices"][0]["model"], "rd210");
    EXPECT_EQ(info["devices"][0]["bluetoothVersion"], "");
}

TEST_F(Simulated, doesWhatItIsTold)
{
    const Finished done = rd210({"changeDpiLevel", "3"});
    EXPECT_EQ(done.exit, 0);
    EXPECT_EQ(done.out, "ok\n");
    EXPECT_EQ(done.err, "");
    EXPECT_EQ(rd210({"changeDpiLevel", "3", "--quiet"}).out, "");
    EXPECT_EQ(rd210({"changeDpiLevel", "3", "--json"}).out, "null\n");
    EXPECT_EQ(rd210({"getCurrProfileId"}).out, "profile: 0\n");
    EXPECT_EQ(rd210({"getCurrProfileId", "--json"}).out, "0\n");
    EXPECT_EQ(rd210({"getSurfaceLearningResult"}).out, "a: 10\nb: 16\n");
    EXPECT_EQ(rd210({"getSurfaceLearningResult", "--json"}).out, "{\"a\":10,\"b\":16}\n");
}

TEST_F(Simulated, refusesWithACodeAndItsName)
{
    for (const auto& words : {Lines{"changeDpiLevel", "7"}, Lines{"changeDpiLevel", "7", "--json"}}) {
        const Finished refused = rd210(words);
        EXPECT_EQ(refused.exit, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err, "rd210 changeDpiLevel: -2 E_INVALID_SET\n");
    }
    EXPECT_EQ(rd210({"getMacro", "13"}).err, "rd210 getMacro: -3 E_INVALID_GET\n");
    EXPECT_EQ(rd210({"setKeyMapping", "13", "0"}).err, "rd210 setKeyMapping: -2 E_INVALID_SET\n");
}

/// What a new object tells the mouse, and the goodbye at its end.
const Lines opening{"  > 42 00 00 00 01 00 00 01", "  > 42 10 00 00 01 00 00 01", "  > 42 00 40 00 01",
                    "  > 42 10 40 00 01", "  > 43 00 00 00 01"};
const Lines goodbye{"  > 41 01", "  > 41"};

Lines joined(const Lines& a, const Lines& b, const Lines& c)
{
    Lines all = a;
    all.insert(all.end(), b.begin(), b.end());
    all.insert(all.end(), c.begin(), c.end());
    return all;
}

TEST_F(Simulated, showsTheBytesOnTheWire)
{
    const Finished done = rd210({"changeDpiLevel", "3", "--trace"});
    EXPECT_EQ(done.exit, 0);
    EXPECT_EQ(done.out, "ok\n");
    EXPECT_EQ(linesWith(done.err, "  >"), joined(opening,
                                                 {"  > 41 80", "  > 52 9b", "  > 52 40",
                                                  "  > 51 40 00 00 03 07 03 07 0f 1f 3f 77 9f 03 07 0f 1f 3f "
                                                  "77 9f 00 00 00 00 00 00 00 01 02 0a 10"},
                                                 goodbye));
    EXPECT_EQ(linesWith(done.err, "  <"),
              (Lines{"  < 42", "  < 42 10", "  < 42 00 40", "  < 42 10 40", "  < 43", "  < 41 80",
                     "  < 52 9b 00 00 ff ff ff ff ff ff ff",
                     "  < 52 40 00 00 01 07 03 07 0f 1f 3f 77 9f 03 07 0f 1f 3f 77 9f 00 00 00 00 00 00 00 "
                     "01 02 0a 10",
                     "  < 51 40", "  < 41 01", "  < 41"}));
    EXPECT_EQ(linesWith(done.err, "").size(), opening.size() * 2 + 12);
}

TEST_F(Simulated, takesBackWhatItGave)
{
    const Finished given = rd210({"getPerformance", "--json"});
    EXPECT_EQ(given.exit, 0);
    EXPECT_EQ(rd210({"setPerformance", "-"}, given.out).out, "ok\n");

    Json other = Json::parse(given.out);
    other["levels"][2] = {{"x", 5000}, {"y", 4900}};
    other["currentLevel"] = 2;
    const std::string file = program.file("performance.json", other.dump());
    const Finished both =
        script("rd210 setPerformance @" + file + "\nmatch @" + file + " rd210 getPerformance\n");
    EXPECT_EQ(both.exit, 0) << both.err;
    EXPECT_EQ(
        linesWith(both.out, "levels"),
        (Lines{R"(levels: [{"x":400,"y":400},{"x":800,"y":800},{"x":5000,"y":4900},{"x":3200,"y":3200},)"
               R"({"x":6400,"y":6400},{"x":12000,"y":12000},{"x":16000,"y":16000}])"}));
}

TEST_F(Simulated, mustBeAKnownModel)
{
    const Finished run = program.run({"--simulate", "rd211", "list"});
    EXPECT_EQ(run.exit, 2);
    EXPECT_TRUE(run.err.starts_with("pyruxctl: the simulator has no model \"rd211\"; it has ")) << run.err;
    EXPECT_NE(run.err.find("rd210"), std::string::npos);
}

TEST_F(Simulated, twiceNeedsAPath)
{
    const Finished several = program.run({"--simulate", "rd210,rd210", "rd210", "saveConfig"});
    EXPECT_EQ(several.exit, 2);
    EXPECT_EQ(linesWith(several.err, "  ").size(), 2u);
    const std::string second =
        R"(\\?\HID#VID_3A7E&PID_012F&MI_01#SIM-0002#{4D1E55B2-F16F-11CF-88CB-001111000030})";
    const Finished named =
        program.run({"--simulate", "rd210,rd210", "--device", second, "rd210", "saveConfig"});
    EXPECT_EQ(named.exit, 0);
    EXPECT_EQ(named.out, "ok\n");
    const Finished none = program.run({"--simulate", "rd210", "--device", second, "rd210", "saveConfig"});
    EXPECT_EQ(none.exit, 3);
    EXPECT_EQ(none.err, "pyruxctl: cannot open " + second + "\n");
}

TEST_F(Simulated, canBeWatched)
{
    const Finished run = program.run({"--simulate", "rd210", "watch", "--for", "0"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "watching rd210 "
              "\\\\?\\hid#vid_3a7e&pid_012f&mi_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}\n");
}

TEST_F(Simulated, exampleRunsAsWritten)
{
    const Finished run = program.run({"--simulate", "rd210,rd215", "run", PYRUX_EXAMPLES "/rd210.pyrux"});
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_NE(
        run.out.find(
            "$ unplug rd210\n"
            "pulled out \\\\?\\HID#VID_3A7E&PID_012F&MI_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}\n"
            "$ expect -11 rd210 changeDpiLevel 3\n"
            "rd210 changeDpiLevel: -11 E_CLOSED\n"),
        std::string::npos)
        << run.out;
    EXPECT_EQ(linesWith(run.out, "RD210: "),
              (Lines{R"(RD210: unplugged (3a7e:012f, driver ok, status ok) )"
                     R"(\\?\HID#VID_3A7E&PID_012F&MI_01#SIM-0001#{4D1E55B2-F16F-11CF-88CB-001111000030})"}));
    EXPECT_EQ(linesWith(run.out, "RD2").size(), 4u); // two devices, the notice, one device
    EXPECT_EQ(linesWith(run.out, "rd210: "),
              (Lines{R"(rd210: DPI level changed (event 1, value 0) )"
                     R"(\\?\hid#vid_3a7e&pid_012f&mi_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030})"}));
    EXPECT_EQ(linesWith(run.out, "name: "), Lines{"name: \"greeting\""});
    EXPECT_FALSE(linesWith(run.err, "  > 51 00 00 00 03").empty());
}

TEST_F(Simulated, lightsExampleRunsAsWritten)
{
    const Finished run = program.run(
        {"--simulate", "glow_hub,strandhub,rd215,psuCtrl", "run", PYRUX_EXAMPLES "/lights.pyrux"});
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(linesWith(run.out, "port 4  "),
              Lines{"port 4  00ff00 x8 0000ff x8 8000ff x8 ff0000 x8 ff8000 x8 ffff00 x8"});
    EXPECT_EQ(linesWith(run.out, "port 1 fan 3"), Lines{"port 1 fan 3  0060ff x12"});
    EXPECT_EQ(linesWith(run.out, "mouse"), Lines{"mouse  ff6000 x2"});
}

TEST_F(Simulated, comesBackWithWhatItHadSaved)
{
    const Finished run = script("rd210 changeProfileId 3\n"
                                "rd210 saveConfig\n"
                                "rd210 changeProfileId 1\n"
                                "unplug\n"
                                "replug\n"
                                "match 3 rd210 getCurrProfileId\n"
                                "! replug\n"
                                "! replug rd210\n");
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(run.out, "profile: 3\n");
    EXPECT_EQ(run.err, "pyruxctl: no device was pulled out\npyruxctl: usage: replug\n");
}

TEST_F(Simulated, keyboardExampleRunsAsWritten)
{
    const Finished run = program.run({"--simulate", "qw210", "run", PYRUX_EXAMPLES "/keyboard.pyrux"});
    EXPECT_EQ(run.exit, 0) << run.err;
}

TEST_F(Simulated, showsItsLights)
{
    EXPECT_EQ(program.run({"--simulate", "rd215", "lights"}).out, "mouse  ffffff x2\n");
    EXPECT_EQ(program.run({"--simulate", "rd210", "lights"}).out, "no lights\n");
    const Finished two = program.run({"--simulate", "rd215,rd210", "lights"});
    EXPECT_EQ(two.out,
              R"(rd215 \\?\HID#VID_3A7E&PID_0101&MI_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}
mouse  ffffff x2
rd210 \\?\HID#VID_3A7E&PID_012F&MI_01#sim-0002#{4d1e55b2-f16f-11cf-88cb-001111000030}
no lights
)");
    const Json json = Json::parse(program.run({"--simulate", "rd215", "lights", "--json"}).out);
    ASSERT_EQ(json.size(), 1u);
    EXPECT_EQ(json[0]["model"], "rd215");
    EXPECT_EQ(json[0]["lights"], (Json{{"mouse", "ffffff x2"}}));
    const Finished none = program.run({"--simulate", "rd215", "lights", "--device", "elsewhere"});
    EXPECT_EQ(none.exit, 3);
    EXPECT_EQ(none.err, "pyruxctl: no device elsewhere is attached\n");
}

TEST_F(Simulated, showsItsLightsAsTheyChange)
{
    const Finished run = program.run({"--simulate", "glow_hub", "run", "-", "--quiet"},
                                     "glow_hub setLightingInit\n"
                                     "expect-lights '{\"strip\":\"000000\"}'\n"
                                     "glow_hub setLightingPortColor "
                                     "'{\"zone\":[5,0,0,0,0],\"red\":1,\"green\":2,\"blue\":255}'\n"
                                     "expect-lights '{\"strip\":\"0102ff\",\"port 1\":\"000000 x48\"}'\n"
                                     "lights --for 0.1\n"
                                     "! expect-lights '{\"fifth\":\"0102ff\"}'\n"
                                     "! expect-lights '[1]'\n");
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(linesWith(run.out, "strip"), Lines{"strip   0102ff"}); // once: nothing changed
    EXPECT_EQ(run.err, "pyruxctl: lights: has no \"fifth\"\n"
                       "pyruxctl: usage: expect-lights JSON [MODEL|PATH]\n");
}

TEST_F(Simulated, measuresOnceASecond)
{
    const Finished run =
        program.run({"--simulate", "psuCtrl", "psuCtrl", "monitor", "--count", "2", "--json"});
    EXPECT_EQ(run.exit, 0) << run.err;
    const Lines lines = linesWith(run.out, "{");
    ASSERT_EQ(lines.size(), 2u) << run.out;
    for (const std::string& line : lines) {
        const Json measured = Json::parse(line);
        EXPECT_NEAR(measured["getInput"]["voltage"].get<double>(), 230, 10) << line;
        EXPECT_NEAR(measured["getOutput"]["voltage5V"].get<double>(), 5, 0.5) << line;
        EXPECT_GT(measured["getThermal"].get<double>(), 15) << line;
    }
    EXPECT_EQ(program.run({"--simulate", "psuCtrl", "psuCtrl", "monitor", "--for", "0"}).out, "");
}

TEST_F(Simulated, scriptShowsItsLinesAndResults)
{
    const Finished run = script(
        "# A title\n\nrd210 changeProfileId 3 # behind a command\nmatch 3 \\\n  rd210 getCurrProfileId\n",
        {});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "# A title\n\n"
                       "$ rd210 changeProfileId 3 # behind a command\nok\n"
                       "$ match 3 \\\n>   rd210 getCurrProfileId\nprofile: 3\n");
}

struct ScriptCase {
    const char* lines;
    int exit;
    const char* out;
    const char* err;
};

const ScriptCase scriptCases[]{
    // what is expected, and is so
    {"", 0, "", ""},
    {"expect 0 rd210 changeProfileId 4\nmatch 4 rd210 getCurrProfileId", 0, "profile: 4\n", ""},
    {"expect -2 rd210 changeProfileId 5", 0, "rd210 changeProfileId: -2 E_INVALID_SET\n", ""},
    {"! rd210 changeProfileId 5", 0, "", "rd210 changeProfileId: -2 E_INVALID_SET\n"},
    {"! rd210 fly", 0, "", "pyruxctl: rd210 has no operation \"fly\"\n"},
    {"match '{\"a\":10}' rd210 getSurfaceLearningResult", 0, "a: 10\nb: 16\n", ""},
    {"rd210 startSurfaceLearning\nevent surface 12 20\nmatch 0 rd210 getSurfaceLearningStatus\n"
     "match '{\"a\":12,\"b\":20}' rd210 getSurfaceLearningResult",
     0, "status: 0\na: 12\nb: 20\n", ""},
    {"plug rd210\n! rd210 saveConfig\n", 0, "",
     "pyruxctl: rd210 saveConfig: several devices are attached, name one with --device:\n"
     "  \\\\?\\hid#vid_3a7e&pid_012f&mi_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030}\n"
     "  \\\\?\\hid#vid_3a7e&pid_012f&mi_01#sim-0002#{4d1e55b2-f16f-11cf-88cb-001111000030}\n"},
    {"unplug\nexpect -11 rd210 saveConfig\n", 3, "", // never opened
     "pyruxctl: no rd210 is attached\npyruxctl: stopped at line 2\n"},
    {"rd210 saveConfig\nunplug\nexpect -11 rd210 saveConfig\nexpect -11 rd210 getCurrProfileId", 0,
     "rd210 saveConfig: -11 E_CLOSED\nrd210 getCurrProfileId: -11 E_CLOSED\n", ""},

    // what is expected, and is not so
    {"expect 0 rd210 changeProfileId 5\nlist", 1, "",
     "rd210 changeProfileId: -2 E_INVALID_SET, expected 0\npyruxctl: stopped at line 1\n"},
    {"expect -2 rd210 changeProfileId 4", 1, "",
     "rd210 changeProfileId: 0 E_OK, expected -2\npyruxctl: stopped at line 1\n"},
    {"\nmatch 3 rd210 getCurrProfileId", 1, "profile: 0\n",
     "pyruxctl: getCurrProfileId: is 0, not 3\npyruxctl: stopped at line 2\n"},
    {"match '{\"a\":10,\"b\":17}' rd210 getSurfaceLearningResult", 1, "a: 10\nb: 16\n",
     "pyruxctl: getSurfaceLearningResult.b: is 16, not 17\npyruxctl: stopped at line 1\n"},
    {"match '{\"c\":1}' rd210 getSurfaceLearningResult", 1, "a: 10\nb: 16\n",
     "pyruxctl: getSurfaceLearningResult: has no \"c\"\npyruxctl: stopped at line 1\n"},
    {"! rd210 saveConfig", 1, "", "pyruxctl: expected to fail\npyruxctl: stopped at line 1\n"},
    {"rd210 changeProfileId 5\nlist", 1, "",
     "rd210 changeProfileId: -2 E_INVALID_SET\npyruxctl: stopped at line 1\n"},
    {"match 3 rd210 getMacro 13", 1, "", "rd210 getMacro: -3 E_INVALID_GET\npyruxctl: stopped at line 1\n"},

    // wrong words
    {"fly", 2, "", "pyruxctl: The following argument was not expected: fly\npyruxctl: stopped at line 1\n"},
    {"list\n'open", 2, nullptr, "pyruxctl: a quote is not closed\npyruxctl: stopped at line 2\n"},
    {"expect x rd210 saveConfig", 2, "",
     "pyruxctl: a number is needed here: \"x\" is not a number\npyruxctl: stopped at line 1\n"},
    {"expect 0 list", 2, "", "pyruxctl: needs an operation of a model\npyruxctl: stopped at line 1\n"},
    {"expect 0", 2, "", "pyruxctl: usage: expect CODE COMMAND\npyruxctl: stopped at line 1\n"},
    {"match {1 rd210 getCurrProfileId", 2, "",
     "pyruxctl: match: no valid JSON at byte 2\npyruxctl: stopped at line 1\n"},
    {"plug rd999", 2, "", nullptr},
    {"event fly", 2, "",
     "pyruxctl: rd210 cannot do \"fly\" now, or not with these values\npyruxctl: stopped at line 1\n"},
    {"event rd210 dpi 7", 2, "",
     "pyruxctl: rd210 cannot do \"dpi\" now, or not with these values\npyruxctl: stopped at line 1\n"},
    {"open rd999", 2, "", "pyruxctl: there is no model \"rd999\"\npyruxctl: stopped at line 1\n"},
    {"open rd210 elsewhere", 3, "", "pyruxctl: cannot open elsewhere\npyruxctl: stopped at line 1\n"},
    {"unplug nothing", 2, "", "pyruxctl: no \"nothing\" is plugged in\npyruxctl: stopped at line 1\n"},
    {"trace maybe", 2, "", "pyruxctl: usage: trace on|off\npyruxctl: stopped at line 1\n"},
    {"rd210 setMacro -", 2, "",
     "pyruxctl: rd210 setMacro MACRO: \"-\" is the script itself here, use @FILE\npyruxctl: stopped at line "
     "1\n"},
    {"--simulate rd210 list", 2, "", nullptr},
    {"run -", 2, "", nullptr},
};

TEST_F(Simulated, scriptStopsAtWhatItDoesNotExpect)
{
    for (const ScriptCase& c : scriptCases) {
        SCOPED_TRACE(c.lines);
        const Finished run = script(c.lines);
        EXPECT_EQ(run.exit, c.exit);
        if (c.out) {
            EXPECT_EQ(run.out, c.out);
        }
        if (c.err) {
            EXPECT_EQ(run.err, c.err);
        }
    }
}

const std::string secondMouse =
    R"(\\?\hid#vid_3a7e&pid_012f&mi_01#sim-0002#{4d1e55b2-f16f-11cf-88cb-001111000030})";

TEST_F(Simulated, eventsAreThoseOfTheirDevice)
{
    const Finished run = script("rd210 saveConfig\n"
                                "plug rd210\n"
                                "expect-event plugged\n"
                                "rd210 --device " +
                                    secondMouse +
                                    " saveConfig\n"
                                    "event " +
                                    secondMouse +
                                    " key 4 1\n"
                                    "expect-event 2 33\n"
                                    "unplug " +
                                    secondMouse +
                                    "\n"
                                    "expect-event unplugged\n"
                                    "event profile 2\n"
                                    "expect-event 0 0\n",
                                {"--json"});
    EXPECT_EQ(run.exit, 0) << run.err;
    const Lines lines = linesWith(run.out, "{");
    ASSERT_EQ(lines.size(), 4u) << run.out;
    EXPECT_EQ(Json::parse(lines[0])["kind"], "plugged");
    EXPECT_EQ(Json::parse(lines[1]), (Json{{"kind", "event"},
                                           {"model", "rd210"},
                                           {"path", secondMouse},
                                           {"event", 2},
                                           {"text", "key down"},
                                           {"value", 33}}));
    EXPECT_EQ(Json::parse(lines[2])["kind"], "unplugged");
    EXPECT_EQ(Json::parse(lines[3])["text"], "profile changed");
    EXPECT_NE(Json::parse(lines[3])["path"], secondMouse);
}

TEST_F(Simulated, anotherEventThanExpectedStopsTheScript)
{
    constexpr auto path =
        R"(\\?\hid#vid_3a7e&pid_012f&mi_01#sim-0001#{4d1e55b2-f16f-11cf-88cb-001111000030})";
    const auto key = [&](const std::string& expectation) {
        return script("open rd210\nevent key 0 1\n" + expectation);
    };
    EXPECT_EQ(key("expect-event 2").exit, 0);
    EXPECT_EQ(key("expect-event 2 30").exit, 0);
    for (const char* const other : {"expect-event 3", "expect-event 2 31", "expect-event plugged"}) {
        const Finished run = key(other);
        EXPECT_EQ(run.exit, 1);
        EXPECT_EQ(run.out, std::string("rd210: key down (event 2, value 30) ") + path + "\n");
        EXPECT_EQ(run.err, "pyruxctl: another event than expected\npyruxctl: stopped at line 3\n");
    }
}

TEST_F(Simulated, anEventThatDoesNotComeStopsTheScript)
{
    const Finished run = script("rd210 saveConfig\nexpect-event 1");
    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pyruxctl: no event within 5 s\npyruxctl: stopped at line 2\n");
}

TEST_F(Simulated, scriptTracesAPart)
{
    const Finished run = script(
        "rd210 changeProfileId 1\ntrace on\nrd210 changeProfileId 2\ntrace off\nrd210 changeProfileId 3");
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "  > 41 80\n  < 41 80\n  > 51 00 00 00 02\n  < 51\n");
}

} // namespace
