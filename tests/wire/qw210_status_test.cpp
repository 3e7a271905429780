// The keyboards: the status effect in both roles of the library.

#include "pyrux/pyrux.h"
#include "tests/support/isolated.h"
#include "tests/support/keyboard.h"
#include "tests/support/pipe_peer.h"

#include <gtest/gtest.h>

#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace pyrux::test {
namespace {

using Requests = std::vector<std::string>;
using namespace std::chrono_literals;

constexpr SystemStatusEffect load{0, 7};
constexpr SystemStatusEffect spectrum{1, 7};

std::string request(const char* model, int type)
{
    return std::string(R"({"func":"setSystemStatusEffect","mod":")") + model + R"(","param":{"type":)" +
           std::to_string(type) + "}}";
}

/// The last frame that a callback was given, and their number.
class Frames {
public:
    static void callback(const std::uint8_t* frame)
    {
        const std::lock_guard lock(mutex);
        last.assign(frame, frame + 504);
        ++count;
        arrived.notify_all();
    }
    static ByteVector await(int wanted)
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(arrived.wait_for(lock, patience, [&] { return count >= wanted; }));
        return last;
    }
    static int counted()
    {
        const std::lock_guard lock(mutex);
        return count;
    }

private:
    static inline std::mutex mutex;
    static inline std::condition_variable arrived;
    static inline ByteVector last;
    static inline int count = 0;
};

/// The columns of a chart from the bottom up, whatever their heights are; no other LED is lit.
template <class Model>
void expectChart(const ByteVector& frame)
{
    constexpr bool wide = std::is_same_v<Model, QW220Model>;
    constexpr int columns = wide ? 23 : 19, step = wide ? 6 : 7, top = wide ? 0 : 7;
    static constexpr const char* palette[]{"00 00 FF", "00 FF FF", "00 FF 00",
                                           "FF FF 00", "FF 80 00", "FF 00 00"};
    ASSERT_EQ(frame.size(), 504U);
    std::vector<std::string> leds;
    for (std::size_t led = 0; led < 168; ++led)
        leds.push_back(hex(std::span(frame).subspan(3 * led, 3)));
    for (int column = 0; column < columns; ++column) {
        bool lit = true;
        for (int row = 0; row < 6; ++row) {
            std::string& led = leds[std::size_t(column * step + top + 5 - row)];
            lit = lit && led != "00 00 00";
            EXPECT_EQ(led, lit ? palette[row] : "00 00 00") << column << ", " << row;
            led = "00 00 00";
        }
    }
    for (std::size_t led = 0; led < leds.size(); ++led)
        EXPECT_EQ(leds[led], "00 00 00") << led;
}

template <class Model>
std::uint8_t modeOf(KeyboardOf<Model>& keyboard)
{
    keyboard.device->answer("52 28", "52 28 00 00 FF"); // the library's own number counts
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(keyboard->getEffectMode(&mode), E_OK);
    keyboard.written();
    return mode;
}

ISOLATED_TEST(KeyboardStatus, isAskedOfTheResidentService)
{
    const PipePeer peer("twservicepipe", answering("TW_OK"));
    KeyboardOf<QW210Model> first;
    KeyboardOf<QW220Model> second;
    EXPECT_EQ(first->setSystemStatusEffect(&spectrum), E_OK);
    EXPECT_EQ(first.written(), "");
    EXPECT_EQ(modeOf(first), 20);
    EXPECT_EQ(second->setSystemStatusEffect(&load), E_OK);
    EXPECT_EQ(second.written(), "");
    EXPECT_EQ(modeOf(second), 20);
    EXPECT_EQ(peer.requests(), (Requests{request("qw210", 1), request("qw220", 0)}));
}

ISOLATED_TEST(KeyboardStatus, ofAnotherTypeIsRefusedOrEndsTheEffect)
{
    const PipePeer peer("twservicepipe", answering("TW_OK"));
    KeyboardOf<QW210Model> first;
    KeyboardOf<QW220Model> second;
    for (const std::uint32_t type : {2U, 255U, 0xFFFFFFFFU}) {
        const SystemStatusEffect other{type, 0};
        EXPECT_EQ(first->setSystemStatusEffect(&other), -2);
    }
    EXPECT_EQ(first.written(), "");
    EXPECT_EQ(modeOf(first), 0);
    EXPECT_EQ(peer.requests(), Requests{});
    EXPECT_EQ(second->setSystemStatusEffect(&load), E_OK);
    const SystemStatusEffect other{2, 0};
    EXPECT_EQ(second->setSystemStatusEffect(&other), E_OK);
    EXPECT_EQ(modeOf(second), 255);
    EXPECT_EQ(peer.requests(), (Requests{request("qw220", 0), request("qw220", 2)}));
}

ISOLATED_TEST(KeyboardStatus, beginsWithItsEffectNumber)
{
    const PipePeer peer("twservicepipe", answering("TW_OK"));
    KeyboardOf<QW210Model> keyboard;
    EXPECT_EQ(keyboard->setEffectMode(20), E_OK);
    EXPECT_EQ(keyboard.written(), wire("41 80 | 51 28 00 00 14"));
    EXPECT_EQ(keyboard->setSystemStatusEffect(&spectrum), E_OK);
    EXPECT_EQ(keyboard->setEffectMode(3), E_OK);
    EXPECT_EQ(keyboard->setEffectMode(4), E_OK);
    EXPECT_EQ(peer.requests(), (Requests{request("qw210", 0), request("qw210", 1)}));
    EXPECT_EQ(keyboard->setEffectMode(20), E_OK); // what was set last
    EXPECT_EQ(peer.requests(), (Requests{request("qw210", 0), request("qw210", 1), request("qw210", 1)}));
}

/// QW220 ends the status effect with the custom effect.
ISOLATED_TEST(KeyboardStatus, endsWithTheCustomEffectOfQW220)
{
    const PipePeer peer("twservicepipe", answering("TW_OK"));
    KeyboardOf<QW220Model> keyboard;
    EXPECT_EQ(keyboard->setEffectMode(3), E_OK);
    EXPECT_EQ(peer.requests(), Requests{});
    keyboard.written();
    EXPECT_EQ(keyboard->setEffectMode(4), E_OK);
    EXPECT_EQ(peer.requests(), Requests{request("qw220", 2)});
    EXPECT_EQ(keyboard.written(), wire("41 80 | 51 28 00 00 04"));
    EXPECT_EQ(modeOf(keyboard), 4);
}

ISOLATED_TEST(KeyboardStatus, doesWithoutTheResidentService)
{
    KeyboardOf<QW210Model> keyboard;
    EXPECT_EQ(keyboard->setSystemStatusEffect(&load), E_OK);
    EXPECT_EQ(keyboard.written(), "");
    EXPECT_EQ(modeOf(keyboard), 20);
}

ISOLATED_TEST(KeyboardStatus, givesAnApplicationItsFrames)
{
    KeyboardOf<QW210Model> first;
    KeyboardOf<QW220Model> second;
    EXPECT_EQ(first->registerSystemStatusNotify(nullptr), -2);
    EXPECT_EQ(first->registerSystemStatusNotify(Frames::callback), E_OK);
    EXPECT_EQ(first->setSystemStatusEffect(&load), E_OK);
    expectChart<QW210Model>(Frames::await(3));
    EXPECT_EQ(first->unRegisterSystemStatusNotify(), E_OK);
    const int before = Frames::counted();
    EXPECT_EQ(second->registerSystemStatusNotify(Frames::callback), E_OK);
    EXPECT_EQ(second->setSystemStatusEffect(&load), E_OK);
    expectChart<QW220Model>(Frames::await(before + 3));
    EXPECT_EQ(first.written(), "");
    EXPECT_EQ(second.written(), "");
}

const char* const preparation = "56 81 00 00 01 00 00 00 01 00 00 00 BB 0B 55 55 | "
                                "56 83 00 00 01 00 00 00 04 F0 00 C1 | 41 80 | 51 28 00 00 FF";

/// The colors of a frame out of its reports, of which the last is `keys` LEDs after the full ones.
ByteVector frameOf(const std::vector<std::string>& reportsOfFrame, std::uint8_t keys)
{
    ByteVector frame(504 + 21);
    for (std::size_t i = 0; i < reportsOfFrame.size(); ++i) {
        ByteVector report = bytes(reportsOfFrame[i]);
        report.resize(64);
        const std::uint8_t count = i + 1 < reportsOfFrame.size() ? 18 : keys;
        const ByteVector head{0x56, 0x42, 0, 0, 2, count, std::uint8_t(18 * i), 0};
        EXPECT_EQ(hex(std::span(report).first(8)), hex(head)) << i;
        std::copy_n(report.begin() + 8, 3 * count, frame.begin() + std::ptrdiff_t(54 * i));
        for (std::size_t at = 8U + 3U * count; at < report.size(); ++at)
            EXPECT_EQ(report[at], 0) << i;
    }
    // What lies after the frame is sent as zeros.
    for (std::size_t i = 504; i < frame.size(); ++i)
        EXPECT_EQ(frame[i], 0);
    frame.resize(504);
    return frame;
}

template <class Model>
void expectPainted(std::size_t reportsOfFrame, std::uint8_t keysOfTheLast)
{
    KeyboardOf<Model> keyboard;
    EXPECT_EQ(keyboard->setSystemStatusEffect(&load), E_OK);
    std::vector<std::string> pieces = reports(keyboard.written(4 + 2 * reportsOfFrame));
    ASSERT_GE(pieces.size(), 4 + 2 * reportsOfFrame);
    EXPECT_EQ(joined({pieces.begin(), pieces.begin() + 4}), wire(preparation));
    for (std::size_t frame = 0; frame < 2; ++frame) {
        const auto begin = pieces.begin() + std::ptrdiff_t(4 + frame * reportsOfFrame);
        expectChart<Model>(frameOf({begin, begin + std::ptrdiff_t(reportsOfFrame)}, keysOfTheLast));
    }
    EXPECT_EQ(keyboard->setEffectMode(3), E_OK); // no more of them
}

ISOLATED_TEST(KeyboardStatus, isPaintedByTheServiceOnQW210)
{
    pyrux_background(1);
    expectPainted<QW210Model>(10, 13);
}

ISOLATED_TEST(KeyboardStatus, isPaintedByTheServiceOnQW220)
{
    pyrux_background(1);
    expectPainted<QW220Model>(8, 12);
}

ISOLATED_TEST(KeyboardStatus, isNotPaintedOnAKeyboardThatDoesNotGetReady)
{
    pyrux_background(1);
    KeyboardOf<QW210Model> keyboard;
    keyboard.device->silence("56 83");
    EXPECT_EQ(keyboard->setSystemStatusEffect(&load), -2);
    EXPECT_EQ(keyboard.written(), wire(preparation).substr(0, wire(preparation).find(" | 41 80")));
    EXPECT_EQ(modeOf(keyboard), 0);
    keyboard.device->silence("56 81");
    EXPECT_EQ(keyboard->setSystemStatusEffect(&load), -2);
    EXPECT_EQ(reports(keyboard.written()).front(), reports(wire(preparation)).front());
}

} // namespace
} // namespace pyrux::test
