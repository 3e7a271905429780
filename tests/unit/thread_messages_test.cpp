#include "platform/thread_messages.h"

#include <future>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace pyrux::platform;

TEST(ThreadMessages, keepsTheOrderOfASenderAndBothWords)
{
    std::promise<ThreadId> id;
    std::vector<ThreadMessage> got;
    std::thread receiver([&] {
        const auto queue = ThreadMessages::open();
        id.set_value(currentThreadId());
        while (got.size() < 3)
            got.push_back(queue->wait(10s).value_or(ThreadMessage{}));
    });
    const ThreadId to = id.get_future().get();
    EXPECT_TRUE(postThreadMessage(to, {1027, 11, 12}));
    EXPECT_TRUE(postThreadMessage(to, {1031, 0, static_cast<std::uintptr_t>(-1)}));
    EXPECT_TRUE(postThreadMessage(to, {0x401, 31, 32}));
    receiver.join();
    EXPECT_EQ(got[0].number, 1027U);
    EXPECT_EQ(got[0].first, 11U);
    EXPECT_EQ(got[0].second, 12U);
    EXPECT_EQ(got[1].number, 1031U);
    EXPECT_EQ(got[1].second, static_cast<std::uintptr_t>(-1));
    EXPECT_EQ(got[2].number, 0x401U);
    EXPECT_EQ(got[2].first, 31U);
}

TEST(ThreadMessages, losesAMessageToAThreadThatHasEnded)
{
    ThreadId id = 0;
    std::thread([&] {
        const auto queue = ThreadMessages::open();
        id = currentThreadId();
    }).join();
    EXPECT_FALSE(postThreadMessage(id, {1031}));
}

TEST(ThreadMessages, waitsNoLongerThanItsLimit)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(queue->wait(30ms));
        EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
    }).join();
}

TEST(ThreadMessages, takesWhatCameBeforeTheWait)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        EXPECT_TRUE(postThreadMessage(currentThreadId(), {1032, 5, 6}));
        const auto message = queue->wait(0ms);
        ASSERT_TRUE(message);
        EXPECT_EQ(message->number, 1032U);
        EXPECT_FALSE(queue->wait(0ms));
    }).join();
}

} // namespace
