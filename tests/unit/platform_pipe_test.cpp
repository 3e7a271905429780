#include "platform/pipe.h"

#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <array>
#include <future>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using namespace pyrux::platform;
using namespace pyrux::test;
using Clock = std::chrono::steady_clock;

constexpr auto longLimit = 10s;
constexpr auto shortLimit = 200ms;
constexpr const char* name = "pyrux-test-pipe";

class PlatformPipe : public testing::Test {
protected:
    OwnPipes pipes;
};

std::unique_ptr<PipeClient> connected()
{
    auto connection = PipeClient::connect(name, longLimit);
    EXPECT_TRUE(connection.available);
    EXPECT_NE(connection.pipe, nullptr);
    return std::move(connection.pipe);
}

/// One piece as text, with "+" after it when the message goes on; "-" for none.
std::string piece(PipeClient& client, std::size_t size, std::chrono::milliseconds limit = longLimit)
{
    std::string buffer(size, '\0');
    const auto read = client.read(buffer, limit);
    if (!read)
        return "-";
    return buffer.substr(0, read->length) + (read->more ? "+" : "");
}

} // namespace

TEST_F(PlatformPipe, aMissingPipeFailsAtOnce)
{
    const auto start = Clock::now();
    const auto connection = PipeClient::connect(name, longLimit);
    EXPECT_FALSE(connection.available);
    EXPECT_EQ(connection.pipe, nullptr);
    EXPECT_LT(Clock::now() - start, 2s);
}

TEST_F(PlatformPipe, messagesGoBothWays)
{
    PipePeer peer(name, answering("reply"));
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    EXPECT_EQ(piece(*client, 100), "reply");
    EXPECT_EQ(peer.requests(), std::vector<std::string>{"request"});
}

TEST_F(PlatformPipe, aLongMessageIsReadInPieces)
{
    PipePeer peer(name, answering("0123456789"));
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    EXPECT_EQ(piece(*client, 4), "0123+");
    EXPECT_EQ(piece(*client, 4), "4567+");
    EXPECT_EQ(piece(*client, 4), "89");
}

TEST_F(PlatformPipe, aMessageThatJustFitsDoesNotGoOn)
{
    PipePeer peer(name, answering("01234567"));
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    EXPECT_EQ(piece(*client, 4), "0123+");
    EXPECT_EQ(piece(*client, 4), "4567");
}

TEST_F(PlatformPipe, messagesStayApart)
{
    PipePeer peer(name, [](PipePeer::Client& client) {
        client.receive();
        client.send("one");
        client.send("two");
        client.receive();
    });
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    EXPECT_EQ(piece(*client, 2), "on+");
    EXPECT_EQ(piece(*client, 100), "e");
    EXPECT_EQ(piece(*client, 100), "two");
}

TEST_F(PlatformPipe, anEmptyMessageIsNotTheEnd)
{
    PipePeer peer(name, [](PipePeer::Client& client) {
        client.receive();
        client.send("");
        client.send("two");
    });
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    EXPECT_EQ(piece(*client, 100), "");
    EXPECT_EQ(piece(*client, 100), "two");
    EXPECT_EQ(piece(*client, 100), "-");
}

TEST_F(PlatformPipe, aReadEndsAtItsLimit)
{
    PipePeer peer(name, silent());
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    const auto start = Clock::now();
    EXPECT_EQ(piece(*client, 100, shortLimit), "-");
    EXPECT_GE(Clock::now() - start, shortLimit - 20ms);
    EXPECT_LT(Clock::now() - start, longLimit);
}

TEST_F(PlatformPipe, aPeerThatGoesEndsAReadAtOnce)
{
    PipePeer peer(name, takingAndLeaving());
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    const auto start = Clock::now();
    EXPECT_EQ(piece(*client, 100), "-");
    EXPECT_LT(Clock::now() - start, longLimit);
}

TEST_F(PlatformPipe, whatAPeerSaidBeforeItWentIsRead)
{
    PipePeer peer(name, [](PipePeer::Client& client) {
        client.receive();
        client.send("last words");
    });
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    ASSERT_TRUE(peer.hasServed(1, longLimit));
    EXPECT_EQ(piece(*client, 100), "last words");
    EXPECT_EQ(piece(*client, 100), "-");
}

TEST_F(PlatformPipe, aWriteToAPeerThatHasGoneFails)
{
    PipePeer peer(name, takingAndLeaving());
    const auto client = connected();
    ASSERT_TRUE(client->write("request", longLimit));
    ASSERT_TRUE(peer.hasServed(1, longLimit));
    EXPECT_FALSE(client->write("second", longLimit));
}

TEST_F(PlatformPipe, aBusyPipeIsWaitedForUpToTheLimit)
{
    PipePeer peer(name, silent(), PipePeer::Start::busy);
    const auto start = Clock::now();
    const auto connection = PipeClient::connect(name, shortLimit);
    EXPECT_FALSE(connection.available);
    EXPECT_EQ(connection.pipe, nullptr);
    EXPECT_GE(Clock::now() - start, shortLimit - 20ms);
    EXPECT_LT(Clock::now() - start, longLimit);
}

TEST_F(PlatformPipe, aBusyPipeThatBecomesFreeIsConnectedTo)
{
    PipePeer peer(name, answering("reply"), PipePeer::Start::busy);
    auto client = std::async(std::launch::async, connected);
    // Most likely the client waits by now; the outcome is the same if it does not.
    EXPECT_EQ(client.wait_for(100ms), std::future_status::timeout);
    peer.becomeFree();
    const auto pipe = client.get();
    ASSERT_NE(pipe, nullptr);
    ASSERT_TRUE(pipe->write("request", longLimit));
    EXPECT_EQ(piece(*pipe, 100), "reply");
}

TEST_F(PlatformPipe, aServerTakesBytesOfOneClientAfterTheOther)
{
    const auto server = PipeServer::create(name, 128);
    ASSERT_NE(server, nullptr);
    for (const std::string text : {"first", "second"}) {
        auto client = std::async(std::launch::async, [&] {
            BytePipeClient pipe(name);
            return pipe.write(text);
        });
        ASSERT_TRUE(server->accept());
        std::array<char, 4> buffer;
        std::string received;
        while (const auto length = server->read(buffer))
            received.append(buffer.data(), *length);
        EXPECT_EQ(received, text);
        EXPECT_TRUE(client.get());
        server->disconnect();
    }
}

TEST_F(PlatformPipe, aServerIsTheOnlyOneOfItsName)
{
    auto server = PipeServer::create(name, 128);
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(PipeServer::create(name, 128), nullptr);
    server.reset();
    EXPECT_NE(PipeServer::create(name, 128), nullptr);
}
