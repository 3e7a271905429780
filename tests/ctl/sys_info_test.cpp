// pyruxctl asks the real library for this computer, with a resident service that is made up.

#include "program.h"

#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"
#include "tools/resident/answers.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using namespace pyrux::test;

PipePeer::Script answers(pyrux::peer::Answers& from)
{
    return [&from](PipePeer::Client& client) {
        const std::string request = client.receive();
        if (!request.empty())
            client.send(from.to(request));
        client.receive(); // until it goes
    };
}

class SysInfoCommand : public testing::Test {
protected:
    Finished ask(const std::string& operation)
    {
        return program.run({"--simulate", "rd210", "--json", "sysInfo", operation});
    }

    OwnPipes pipes;
    Program program;
};

} // namespace

TEST_F(SysInfoCommand, tellsTheLoads)
{
    for (const char* operation : {"getCpuUsage", "getGpuUsage", "getRamUsage"}) {
        const Finished asked = ask(operation);
        EXPECT_EQ(asked.exit, 0) << operation;
        const Json percent = Json::parse(asked.out);
        EXPECT_GE(percent, 0) << operation;
        EXPECT_LE(percent, 100) << operation;
    }
}

TEST_F(SysInfoCommand, tellsTheNamesOfTheParts)
{
    const Finished asked = ask("getHardwareNames");
    EXPECT_EQ(asked.exit, 0);
    const Json names = Json::parse(asked.out);
    EXPECT_TRUE(names.contains("cpuName"));
    EXPECT_GE(names["ramCapacityGiB"], 0);
    EXPECT_EQ(names.size(), 7u);
}

TEST_F(SysInfoCommand, tellsWhatTheResidentServiceKnows)
{
    pyrux::peer::Answers service;
    service.temperatures = "41;52";
    service.cores = "3;5";
    const PipePeer peer("twldservicepipe", answers(service));
    EXPECT_EQ(ask("getSysCore").out, "{\"first\":3,\"second\":5}\n");
    const Json status = Json::parse(ask("awaitStatus").out);
    EXPECT_EQ(status["cpuTemp"], 41);
    EXPECT_EQ(status["gpuTemp"], 52);
    const Json details = Json::parse(ask("awaitDetails").out);
    EXPECT_EQ(details["field14"], 4);
    EXPECT_EQ(details.size(), 15u);
}

TEST_F(SysInfoCommand, tellsThatThereIsNoResidentService)
{
    const Finished asked = ask("getSysCore");
    EXPECT_EQ(asked.exit, 1);
    EXPECT_EQ(asked.err, "sysInfo getSysCore: -3 E_INVALID_GET\n");
}
