#include "pyrux/glow_hub.h"
#include "tests/kernel/rd210_rig.h"

#include <atomic>
#include <cstdio>
#include <thread>

/// @file
/// Lights that a host drives at frame rate, through the real USB stack.

namespace pyrux::test {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t ports = 4;
constexpr std::uint32_t leds = 48;

/// Every LED of every port in a color that no other frame has there.
std::vector<LightingLedZone> frameOf(int number)
{
    std::vector<LightingLedZone> zones;
    for (std::uint32_t port = 1; port <= ports; ++port) {
        LightingLedZone zone{port, {}};
        for (std::uint32_t led = 0; led < leds; ++led)
            zone.leds.push_back({led, std::uint8_t(1 + number % 200), std::uint8_t(port << 4 | number / 200),
                                 std::uint8_t(led + 1)});
        zones.push_back(std::move(zone));
    }
    return zones;
}

/// The same LEDs on the wire: those from `first` to `last` after the report's head.
std::string reportOf(std::string head, const LightingLedZone& zone, std::size_t first, std::size_t last)
{
    for (std::size_t led = first; led <= last; ++led)
        for (const std::uint8_t part : {zone.leds[led].red, zone.leds[led].green, zone.leds[led].blue}) {
            std::array<char, 4> text{};
            std::snprintf(text.data(), text.size(), " %02x", part);
            head += text.data();
        }
    return head;
}

/// `PYRUX_ANIMATION_SECONDS` says how long it runs.
TEST(LightsRig, takesAnAnimationBesideRequests)
{
    constexpr int framesASecond = 60;
    const char* const variable = std::getenv("PYRUX_ANIMATION_SECONDS");
    const int frames = framesASecond * (variable ? std::atoi(variable) : 10);
    Udev udev;
    Gadget gadget({"--trace", "glow_hub"});
    ASSERT_TRUE(gadget.line().starts_with("glow_hub is 3a7e:1011"));
    auto nodes = udev.waitForNodes("3a7e", "1011", 2);
    ASSERT_EQ(nodes.size(), 2U);
    keepNumberOf(nodes["00"]);
    PYRUX_GLOW_Base* const hub = glow_hub(pathOf(nodes["00"].path).c_str());
    ASSERT_NE(hub, nullptr);
    ASSERT_EQ(hub->setLightingInit(), E_OK);

    std::atomic<bool> running{true};
    int answered = 0;
    int missed = 0;
    std::thread asking([&] {
        for (; running; ++answered) {
            std::uint16_t version = 0;
            missed += hub->getVersion(&version) != E_OK || version != 0x0203;
        }
    });
    auto next = Clock::now();
    std::size_t bytesOnTheWire = 0;
    for (int number = 0; number < frames; ++number) {
        EXPECT_EQ(hub->setSyncLightingData(frameOf(number)), E_OK);
        bytesOnTheWire += gadget.takeWritten().size(); // the trace must not wait for its reader
        next += Clock::duration(1s) / framesASecond;
        std::this_thread::sleep_until(next); // the frame rate itself
    }
    running = false;
    asking.join();
    const auto last = frameOf(frames);
    EXPECT_EQ(hub->setSyncLightingData(last), E_OK);
    for (const LightingLedZone& zone : last) {
        EXPECT_TRUE(
            gadget.waitForWritten(reportOf("00 07 0" + std::to_string(zone.zone - 1) + " 30", zone, 0, 19)))
            << zone.zone;
        EXPECT_TRUE(gadget.waitForWritten(reportOf("01", zone, 20, 40))) << zone.zone;
        EXPECT_TRUE(gadget.waitForWritten(reportOf("82", zone, 41, 47))) << zone.zone;
    }
    EXPECT_EQ(missed, 0);
    EXPECT_GT(answered, frames / framesASecond);
    std::printf("%d frames told, about %zu reports on the wire, %d requests answered beside\n", frames,
                bytesOnTheWire / (3 * 64), answered);
    EXPECT_EQ(hub->exit_device(1), E_OK);
}

} // namespace

} // namespace pyrux::test
