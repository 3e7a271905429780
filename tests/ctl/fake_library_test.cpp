// pyruxctl on a made-up library: what it makes of the exports' results, hotplug events, failures.

#include "program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

class FakeLibrary : public testing::Test {
protected:
    FakeLibrary() { program.set("PYRUX_LIBRARY", Program::fakeLibrary()); }
    Program program;
};

TEST_F(FakeLibrary, isListed)
{
    const Finished run = program.run({"list"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              R"(NAME   ID         INTERFACE  PRODUCT       SERIAL  RELEASE  DRIVER  STATUS  PATH
RD210  3a7e:012f  1          First mouse   A1      12.03    ok      ok      \\?\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2}
-      3a7e:0111  -          Headset       none    12.03    bad     ok      \\?\hid#vid_3a7e&pid_0111#headset#{4d1e55b2}
RD210  3a7e:012f  1          Broken mouse  B2      12.03    ok      ok      \\?\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2}
)");
}

TEST_F(FakeLibrary, isListedAsJson)
{
    const Finished run = program.run({"list", "--json"});
    EXPECT_EQ(run.exit, 0);
    const Json devices = Json::parse(run.out);
    ASSERT_EQ(devices.size(), 3u);
    EXPECT_EQ(devices[0],
              Json::parse(R"({"model":"rd210","name":"RD210","vid":"3a7e","pid":"012f","interface":1,
        "path":"\\\\?\\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2}","product":"First mouse","vendor":"Tessel Works",
        "serial":"A1","release":"12.03","driverOk":true,"statusOk":true})"));
    EXPECT_EQ(devices[1]["model"], nullptr);
    EXPECT_EQ(devices[1]["interface"], nullptr);
    EXPECT_EQ(devices[1]["driverOk"], false);
}

/// The made-up library shows where it was told to send its debug output as the serial number of the headset.
TEST_F(FakeLibrary, keepsItsDebugOutputOutOfTheWay)
{
    const auto target = [&](const std::vector<std::string>& words) {
        return Json::parse(program.run(words).out)[1]["serial"];
    };
    EXPECT_EQ(target({"list", "--json"}), "none");
    EXPECT_EQ(target({"list", "--json", "--debug"}), "stderr");
    program.set("PYRUX_DEBUG_OUTPUT", "pyrux.log");
    EXPECT_EQ(target({"list", "--json"}), "pyrux.log");
    EXPECT_EQ(target({"list", "--json", "--debug"}), "stderr");
}

TEST_F(FakeLibrary, withoutDevicesIsAnEmptyList)
{
    program.set("PYRUX_FAKE_DEVICES", "0");
    const Finished run = program.run({"list"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "no device is attached\n");
    EXPECT_EQ(program.run({"list", "--quiet"}).err, "");
    EXPECT_EQ(program.run({"list", "--json"}).out, "[]\n");
    const Finished missing = program.run({"rd210", "saveConfig"});
    EXPECT_EQ(missing.exit, 3);
    EXPECT_EQ(missing.err, "pyruxctl: no rd210 is attached\n");
}

TEST_F(FakeLibrary, tellsOfItself)
{
    program.set("PYRUX_FAKE_DEVICES", "1");
    const Finished run = program.run({"info"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out, "version             9.25\n"
                       "library             " +
                           Program::fakeLibrary() +
                           "\n"
                           "devNums             1\n"
                           "\n"
                           "name                RD210\n"
                           "  id                3a7e:012f\n"
                           "  interface         1\n"
                           "  product           First mouse\n"
                           "  vendor            Tessel Works\n"
                           "  serial            A1\n"
                           "  release           12.03\n"
                           "  driver            ok\n"
                           "  status            ok\n"
                           "  bluetooth version 1.2.3\n"
                           "  receiver version  0\n"
                           "  device version    261\n"
                           "  driver version    7\n"
                           "  path              \\\\?\\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2}\n");
}

TEST_F(FakeLibrary, mayWriteToTheStandardOutputWithoutSpoilingIt)
{
    program.set("PYRUX_FAKE_DEVICES", "1");
    const Json info = Json::parse(program.run({"info", "--json"}).out);
    EXPECT_EQ(info["version"], 9.25);
    EXPECT_EQ(info["devNums"], 1);
    EXPECT_EQ(info["devices"][0]["bluetoothVersion"], "1.2.3");
    EXPECT_EQ(info["devices"][0]["receiverVersion"], 0);
    EXPECT_EQ(info["devices"][0]["deviceVersion"], 261);
    EXPECT_EQ(info["devices"][0]["driverVersion"], 7);
    EXPECT_EQ(info["devices"][0]["serial"], "A1");

    const Finished debug = program.run({"--debug", "info", "--json"});
    EXPECT_EQ(Json::parse(debug.out), info);
    EXPECT_EQ(debug.err, "is not a dongle dev: RD210\n");
}

TEST_F(FakeLibrary, withSeveralDevicesNeedsAPath)
{
    const Finished several = program.run({"rd210", "saveConfig"});
    EXPECT_EQ(several.exit, 2);
    EXPECT_EQ(several.err,
              "pyruxctl: rd210 saveConfig: several devices are attached, name one with --device:\n"
              "  \\\\?\\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2}\n"
              "  \\\\?\\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2}\n");
    const Finished named = program.run(
        {"rd210", "getCurrProfileId", "--device", R"(\\?\HID#VID_3A7E&PID_012F&MI_01#FIRST#{4D1E55B2})"});
    EXPECT_EQ(named.exit, 0);
    EXPECT_EQ(named.out, "profile: 17\n");
}

TEST_F(FakeLibrary, withTwoRecordsOfADeviceHasOneDevice)
{
    program.set("PYRUX_FAKE_DEVICES", "1");
    program.set("PYRUX_FAKE_TWICE", "1");
    EXPECT_EQ(Json::parse(program.run({"list", "--json"}).out).size(), 2u);
    EXPECT_EQ(program.run({"rd210", "getCurrProfileId"}).out, "profile: 17\n");
}

TEST_F(FakeLibrary, thatCannotOpenADeviceSaysSo)
{
    const Finished run = program.run(
        {"--device", R"(\\?\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2})", "rd210", "saveConfig"});
    EXPECT_EQ(run.exit, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "pyruxctl: cannot open \\\\?\\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2}\n");
}

TEST_F(FakeLibrary, givesADeviceToItsOwnModelOnly)
{
    const Finished run =
        program.run({"--device", R"(\\?\hid#vid_3a7e&pid_0111#headset#{4d1e55b2})", "rd210", "saveConfig"});
    EXPECT_EQ(run.exit, 2);
    EXPECT_EQ(run.err,
              "pyruxctl: rd210 saveConfig: \\\\?\\hid#vid_3a7e&pid_0111#headset#{4d1e55b2} is no rd210\n");
}

TEST_F(FakeLibrary, isWatchedForDevicesThatComeTellAndGo)
{
    program.set("PYRUX_FAKE_DEVICES", "2");
    program.set("PYRUX_FAKE_HOTPLUG", "1");
    const Finished run = program.run({"watch", "--count", "3", "--for", "60"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(
        run.out,
        R"(RD210: plugged in (3a7e:012f, driver ok, status bad) \\?\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}
rd210: key down (event 2, value 34) \\?\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}
RD210: unplugged (3a7e:012f, driver ok, status bad) \\?\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}
)");
    EXPECT_EQ(run.err, "watching rd210 \\\\?\\hid#vid_3a7e&pid_012f&mi_01#first#{4d1e55b2}\n");
}

TEST_F(FakeLibrary, isWatchedAsJson)
{
    program.set("PYRUX_FAKE_HOTPLUG", "1");
    const Finished run = program.run({"watch", "--count", "3", "--for", "60", "--json"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(
        run.out,
        R"({"kind":"plugged","name":"RD210","path":"\\\\?\\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}","vid":"3a7e","pid":"012f","driverOk":true,"statusOk":false}
{"kind":"event","model":"rd210","path":"\\\\?\\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}","event":2,"text":"key down","value":34}
{"kind":"unplugged","name":"RD210","path":"\\\\?\\HID#VID_3A7E&PID_012F&MI_01#LATE#{4D1E55B2}","vid":"3a7e","pid":"012f","driverOk":true,"statusOk":false}
)");
    // The broken mouse is told and the others are watched.
    EXPECT_EQ(run.err, "pyruxctl: cannot open \\\\?\\hid#vid_3a7e&pid_012f&mi_01#broken#{4d1e55b2}\n");
}

TEST_F(FakeLibrary, isWatchedForATime)
{
    program.set("PYRUX_FAKE_DEVICES", "1");
    const Finished run = program.run({"watch", "--for", "0", "--quiet"});
    EXPECT_EQ(run.exit, 0);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(program.run({"watch", "--device", "nowhere", "--for", "0"}).exit, 3);
}

TEST_F(FakeLibrary, inAScriptTellsOfHotplugToo)
{
    program.set("PYRUX_FAKE_DEVICES", "1");
    program.set("PYRUX_FAKE_HOTPLUG", "1");
    EXPECT_EQ(program.run({"run", "--quiet", "-"}, "expect-event plugged\n").exit, 0);
    EXPECT_EQ(program.run({"run", "--quiet", "-"}, "expect-event unplugged\n").exit, 1);
    EXPECT_EQ(program.run({"run", "--quiet", "-"}, "expect-event 0\n").exit, 1);
}

TEST(NoLibrary, endsWithFour)
{
    Program program;
    program.set("PYRUX_LIBRARY", "there-is-no-such.lib");
    const Finished run = program.run({"list"});
    EXPECT_EQ(run.exit, 4);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(run.err.starts_with("pyruxctl: cannot load there-is-no-such.lib: ")) << run.err;

    program.set("PYRUX_LIBRARY", "");
    program.set("PYRUX_SIMULATOR", Program::fakeLibrary()); // a library, but no simulator
    const Finished other = program.run({"--simulate", "rd210", "list"});
    EXPECT_EQ(other.exit, 4);
    EXPECT_EQ(other.err, "pyruxctl: " + Program::fakeLibrary() +
                             " is not the simulator: it has no \"pyrux_sim_plug\"\n");
}

} // namespace
