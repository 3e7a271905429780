// The power supplies: rail mode, version, and replies that are none.

#include "tests/support/debug_log.h"
#include "tests/support/supply.h"
#include "tests/support/waiting_test.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

namespace pyrux::test {
namespace {

using namespace std::chrono_literals;

template <class Model>
class PsuSettings : public testing::Test {
protected:
    /// The version, as "family major minor", or the result.
    std::string version()
    {
        std::array<std::uint8_t, 3> values{0xEE, 0xEE, 0xEE};
        const _error result = supply->getVersion(&values[0], &values[1], &values[2]);
        if (result != E_OK)
            return std::to_string(result);
        return std::to_string(values[0]) + " " + std::to_string(values[1]) + " " + std::to_string(values[2]);
    }

    SupplyOf<Model> supply;
};
TYPED_TEST_SUITE(PsuSettings, SupplyModels, ModelName);

TYPED_TEST(PsuSettings, tellTheRailMode)
{
    struct Row {
        const char* reply;
        int mode;
    };
    for (const Row& row :
         {Row{"[O1]", 1}, Row{"[O2]", 2}, Row{"[O3]", 3},
          // malformed ones count as mode 1
          Row{"[Ox]", 1}, Row{"[O3", 1}, Row{"[O3)", 1}, Row{"[O]", 1}, Row{"[O", 1}, Row{"[O:]", 1}}) {
        this->supply.answer("[OQ]", row.reply);
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(this->supply->getMultiRail(&mode), E_OK) << row.reply;
        EXPECT_EQ(mode, row.mode) << row.reply;
        EXPECT_EQ(this->supply.asked(), "[OQ]");
    }
}

TYPED_TEST(PsuSettings, takeThreeRailModes)
{
    for (const std::uint8_t mode : {1, 2, 3}) {
        EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->supply->setMultiRail(mode), E_OK); }),
                  900); // no reply is waited for
        EXPECT_EQ(this->supply.asked(), "[O" + std::to_string(mode) + "]");
    }
    for (const int mode : {0, 4, 5, 9, 127, 128, 255}) {
        EXPECT_EQ(this->supply->setMultiRail(std::uint8_t(mode)), E_INVALID_MODE) << mode;
        EXPECT_EQ(this->supply.asked(), "") << mode;
    }
}

TYPED_TEST(PsuSettings, tellTheVersion)
{
    struct Row {
        const char* reply;
        const char* version;
    };
    for (const Row& row :
         {Row{"C1.2", "0 1 2"}, Row{"C0.0", "0 0 0"}, Row{"C9.8", "0 9 8"}, Row{"C12.34", "0 12 34"},
          Row{"C01.02", "0 1 2"}, Row{"C99.99", "0 99 99"}, Row{"C10.05", "0 10 5"}}) {
        this->supply.answer("[SQ]", row.reply);
        EXPECT_EQ(this->version(), row.version) << row.reply;
        EXPECT_EQ(this->supply.asked(), "[SQ]");
    }
}

TYPED_TEST(PsuSettings, sendNothingAtTheEnd)
{
    EXPECT_LT(milliseconds([&] { EXPECT_EQ(this->supply->exit_device(0), E_OK); }), 5000);
    EXPECT_EQ(this->supply.asked(), "");
}

TYPED_TEST(PsuSettings, areRefusedByAClosedObject)
{
    this->supply->exit_device(1);
    std::uint8_t value = 7;
    EXPECT_EQ(this->supply->getMultiRail(&value), E_CLOSED);
    EXPECT_EQ(this->supply->setMultiRail(9), E_CLOSED);
    EXPECT_EQ(this->supply->getVersion(&value, &value, &value), E_CLOSED);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(this->supply.asked(), "");
}

/// Runs a scenario for both classes at once.
template <template <class> class Scenario>
void both()
{
    together({Scenario<VoltgridModel>{}, Scenario<PsuCtrlModel>{}});
}

/// A version of the other family is found by asking again.
template <class Model>
struct AsksAgain {
    void operator()() const
    {
        SupplyOf<Model> supply;
        std::uint8_t family = 0xEE, major = 0xEE, minor = 0xEE;
        for (const char* reply : {"F3.4", "F12.34"}) {
            supply.answer("[SQ]", reply);
            const auto time =
                milliseconds([&] { EXPECT_EQ(supply->getVersion(&family, &major, &minor), E_OK); });
            EXPECT_GE(time, 1000);
            EXPECT_EQ(family, 1);
            EXPECT_EQ(major, reply[1] == '3' ? 3 : 12);
            EXPECT_EQ(minor, reply[1] == '3' ? 4 : 34);
            EXPECT_EQ(supply.asked(), "[SQ] | [SQ]");
        }
    }
};

WAITING_TEST(PsuVersion, isOfTheOtherFamilyWhenTheFirstDoesNotAnswer)
{
    both<AsksAgain>();
}

/// No version at all, and some that are none.
template <class Model>
struct HasNoVersion {
    void operator()() const
    {
        std::vector<std::function<void()>> all;
        for (const char* reply :
             {"", "[SQ]", "G1.2", "[C1.2]", "Cx.2", "C1.x", "C12", "C.", "C", "Fx.2", "F1.x", "F12"})
            all.emplace_back([reply] {
                SupplyOf<Model> supply;
                supply.answer("[SQ]", reply);
                std::uint8_t family = 0xEE, major = 0xEE, minor = 0xEE;
                EXPECT_EQ(supply->getVersion(&family, &major, &minor), E_INVALID_GET) << reply;
                EXPECT_EQ(family, 0xEE) << reply;
                EXPECT_EQ(major, 0xEE) << reply;
                EXPECT_EQ(minor, 0xEE) << reply;
            });
        together(all);
    }
};

WAITING_TEST(PsuVersion, isRefusedWhenThereIsNone)
{
    both<HasNoVersion>();
}

/// What comes is no reply to the question.
template <class Model>
struct HearsSomethingElse {
    void operator()() const
    {
        std::vector<std::function<void()>> all;
        for (const char* reply : {"", "[M3]", "[V1230.5]", "O3]", "[o3]", "[m3]", "[Q3]", "(O3]"})
            all.emplace_back([reply] {
                SupplyOf<Model> supply;
                supply.answer("[OQ]", reply);
                std::uint8_t mode = 0xEE;
                const auto time =
                    milliseconds([&] { EXPECT_EQ(supply->getMultiRail(&mode), E_INVALID_GET); });
                EXPECT_GE(time, 1000) << reply;
                EXPECT_EQ(mode, 0xEE) << reply;
                EXPECT_EQ(supply.asked(), "[OQ]");
            });
        together(all);
    }
};

WAITING_TEST(PsuReplies, forSomethingElseAreNotTaken)
{
    both<HearsSomethingElse>();
}

template <class Model>
struct HearsNoise {
    void operator()() const
    {
        SupplyOf<Model> supply;
        sim::setConduct(supply.path, {.garbage = true});
        std::uint8_t mode = 0xEE, family = 0xEE;
        EXPECT_EQ(supply->getMultiRail(&mode), E_INVALID_GET);
        EXPECT_EQ(supply->getVersion(&family, &family, &family), E_INVALID_GET);
        typename Model::Fan fan{};
        EXPECT_EQ(supply->getFan(fan), E_INVALID_GET);
        EXPECT_EQ(mode, 0xEE);
        EXPECT_EQ(family, 0xEE);
    }
};

WAITING_TEST(PsuReplies, thatAreNoiseAreNotTaken)
{
    both<HearsNoise>();
}

template <class Model>
struct HearsTooLate {
    void operator()() const
    {
        SupplyOf<Model> supply;
        supply.answer("[OQ]", "[O3]");
        sim::setConduct(supply.path, {.replyTime = 1500ms});
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(supply->getMultiRail(&mode), E_INVALID_GET);
        EXPECT_EQ(mode, 0xEE);
        // The reply comes to nobody, and the next question has its own.
        const std::vector<sim::WireRecord> traffic = sim::takeTraffic(supply.path, 2);
        ASSERT_EQ(traffic.size(), 2U);
        EXPECT_EQ(traffic[1].direction, sim::WireRecord::Direction::toHost);
        sim::setConduct(supply.path, {});
        supply.answer("[MQ]", "[M2]");
        typename Model::Fan fan{};
        EXPECT_EQ(supply->getFan(fan), E_OK);
        supply.answer("[OQ]", "[O2]");
        EXPECT_EQ(supply->getMultiRail(&mode), E_OK);
        EXPECT_EQ(mode, 2);
    }
};

WAITING_TEST(PsuReplies, thatComeTooLateAreNotTaken)
{
    both<HearsTooLate>();
}

TYPED_TEST(PsuSettings, standTwiceTheSameReply)
{
    this->supply.device->answer(ascii("[OQ]"), ascii("[O3]") + " | " + ascii("[O3]"));
    this->supply.answer("[SQ]", "C1.2");
    for (int i = 0; i < 50; ++i) {
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(this->supply->getMultiRail(&mode), E_OK);
        EXPECT_EQ(mode, 3);
        EXPECT_EQ(this->version(), "0 1 2");
    }
}

TYPED_TEST(PsuSettings, areToldWhileMeasurementsPour)
{
    this->supply.device->answer(ascii("[OQ]"),
                                ascii("[V1230.5]") + " | " + ascii("[O2]") + " | " + ascii("[I1001.0]"));
    std::uint8_t mode = 0xEE;
    EXPECT_EQ(this->supply->getMultiRail(&mode), E_OK);
    EXPECT_EQ(mode, 2);
}

/// Questions of several threads find their own replies.
TYPED_TEST(PsuSettings, areToldToSeveralAtOnce)
{
    this->supply.answer("[MQ]", "[M4]");
    this->supply.answer("[OQ]", "[O3]");
    std::thread other([&] {
        for (int i = 0; i < 200; ++i) {
            typename TypeParam::Fan fan{};
            EXPECT_EQ(this->supply->getFan(fan), E_OK);
            EXPECT_EQ(fan.mode, 4);
        }
    });
    for (int i = 0; i < 200; ++i) {
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(this->supply->getMultiRail(&mode), E_OK);
        EXPECT_EQ(mode, 3);
    }
    other.join();
}

/// Deliberately so: the count of equal bytes goes on from one waiting question to the next, so that a report
/// which shares one byte with each of two satisfies the second.
TYPED_TEST(PsuSettings, mayBeSatisfiedByAReportThatFitsHalfOfTwoQuestions)
{
    this->supply.answer("[MQ]", "");
    this->supply.answer("[OQ]", "");
    typename TypeParam::Fan fan{};
    std::thread first([&] { EXPECT_EQ(this->supply->getFan(fan), E_OK); });
    EXPECT_TRUE(this->supply.device->awaitCommands(ascii("[MQ]")));
    std::uint8_t mode = 0xEE;
    std::thread second([&] { EXPECT_EQ(this->supply->getMultiRail(&mode), E_OK); });
    EXPECT_TRUE(this->supply.device->awaitCommands(ascii("[OQ]")));
    this->supply.device->send(ascii("[V1230.5]"));
    second.join();
    EXPECT_EQ(mode, 1); // a malformed reply
    this->supply.device->send(ascii("[M2]"));
    first.join();
    EXPECT_EQ(fan.mode, 2);
    PsuInput input{};
    EXPECT_EQ(this->supply->getInput(input), E_OK);
    EXPECT_EQ(input.voltage, 0.0F); // the report was taken as the reply
}

template <class Model>
struct Stalls {
    void operator()() const
    {
        SupplyOf<Model> supply;
        sim::setConduct(supply.path, {.writeTime = 60s});
        EXPECT_EQ(supply->setMultiRail(2), E_WRITE_TIMEOUT);
        sim::releaseWrites(supply.path);
    }
};

WAITING_TEST(PsuStalled, tellsOfReportsThatAreNotTaken)
{
    both<Stalls>();
}

template <class Model>
struct IsPulledOut {
    void operator()() const
    {
        SupplyOf<Model> supply;
        supply.answer("[OQ]", "");
        std::thread waiting([&] {
            std::uint8_t mode = 0xEE;
            const _error result = supply->getMultiRail(&mode);
            EXPECT_TRUE(result == E_NOT_OPEN || result == E_CLOSED) << result;
        });
        supply.device->awaitCommands(ascii("[OQ]"));
        sim::unplug(supply.path);
        EXPECT_LT(milliseconds([&] { EXPECT_EQ(supply->exit_device(1), E_OK); }), 5000);
        waiting.join();
        std::uint8_t mode = 0xEE;
        EXPECT_EQ(supply->getMultiRail(&mode), E_CLOSED);
    }
};

WAITING_TEST(PsuPulledOut, letsWaitingCallsGo)
{
    both<IsPulledOut>();
}

} // namespace
} // namespace pyrux::test
