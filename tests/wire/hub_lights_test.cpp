// The lighting controllers: what a host's frames have in common.

#include "tests/support/debug_log.h"
#include "tests/support/frame_pace.h"
#include "tests/support/hub.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

/// What a model's lights send.
template <class Model>
struct Lights;

const std::string darkPort = " | 01 | 82";

template <>
struct Lights<GlowHubModel> {
    static std::string init() { return "80 01 01 02 | 80 01 03 02 | " + off(); }
    static constexpr const char* uninit = "80 01 01 | 80 01 03";
    static std::string off()
    {
        std::string text;
        for (int port = 0; port < 4; ++port)
            text += "00 07 " + hexByte(port) + " 30 | 01 | 82 | ";
        return text + "80 05";
    }
    static std::string frame(int red) { return "00 07 00 30 " + hexByte(red) + " 22 33 | 01 | 82"; }
    static constexpr auto slow = 100ms, fast = 10ms;
};

template <>
struct Lights<GlowHub2Model> {
    static std::string init() { return off(); }
    static constexpr const char* uninit = "80 16 02 04";
    static std::string off()
    {
        return "80 16 02 02 | 80 16 02 02 01 | 80 16 02 02 02 | 80 16 02 02 03 | 80 16 02 01";
    }
    static std::string frame(int red) { return "80 16 02 02 00 " + hexByte(red) + " 22 33"; }
    static constexpr auto slow = 100ms, fast = 10ms;
};

template <>
struct Lights<PlayDockModel> {
    static std::string init() { return "80 01 02 01 | " + off(); }
    static constexpr const char* uninit = "80 01 02";
    static std::string off() { return "80 09 01 | 80 09 02 | 80 09 03"; }
    static std::string frame(int red) { return "80 09 01 00 " + hexByte(red) + " 22 33"; }
    static constexpr auto slow = 100ms, fast = 100ms; // its pace stays
};

/// The reports of a text in an order of their own.
std::vector<std::string> sorted(const std::string& text)
{
    std::vector<std::string> all = reports(wire(text));
    std::ranges::sort(all);
    return all;
}

template <class Model>
class HubLights : public testing::Test {
protected:
    using Sent = Lights<Model>;

    _error send(int red) { return hub->setSyncLightingData({{1, {{0, std::uint8_t(red), 0x22, 0x33}}}}); }

    std::size_t count(const std::string& text) const { return reports(text).size(); }

    /// The queue's thread stands in the write of frame 1, for a while.
    void holdQueue()
    {
        sim::setConduct(hub.path, {.writeTime = 150ms});
        send(1);
        EXPECT_TRUE(sim::awaitWritersInside(1));
    }

    bool pausesBetween(std::chrono::milliseconds least, std::chrono::milliseconds most)
    {
        return test::pausesBetween(
            hub.path, [&](std::uint8_t red) { send(red); }, count(Sent::frame(1)), least, most);
    }

    HubOf<Model> hub;
};
TYPED_TEST_SUITE(HubLights, NotifyingHubModels, ModelName);

TYPED_TEST(HubLights, areTakenOverDark)
{
    using Sent = Lights<TypeParam>;
    EXPECT_EQ(this->hub->setLightingInit(), E_OK);
    EXPECT_EQ(sortedGroups(this->hub.written(this->count(Sent::init()))), sortedGroups(wire(Sent::init())));
    EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
    EXPECT_EQ(this->hub.written(), wire(Sent::uninit));
    EXPECT_EQ(this->hub->setLightingTurnOff(), E_OK);
    EXPECT_EQ(sortedGroups(this->hub.written(this->count(Sent::off()))), sortedGroups(wire(Sent::off())));
}

TYPED_TEST(HubLights, areSentAsAFrame)
{
    using Sent = Lights<TypeParam>;
    EXPECT_EQ(this->send(0x11), E_OK);
    EXPECT_EQ(this->hub.written(this->count(Sent::frame(0))), wire(Sent::frame(0x11)));
}

TYPED_TEST(HubLights, needAZone)
{
    EXPECT_EQ(this->hub->setSyncLightingData({}), E_INVALID_SET);
    EXPECT_EQ(this->hub->setLightingPortColor(nullptr), E_INVALID_SET);
    EXPECT_EQ(this->hub.writtenBeforeQuestion(), "");
}

TYPED_TEST(HubLights, areLeftAloneByZonesThatTheDeviceDoesNotHave)
{
    for (const std::uint32_t zone : {0U, 6U, 7U, 255U, 256U, 0xFFFFFFFFU})
        EXPECT_EQ(this->hub->setSyncLightingData({{zone, {{0, 1, 2, 3}}}}), E_OK);
    // As many entries as the device of most has.
    const LightingPortColorOf<5> color{{}, {0, 6, 0xFFFFFFFF, 0, 256}, 1, 2, 3};
    EXPECT_EQ(this->hub->setLightingPortColor(&color), E_OK);
    // A frame that goes out ends what was queued before it.
    EXPECT_EQ(this->send(5), E_OK);
    EXPECT_EQ(this->hub.written(1).substr(0, 5), Lights<TypeParam>::frame(5).substr(0, 5));
    EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
    this->hub.written();
}

TYPED_TEST(HubLights, logOnlyWhatDoesNotRunAtFrameRate)
{
    const auto call = [&] {
        this->hub->setLightingInit();
        this->hub->setLightingPortColor(nullptr);
        this->send(1);
        this->hub->setSyncLightingData({});
        this->hub->setLightingTurnOff();
        this->hub->setLightingUninit();
    };
    Lines expected;
    for (const char* name : {"setLightingInit", "setLightingTurnOff", "setLightingUninit"}) {
        expected.push_back(hostLine<TypeParam>(std::string(name) + ", #"));
        expected.push_back(hostLine<TypeParam>(std::string(name) + ", ret = 0"));
    }
    EXPECT_EQ(debugLinesOf(call), expected);
}

TYPED_TEST(HubLights, keepTheirPace)
{
    using Sent = Lights<TypeParam>;
    EXPECT_TRUE(this->pausesBetween(Sent::slow, 1000ms));
    this->hub->setLightingInit();
    this->hub.written(this->count(Sent::init()));
    EXPECT_TRUE(this->pausesBetween(Sent::fast - 1ms, Sent::fast == 10ms ? 90ms : 1000ms));
    this->hub->setLightingUninit();
    this->hub.written(1);
    EXPECT_TRUE(this->pausesBetween(Sent::slow, 1000ms));
}

TYPED_TEST(HubLights, showTheNewestFrameOfAFastProducer)
{
    using Sent = Lights<TypeParam>;
    this->hub->setLightingInit();
    this->hub.written(this->count(Sent::init()));
    constexpr int frames = 250;
    for (int i = 1; i <= frames; ++i)
        this->send(i);
    const std::string last = reports(wire(Sent::frame(frames))).front();
    std::vector<std::string> heads; // of the frames that went out
    while (heads.empty() || heads.back() != last) {
        const std::vector<std::string> more = reports(this->hub.written(1));
        ASSERT_FALSE(more.empty());
        for (const std::string& report : more)
            if (report.ends_with(" 22 33"))
                heads.push_back(report);
    }
    EXPECT_LT(heads.size(), std::size_t(frames) / 2);
    // In the order in which they were made.
    EXPECT_TRUE(std::ranges::is_sorted(heads));
    EXPECT_EQ(std::ranges::adjacent_find(heads), heads.end());
}

TYPED_TEST(HubLights, forgetFramesThatWaitWhenTheyAreTakenOver)
{
    using Sent = Lights<TypeParam>;
    this->holdQueue();
    this->send(9);
    EXPECT_EQ(this->hub->setLightingInit(), E_OK);
    sim::setConduct(this->hub.path, {});
    const std::string expected = Sent::frame(1) + " | " + Sent::init();
    EXPECT_EQ(sorted(this->hub.written(this->count(expected))), sorted(expected));
}

TYPED_TEST(HubLights, forgetFramesThatWaitWhenTheyAreTurnedOff)
{
    using Sent = Lights<TypeParam>;
    this->holdQueue();
    this->send(9);
    EXPECT_EQ(this->hub->setLightingTurnOff(), E_OK);
    sim::setConduct(this->hub.path, {});
    const std::string expected = Sent::frame(1) + " | " + Sent::off();
    EXPECT_EQ(sorted(this->hub.written(this->count(expected))), sorted(expected));
}

TYPED_TEST(HubLights, forgetFramesThatWaitWhenTheyAreGivenBack)
{
    using Sent = Lights<TypeParam>;
    this->holdQueue();
    this->send(9);
    EXPECT_EQ(this->hub->setLightingUninit(), E_OK);
    sim::setConduct(this->hub.path, {});
    this->send(10);
    const std::string expected = Sent::frame(1) + " | " + Sent::uninit + " | " + Sent::frame(10);
    EXPECT_EQ(sorted(this->hub.written(this->count(expected))), sorted(expected));
}

TYPED_TEST(HubLights, endWithTheObject)
{
    using Sent = Lights<TypeParam>;
    const int handles = sim::openHandles();
    this->holdQueue();
    this->send(9);
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->hub->exit_device(1), E_OK); }), 5000);
    // A write that is under way holds its handle until it is through.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (sim::openHandles() != handles - 2 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(sim::openHandles(), handles - 2);
    EXPECT_EQ(this->hub.written().find(reports(wire(Sent::frame(9))).front()), std::string::npos);
}

TYPED_TEST(HubLights, endWithAStalledFrameInTheAir)
{
    sim::setConduct(this->hub.path, {.writeTime = 60s});
    this->send(1);
    EXPECT_TRUE(sim::awaitWritersInside(1));
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->hub->exit_device(1), E_OK); }), 5000);
    EXPECT_EQ(this->send(2), E_CLOSED);
    EXPECT_EQ(this->hub->setSyncLightingData({}), E_CLOSED);
    EXPECT_EQ(this->hub->setLightingPortColor(nullptr), E_CLOSED);
    EXPECT_EQ(this->hub->setLightingTurnOff(), E_CLOSED);
    sim::releaseWrites(this->hub.path);
}

TYPED_TEST(HubLights, runBesideRequests)
{
    this->hub->setLightingInit();
    std::atomic<bool> stop{false};
    std::thread animation([&] {
        for (int i = 0; !stop; ++i)
            this->send(i);
    });
    const int rounds = TypeParam::facts().model == "PLAY DOCK" ? 10 : 100; // which has its own pace
    for (int i = 0; i < rounds; ++i)
        this->hub.settle();
    stop = true;
    animation.join();
}

} // namespace
} // namespace pyrux::test
