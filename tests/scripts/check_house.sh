#!/bin/bash
# What the checks of the sources must find, and what they must let pass, in made-up trees.

set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd -P)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
git -c init.defaultBranch=main init -q "$tree"
failed=0

# expect CHECK GOOD|TEXT FILE, with the file on the standard input: the check passes, or ends with a line that holds TEXT
expect()
{
    local verdict=good
    mkdir -p "$tree/$(dirname "$3")"
    cat >"$tree/$3"
    "$repo/script/$1" "$tree" >"$tree/log" 2>&1 || verdict=bad
    if [[ $verdict != "$2" ]] && { [[ $2 == good ]] || ! grep -qF "$2" "$tree/log"; }; then
        printf '%s on %s: expected %s, got\n' "$1" "$3" "$2" >&2
        cat "$tree/log" "$tree/$3" >&2
        failed=1
    fi
    rm "$tree/$3"
}

expect check-commands good devices/a.cpp <<'E1'
namespace cmd {
constexpr Report getMode{0x52, 0x28}; // reply 4: mode
}
constexpr std::array<MouseEvent, 2> events{{
    {{0x42, 0x20, 0x40}, 4},
    {{0x42, 0x20, 0x00}, 7},
}};
_error setMode(int mode)
{
    // as {0x41, 0x80} does
    const Zone all{0xFF, 0xFF, 0};
    log("{0x41, 0x80}");
    return reply.begins({0x52, 0x28}) && set(cmd::getMode.at(5, mode & 0x03));
}
E1
expect check-commands devices/a.cpp:3 devices/a.cpp <<'E1'
_error setMode()
{
    return set(Report{0x51, 0x28});
}
E1
expect check-commands devices/a.h:5 devices/a.h <<'E1'
constexpr Report getMode{0x52, 0x28};
bool is(const Reply& reply)
{
    if (reply)
        return reply == std::array{Report{0x52, 0x28}};
}
E1
expect check-commands devices/b/a.cpp:4 devices/b/a.cpp <<'E1'
int question()
{
    const std::array<std::uint8_t, 3> head{0x00,
        0x01, 0x02}; const Report other = {0x51};
}
E1

# function LINES EXTRA... : a function of so many lines, the extra ones among them
long_function()
{
    local lines=$1 i
    shift
    printf 'int f()\n{\n'
    for ((i = 3 + $#; i < lines; ++i)); do
        echo '    g();'
    done
    (($# == 0)) || printf '%s\n' "$@"
    echo '}'
}
expect check-functions good a.cpp < <(long_function 60)
expect check-functions "a.cpp:1: f has 61 lines" a.cpp < <(long_function 61)
expect check-functions good a.h < <(long_function 62 '    {1, 2},' '    {3, 4},')
expect check-functions "a.h:1: f has 61 lines" a.h < <(long_function 63 '    {1, 2},' '    {3, 4},')

expect check-records good include/pyrux/a.h <<'E1'
struct Pair {
    std::uint8_t key; ///< with a ; and a {
    std::uint16_t words[3], last;
};
static_assert(sizeof(Pair) == 9 && offsetof(Pair, words) == 1 &&
              offsetof(Pair, last) == 7);
template <class Value>
struct PointOf {
    Value x;
    Value y;
};
using Point = PointOf<std::uint8_t>;
static_assert(sizeof(Point) == 2 && offsetof(PointOf<std::uint8_t>, y) == 1);
struct Base {
    virtual int f() = 0;
};
E1
expect check-records "include/pyrux/a.h:1: Pair: no static_assert of its size" include/pyrux/a.h <<'E1'
struct Pair {
    std::uint8_t a, b;
};
static_assert(offsetof(Pair, b) == 1);
// static_assert(sizeof(Pair) == 2);
E1
expect check-records "include/pyrux/a.h:1: Pair: no static_assert of the offset of b" include/pyrux/a.h <<'E1'
struct Pair {
    std::uint8_t a, b;
};
static_assert(sizeof(Pair) == 2);
E1

# Every list of two models in a tree, which then lacks one of them.
mkdir -p "$tree"/{core,include/pyrux,simulator/models,tools/pyruxctl/models}
factories()
{
    printf 'PYRUX_API A_Base* %s(const char* path);\n' "$@"
}
lists()
{
    printf '    {"rd1", "RD 1", 4, 5, "PYRUX_RD1"},\n    {"rd2", "RD 2", 4, 5, "PYRUX_RD2"},\n    {"later", "LATER", 4, 5, "PYRUX_LATER"},\n' >"$tree/core/models.h"
    factories rd1 rd2 >"$tree/include/pyrux/rd.h"
    echo '| RD 1, RD 2 |' >"$tree/README.md"
    printf '{"rd1", 1},\n{"rd2", 1},\n' >"$tree/simulator/models/models.cpp"
    printf '.command = "rd1",\n.command = "rd2",\n' >"$tree/tools/pyruxctl/models/rd.cpp"
}
lists
expect check-models good README.md <<<'| RD 1, RD 2 |'
lists
expect check-models "rd2 is missing in the README's table" README.md <<<'| RD 1, RD 20 |'
lists
expect check-models good include/pyrux/rd.h < <(factories rd1)
lists
expect check-models "core/models.h: rd3 is missing" include/pyrux/rd.h < <(factories rd1 rd2 rd3)
lists
expect check-models "no factory of a model" include/pyrux/rd.h <<<'PYRUX_API int init();'
lists
expect check-models "rd1 is missing in the simulator" simulator/models/models.cpp <<<'{"rd2", 1},'
lists
expect check-models "rd2 is missing in the operations" tools/pyruxctl/models/rd.cpp <<<'.command = "rd1",'

hosts()
{
    "$repo/script/check-hosts" "$tree/include" >"$tree/log" 2>&1
}
rm -rf "$tree/include"
cp -r "$repo/include" "$tree/include"
hosts || { cat "$tree/log" >&2; failed=1; }
for line in 'inline void f() __attribute__((cold));' 'typedef int v __attribute__((vector_size(8)));' \
    '#include <unistd.h>' 'static_assert(sizeof(long) == 8);'; do
    cp "$repo/include/pyrux/rd210.h" "$tree/include/pyrux/rd210.h"
    echo "$line" >>"$tree/include/pyrux/rd210.h"
    if hosts; then
        echo "check-hosts let pass: $line" >&2
        failed=1
    fi
done

exit "$failed"
