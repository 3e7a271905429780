// The power supplies: the fan.

#include "tests/support/debug_log.h"
#include "tests/support/supply.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

struct Point {
    int temperature, speed;
    bool operator==(const Point&) const = default;
};
using Points = std::array<Point, 4>;

constexpr Points defaultCurve{{{30, 10}, {40, 30}, {60, 50}, {70, 70}}};
constexpr const char* defaultCurveTexts = "[M5] | [m13002] | [m24004] | [m36006] | [m47008] | [M2] | [M5]";
constexpr const char* curveQuestions = "[MQ] | [Q1] | [Q2] | [Q3] | [Q4]";

template <class Fan>
Points pointsOf(const Fan& fan)
{
    Points points;
    for (std::size_t i = 0; i < points.size(); ++i)
        points[i] = {fan.points[i].temperature, fan.points[i].speed};
    return points;
}

template <class Fan>
Fan fanOf(std::uint8_t mode, const Points& points = {})
{
    Fan fan{};
    fan.mode = mode;
    for (std::size_t i = 0; i < points.size(); ++i) {
        using Number = decltype(fan.points[i].speed);
        fan.points[i] = {Number(points[i].temperature), Number(points[i].speed)};
    }
    return fan;
}

/// A record that a call must fill.
template <class Fan>
Fan filledFan()
{
    Fan fan;
    std::memset(&fan, 0xEE, sizeof fan);
    return fan;
}

/// Lets a supply be in mode 5 with a curve of these replies.
template <class Model>
void setCurve(SupplyOf<Model>& supply, const std::array<const char*, 4>& replies)
{
    supply.answer("[MQ]", "[M5]");
    supply.answer("[Q1]", replies[0]);
    supply.answer("[Q2]", replies[1]);
    supply.answer("[Q3]", replies[2]);
    supply.answer("[Q4]", replies[3]);
}

template <class Model>
class PsuFanTest : public testing::Test {
protected:
    using Fan = typename Model::Fan;

    SupplyOf<Model> supply;
};
TYPED_TEST_SUITE(PsuFanTest, SupplyModels, ModelName);

TYPED_TEST(PsuFanTest, isReadWithoutACurveInTheBuiltInModes)
{
    using Fan = typename TypeParam::Fan;
    this->supply.tell({"[R10815]"});
    for (const std::uint8_t mode : {1, 2, 3, 4}) {
        const std::string reply = "[M" + std::to_string(mode) + "]";
        this->supply.answer("[MQ]", reply.c_str());
        auto fan = filledFan<Fan>();
        EXPECT_EQ(this->supply->getFan(fan), E_OK);
        EXPECT_EQ(fan.mode, mode);
        EXPECT_EQ(fan.speed, 815);
        EXPECT_EQ(pointsOf(fan), Points{}); // cleared
        EXPECT_EQ(this->supply.asked(), "[MQ]");
    }
}

TYPED_TEST(PsuFanTest, isReadWithItsCurveInTheCustomMode)
{
    this->supply.tell({"[R11815]"});
    setCurve(this->supply, {"[m12501]", "[m23505]", "[m35009]", "[m46810]"});
    auto fan = filledFan<typename TypeParam::Fan>();
    EXPECT_EQ(this->supply->getFan(fan), E_OK);
    EXPECT_EQ(fan.mode, 5);
    EXPECT_EQ(fan.speed, 1815);
    EXPECT_EQ(pointsOf(fan), (Points{{{25, 0}, {35, 40}, {50, 80}, {68, 100}}}));
    EXPECT_EQ(this->supply.asked(), curveQuestions);
}

TYPED_TEST(PsuFanTest, hasSpeedsInTens)
{
    for (int tens = 1; tens <= 9; ++tens) {
        const std::string reply = "[m1200" + std::to_string(tens) + "]";
        setCurve(this->supply, {reply.c_str(), "[m20002]", "[m37002]", "[m46902]"});
        auto fan = filledFan<typename TypeParam::Fan>();
        EXPECT_EQ(this->supply->getFan(fan), E_OK);
        EXPECT_EQ(pointsOf(fan), (Points{{{20, 10 * (tens - 1)}, {0, 10}, {70, 10}, {69, 10}}})) << tens;
        EXPECT_EQ(this->supply.asked(), curveQuestions);
    }
}

TYPED_TEST(PsuFanTest, isSetToABuiltInModeAtOnce)
{
    for (const std::uint8_t mode : {1, 2, 3, 4}) {
        const auto fan = fanOf<typename TypeParam::Fan>(mode, {{{1, 2}, {3, 4}, {5, 6}, {7, 8}}});
        EXPECT_EQ(this->supply->setFan(fan), E_OK);
        EXPECT_EQ(this->supply.asked(), "[M" + std::to_string(mode) + "]");
    }
}

TYPED_TEST(PsuFanTest, hasFiveModes)
{
    for (const int mode : {0, 6, 7, 128, 255}) {
        EXPECT_EQ(this->supply->setFan(fanOf<typename TypeParam::Fan>(std::uint8_t(mode), defaultCurve)),
                  E_INVALID_MODE);
        EXPECT_EQ(this->supply.asked(), "");
    }
}

TYPED_TEST(PsuFanTest, isNoLongerReadWhenARequestFails)
{
    struct Row {
        const char* why;
        std::array<const char*, 5> replies; ///< To [MQ] and [Q1] to [Q4].
        const char* asked;
    };
    const Row rows[]{
        {"mode is a letter", {"[Mx]", "", "", "", ""}, "[MQ]"},
        {"mode has no bracket", {"[M5", "", "", "", ""}, "[MQ]"},
        {"mode has another bracket", {"[M5)", "", "", "", ""}, "[MQ]"},
        {"mode has two digits", {"[M55]", "", "", "", ""}, "[MQ]"},
        {"temperature is none", {"[M5]", "[m1x502]", "", "", ""}, "[MQ] | [Q1]"},
        {"temperature is half one", {"[M5]", "[m12502]", "[m22x02]", "", ""}, "[MQ] | [Q1] | [Q2]"},
        {"speed is none", {"[M5]", "[m12502]", "[m23502]", "[m345x2]", ""}, "[MQ] | [Q1] | [Q2] | [Q3]"},
        {"speed is half one", {"[M5]", "[m12502]", "[m23502]", "[m34502]", "[m4550x]"}, curveQuestions},
        {"point has no bracket", {"[M5]", "[m12502", "", "", ""}, "[MQ] | [Q1]"},
        {"point has another bracket", {"[M5]", "[m12502}", "", "", ""}, "[MQ] | [Q1]"},
    };
    for (const Row& row : rows) {
        setCurve(this->supply, {row.replies[1], row.replies[2], row.replies[3], row.replies[4]});
        this->supply.answer("[MQ]", row.replies[0]);
        auto fan = filledFan<typename TypeParam::Fan>();
        EXPECT_EQ(this->supply->getFan(fan), E_INVALID_GET) << row.why;
        EXPECT_EQ(this->supply.asked(), row.asked) << row.why;
    }
}

TYPED_TEST(PsuFanTest, logsWhereTheClassDoes)
{
    const auto line = [](const char* text) { return ownLine<TypeParam>(text); };
    const auto with = [](const Lines& own, std::string name, const char* result) {
        Lines lines{hostLine<TypeParam>(name + ", #")};
        if (TypeParam::isPsuCtrl)
            lines.insert(lines.end(), own.begin(), own.end());
        lines.push_back(hostLine<TypeParam>(name + ", ret = " + result));
        return lines;
    };
    auto fan = fanOf<typename TypeParam::Fan>(3);
    this->supply.answer("[MQ]", "[M3]");
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(this->supply->getFan(fan), E_OK); }),
              with({line("getPsuCtrlDeviceFan,ret=0")}, "getFan", "0"));
    this->supply.answer("[MQ]", "[Mx]");
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(this->supply->getFan(fan), E_INVALID_GET); }),
              with({line("getPsuCtrlDeviceFan,ret=E_INVALID_GET")}, "getFan", "-3"));
    EXPECT_EQ(debugLinesOf([&] { EXPECT_EQ(this->supply->setFan(fan), E_OK); }),
              with({line("setPsuCtrlDeviceFan end.ret=0")}, "setFan", "0"));
}

TYPED_TEST(PsuFanTest, logsThatNoReplyCame)
{
    this->supply.answer("[MQ]", "");
    this->supply.tell({"[R11200]"});
    auto fan = fanOf<typename TypeParam::Fan>(2, defaultCurve);
    const Lines lines = debugLinesOf([&] { EXPECT_EQ(this->supply->getFan(fan), E_INVALID_GET); });
    Lines expected{hostLine<TypeParam>("getFan, #"), ownLine<TypeParam>("cannot receive")};
    if (TypeParam::isPsuCtrl)
        expected.push_back(ownLine<TypeParam>("getPsuCtrlDeviceFan,ret=E_INVALID_GET"));
    expected.push_back(hostLine<TypeParam>("getFan, ret = -3"));
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(fan.speed, 1200); // goes to the record first
    EXPECT_EQ(this->supply.asked(), "[MQ]");
}

TYPED_TEST(PsuFanTest, isRefusedByAClosedObject)
{
    this->supply->exit_device(1);
    auto fan = fanOf<typename TypeParam::Fan>(9);
    EXPECT_EQ(this->supply->getFan(fan), E_CLOSED);
    EXPECT_EQ(this->supply->setFan(fan), E_CLOSED);
    EXPECT_EQ(this->supply.asked(), "");
}

/// Runs a scenario for both classes at once.
template <template <class> class Scenario>
void both()
{
    together({Scenario<VoltgridModel>{}, Scenario<PsuCtrlModel>{}});
}

/// The curve goes out point by point; the mode is entered anew a second later.
template <class Model>
struct SetsACurve {
    Points curve;
    const char* texts;
    void operator()() const
    {
        SupplyOf<Model> supply;
        const auto fan = fanOf<typename Model::Fan>(5, curve);
        EXPECT_GE(milliseconds([&] { EXPECT_EQ(supply->setFan(fan), E_OK); }), 1000);
        EXPECT_EQ(supply.asked(), texts);
    }
};

WAITING_TEST(PsuFan, takesACurve)
{
    struct Row {
        Points curve;
        const char* texts;
    };
    const Row rows[]{
        {{{{30, 10}, {40, 30}, {60, 50}, {70, 70}}}, defaultCurveTexts},
        {{{{0, 0}, {1, 5}, {9, 9}, {10, 11}}},
         "[M5] | [m10001] | [m20101] | [m30901] | [m41002] | [M2] | [M5]"},
        {{{{25, 19}, {26, 20}, {27, 45}, {28, 60}}},
         "[M5] | [m12502] | [m22603] | [m32705] | [m42807] | [M2] | [M5]"},
        {{{{50, 79}, {51, 80}, {52, 85}, {53, 89}}},
         "[M5] | [m15008] | [m25109] | [m35209] | [m45309] | [M2] | [M5]"},
        {{{{60, 90}, {60, 95}, {60, 99}, {99, 100}}},
         "[M5] | [m16010] | [m26010] | [m36010] | [m49910] | [M2] | [M5]"},
        {{{{12, 101}, {34, 110}, {56, 200}, {78, 255}}},
         "[M5] | [m11210] | [m23410] | [m35610] | [m47810] | [M2] | [M5]"},
    };
    std::vector<std::function<void()>> all;
    for (const Row& row : rows) {
        all.emplace_back(SetsACurve<VoltgridModel>{row.curve, row.texts});
        all.emplace_back(SetsACurve<PsuCtrlModel>{row.curve, row.texts});
    }
    together(all);
}

/// A curve that cannot be gives way to the default one, which is written too.
template <class Model>
struct Repairs {
    std::array<const char*, 4> replies;
    void operator()() const
    {
        SupplyOf<Model> supply;
        setCurve(supply, replies);
        auto fan = filledFan<typename Model::Fan>();
        EXPECT_EQ(supply->getFan(fan), E_OK) << replies[0] << replies[1] << replies[2] << replies[3];
        EXPECT_EQ(fan.mode, 5);
        EXPECT_EQ(fan.speed, 0);
        EXPECT_EQ(pointsOf(fan), defaultCurve) << replies[0] << replies[1] << replies[2] << replies[3];
        EXPECT_EQ(supply.asked(), std::string(curveQuestions) + " | " + defaultCurveTexts);
    }
};

WAITING_TEST(PsuFan, replacesACurveThatCannotBe)
{
    std::vector<std::function<void()>> all;
    for (const std::array<const char*, 4>& replies : {
             std::array{"[m17102]", "[m24004]", "[m36006]", "[m45008]"}, // 71 degrees
             std::array{"[m13002]", "[m24004]", "[m36006]", "[m49908]"},
             std::array{"[m13011]", "[m24004]", "[m36006]", "[m47008]"}, // 110 percent
             std::array{"[m13002]", "[m24004]", "[m36006]", "[m47020]"}, // 190 percent
             std::array{"[m13002]", "[m24000]", "[m36006]", "[m47008]"}, // below 0
             std::array{"[m13002]", "[m23004]", "[m36006]", "[m47008]"}, // equal temperatures: 1 and 2
             std::array{"[m13002]", "[m24004]", "[m33006]", "[m47008]"}, // 1 and 3
             std::array{"[m13002]", "[m24004]", "[m36006]", "[m43008]"}, // 1 and 4
             std::array{"[m13002]", "[m24004]", "[m34006]", "[m47008]"}, // 2 and 3
             std::array{"[m13002]", "[m24004]", "[m36006]", "[m44008]"}, // 2 and 4
             std::array{"[m13002]", "[m24004]", "[m36006]", "[m46008]"}, // 3 and 4
         }) {
        all.emplace_back(Repairs<VoltgridModel>{replies});
        all.emplace_back(Repairs<PsuCtrlModel>{replies});
    }
    together(all);
}

/// A point that is not answered, or by the report of another.
template <class Model>
struct LacksAPoint {
    void operator()() const
    {
        SupplyOf<Model> supply;
        setCurve(supply, {"[m12502]", "[m33502]", "[m34502]", "[m45502]"});
        auto fan = filledFan<typename Model::Fan>();
        EXPECT_EQ(supply->getFan(fan), E_INVALID_GET);
        EXPECT_EQ(supply.asked(), "[MQ] | [Q1] | [Q2]");
    }
};

WAITING_TEST(PsuFan, stopsAtAPointThatDoesNotCome)
{
    both<LacksAPoint>();
}

/// A write that is not taken ends the sequence.
template <class Model>
struct StopsAtAStalledWrite {
    void operator()() const
    {
        SupplyOf<Model> supply;
        sim::setConduct(supply.path, {.writeTime = 60s});
        EXPECT_EQ(supply->setFan(fanOf<typename Model::Fan>(5, defaultCurve)), E_WRITE_TIMEOUT);
        sim::setConduct(supply.path, {});
        sim::releaseWrites(supply.path);
        EXPECT_EQ(supply.asked(1), "[M5]");
        // No flag is left behind.
        EXPECT_EQ(supply->setFan(fanOf<typename Model::Fan>(2)), E_OK);
        EXPECT_EQ(supply.asked(), "[M2]");
    }
};

WAITING_TEST(PsuFan, isNoLongerSetWhenAWriteFails)
{
    both<StopsAtAStalledWrite>();
}

TEST(PsuCtrlFan, logsThatAWriteFailed)
{
    SupplyOf<PsuCtrlModel> supply;
    sim::setConduct(supply.path, {.writeTime = 60s});
    const Lines lines =
        debugLinesOf([&] { EXPECT_EQ(supply->setFan(fanOf<PsuCtrlFan>(1)), E_WRITE_TIMEOUT); });
    EXPECT_EQ(lines, (Lines{hostLine<PsuCtrlModel>("setFan, #"),
                            ownLine<PsuCtrlModel>("setPsuCtrlDeviceFan,ret=E_INVALID_GET"),
                            hostLine<PsuCtrlModel>("setFan, ret = -12")}));
    sim::releaseWrites(supply.path);
}

} // namespace
} // namespace pyrux::test
