// GLOW_HUB: settings beside the effects, custom colors, and the mode in which the ports follow.

#include "tests/support/hub.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>

namespace pyrux::test {
namespace {

using Hub = HubOf<GlowHubModel>;
using Buffer = ArgbCustomBuffer;

/// A buffer whose bytes count up: byte 4, the first color's red, is 04.
const std::string countedBuffer = "EE EE EE EE " + counting(4, 144);

/// The three reports of that buffer after the head of the first one.
const std::string countedReports =
    " " + counting(4, 59) + " | 01 " + counting(63, 63) + " | 82 " + counting(126, 22);

TEST(GlowHubSettings, holdTheSizeOfAPort)
{
    Hub hub;
    for (const auto& [port, mask] : {std::pair{1, "01"}, {2, "02"}, {3, "04"}, {4, "08"}}) {
        EXPECT_EQ(hub->setLEDSize(std::uint8_t(port), 0x21, 0x22), E_OK);
        EXPECT_EQ(hub.written(), std::string("80 0D 02 ") + mask + " 21 22");
        hub.device->answer("80 0D 01", std::string("80 0D 03 ") + mask + " 31 32 33");
        std::uint8_t a = 0, b = 0;
        EXPECT_EQ(hub->getLEDSize(std::uint8_t(port), &a, &b), E_OK);
        EXPECT_EQ(a, 0x31);
        EXPECT_EQ(b, 0x32);
        EXPECT_EQ(hub.written(), std::string("80 0D 01 ") + mask);
    }
    std::uint8_t a = 0xEE, b = 0xEE;
    for (const std::uint8_t port : {0, 5, 255}) {
        EXPECT_EQ(hub->setLEDSize(port, 1, 2), E_INVALID_SET);
        EXPECT_EQ(hub->getLEDSize(port, &a, &b), E_INVALID_GET);
    }
    EXPECT_EQ(hub->getLEDSize(1, nullptr, &b), E_INVALID_GET);
    EXPECT_EQ(hub->getLEDSize(1, &a, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub.written(), "");
    EXPECT_EQ(a, 0xEE);
    EXPECT_EQ(b, 0xEE);
}

TEST(GlowHubSettings, holdTheOwnersBytes)
{
    Hub hub;
    const ByteVector set = bytes(counting(0x61, 33));
    EXPECT_EQ(hub->setUID(set.data()), E_OK);
    EXPECT_EQ(hub.written(), "80 0C 02 " + counting(0x61, 32));
    hub.device->answer("80 0C 01", "80 0C 03 " + counting(0x81, 33));
    ByteVector got(33, 0xEE);
    EXPECT_EQ(hub->getUID(got.data()), E_OK);
    EXPECT_EQ(hex(got), counting(0x81, 32) + " EE");
    EXPECT_EQ(hub.written(), "80 0C 01");
    EXPECT_EQ(hub->setUID(nullptr), E_INVALID_SET);
    EXPECT_EQ(hub->getUID(nullptr), E_INVALID_GET);
    EXPECT_EQ(hub.written(), "");
}

TEST(GlowHubSettings, letTheDeviceShowItself)
{
    Hub hub;
    for (int value = 0; value < 256; ++value) {
        const bool good = (value >= 1 && value <= 5) || value == 15;
        EXPECT_EQ(hub->setIdentify(std::uint8_t(value)), good ? E_OK : E_INVALID_PARAM) << value;
        EXPECT_EQ(hub.written(), good ? "80 15 5E " + hexByte(value) : "") << value;
    }
}

TEST(GlowHubSettings, areSavedAndRestored)
{
    Hub hub;
    EXPECT_EQ(hub->saveConfig(), E_OK);
    EXPECT_EQ(hub.written(), "80 12 5A A5");
    for (const int value : {1, 255}) {
        EXPECT_EQ(hub->resetConfig(std::uint8_t(value)), E_OK);
        EXPECT_EQ(hub.written(), "80 13 55 AA " + hexByte(value));
    }
    EXPECT_EQ(hub->resetConfig(0), E_OK);
    EXPECT_EQ(hub.written(), "80 13 55 AA");
}

TEST(GlowHubSettings, tellTheVersion)
{
    Hub hub;
    hub.device->answer("80 14 01", "80 14 03 CD AB 99");
    std::uint16_t version = 0;
    EXPECT_EQ(hub->getVersion(&version), E_OK);
    EXPECT_EQ(version, 0xABCD);
    EXPECT_EQ(hub.written(), "80 14 01");
    hub.device->answer("80 14 01", "80 14 04 01 02");
    EXPECT_EQ(hub->getVersion(&version), E_OK); // the wait's result, the output as it was
    EXPECT_EQ(version, 0xABCD);
    EXPECT_EQ(hub->getVersion(nullptr), E_INVALID_GET);
}

TEST(GlowHubSettings, holdTheModeOfTheLayers)
{
    Hub hub;
    EXPECT_EQ(hub->setMultilayerMode(200), E_OK);
    EXPECT_EQ(hub.written(), "80 17 02 C8");
    hub.device->answer("80 17 01", "80 17 03 09 08");
    std::uint8_t value = 0;
    EXPECT_EQ(hub->getMultilayerMode(&value), E_OK);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(hub.written(), "80 17 01");
    hub.device->answer("80 17 01", "80 17 02 07");
    EXPECT_EQ(hub->getMultilayerMode(&value), E_OK);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(hub->getMultilayerMode(nullptr), E_INVALID_GET);
}

TEST(GlowHubSettings, areNotReadFromARefusal)
{
    Hub hub;
    hub.device->answer("80 0D 01", "80 0D 04 01 07 08");
    hub.device->answer("80 0C 01", "80 0C 04 01 07 08");
    std::uint8_t a = 0xEE, b = 0xEE;
    EXPECT_EQ(hub->getLEDSize(1, &a, &b), E_OK);
    EXPECT_EQ(a, 0xEE);
    EXPECT_EQ(b, 0xEE);
    ByteVector owner(32, 0xEE);
    EXPECT_EQ(hub->getUID(owner.data()), E_OK);
    EXPECT_EQ(owner, ByteVector(32, 0xEE));
}

TEST(GlowHubSettings, areWipedWithAMoveIntoTheFollowingMode)
{
    Hub hub;
    EXPECT_EQ(hub->resetData(), E_OK);
    EXPECT_EQ(hub.written(), "80 16 56 78 | 80 01 05 03 | 80 0B 01 01 | 80 01 02 | 80 01 01");
    hub.device->answer("80 01 05", "80 01 05 03 00 01");
    EXPECT_EQ(hub->resetData(), E_OK);
    EXPECT_EQ(hub.written(), "80 16 56 78 | 80 01 05 03");
    hub.device->answer("80 01 05", "80 01 05 03");
    hub.device->answer("80 0B 01", "80 0B 03 01 0C"); // mode 12 from the device itself
    EXPECT_EQ(hub->resetData(), E_OK);
    EXPECT_EQ(hub.written(), "80 16 56 78 | 80 01 05 03 | 80 0B 01 01");
}

TEST(GlowHubCustomColors, areCutIntoThreeReports)
{
    Hub hub;
    const auto buffer = recordOf<Buffer>(countedBuffer);
    for (int port = 1; port <= 4; ++port) {
        EXPECT_EQ(hub->setEffectCustomize(std::uint8_t(port), &buffer), E_OK);
        EXPECT_EQ(hub.written(3), "00 10 02 " + hexByte(port - 1) + " 30" + countedReports);
    }
    EXPECT_EQ(hub->setEffectCustomize(1, nullptr), E_INVALID_SET);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

TEST(GlowHubCustomColors, takePortsThatTheDeviceDoesNotHave)
{
    Hub hub;
    const auto buffer = recordOf<Buffer>(countedBuffer);
    EXPECT_EQ(hub->setEffectCustomize(5, &buffer), E_OK); // deliberate: unchecked
    EXPECT_EQ(hub.written(3), "00 10 02 04 30" + countedReports);
    EXPECT_EQ(hub->setEffectCustomize(0, &buffer), E_OK);
    EXPECT_EQ(hub.written(3), "00 10 02 FF 30" + countedReports);
    EXPECT_EQ(hub->setEffectCustomize(20, &buffer), E_OK); // the queue's last lane
    EXPECT_EQ(hub.written(3), "00 10 02 13 30" + countedReports);
    for (const std::uint8_t port : {21, 255})
        EXPECT_EQ(hub->setEffectCustomize(port, &buffer), E_INVALID_SET);
    EXPECT_EQ(hub.writtenBeforeQuestion(), "");
}

TEST(GlowHubCustomColors, areReadInThreeReports)
{
    Hub hub;
    for (int port = 1; port <= 4; ++port) {
        const std::string request = "80 10 01 " + hexByte(port - 1) + " 30";
        hub.device->answers(request, {"00 10 03 " + hexByte(port - 1) + " 30 " + counting(4, 59),
                                      "01 " + counting(63, 63), "82 " + counting(126, 22) + " 99 99"});
        auto buffer = recordOf<Buffer>("E1 E2 E3 E4");
        EXPECT_EQ(hub->getEffectCustomize(std::uint8_t(port), &buffer), E_OK);
        EXPECT_EQ(bytesOf(buffer), "E1 E2 E3 E4 " + counting(4, 144));
        EXPECT_EQ(hub.written(), joined({request, request, request}));
    }
    auto buffer = recordOf<Buffer>(times(148, "EE"));
    for (const std::uint8_t port : {0, 5, 255})
        EXPECT_EQ(hub->getEffectCustomize(port, &buffer), E_INVALID_GET);
    EXPECT_EQ(hub->getEffectCustomize(1, nullptr), E_INVALID_GET);
    EXPECT_EQ(hub.written(), "");
    EXPECT_EQ(bytesOf(buffer), times(148, "EE"));
}

TEST(GlowHubCustomColors, mayComeAllAtOnce)
{
    Hub hub;
    hub.device->answer("80 10 01", "00 10 03 01 30 " + counting(4, 59) + " | 01 " + counting(63, 63) +
                                       " | 82 " + counting(126, 22));
    for (int i = 0; i < 20; ++i) {
        auto buffer = recordOf<Buffer>("");
        EXPECT_EQ(hub->getEffectCustomize(2, &buffer), E_OK);
        EXPECT_EQ(bytesOf(buffer), "00 00 00 00 " + counting(4, 144));
    }
}

WAITING_TEST(GlowHubMissingReply, ofCustomColorsLeavesTheBufferAsItWas)
{
    struct Case {
        std::vector<std::string> replies;
        const char* written;
    };
    const std::string first = "00 10 03 01 30 01 02 03", second = "01 04 05";
    const std::vector<Case> cases{
        {{""}, "80 10 01 01 30"},
        {{"00 10 03 00 30 01 02 03"}, "80 10 01 01 30"},
        {{"00 10 04 01 30"}, "80 10 01 01 30"},
        {{first, ""}, "80 10 01 01 30 | 80 10 01 01 30"},
        {{first, "02 04 05"}, "80 10 01 01 30 | 80 10 01 01 30"},
        {{first, second, ""}, "80 10 01 01 30 | 80 10 01 01 30 | 80 10 01 01 30"},
        {{first, second, "02 01"}, "80 10 01 01 30 | 80 10 01 01 30 | 80 10 01 01 30"},
    };
    std::vector<std::function<void()>> scenarios;
    for (const Case& one : cases)
        scenarios.emplace_back([one] {
            Hub hub;
            hub.device->answers("80 10 01", one.replies);
            auto buffer = recordOf<Buffer>(times(148, "EE"));
            EXPECT_EQ(hub->getEffectCustomize(2, &buffer), E_INVALID_GET) << one.replies.back();
            EXPECT_EQ(bytesOf(buffer), times(148, "EE")) << one.replies.back();
            EXPECT_EQ(hub.written(), one.written) << one.replies.back();
        });
    together(scenarios);
}

/// Whether custom colors take the ports back first: the ports count as following.
bool follows(Hub& hub)
{
    const auto buffer = recordOf<Buffer>(countedBuffer);
    EXPECT_EQ(hub->setEffectCustomize(1, &buffer), E_OK);
    std::string all = hub.written(3);
    const bool first = all.starts_with("80 01 01 | ");
    if (first && reports(all).size() == 3)
        all += " | " + hub.written(1);
    EXPECT_EQ(all, (first ? "80 01 01 | " : "") + ("00 10 02 00 30" + countedReports));
    return first;
}

/// A step of the host, and whether the ports follow after it.
struct Step {
    const char* what;
    std::function<void(Hub&)> call;
    bool follows;
};

void setMode(Hub& hub, const char* record)
{
    auto effect = recordOf<ArgbEffectParam>(record);
    hub->setEffectParameter(&effect);
}

TEST(GlowHubFollowing, isEndedByCustomColorsOnce)
{
    Hub hub;
    EXPECT_FALSE(follows(hub));
    setMode(hub, "01 0C");
    hub.written();
    EXPECT_TRUE(follows(hub));
    EXPECT_FALSE(follows(hub));
}

TEST(GlowHubFollowing, isRememberedAsDescribed)
{
    const std::vector<Step> steps{
        {"fresh", [](Hub&) {}, false},
        {"setEffectParameter 12", [](Hub& hub) { setMode(hub, "04 0C"); }, true},
        {"setEffectMode 12", [](Hub& hub) { hub->setEffectMode(1, 12); }, true},
        {"setEffectParameter 3 behind 12",
         [](Hub& hub) {
             setMode(hub, "01 0C");
             setMode(hub, "01 03");
         },
         false},
        {"a refused mode behind 12",
         [](Hub& hub) {
             setMode(hub, "01 0C");
             setMode(hub, "01 07");
         },
         false},
        {"a refused port behind 12",
         [](Hub& hub) {
             setMode(hub, "01 0C");
             setMode(hub, "09 03");
         },
         false},
        // Deliberate: choosing another mode alone does not end it.
        {"setEffectMode 3 behind 12",
         [](Hub& hub) {
             hub->setEffectMode(1, 12);
             hub->setEffectMode(1, 3);
         },
         true},
        {"setLightingInit behind 12",
         [](Hub& hub) {
             hub->setEffectMode(1, 12);
             hub->setLightingInit();
             hub.written(16);
         },
         true},
        {"the strip's mode 7", [](Hub& hub) { hub->setRgbEffectMode(1, 7); }, false},
        // It sets mode 12 and takes the ports back without looking at it again.
        {"resetData", [](Hub& hub) { hub->resetData(); }, true},
        {"resetData of a device in mode 12",
         [](Hub& hub) {
             hub->setEffectMode(1, 12);
             hub.device->answer("80 01 05", "80 01 05 03 00 01");
             hub->resetData();
         },
         false},
    };
    for (const Step& step : steps) {
        Hub hub;
        step.call(hub);
        hub.written();
        EXPECT_EQ(follows(hub), step.follows) << step.what;
        EXPECT_FALSE(follows(hub)) << step.what;
    }
}

TEST(GlowHubFollowing, isReadAtTheStart)
{
    Hub hub([](ScriptedDevice& device) { device.answer("80 01 05", "80 01 05 03 00 01"); });
    EXPECT_TRUE(follows(hub));
    EXPECT_FALSE(follows(hub));
}

} // namespace
} // namespace pyrux::test
