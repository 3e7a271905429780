// The services that sample the computer and ask the resident service.

#include "services/service_manager.h"

#include "tests/support/debug_log.h"
#include "tests/support/fake_clock.h"
#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <mutex>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using platform::ThreadMessage;
using platform::ThreadMessages;

using Requests = std::vector<std::string>;

/// A resident service whose reply can change.
class Resident {
public:
    explicit Resident(std::string first) : reply(std::move(first)) {}

    void say(std::string next)
    {
        const std::lock_guard lock(mutex);
        reply = std::move(next);
    }

    const PipePeer& pipe() const { return peer; }

private:
    std::mutex mutex;
    std::string reply;
    PipePeer peer{"twldservicepipe", [this](PipePeer::Client& client) {
                      if (client.receive().empty())
                          return;
                      {
                          const std::lock_guard lock(mutex);
                          client.send(reply);
                      }
                      client.receive(); // until it goes
                  }};
};

/// A service, whose time stands still, with the test's thread as its subscriber.
class Telemetry : public testing::Test {
protected:
    ~Telemetry() override { subscription.end(); }

    /// Makes the service and lets its first sample, which has no subscriber, pass.
    void subscribe(const char* name, std::uint32_t period)
    {
        ASSERT_EQ(manager.createService(name), 0);
        ASSERT_EQ(clock.settle(), period);
        subscription = manager.subscribe(name, platform::currentThreadId());
    }

    /// The messages of one period, up to the end of the sample after it.
    std::vector<ThreadMessage> after(std::uint32_t period)
    {
        clock.advance(period);
        EXPECT_EQ(clock.settle(), period);
        std::vector<ThreadMessage> all;
        while (const auto message = messages->wait(0ms))
            all.push_back(*message);
        return all;
    }

    Temperatures temperaturesAfter800ms()
    {
        const auto all = after(800);
        EXPECT_EQ(all.size(), 1u);
        if (all.size() != 1)
            return {-1000, -1000};
        EXPECT_EQ(all[0].number, 1032u);
        return payloadOf<MSG_TEMPERATURE>(all[0]);
    }

    SysDetailRecord recordAfter1000ms()
    {
        const auto all = after(1000);
        EXPECT_EQ(all.size(), 1u);
        if (all.size() != 1)
            return {};
        EXPECT_EQ(all[0].number, 1037u);
        return payloadOf<MSG_SYSTEM_INFO>(all[0]);
    }

    OwnPipes pipes;
    std::unique_ptr<ThreadMessages> messages = ThreadMessages::open();
    FakeClock clock;
    PYRUX_SERVICE manager{{clock, {10s, 10s}}};
    Subscription subscription;
};

void expectTemperatures(const Temperatures& got, std::int32_t cpu, std::int32_t gpu)
{
    EXPECT_EQ(got.cpu, cpu);
    EXPECT_EQ(got.gpu, gpu);
}

constexpr const char* fifteen = "0.5;1;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14";

} // namespace

TEST_F(Telemetry, tempAsksEvery800ms)
{
    Resident resident("45;60");
    subscribe("temp", 800);
    expectTemperatures(temperaturesAfter800ms(), 45, 60);
    resident.say("46;-5;1");
    expectTemperatures(temperaturesAfter800ms(), 46, -5);
    clock.advance(799);
    EXPECT_EQ(clock.settle(), 1u);
    EXPECT_FALSE(messages->wait(0ms));
    EXPECT_EQ(resident.pipe().requests(), (Requests{"temp", "temp", "temp"}));
}

TEST_F(Telemetry, tempTellsNothingAfterAFailedRequest)
{
    subscribe("temp", 800);
    EXPECT_EQ(after(800).size(), 0u);
    {
        Resident resident("x;60");
        EXPECT_EQ(after(800).size(), 0u);
        resident.say("45;60");
        expectTemperatures(temperaturesAfter800ms(), 45, 60);
    }
    EXPECT_EQ(after(800).size(), 0u);
}

TEST_F(Telemetry, tempTellsTheLastAgainAfterAReplyThatIsTooShort)
{
    Resident resident("45");
    subscribe("temp", 800);
    expectTemperatures(temperaturesAfter800ms(), 0, 0);
    resident.say("45;60");
    expectTemperatures(temperaturesAfter800ms(), 45, 60);
    resident.say("99");
    expectTemperatures(temperaturesAfter800ms(), 45, 60);
}

TEST_F(Telemetry, tempLogsTheCallThatItMakes)
{
    EXPECT_EQ(debugLinesOf([&] {
                  subscribe("temp", 800);
                  after(800);
              }),
              (Lines{"[PYRUX][SYS]PYRUX::getSysTemp, #", "[PYRUX][SYS]PYRUX::getSysTemp, #"}));
}

TEST_F(Telemetry, cpuusageTellsTheLoadEvery200ms)
{
    subscribe("cpuusage", 200);
    for (int i = 0; i < 3; ++i) {
        const auto all = after(200);
        ASSERT_EQ(all.size(), 1u);
        EXPECT_EQ(all[0].number, 1035u);
        EXPECT_GE(payloadOf<MSG_CPU_USAGE>(all[0]), 0);
        EXPECT_LE(payloadOf<MSG_CPU_USAGE>(all[0]), 100);
    }
    clock.advance(199);
    EXPECT_EQ(clock.settle(), 1u);
    EXPECT_FALSE(messages->wait(0ms));
}

TEST_F(Telemetry, systeminfoAsksEvery1000ms)
{
    Resident resident(fifteen);
    subscribe("systeminfo", 1000);
    const SysDetailRecord record = recordAfter1000ms();
    EXPECT_EQ(record.field0, 0.5F);
    EXPECT_EQ(record.field7, 7.5F);
    EXPECT_EQ(record.field14, 14);
    clock.advance(999);
    EXPECT_EQ(clock.settle(), 1u);
    EXPECT_FALSE(messages->wait(0ms));
    EXPECT_EQ(resident.pipe().requests(), (Requests{"getsysinfo", "getsysinfo"}));
}

TEST_F(Telemetry, systeminfoTellsTheLastRecordAfterAFailedRequest)
{
    subscribe("systeminfo", 1000);
    EXPECT_EQ(recordAfter1000ms().field14, 0);
    {
        Resident resident(fifteen);
        EXPECT_EQ(recordAfter1000ms().field14, 14);
        resident.say("0.5;1;2.5;3;4;5.5;6;7.5;8;9;10;11;12;99"); // fourteen
        EXPECT_EQ(recordAfter1000ms().field13, 13);
    }
    EXPECT_EQ(recordAfter1000ms().field14, 14);
}

TEST_F(Telemetry, systeminfoLogsAFieldThatIsNoNumber)
{
    Resident resident(fifteen);
    subscribe("systeminfo", 1000);
    EXPECT_EQ(debugLinesOf([&] {
                  resident.say("x;21;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14");
                  EXPECT_EQ(recordAfter1000ms().field1, 1);
                  resident.say("0.5;2147483648;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14");
                  EXPECT_EQ(recordAfter1000ms().field1, 1);
                  resident.say("0.5;7;2.5;3;4;5.5;6;7.5;8;9;10;11;12;13;14");
                  EXPECT_EQ(recordAfter1000ms().field1, 7);
              }),
              (Lines{"[PYRUX][SYS]invalid stof argument", "[PYRUX][SYS]stoi argument out of range"}));
}

TEST_F(Telemetry, systeminfoReadsItsRecordFromTheLastPieceOfALongReply)
{
    // 127 bytes fill a piece; the record stands after them.
    Resident resident(std::string(127, 'x') + fifteen);
    subscribe("systeminfo", 1000);
    EXPECT_EQ(recordAfter1000ms().field14, 14);
}
