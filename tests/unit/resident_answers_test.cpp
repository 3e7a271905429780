// The stand-in of the resident service.

#include "tools/resident/answers.h"

#include "services/resident_service.h"
#include "services/system_record.h"
#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

namespace pyrux::test {
namespace {

TEST(ResidentAnswers, areWhatTheLibraryReads)
{
    peer::Answers answers;
    const OwnPipes pipes;
    const PipePeer service("twldservicepipe", [&](PipePeer::Client& client) {
        client.send(answers.to(client.receive()));
        client.receive();
    });
    std::int32_t first = 0;
    std::int32_t second = 0;
    float version = 0;
    EXPECT_EQ(resident::temperatures(&first, &second), 0);
    EXPECT_EQ(first, 45);
    EXPECT_EQ(second, 60);
    EXPECT_EQ(resident::coreCounts(&first, &second), 0);
    EXPECT_EQ(first, 8);
    EXPECT_EQ(second, 16);
    EXPECT_EQ(resident::version(&version), 0);
    EXPECT_EQ(version, 3.86F);
    std::string text = "getsysinfo";
    EXPECT_EQ(TW_SERVICE().queryDeskService(text), 0);
    SysDetailRecord record{};
    EXPECT_EQ(readSystemRecord(text, record), "");
    EXPECT_EQ(record.field0, 3.6F);
    EXPECT_EQ(record.field14, 4);
    EXPECT_EQ(TW_SERVICE().sendToDeskService(R"({"func":"f","mod":"m","param":{}})"), 0);
}

TEST(ResidentAnswers, simulateTemperatures)
{
    peer::Answers answers;
    EXPECT_EQ(answers.to("fake_step"), "TW_OK"); // nothing without the first
    EXPECT_EQ(answers.to("temp"), "45;60");
    EXPECT_EQ(answers.to("fake_temp"), "TW_OK");
    EXPECT_EQ(answers.to("temp"), "30;30");
    EXPECT_EQ(answers.to("fake_step"), "TW_OK");
    EXPECT_EQ(answers.to("temp"), "35;35");
    for (int i = 0; i < 13; ++i)
        answers.to("fake_step");
    EXPECT_EQ(answers.to("temp"), "100;100");
    answers.to("fake_step");
    EXPECT_EQ(answers.to("temp"), "30;30");
}

} // namespace
} // namespace pyrux::test
