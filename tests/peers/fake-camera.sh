#!/usr/bin/env bash
# The verbs of a host against the fake camera of aravis. Usage: fake-camera.sh veth|tap
source "$(dirname "$0")/lib.sh"
need arv-fake-gv-camera-0.8 arv-tool-0.8 arv-camera-test-0.8 ss

"make_$1"
interface=$([ "$1" = veth ] && echo far || echo tap0)
peer_tool() {
    far arv-tool-0.8 -a $far_address "$@"
}
# What the fake camera says to its own tool.
peer_register() {
    peer_tool control "R[$1]" | sed -n 's/.* = //p'
}

start_far fake arv-fake-gv-camera-0.8 -i $interface -s PEER1
fake=$started
await_udp 3956

mesk discover
expect "discover" $code 0
expect "the device" "$(json discover.json '.devices | map([.address, .manufacturer, .model, .serial])')" \
    "[[\"$far_address\",\"Aravis\",\"Fake\",\"PEER1\"]]"

# Several registers at once: the fake camera answers with one value, so they have to be asked for singly.
mesk read --device $far_address 0x938 0xa00 0x24
expect "read" $code 0
expect "registers" "$(json read.json '.registers | map(.value) | join(" ")')" \
    "$(peer_register 0x938) 0x00000000 $(peer_register 0x24)"

mesk write --device $far_address 0x938 2000
expect "write" $code 0
expect "what was written" "$(peer_register 0x938)" 0x000007d0
mesk read --device $far_address 0xa00
expect "privilege given back" "$(json read.json '.registers[0].number')" 0

mesk write-memory --device $far_address 0xe8 706565722d6e616d65000000
expect "write-memory" $code 0
mesk discover
expect "name written to memory" "$(json discover.json '.devices[0].name')" peer-name

# The whole description, against what the peer's own tool reads; its place stands in the first URL.
mesk read-memory --device $far_address 0x200 512
url=$(json read-memory.json .data | sed 's/\(00\)*$//; s/../\\x&/g')
IFS=';' read -r _ place size <<<"$(printf "$url")"
mesk read-memory --device $far_address "0x$place" "$((16#$size))"
expect "read-memory" $code 0
expect "size of the description" "$(json read-memory.json '.data | length')" "$((2 * 16#$size))"
json read-memory.json .data | sed 's/../\\x&/g' | xargs -0 printf '%b' >ours.xml
peer_tool genicam >theirs.xml
expect_file "description" <(head -c "$((16#$size))" theirs.xml) <(head -c "$((16#$size))" ours.xml)

# Another client has control: the fake camera is silent to who may not write. It dies without giving control
# back, so the device must wait for its heartbeat to stay away first.
start_far holder arv-camera-test-0.8 --duration=60
holder=$started
held() {
    mesk read --device $far_address 0xa00
    [ "$(json read.json '.registers[0].number')" = "$1" ]
}
await "control by another client" 15 held 2
mesk write --device $far_address 0x938 1500
expect "write without control" $code 1
expect "heartbeat time of the device" "$(json read.json '.registers[0].number')" 2
stop "$holder" KILL
free() {
    mesk write --device $far_address 0x938 1500
    [ $code -eq 0 ]
}
await "control after the heartbeat time" 15 free
expect "what was written then" "$(peer_register 0x938)" 0x000005dc

stop "$fake"
mesk read --device $far_address 0xa00
expect "read from a device that is gone" $code 1
