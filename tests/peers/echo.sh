#!/usr/bin/env bash
# Echo both ways with the kernel and ping, of every kind of size. Usage: echo.sh veth|tap
source "$(dirname "$0")/lib.sh"
need ping arping

"make_$1"
interface=$([ "$1" = veth ] && echo far || echo tap0)
sizes="0 1 2 17 18 19 20 21 55 56 255 1001 1471 1472"

# ping looks at every byte that comes back.
start_camera
await "the device" 15 far arping -c 1 -w 1 -I $interface $camera_address
for size in $sizes; do
    far ping -n -c 1 -W 5 -M "do" -s "$size" $camera_address >ping.log 2>&1 || true
    expect_line "echo of $size bytes" ping.log "^$((size + 8)) bytes from $camera_address: icmp_seq=1 "
    expect "data of $size bytes" "$(grep -c 'wrong data' ping.log)" 0
done
far ping -n -c 100 -i 0.002 -W 5 -s 1472 $camera_address >ping.log 2>&1 || true
expect_line "a hundred echoes" ping.log '^100 packets transmitted, 100 received, 0% packet loss'
stop "$camera" INT

for size in $sizes; do
    mesk ping --count 1 --size "$size" $far_address
    expect "ping with $size bytes" "$code $(json ping.json '[.received, .damaged, .duplicates, .replies[0].bytes]')" \
        "0 [1,0,0,$size]"
done
mesk ping --count 1 192.168.77.99
expect "ping of nobody" "$code $(json ping.json .received)" "1 0"
