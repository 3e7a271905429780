#include "services/resident_service.h"

#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;

using Requests = std::vector<std::string>;

constexpr const char* pipeName = "twldservicepipe";
constexpr PipeLimits patient{10s, 10s};
constexpr PipeLimits hasty{200ms, 200ms};

class ResidentService : public testing::Test {
protected:
    /// Asks for the temperatures; the outputs are 11 and 22 before.
    _error temperatures(const std::string& reply)
    {
        const PipePeer peer(pipeName, answering(reply));
        first = 11;
        second = 22;
        return resident::temperatures(&first, &second, patient);
    }

    /// Asks for the version; the output is 1.5 before.
    _error version(const std::string& reply)
    {
        const PipePeer peer(pipeName, answering(reply));
        value = 1.5F;
        return resident::version(&value, patient);
    }

    void expectUnchanged() const
    {
        EXPECT_EQ(first, 11);
        EXPECT_EQ(second, 22);
    }

    OwnPipes pipes;
    std::int32_t first = 11;
    std::int32_t second = 22;
    float value = 1.5F;
};

} // namespace

TEST_F(ResidentService, asksForTheTemperatures)
{
    const PipePeer peer(pipeName, answering("45;-60"));
    EXPECT_EQ(resident::temperatures(&first, &second, patient), 0);
    EXPECT_EQ(first, 45);
    EXPECT_EQ(second, -60);
    EXPECT_EQ(peer.requests(), Requests{"temp"});
}

TEST_F(ResidentService, asksForTheCoreCounts)
{
    const PipePeer peer(pipeName, answering("8;16"));
    EXPECT_EQ(resident::coreCounts(&first, &second, patient), 0);
    EXPECT_EQ(first, 8);
    EXPECT_EQ(second, 16);
    EXPECT_EQ(peer.requests(), Requests{"getcorenum"});
}

TEST_F(ResidentService, asksForTheVersion)
{
    const PipePeer peer(pipeName, answering("2.25"));
    EXPECT_EQ(resident::version(&value, patient), 0);
    EXPECT_EQ(value, 2.25F);
    EXPECT_EQ(peer.requests(), Requests{"version"});
}

TEST_F(ResidentService, controlsTheSimulatedTemperature)
{
    const PipePeer peer(pipeName, answering("anything"));
    EXPECT_EQ(resident::enableFakeTemperature(patient), 0);
    EXPECT_EQ(resident::stepFakeTemperature(patient), 0);
    EXPECT_EQ(peer.requests(), (Requests{"fake_temp", "fake_step"}));
}

TEST_F(ResidentService, takesTheFirstTwoFields)
{
    EXPECT_EQ(temperatures("1;2;3"), 0);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(temperatures("3;4;x;"), 0);
    EXPECT_EQ(first, 3);
    EXPECT_EQ(second, 4);
}

TEST_F(ResidentService, readsTheNumberThatAFieldBeginsWith)
{
    EXPECT_EQ(temperatures(" 45 C;+60.9"), 0);
    EXPECT_EQ(first, 45);
    EXPECT_EQ(second, 60);
    EXPECT_EQ(temperatures("2147483647;-2147483648"), 0);
    EXPECT_EQ(first, 2147483647);
    EXPECT_EQ(second, -2147483647 - 1);
}

TEST_F(ResidentService, fewerThanTwoFieldsChangeNothing)
{
    for (const char* reply : {"45", "45;", ";", "", "nothing"}) {
        EXPECT_EQ(temperatures(reply), 0) << reply;
        expectUnchanged();
    }
}

TEST_F(ResidentService, aFieldThatIsNoNumberChangesNothing)
{
    for (const char* reply :
         {"x;60", "45;x", ";60", "45;;", "45; ", "- 5;1", "+-5;1", "2147483648;1", "1;-2147483649"}) {
        EXPECT_EQ(temperatures(reply), -3) << reply;
        expectUnchanged();
    }
}

TEST_F(ResidentService, aVersionThatIsNoNumberChangesNothing)
{
    for (const char* reply : {"", "v2", ".", "-", "1e99"}) {
        EXPECT_EQ(version(reply), -3) << reply;
        EXPECT_EQ(value, 1.5F);
    }
    EXPECT_EQ(version(" 3.5 beta"), 0);
    EXPECT_EQ(value, 3.5F);
}

TEST_F(ResidentService, aNullPointerSendsNothing)
{
    const PipePeer peer(pipeName, answering("1;2"));
    EXPECT_EQ(resident::temperatures(nullptr, &second, patient), -3);
    EXPECT_EQ(resident::temperatures(&first, nullptr, patient), -3);
    EXPECT_EQ(resident::coreCounts(nullptr, &second, patient), -3);
    EXPECT_EQ(resident::coreCounts(&first, nullptr, patient), -3);
    EXPECT_EQ(resident::version(nullptr, patient), -3);
    EXPECT_FALSE(peer.hasServed(1, 50ms));
    EXPECT_EQ(peer.requests(), Requests{});
    expectUnchanged();
}

TEST_F(ResidentService, aMissingServiceGivesMinus3)
{
    EXPECT_EQ(resident::temperatures(&first, &second, patient), -3);
    EXPECT_EQ(resident::coreCounts(&first, &second, patient), -3);
    EXPECT_EQ(resident::version(&value, patient), -3);
    EXPECT_EQ(resident::enableFakeTemperature(patient), -3);
    EXPECT_EQ(resident::stepFakeTemperature(patient), -3);
    expectUnchanged();
    EXPECT_EQ(value, 1.5F);
}

TEST_F(ResidentService, aSilentServiceGivesMinus7)
{
    const PipePeer peer(pipeName, silent());
    EXPECT_EQ(resident::temperatures(&first, &second, hasty), -7);
    EXPECT_EQ(resident::version(&value, hasty), -7);
    EXPECT_EQ(resident::enableFakeTemperature(hasty), -7);
    expectUnchanged();
}
