#pragma once

#include "tests/support/process.h"
#include "tests/support/surroundings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

/// @file
/// Tests of what happens once in the life of a process: each runs in a process of its own.

namespace pyrux::test {

inline void runIsolated(const std::string& name, void (*body)())
{
    const char* only = std::getenv("PYRUX_ISOLATED_TEST");
    if (only && only == name) {
        const OwnPipes pipes;
        body();
        return;
    }
    const Variable variable("PYRUX_ISOLATED_TEST", name);
    const Ended child = run(thisProgram(), {"--gtest_filter=" + name, "--gtest_output=", "--gtest_color=no"});
    EXPECT_EQ(child.exitCode, 0) << child.output;
    EXPECT_NE(child.output.find("[  PASSED  ] 1 test."), std::string::npos) << child.output;
}

} // namespace pyrux::test

#define ISOLATED_TEST(suite, name)                                                                           \
    static void isolated_##suite##_##name();                                                                 \
    TEST(suite, name)                                                                                        \
    {                                                                                                        \
        pyrux::test::runIsolated(#suite "." #name, isolated_##suite##_##name);                               \
    }                                                                                                        \
    static void isolated_##suite##_##name()
