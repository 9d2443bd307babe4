#!/usr/bin/env bash
# Address resolution with the kernel and arping: requests both ways, probes, announcements.
source "$(dirname "$0")/lib.sh"
need ping arping

make_veth
ask() {
    far arping -I far "$@" >arping.log 2>&1
}
neighbour() {
    ip -n far neighbour show "$1" | sed -n 's/.*lladdr \([^ ]*\).*/\1/p'
}

mesk arp $far_address
expect "the kernel's address" "$code $(json arp.json .mac)" "0 $far_mac"
mesk arp --probe $far_address
expect "probe of a used address" "$code $(json arp.json .mac)" "0 $far_mac"
mesk arp 192.168.77.99
expect "an address that nobody has" "$code $(json arp.json .mac)" "1 null"

start_camera
await "the device" 15 ask -c 1 -w 1 $camera_address
ask -c 3 $camera_address
expect_line "owner of the address" arping.log "reply from $camera_address \[${camera_mac^^}\]"
expect_line "one answer for each" arping.log '^Received 3 response'
# -D: a probe, from 0.0.0.0; 1 means that the address is taken.
ended=0
ask -D -c 1 -w 2 $camera_address || ended=$?
expect "probe of the device" "$ended $(sed -n 's/^Received //p' arping.log)" "1 1 response(s)"
ended=0
ask -D -c 1 -w 1 192.168.77.99 || ended=$?
expect "probe of a free address" "$ended $(sed -n 's/^Received //p' arping.log)" "0 0 response(s)"

far ping -n -c 1 -W 5 $camera_address >ping.log
expect "what the kernel learnt" "$(neighbour $camera_address)" $camera_mac

# The kernel's side gets another hardware address and tells it by an announcement only (its own entry for the device
# is fixed, so that it asks nothing): as a request (-U), then as a reply (-A).
for form in U A; do
    mac=02:4b:00:00:00:$(printf '%x' "'$form")
    ip -n far link set far address "$mac"
    ip -n far neighbour replace $camera_address lladdr $camera_mac dev far nud permanent
    ask -$form -c 1 -w 1 $far_address || true
    far ping -n -c 1 -W 5 $camera_address >ping.log 2>&1 || true
    expect_line "echo to the address announced by -$form" ping.log '^1 packets transmitted, 1 received'
done

# Somebody else announces the device's address: it defends it, once.
far sh -c 'echo 1 >/proc/sys/net/ipv4/ip_nonlocal_bind'
ask -U -c 1 -w 1 $camera_address || true
stop "$camera" INT
expect "conflicts" "$(json camera.log '.statistics.conflicts // empty')" 1
frames camera "select(.layers[0].source == \"$camera_mac\") | .layers[1] | select(.class == \"ArpPacket\") |
    select(.sourceAddress == \"$camera_address\" and .destinationAddress == \"$camera_address\") | .operation" >defence.log
expect "announcement that defends the address" "$(tail -n 1 defence.log)" 1
