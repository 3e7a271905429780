#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

/// The test programs' main: a filter that selects no test is a mistake and fails. One of several shards may be empty.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0 && !std::getenv("GTEST_TOTAL_SHARDS")) {
        std::fputs("No test has been selected.\n", stderr);
        return 1;
    }
    return result;
}
