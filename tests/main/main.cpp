#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

/// A test that starts its program anew, for one test of it, starts all of it: the parts are this process's own.
class WholeChildren : public testing::Environment {
    void SetUp() override
    {
#if defined(_WIN32)
        _putenv("GTEST_TOTAL_SHARDS=");
        _putenv("GTEST_SHARD_INDEX=");
#else
        unsetenv("GTEST_TOTAL_SHARDS");
        unsetenv("GTEST_SHARD_INDEX");
#endif
    }
};

} // namespace

/// The test programs' main: a filter that selects no test is a mistake and fails. One of several shards may be empty.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const bool partOnly = std::getenv("GTEST_TOTAL_SHARDS");
    testing::AddGlobalTestEnvironment(new WholeChildren);
    const int result = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0 && !partOnly) {
        std::fputs("No test has been selected.\n", stderr);
        return 1;
    }
    return result;
}
