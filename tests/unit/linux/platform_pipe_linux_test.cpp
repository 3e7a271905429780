#include "platform/linux/socket_peer.h"
#include "platform/pipe.h"

#include "tests/support/pipe_peer.h"
#include "tests/support/surroundings.h"

#include <csignal>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using namespace pyrux::platform;
using namespace pyrux::test;
using Clock = std::chrono::steady_clock;

class PlatformPipeLinux : public testing::Test {
protected:
    ~PlatformPipeLinux() override
    {
        for (const int descriptor : descriptors)
            close(descriptor);
    }

    int bound(int type)
    {
        const int made = made_(socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
        EXPECT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        return made;
    }

    int connecting(int type, int flags = 0)
    {
        const int made = made_(socket(AF_UNIX, type | SOCK_CLOEXEC | flags, 0));
        lastConnect = connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        return made;
    }

    std::filesystem::path path() const { return pipes.folder() / "test"; }

    mode_t mode(const std::filesystem::path& file) const
    {
        struct stat found {};
        return stat(file.c_str(), &found) == 0 ? found.st_mode : 0;
    }

    OwnPipes pipes;
    int lastConnect = -1;

private:
    int made_(int descriptor)
    {
        descriptors.push_back(descriptor);
        return descriptor;
    }

    sockaddr_un socketAddress() const
    {
        sockaddr_un made{};
        made.sun_family = AF_UNIX;
        path().string().copy(made.sun_path, sizeof made.sun_path - 1);
        return made;
    }

    sockaddr_un address = socketAddress();
    std::vector<int> descriptors;
};

} // namespace

TEST_F(PlatformPipeLinux, theFolderIsMadeForItsOwnerAloneAndSoIsTheSocket)
{
    const auto folder = pipes.folder() / "made";
    const Variable chosen("PYRUX_RUNTIME_DIR", folder);
    const auto server = PipeServer::create("test", 128);
    ASSERT_NE(server, nullptr);
    EXPECT_EQ(mode(folder), S_IFDIR | 0700U);
    EXPECT_EQ(mode(folder / "test"), S_IFSOCK | 0600U);
}

TEST_F(PlatformPipeLinux, aServerRemovesItsSocket)
{
    PipeServer::create("test", 128);
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(PlatformPipeLinux, aStaleSocketIsReplaced)
{
    close(dup(bound(SOCK_STREAM))); // bound, never listened to
    ASSERT_TRUE(std::filesystem::exists(path()));
    const auto server = PipeServer::create("test", 128);
    ASSERT_NE(server, nullptr);
    connecting(SOCK_STREAM);
    EXPECT_EQ(lastConnect, 0);
}

TEST_F(PlatformPipeLinux, theSocketOfAKilledProcessIsReplacedAndThatOfALivingOneIsNot)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto server = PipeServer::create("test", 128);
        if (write(ready[1], server ? "y" : "n", 1) == 1)
            pause();
        _exit(1);
    }
    char answer = 0;
    EXPECT_EQ(read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    EXPECT_EQ(PipeServer::create("test", 128), nullptr);
    EXPECT_TRUE(std::filesystem::is_socket(path()));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_NE(PipeServer::create("test", 128), nullptr);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(PlatformPipeLinux, aServerOfAnotherKindIsNotReplaced)
{
    listen(bound(SOCK_SEQPACKET), 1);
    EXPECT_EQ(PipeServer::create("test", 128), nullptr);
    EXPECT_TRUE(std::filesystem::is_socket(path()));
}

TEST_F(PlatformPipeLinux, aFileThatIsNoSocketIsNotReplaced)
{
    std::ofstream(path()) << "mine";
    EXPECT_EQ(PipeServer::create("test", 128), nullptr);
    EXPECT_EQ(std::filesystem::file_size(path()), 4U);
    const auto start = Clock::now();
    EXPECT_FALSE(PipeClient::connect("test", 10s).available);
    EXPECT_LT(Clock::now() - start, 5s);
}

TEST_F(PlatformPipeLinux, aPathTooLongForASocketFails)
{
    const auto folder = pipes.folder() / std::string(120, 'x');
    const Variable chosen("PYRUX_RUNTIME_DIR", folder);
    EXPECT_EQ(PipeServer::create("test", 128), nullptr);
    EXPECT_FALSE(PipeClient::connect("test", 10s).available);
}

TEST_F(PlatformPipeLinux, aServerOfBytesIsThereButCannotBeOpened)
{
    listen(bound(SOCK_STREAM), 1);
    const auto connection = PipeClient::connect("test", 10s);
    EXPECT_TRUE(connection.available);
    EXPECT_EQ(connection.pipe, nullptr);
}

TEST_F(PlatformPipeLinux, aSocketThatNobodyListensToIsWaitedFor)
{
    bound(SOCK_SEQPACKET);
    const auto start = Clock::now();
    EXPECT_FALSE(PipeClient::connect("test", 200ms).available);
    EXPECT_GE(Clock::now() - start, 200ms);
}

TEST_F(PlatformPipeLinux, aFullQueueIsWaitedFor)
{
    listen(bound(SOCK_SEQPACKET), 0);
    do {
        connecting(SOCK_SEQPACKET, SOCK_NONBLOCK);
    } while (lastConnect == 0);
    const auto start = Clock::now();
    EXPECT_FALSE(PipeClient::connect("test", 200ms).available);
    EXPECT_GE(Clock::now() - start, 180ms);
}

TEST_F(PlatformPipeLinux, aServerThatDoesNotAcceptGetsNothing)
{
    const int listener = bound(SOCK_SEQPACKET);
    listen(listener, 5);
    EXPECT_FALSE(PipeClient::connect("test", 200ms).available);
    const int accepted = accept(listener, nullptr, nullptr);
    char byte = 0;
    EXPECT_EQ(recv(accepted, &byte, 1, 0), 0) << "the client has gone without a word";
    close(accepted);
}

TEST_F(PlatformPipeLinux, theKernelTellsAnAcceptedConnection)
{
    const int listener = bound(SOCK_SEQPACKET);
    listen(listener, 5);
    const int client = connecting(SOCK_SEQPACKET);
    ASSERT_EQ(lastConnect, 0);
    EXPECT_FALSE(isAccepted(client));
    const int accepted = accept(listener, nullptr, nullptr);
    EXPECT_TRUE(isAccepted(client));
    close(accepted);
    EXPECT_TRUE(isAccepted(client)) << "a peer that has gone";
}

TEST_F(PlatformPipeLinux, aReplyOfAPeerThatHasNotReadIsStillRead)
{
    const int listener = bound(SOCK_SEQPACKET);
    listen(listener, 5);
    const int accepting = fork();
    if (accepting == 0) {
        const int accepted = accept(listener, nullptr, nullptr);
        char byte = 0;
        recv(accepted, &byte, 1, MSG_PEEK);
        send(accepted, "TW_OK", 5, 0);
        _exit(0);
    }
    const auto connection = PipeClient::connect("test", 10s);
    ASSERT_NE(connection.pipe, nullptr);
    ASSERT_TRUE(connection.pipe->write("request", 10s));
    waitpid(accepting, nullptr, 0);
    std::string buffer(16, '\0');
    const auto read = connection.pipe->read(buffer, 10s);
    ASSERT_TRUE(read);
    EXPECT_EQ(buffer.substr(0, read->length), "TW_OK");
    EXPECT_FALSE(connection.pipe->read(buffer, 10s));
}

TEST_F(PlatformPipeLinux, aLinkIsNeitherConnectedToNorReplaced)
{
    const int listener = bound(SOCK_SEQPACKET);
    ASSERT_EQ(listen(listener, 5), 0);
    std::filesystem::create_symlink(path(), pipes.folder() / "link");
    const auto start = Clock::now();
    EXPECT_FALSE(PipeClient::connect("link", 10s).available);
    EXPECT_LT(Clock::now() - start, 5s);
    ASSERT_TRUE(std::filesystem::remove(path()));
    bound(SOCK_STREAM); // nobody listens
    EXPECT_EQ(PipeServer::create("link", 128), nullptr);
    EXPECT_TRUE(std::filesystem::is_symlink(pipes.folder() / "link"));
    std::filesystem::remove(path());
    EXPECT_EQ(PipeServer::create("link", 128), nullptr) << "a link to nothing";
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(PlatformPipeLinux, aFolderThatAllMayWriteToIsNotUsed)
{
    ASSERT_EQ(listen(bound(SOCK_SEQPACKET), 5), 0);
    ASSERT_EQ(chmod(pipes.folder().c_str(), 0777), 0);
    EXPECT_FALSE(PipeClient::connect("test", 10s).available);
    EXPECT_EQ(PipeServer::create("other", 128), nullptr);
    EXPECT_FALSE(std::filesystem::exists(pipes.folder() / "other"));
    ASSERT_EQ(chmod(pipes.folder().c_str(), 0700), 0);
    EXPECT_NE(PipeServer::create("other", 128), nullptr);
}

TEST_F(PlatformPipeLinux, aSocketOfAnotherUserIsNotUsed)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to give something away";
    const int listener = bound(SOCK_SEQPACKET);
    ASSERT_EQ(listen(listener, 5), 0);
    ASSERT_EQ(chown(path().c_str(), 65534, 65534), 0);
    EXPECT_FALSE(PipeClient::connect("test", 10s).available);
    ASSERT_TRUE(std::filesystem::remove(path()));
    close(dup(bound(SOCK_STREAM))); // nobody listens
    ASSERT_EQ(chown(path().c_str(), 65534, 65534), 0);
    EXPECT_EQ(PipeServer::create("test", 128), nullptr);
    EXPECT_TRUE(std::filesystem::is_socket(path()));
}

TEST_F(PlatformPipeLinux, aServerOfAnotherUserIsToldNothing)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root to be another user";
    const int listener = bound(SOCK_SEQPACKET);
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_EQ(listen(listener, 5), 0); // and the socket's file stays root's
    ASSERT_EQ(seteuid(0), 0);
    int accepted = -1;
    std::thread server([&] { accepted = accept(listener, nullptr, nullptr); });
    EXPECT_FALSE(PipeClient::connect("test", 10s).available);
    server.join();
    char byte = 0;
    EXPECT_EQ(recv(accepted, &byte, 1, 0), 0);
    close(accepted);
}
