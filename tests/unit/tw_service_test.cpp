#include "services/tw_service.h"

#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <future>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace pyrux;
using namespace pyrux::test;
using Clock = std::chrono::steady_clock;

using Requests = std::vector<std::string>;

constexpr PipeLimits patient{10s, 10s};
constexpr PipeLimits hasty{200ms, 200ms};

struct Command {
    const char* name;
    const char* pipe;
    _error (TW_SERVICE::*send)(std::string_view);
};

struct Query {
    const char* name;
    const char* pipe;
    _error (TW_SERVICE::*ask)(std::string&);
};

constexpr Command commands[]{
    {"sendToService", "twservicepipe", &TW_SERVICE::sendToService},
    {"sendToDeskService", "twldservicepipe", &TW_SERVICE::sendToDeskService},
    {"sendToControlApp", "twironwoodpipe", &TW_SERVICE::sendToControlApp},
};

constexpr Query queries[]{
    {"queryService", "twservicepipe", &TW_SERVICE::queryService},
    {"queryDeskService", "twldservicepipe", &TW_SERVICE::queryDeskService},
};

class TwServiceCommand : public testing::TestWithParam<Command> {
protected:
    _error send(std::string_view text, PipeLimits limits = patient)
    {
        return (TW_SERVICE(limits).*GetParam().send)(text);
    }
    _error resultOf(const std::string& reply)
    {
        const PipePeer peer(GetParam().pipe, answering(reply));
        return send("request");
    }

    OwnPipes pipes;
};

class TwServiceQuery : public testing::TestWithParam<Query> {
protected:
    _error ask(std::string& text, PipeLimits limits = patient)
    {
        return (TW_SERVICE(limits).*GetParam().ask)(text);
    }

    /// The text after a query with this reply.
    std::string textOf(const std::string& reply)
    {
        const PipePeer peer(GetParam().pipe, answering(reply));
        std::string text = "request";
        EXPECT_EQ(ask(text), 0);
        return text;
    }

    OwnPipes pipes;
};

std::string row(int length, char first = 'a')
{
    std::string text;
    for (int i = 0; i < length; ++i)
        text += static_cast<char>(first + i % 23);
    return text;
}

/// 600 bytes that are acknowledged in each of the three pieces of 256, 256 and 88 bytes.
std::string threePieces()
{
    std::string reply(600, 'x');
    for (const std::size_t start : {0, 256, 512})
        reply.replace(start, 5, "TW_OK");
    return reply;
}

std::string nameOf(const auto& info)
{
    return info.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(All, TwServiceCommand, testing::ValuesIn(commands),
                         nameOf<testing::TestParamInfo<Command>>);
INSTANTIATE_TEST_SUITE_P(All, TwServiceQuery, testing::ValuesIn(queries),
                         nameOf<testing::TestParamInfo<Query>>);

TEST_P(TwServiceCommand, sendsItsTextAsItStands)
{
    const PipePeer peer(GetParam().pipe, answering("TW_OK"));
    EXPECT_EQ(send("app_control_on"), 0);
    EXPECT_EQ(peer.requests(), Requests{"app_control_on"});
}

TEST_P(TwServiceCommand, takesAnythingBehindTheAcknowledgement)
{
    EXPECT_EQ(resultOf("TW_OK"), 0);
    EXPECT_EQ(resultOf("TW_OK and more"), 0);
    EXPECT_EQ(resultOf(std::string("TW_OK\0", 6)), 0);
}

TEST_P(TwServiceCommand, anyOtherReplyIsAFailure)
{
    for (const char* reply : {"TW_O", "TW_FAIL", "tw_ok", " TW_OK", "OK", ""})
        EXPECT_EQ(resultOf(reply), -7) << reply;
}

TEST_P(TwServiceCommand, eachPieceOf256BytesIsAcknowledged)
{
    const std::string full = "TW_OK" + row(251);
    EXPECT_EQ(resultOf(full), 0);
    EXPECT_EQ(resultOf(full + "T"), -7) << "257 bytes: a second piece of one byte";
    EXPECT_EQ(resultOf(full + "TW_O"), -7);
    EXPECT_EQ(resultOf(full + "TW_OK"), 0);
    EXPECT_EQ(resultOf(threePieces()), 0);
}

TEST_P(TwServiceCommand, aLaterPieceWithoutAcknowledgementIsAFailure)
{
    EXPECT_EQ(resultOf(threePieces().replace(256, 1, "t")), -7);
    EXPECT_EQ(resultOf(threePieces().replace(260, 1, "k")), -7);
    EXPECT_EQ(resultOf(threePieces().replace(512, 1, "t")), -7);
}

TEST_P(TwServiceCommand, aMissingPipeFailsAtOnce)
{
    const auto start = Clock::now();
    EXPECT_EQ(send("text"), -7);
    EXPECT_LT(Clock::now() - start, 2s);
}

TEST_P(TwServiceCommand, aBusyPipeIsWaitedForUpToTheLimit)
{
    PipePeer peer(GetParam().pipe, answering("TW_OK"), PipePeer::Start::busy);
    const auto start = Clock::now();
    EXPECT_EQ(send("text", {200ms, 10s}), -7);
    EXPECT_GE(Clock::now() - start, 180ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(peer.requests(), Requests{});
}

TEST_P(TwServiceCommand, aBusyPipeThatBecomesFreeServes)
{
    PipePeer peer(GetParam().pipe, answering("TW_OK"), PipePeer::Start::busy);
    auto result = std::async(std::launch::async, [&] { return send("text"); });
    EXPECT_EQ(result.wait_for(100ms), std::future_status::timeout);
    peer.becomeFree();
    EXPECT_EQ(result.get(), 0);
    EXPECT_EQ(peer.requests(), Requests{"text"});
}

TEST_P(TwServiceCommand, aSilentPeerIsGivenTheLimit)
{
    const PipePeer peer(GetParam().pipe, silent());
    const auto start = Clock::now();
    EXPECT_EQ(send("text", {10s, 200ms}), -7);
    EXPECT_GE(Clock::now() - start, 180ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(peer.requests(), Requests{"text"});
}

TEST_P(TwServiceCommand, aPeerThatLeavesIsAFailureAtOnce)
{
    const PipePeer peer(GetParam().pipe, takingAndLeaving());
    const auto start = Clock::now();
    EXPECT_EQ(send("text"), -7);
    EXPECT_LT(Clock::now() - start, 5s);
}

TEST_P(TwServiceCommand, theConnectionStaysOpenAsLongAsTheObject)
{
    const PipePeer peer(GetParam().pipe, answering("TW_OK"));
    {
        TW_SERVICE service(patient);
        EXPECT_EQ((service.*GetParam().send)("text"), 0);
        EXPECT_FALSE(peer.hasServed(1, 50ms));
    }
    EXPECT_TRUE(peer.hasServed(1, 10s));
}

TEST_P(TwServiceCommand, anObjectServesAgain)
{
    const PipePeer peer(GetParam().pipe, answering("TW_OK"));
    TW_SERVICE service(patient);
    EXPECT_EQ((service.*GetParam().send)("one"), 0);
    EXPECT_EQ((service.*GetParam().send)("two"), 0);
    EXPECT_EQ(peer.requests(), (Requests{"one", "two"}));
}

TEST_P(TwServiceQuery, replacesTheTextByTheReply)
{
    const PipePeer peer(GetParam().pipe, answering("45;60"));
    std::string text = "temp";
    EXPECT_EQ(ask(text), 0);
    EXPECT_EQ(text, "45;60");
    EXPECT_EQ(peer.requests(), Requests{"temp"});
}

TEST_P(TwServiceQuery, aReplyOf127BytesArrivesWhole)
{
    EXPECT_EQ(textOf(row(127)), row(127));
}

TEST_P(TwServiceQuery, aLongerReplyLeavesItsLastPiece)
{
    EXPECT_EQ(textOf(row(127) + "Z"), "Z");
    EXPECT_EQ(textOf(row(127) + row(127, 'A')), row(127, 'A'));
    EXPECT_EQ(textOf(row(127) + row(127) + row(46, 'A')), row(46, 'A'));
    EXPECT_EQ(textOf(std::string(508, 'x') + row(92, 'A')), row(92, 'A'));
}

TEST_P(TwServiceQuery, aReplyEndsAtItsNul)
{
    EXPECT_EQ(textOf(std::string("3.5\0junk", 8)), "3.5");
}

TEST_P(TwServiceQuery, anEmptyReplyEmptiesTheText)
{
    EXPECT_EQ(textOf(""), "");
}

TEST_P(TwServiceQuery, aMissingPipeFailsAtOnceAndLeavesTheText)
{
    std::string text = "temp";
    const auto start = Clock::now();
    EXPECT_EQ(ask(text), -3);
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(text, "temp");
}

TEST_P(TwServiceQuery, aBusyPipeIsWaitedForUpToTheLimit)
{
    PipePeer peer(GetParam().pipe, answering("1;2"), PipePeer::Start::busy);
    std::string text = "temp";
    const auto start = Clock::now();
    EXPECT_EQ(ask(text, {200ms, 10s}), -3);
    EXPECT_GE(Clock::now() - start, 180ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(text, "temp");
    EXPECT_EQ(peer.requests(), Requests{});
}

TEST_P(TwServiceQuery, aSilentPeerIsGivenTheLimit)
{
    const PipePeer peer(GetParam().pipe, silent());
    std::string text = "temp";
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(ask(text, {10s, 200ms}), -7);
    EXPECT_GE(Clock::now() - start, 180ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error read \n");
    EXPECT_EQ(text, "temp");
}

TEST_P(TwServiceQuery, aPeerThatLeavesIsAFailureAtOnce)
{
    const PipePeer peer(GetParam().pipe, takingAndLeaving());
    std::string text = "temp";
    testing::internal::CaptureStdout();
    const auto start = Clock::now();
    EXPECT_EQ(ask(text), -7);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "error read \n");
    EXPECT_EQ(text, "temp");
}

TEST_P(TwServiceQuery, anObjectServesAgain)
{
    const PipePeer peer(GetParam().pipe, answering("reply"));
    TW_SERVICE service(patient);
    for (std::string text : {"one", "two"}) {
        EXPECT_EQ((service.*GetParam().ask)(text), 0);
        EXPECT_EQ(text, "reply");
    }
    EXPECT_EQ(peer.requests(), (Requests{"one", "two"}));
}

class TwService : public testing::Test {
protected:
    OwnPipes pipes;
};

TEST_F(TwService, queryServiceLeavesItsConnectionOpen)
{
    const PipePeer peer("twservicepipe", answering("reply"));
    {
        TW_SERVICE service(patient);
        std::string text = "status";
        EXPECT_EQ(service.queryService(text), 0);
        EXPECT_FALSE(peer.hasServed(1, 50ms));
    }
    EXPECT_TRUE(peer.hasServed(1, 10s));
}

TEST_F(TwService, queryDeskServiceClosesItsConnection)
{
    const PipePeer peer("twldservicepipe", answering("reply"));
    TW_SERVICE service(patient);
    std::string text = "temp";
    EXPECT_EQ(service.queryDeskService(text), 0);
    EXPECT_TRUE(peer.hasServed(1, 10s));
}

TEST_F(TwService, clientsThatComeAtOnceAreAllServed)
{
    const PipePeer peer("twldservicepipe", answering("reply"));
    std::vector<std::future<int>> clients;
    for (int i = 0; i < 4; ++i)
        clients.push_back(std::async(std::launch::async, [] {
            int served = 0;
            for (int request = 0; request < 25; ++request) {
                std::string text = "temp";
                served += TW_SERVICE(patient).queryDeskService(text) == E_OK && text == "reply";
            }
            return served;
        }));
    for (auto& client : clients)
        EXPECT_EQ(client.get(), 25);
    EXPECT_TRUE(peer.hasServed(100, 10s));
}

TEST_F(TwService, waits3000MsForABusyPipeAndAgainForAReply)
{
    EXPECT_EQ(PipeLimits{}.free, 3000ms);
    EXPECT_EQ(PipeLimits{}.reply, 3000ms);
    TW_SERVICE service;
    std::string text = "temp";
    {
        PipePeer peer("twldservicepipe", silent(), PipePeer::Start::busy);
        const auto start = Clock::now();
        EXPECT_EQ(service.queryDeskService(text), -3);
        EXPECT_GE(Clock::now() - start, 2950ms);
        EXPECT_LT(Clock::now() - start, 4s);
    }
    const PipePeer peer("twldservicepipe", silent());
    const auto start = Clock::now();
    EXPECT_EQ(service.sendToDeskService(text), -7);
    EXPECT_GE(Clock::now() - start, 2950ms);
    EXPECT_LT(Clock::now() - start, 4s);
}
