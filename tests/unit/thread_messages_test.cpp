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

/// The numbers and first words of what waits for the calling thread.
std::vector<std::pair<std::uint32_t, std::uintptr_t>> takeAll(ThreadMessages& queue)
{
    std::vector<std::pair<std::uint32_t, std::uintptr_t>> all;
    while (const auto message = queue.wait(0ms))
        all.emplace_back(message->number, message->first);
    return all;
}

using Taken = std::vector<std::pair<std::uint32_t, std::uintptr_t>>;

TEST(ThreadMessages, replaceAnOlderOneOfTheirNumberWhereTheNewestCounts)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        const ThreadId own = currentThreadId();
        for (std::uintptr_t i = 1; i <= 1000; ++i) {
            EXPECT_TRUE(postThreadMessage(own, {1035, i, 0}, Post::newest));
            EXPECT_TRUE(postThreadMessage(own, {1036, i + 5000, 0}, Post::newest));
        }
        EXPECT_TRUE(postThreadMessage(own, {1031}));
        EXPECT_EQ(takeAll(*queue), (Taken{{1035, 1000}, {1036, 6000}, {1031, 0}}));
        EXPECT_TRUE(postThreadMessage(own, {1035, 7, 0}, Post::newest));
        EXPECT_EQ(takeAll(*queue), (Taken{{1035, 7}}));
    }).join();
}

TEST(ThreadMessages, replaceTheirSendersAlone)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        const ThreadId own = currentThreadId();
        for (std::uintptr_t i = 1; i <= 3; ++i) {
            EXPECT_TRUE(postThreadMessage(own, {1035, i, 0}, Post::newest, 0));
            EXPECT_TRUE(postThreadMessage(own, {1035, i + 10, 0}, Post::newest, 1));
        }
        EXPECT_EQ(takeAll(*queue), (Taken{{1035, 3}, {1035, 13}}));
    }).join();
}

TEST(ThreadMessages, replaceNoneThatMustArrive)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        const ThreadId own = currentThreadId();
        EXPECT_TRUE(postThreadMessage(own, {1029, 1, 0}));
        EXPECT_TRUE(postThreadMessage(own, {1029, 2, 0}, Post::newest));
        EXPECT_TRUE(postThreadMessage(own, {1029, 3, 0}));
        EXPECT_TRUE(postThreadMessage(own, {1029, 4, 0}, Post::newest));
        EXPECT_EQ(takeAll(*queue), (Taken{{1029, 1}, {1029, 4}, {1029, 3}}));
    }).join();
}

TEST(ThreadMessages, areAtMost64BesideThoseThatMustArrive)
{
    std::thread([] {
        const auto queue = ThreadMessages::open();
        const ThreadId own = currentThreadId();
        Taken expected;
        for (std::uint32_t number = 2000; number < 2064; ++number) {
            EXPECT_TRUE(postThreadMessage(own, {number, 1, 0}, Post::newest)) << number;
            expected.emplace_back(number, number == 2063 ? 2 : 1);
        }
        EXPECT_FALSE(postThreadMessage(own, {2064, 1, 0}, Post::newest));
        EXPECT_TRUE(postThreadMessage(own, {2063, 2, 0}, Post::newest));
        EXPECT_TRUE(postThreadMessage(own, {1031}));
        expected.emplace_back(1031, 0);
        EXPECT_EQ(takeAll(*queue), expected);
        EXPECT_TRUE(postThreadMessage(own, {2064, 1, 0}, Post::newest));
        EXPECT_EQ(takeAll(*queue), (Taken{{2064, 1}}));
    }).join();
}

TEST(ThreadMessages, areNotKeptFromALaterQueueOfTheThread)
{
    std::thread([] {
        const ThreadId own = currentThreadId();
        auto queue = ThreadMessages::open();
        EXPECT_TRUE(postThreadMessage(own, {1035, 1, 0}, Post::newest));
        EXPECT_EQ(takeAll(*queue), (Taken{{1035, 1}}));
        EXPECT_TRUE(postThreadMessage(own, {1035, 2, 0}, Post::newest));
        queue.reset();
        queue = ThreadMessages::open();
        takeAll(*queue);
        EXPECT_TRUE(postThreadMessage(own, {1035, 3, 0}, Post::newest));
        EXPECT_EQ(takeAll(*queue), (Taken{{1035, 3}}));
    }).join();
}

} // namespace
