#include "tests/support/waiting_test.h"

#include <gtest/gtest-spi.h>

#include <future>
#include <semaphore>

namespace pyrux::test {
namespace {

struct WaitingTest {
    std::string suite, name;
    void (*body)();
    bool hasRun = false;
    testing::TestPartResultArray results;
};

std::vector<std::unique_ptr<WaitingTest>>& all()
{
    static std::vector<std::unique_ptr<WaitingTest>> tests;
    return tests;
}

bool isSelected(const WaitingTest& test)
{
    const testing::UnitTest& run = *testing::UnitTest::GetInstance();
    for (int i = 0; i < run.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *run.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j)
            if (const testing::TestInfo& info = *suite.GetTestInfo(j);
                test.suite == info.test_suite_name() && test.name == info.name())
                return info.should_run();
    }
    return false;
}

void run(WaitingTest& test)
{
    testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &test.results);
    test.body();
}

} // namespace

namespace {

/// How many run at a time: so many that the waiting costs little, so few that a busy machine still serves each of
/// them in time. Tests and the scenarios of tests are counted apart, since a test waits for its scenarios.
std::counting_semaphore<> tests{24};
std::counting_semaphore<> parts{64};

void runTogether(const std::vector<std::function<void()>>& bodies, std::counting_semaphore<>& room)
{
    std::vector<std::future<void>> running;
    for (const auto& body : bodies) {
        room.acquire();
        running.push_back(std::async(std::launch::async, [&body, &room] {
            body();
            room.release();
        }));
    }
    for (auto& each : running)
        each.get();
}

} // namespace

void together(const std::vector<std::function<void()>>& scenarios)
{
    runTogether(scenarios, parts);
}

bool addWaitingTest(const char* suite, const char* name, void (*body)())
{
    all().push_back(std::make_unique<WaitingTest>());
    all().back()->suite = suite;
    all().back()->name = name;
    all().back()->body = body;
    return true;
}

void reportWaitingTest(const char* suite, const char* name)
{
    std::vector<std::function<void()>> due;
    for (const auto& test : all())
        if (!test->hasRun && isSelected(*test)) {
            test->hasRun = true;
            due.emplace_back([&test] { run(*test); });
        }
    runTogether(due, tests);
    for (const auto& test : all()) {
        if (test->suite != suite || test->name != name)
            continue;
        EXPECT_TRUE(test->hasRun);
        for (int i = 0; i < test->results.size(); ++i) {
            const testing::TestPartResult& result = test->results.GetTestPartResult(i);
            ADD_FAILURE_AT(result.file_name(), result.line_number()) << result.message();
        }
    }
}

} // namespace pyrux::test
