#!/bin/bash
# script/count-tests on outputs of CTest and GoogleTest as they come, whole and cut off by a crash.

set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd -P)
file=$(mktemp)
trap 'rm -f "$file"' EXIT
failed=0

# expect FORM NUMBERS, with the file on the standard input
expect()
{
    local numbers
    cat >"$file"
    numbers=$("$repo/script/count-tests" "$1" "$file")
    if [[ $numbers != "$2" ]]; then
        echo "'$numbers' instead of '$2' in:" >&2
        cat "$file" >&2
        failed=1
    fi
}

expect gtest "2 0 0" <<'E'
Running main() from gmock_main.cc
[==========] Running 2 tests from 1 test suite.
[ RUN      ] A.a
[       OK ] A.a (0 ms)
[ RUN      ] A.b
[       OK ] A.b (12 ms)
[==========] 2 tests from 1 test suite ran. (12 ms total)
[  PASSED  ] 2 tests.
E
expect gtest "1 2 1" <<'E'
[==========] Running 4 tests from 2 test suites.
[       OK ] A.a (0 ms)
[  FAILED  ] A.b (12 ms)
[  SKIPPED ] A.c (0 ms)
[  FAILED  ] B/B.d/0, where GetParam() = 3 (1 ms)
[==========] 4 tests from 2 test suites ran. (13 ms total)
[  PASSED  ] 1 test.
[  SKIPPED ] 1 test, listed below:
[  SKIPPED ] A.c
[  FAILED  ] 2 tests, listed below:
[  FAILED  ] A.b
[  FAILED  ] B/B.d/0, where GetParam() = 3
E
expect gtest "1 1 0" <<'E'
[==========] Running 4 tests from 2 test suites.
[ RUN      ] A.a
words of the test[       OK ] A.a (0 ms)
[  FAILED  ] A.b (12 ms)
[ RUN      ] A.c
E
expect gtest "0 0 0" </dev/null

suite='[==========] 2 tests from 1 test suite ran. (12 ms total)&#13;
[  PASSED  ] 2 tests.&#13;
'
expect ctest "3 0 0" <<E
<?xml version="1.0" encoding="UTF-8"?>
<testsuite name="x" tests="2" failures="0" disabled="0" skipped="0">
<testcase name="a" classname="a" time="1" status="run"><system-out>$suite</system-out></testcase>
<testcase name="b" classname="b" time="1" status="run"><system-out>fine</system-out></testcase>
</testsuite>
E
# A program that passed all cases and still failed; one that crashed; one that is not there; those told to be left out.
expect ctest "3 3 2" <<E
<?xml version="1.0" encoding="UTF-8"?>
<testsuite name="x">
<testcase name="a" status="fail"><failure message=""/><system-out>$suite
ERROR: LeakSanitizer</system-out></testcase>
<testcase name="b" status="fail"><failure message="SEGFAULT"/><system-out>[==========] Running 2 tests from 1 test suite.
[       OK ] A.a (0 ms)
</system-out></testcase>
<testcase name="c" status="notrun"><skipped message="Unable to find executable"/></testcase>
<testcase name="d" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/></testcase>
<testcase name="e" status="disabled"><skipped message=""/></testcase>
</testsuite>
E

exit "$failed"
