#!/bin/bash
# Shows that the kernel rig's guest is what the rig's tests take it for, without anything of PYRUX: a device of two
# HID functions, made by hand, comes up as two hidraw nodes that udev knows; reports pass both ways; and it goes.
# To be run as root by script/kernel-rig --smoke.

set -euo pipefail

readonly gadget=/sys/kernel/config/usb_gadget/smoke
# Vendor page; 64 bytes in, 64 bytes out, no report numbers.
readonly descriptor='\x06\x00\xff\x09\x01\xa1\x01\x15\x00\x26\xff\x00\x75\x08\x95\x40\x09\x01\x81\x02\x95\x40\x09\x01\x91\x02\xc0'

fail()
{
    echo "smoke: $*" >&2
    exit 1
}

expect_equal()
{
    [[ $2 == "$3" ]] || fail "$1: '$3' instead of '$2'"
}

put()
{
    echo "$1" >"$2"
}

make_gadget()
{
    local number
    mkdir "$gadget" "$gadget/strings/0x409" "$gadget/configs/c.1"
    put 0x3a7e "$gadget/idVendor"
    put 0x012f "$gadget/idProduct"
    put "Maker of smoke" "$gadget/strings/0x409/manufacturer"
    put "Smoke" "$gadget/strings/0x409/product"
    for number in 0 1; do
        mkdir "$gadget/functions/hid.$number"
        put 0 "$gadget/functions/hid.$number/protocol"
        put 0 "$gadget/functions/hid.$number/subclass"
        put 64 "$gadget/functions/hid.$number/report_length"
        # shellcheck disable=SC2059
        printf "$descriptor" >"$gadget/functions/hid.$number/report_desc"
        ln -s "$gadget/functions/hid.$number" "$gadget/configs/c.1"
    done
}

remove_gadget()
{
    rm "$gadget"/configs/c.1/hid.*
    rmdir "$gadget/configs/c.1" "$gadget"/functions/hid.* "$gadget/strings/0x409" "$gadget"
}

# The node of an interface's number, as the kernel tells it.
hidraw_of()
{
    local node
    for node in /sys/class/hidraw/*; do
        if [[ $(<"$node/device/../bInterfaceNumber") == "$1" ]]; then
            echo "/dev/${node##*/}"
        fi
    done
}

# pass TEXT FROM TO HEAD BYTES : 64 bytes, hexadecimal and filled up with zeros, written to one end after HEAD in one
# piece (so they may hold no line feed) must come out of the other.
pass()
{
    local text=$1 from=$2 to=$3 head=$4 bytes=$5 input
    while ((${#bytes} < 64 * 3)); do
        bytes+=' 00'
    done
    exec {input}<"$to" # before the write: hidraw keeps reports for those only who have opened it
    # shellcheck disable=SC2059
    printf "$head${bytes// /\\x}" >"$from"
    expect_equal "$text" "$bytes" "$(timeout 20 od -An -v -tx1 -w64 -N64 <&"$input")"
    exec {input}<&-
}

make_gadget
put dummy_udc.0 "$gadget/UDC"
udevadm wait --timeout=20 --settle /dev/hidraw0 /dev/hidraw1

for number in 0 1; do
    node=$(hidraw_of "0$number")
    [[ -c $node ]] || fail "no node for interface $number"
    facts=$(</sys/class/hidraw/"${node##*/}"/device/uevent)
    [[ $facts == *HID_ID=0003:00003A7E:0000012F* ]] || fail "wrong ids: $facts"
    [[ $facts == *"HID_NAME=Maker of smoke Smoke"* ]] || fail "wrong name: $facts"
    [[ -e /run/udev/data/c$(<"/sys/class/hidraw/${node##*/}/dev") ]] || fail "udev has not treated $node"
    expect_equal "udev's subsystem" hidraw "$(udevadm info --query=property --property=SUBSYSTEM --value "$node")"

    # A write to hidraw begins with the report's number, 0 for none, which does not go over the wire.
    pass "command to interface $number" "$node" "/dev/hidg$number" '\x00' " 41 80 0$number"
    pass "answer of interface $number" "/dev/hidg$number" "$node" '' " 41 80 0$number ff"
done

put "" "$gadget/UDC"
udevadm wait --timeout=20 --settle --removed /dev/hidraw0 /dev/hidraw1
remove_gadget
echo "smoke: two hidraw nodes came, exchanged reports and went"
