// Callbacks: one at a time, none after it was taken away, and none that waits for ever.

#include "transport/notify.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <vector>

namespace pyrux {
namespace {

using Callback = void (*)(int);

/// What the callback of a test does.
std::function<void(int)> action;
void act(int value)
{
    action(value);
}

class Notification : public testing::Test {
protected:
    ~Notification() override { action = nullptr; }
    Notify<Callback> first, second, third;
};

TEST_F(Notification, callsWhatIsSet)
{
    int called = 0;
    action = [&](int value) { called += value; };
    first.call(1);
    first.set(act);
    first.call(10);
    first.call(100);
    first.set(nullptr);
    first.call(1000);
    EXPECT_EQ(called, 110);
}

TEST_F(Notification, canTakeItselfAway)
{
    int called = 0;
    action = [&](int) {
        ++called;
        first.set(nullptr);
    };
    first.set(act);
    first.call(1);
    first.call(1);
    EXPECT_EQ(called, 1);
}

TEST_F(Notification, isTakenAwayWhenItHasComeOut)
{
    std::promise<void> inside, out;
    std::atomic<bool> cameOut{false};
    action = [&](int) {
        inside.set_value();
        out.get_future().get();
        cameOut = true;
    };
    first.set(act);
    std::thread caller([&] { first.call(1); });
    inside.get_future().get();
    auto taking = std::async(std::launch::async, [&] {
        first.set(nullptr);
        return cameOut.load();
    });
    EXPECT_EQ(taking.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
    out.set_value();
    EXPECT_TRUE(taking.get());
    caller.join();
}

TEST_F(Notification, runsOnOneThreadAtATime)
{
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    action = [&](int) {
        const int now = ++inside;
        int seen = most;
        while (seen < now && !most.compare_exchange_weak(seen, now)) {
        }
        std::this_thread::yield();
        --inside;
    };
    first.set(act);
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back([&] {
            for (int call = 0; call < 200; ++call)
                first.call(call);
        });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(most, 1);
}

TEST_F(Notification, comesOutWhereTwoTakeEachOtherAway)
{
    std::barrier meet(2);
    action = [&](int value) {
        meet.arrive_and_wait(); // both are inside
        (value == 1 ? second : first).set(nullptr);
    };
    first.set(act);
    second.set(act);
    std::thread one([&] { first.call(1); });
    std::thread two([&] { second.call(2); });
    one.join();
    two.join();
    bool called = false;
    action = [&](int) { called = true; };
    first.call(1);
    second.call(1);
    EXPECT_FALSE(called);
}

TEST_F(Notification, comesOutOfARingOfThree)
{
    std::barrier meet(3);
    action = [&](int value) {
        meet.arrive_and_wait();
        (value == 1 ? second : value == 2 ? third : first).set(nullptr);
    };
    Notify<Callback>* const all[]{&first, &second, &third};
    std::vector<std::thread> callers;
    for (Notify<Callback>* each : all)
        each->set(act);
    for (int i = 0; i < 3; ++i)
        callers.emplace_back([&, i] { all[i]->call(i + 1); });
    for (std::thread& caller : callers)
        caller.join();
}

} // namespace
} // namespace pyrux
