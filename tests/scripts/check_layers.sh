#!/bin/bash
# What script/check-layers must find, and what it must let pass, line by line in a made-up tree.

set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd -P)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
git -c init.defaultBranch=main init -q "$tree"
failed=0

# expect WORD FILE LINE : WORD is "bad" or "good"
expect()
{
    local verdict=good
    mkdir -p "$tree/$(dirname "$2")"
    echo "$3" >"$tree/$2"
    "$repo/script/check-layers" "$tree" >"$tree/log" 2>&1 || verdict=bad
    if [[ $verdict != "$1" ]] || { [[ $verdict == bad ]] && ! grep -q "^$2:1: " "$tree/log"; }; then
        echo "$2: $3: should be $1" >&2
        failed=1
    fi
    rm "$tree/$2"
}

expect good transport/a.cpp '#include <hidapi/hidapi.h>'
expect good simulator/standin/a.cpp '#include <hidapi.h>'
expect bad devices/mice/a.cpp '#include <hidapi/hidapi.h>'
expect bad core/a.cpp '#include "hidapi.h"'

expect good include/pyrux/a.h '#include <cstdint>'
expect good include/pyrux/a.h '#include "pyrux/error.h"'
expect bad include/pyrux/a.h '#include "core/log.h"'
expect bad include/pyrux/a.h '#include <nlohmann/json.hpp>'

expect good platform/linux/a.cpp '#include <sys/socket.h>'
expect good platform/windows/a.cpp '#include <windows.h>'
expect good tools/pyruxctl/a.cpp '#if defined(_WIN32)'
expect good include/pyrux/export.h '#if defined(_WIN32)'
expect bad platform/pipe.h '#include <windows.h>'
expect bad platform/pipe.h '#ifdef _WIN32'
expect bad transport/a.cpp '#include <unistd.h>'
expect bad core/a.cpp '#  if !defined(__linux__)'
expect bad include/pyrux/a.h '#ifndef WIN32'

expect good devices/mice/a.cpp '#include "services/tw_service.h"'
expect good library/exports.cpp '#include "services/tw_service.h"'
expect good library/exports.cpp '#include "devices/mice/rd210.h"'
expect good core/debug_console.cpp '#include "platform/pipe.h"'
expect good transport/a.cpp '#include "core/catalogue.h"'
expect bad services/a.cpp '#include "devices/mice/rd210.h"'
expect bad transport/a.cpp '#include "services/tw_service.h"'
expect bad transport/a.cpp '#include "devices/host_object.h"'
expect bad core/log.cpp '#include "transport/usb_hid.h"'
expect bad core/debug_console.cpp '#include "services/tw_service.h"'
expect bad devices/host_core.cpp '#include "library/lifecycle.h"'
expect bad platform/linux/a.cpp '#include "core/log.h"'
expect bad platform/linux/a.cpp '#include "platform/windows/handle.h"'
expect bad platform/pipe.h '#include "platform/linux/runtime_folder.h"'
expect bad simulator/a.h '#include "transport/report.h"'
expect bad tools/pyruxctl/a.cpp '#include "core/catalogue.h"'
expect bad elsewhere/a.cpp '#include <vector>'

exit "$failed"
