#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// @file
/// Tests that spend their time waiting for limits to run out. All that the filter selects run at once, when
/// the first of them is due; each reports its own failures.
///
/// They must not look at what the process has in common, such as the debug output and the number of handles.

namespace pyrux::test {

/// Runs scenarios at once and waits for all. Failures go to the test that calls.
void together(const std::vector<std::function<void()>>& scenarios);

/// Puts a body down for `reportWaitingTest`. The result says nothing.
bool addWaitingTest(const char* suite, const char* name, void (*body)());

/// Runs all waiting tests if that has not happened, and reports the failures of this one.
void reportWaitingTest(const char* suite, const char* name);

} // namespace pyrux::test

#define WAITING_TEST(suite, name)                                                                            \
    static void waiting_##suite##_##name();                                                                  \
    static const bool waitingAdded_##suite##_##name =                                                        \
        pyrux::test::addWaitingTest(#suite, #name, waiting_##suite##_##name);                                \
    TEST(suite, name)                                                                                        \
    {                                                                                                        \
        (void)waitingAdded_##suite##_##name;                                                                 \
        pyrux::test::reportWaitingTest(#suite, #name);                                                       \
    }                                                                                                        \
    static void waiting_##suite##_##name()
