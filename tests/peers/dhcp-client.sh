#!/usr/bin/env bash
# dhcp-client and the emulated device, both at once, as clients of a server. Usage: dhcp-client.sh dnsmasq|udhcpd
# Leases, renewals, refusal of a renewal (the server has forgotten all and gives others), decline of an address that
# another host has, and of one that another host takes later.
source "$(dirname "$0")/lib.sh"
kind=$1
need "$kind" ping ss arping

make_bridge

hosts=()
# Renewals are due three seconds after a lease came; dhcp-client is told to renew sooner.
start_dnsmasq() {
    start_far server dnsmasq --no-daemon --log-facility=- --log-dhcp --no-resolv --no-hosts --port=0 \
        --interface=far --bind-interfaces --dhcp-authoritative --no-ping \
        --dhcp-range="$1,$2,255.255.255.0,120" --dhcp-option=option:T1,3 --dhcp-leasefile="$work/leases" \
        "${hosts[@]}"
}
start_udhcpd() {
    cat >udhcpd.conf <<END
start $1
end $2
interface far
lease_file $work/leases
pidfile $work/server.pid
opt subnet 255.255.255.0
opt router $far_address
opt lease 120
opt 58 00000003
END
    start_far server udhcpd -f "$work/udhcpd.conf"
}
# start_server FIRST LAST: one that knows of no lease.
start_server() {
    : >leases
    : >server.log
    "start_$kind" "192.168.77.$1" "192.168.77.$2"
    server=$started
    await_udp 67
}
# granted ADDRESS: how often the server says that it granted it.
granted() {
    grep -cE "DHCPACK\(far\) $1 |sending ACK to $1\$" server.log || true
}
granted_more() {
    [ "$(granted "$1")" -gt "$2" ]
}

start_clients() {
    rm -f dhcp-client.log camera.log
    start_mesk dhcp-client --release --renew-after 1
    client=$started
    start_camera dhcp
}
# await_addresses PATTERN: until both clients have an address like it; they are in $client_address and $device_address.
await_addresses() {
    await_record dhcp-client.log "(.change == \"bound\") and (.address | test(\"$1\"))" 1 30
    await_record camera.log "(.change == \"address\") and (.value | test(\"$1\"))" 1 30
    client_address=$(jq -r 'select(.change == "bound") | .address' dhcp-client.log | tail -n 1)
    device_address=$(jq -r 'select(.change == "address") | .value' camera.log | tail -n 1)
    client_address=${client_address%/*} device_address=${device_address%/*}
}
check_reach() {
    local address
    for address in "$client_address" "$device_address"; do
        far ping -n -c 1 -W 5 "$address" >ping.log 2>&1 || true
        expect_line "$1: echo from $address" ping.log '^1 packets transmitted, 1 received'
    done
}

# messages VERB MAC TYPE: the addresses in option 50 of the messages of a type (option 53, two digits) from or to a
# client that a verb's last capture has; "none" for a message without one.
messages() {
    frames "$1" ".layers[3]? | select(.class == \"DhcpPacket\" and (.chaddr | startswith(\"${2//:/}\"))) |
        (.options | map({(.code | tostring): .option}) | add) | select(.[\"53\"] == \"$3\") | .[\"50\"] // \"none\""
}
# renewals VERB MAC ADDRESS: how many acknowledges answer requests of who has the address already.
renewals() {
    frames "$1" ".layers[3]? | select(.class == \"DhcpPacket\" and (.chaddr | startswith(\"${2//:/}\"))) |
        {xid, ciaddr, type: .options[] | select(.code == 53) | .option} | @json" |
        jq -s --arg address "$3" '[.[] | select(.type == "03" and .ciaddr == $address) | .xid] as $asked |
            map(select(.type == "05" and (.xid | IN($asked[])))) | length'
}
hex_of() {
    local -a parts
    IFS=. read -r -a parts <<<"$1"
    printf '%02x' "${parts[@]}"
}

start_server 100 119
# shellcheck disable=SC2046
expect "example of its help" "$("$MESK_PHY" $(example dhcp-client) >example.log 2>&1; echo $?)" 0
expect_line "lease given back" example.log ' released  192[.]168[.]77[.]1[01][0-9]'
start_clients
await_addresses '^192[.]168[.]77[.]1[01][0-9]'
expect "lease" "$(json dhcp-client.log 'select(.change == "bound") | [.address, .server, .router, .leaseSeconds]')" \
    "[\"$client_address/24\",\"$far_address\",\"$far_address\",120]"
[ "$client_address" != "$device_address" ] || fail "both have $client_address"
check_reach "leased"

sleep 2 # udhcpd may still have requests of before to answer
await "renewal of dhcp-client" 15 granted_more "$client_address" "$(granted "$client_address")"
await "renewal of the device" 15 granted_more "$device_address" "$(granted "$device_address")"
await_record dhcp-client.log ".change == \"renewed\" and .address == \"$client_address/24\""
first="$client_address $device_address"

# The server forgets the leases and has other addresses now.
stop "$server"
start_server 130 149
await_addresses '^192[.]168[.]77[.]1[34][0-9]'
expect "refusals that dhcp-client tells" "$(grep -c '"change":"refused"' dhcp-client.log)" 1
check_reach "leased after the refusal"

stop "$client" INT
stop "$camera" INT
[ "$(renewals dhcp-client $our_mac "${first% *}")" -ge 1 ] || fail "no renewal of dhcp-client was acknowledged"
[ "$(renewals camera $camera_mac "${first#* }")" -ge 1 ] || fail "no renewal of the device was acknowledged"
expect "refusal of dhcp-client's renewal" "$(messages dhcp-client $our_mac 06 | wc -l)" 1
expect "refusal of the device's renewal" "$(messages camera $camera_mac 06 | wc -l)" 1
if [ "$kind" = dnsmasq ]; then
    await_line server.log "DHCPRELEASE\(far\) $client_address $our_mac"
fi
stop "$server"

# The server gives the first addresses again, but another host has them, which only answers who has no address yet:
# the server itself doesn't find it.
for address in $first; do
    ip -n other address add "$address/32" dev other
done
# dnsmasq would give everybody other addresses after the first decline.
hosts=("--dhcp-host=$our_mac,${first% *}" "--dhcp-host=$camera_mac,${first#* }")
ip netns exec other sh -c 'echo 2 >/proc/sys/net/ipv4/conf/all/arp_ignore'
start_server 100 119
start_clients
await_record dhcp-client.log ".change == \"declined\" and .address == \"${first% *}\"" 1 30
await_addresses '^192[.]168[.]77[.]1[01][0-9]'
for address in $first; do
    [ "$client_address" != "$address" ] && [ "$device_address" != "$address" ] || fail "$address is used all the same"
done
check_reach "leased after the decline"

# Now another host announces that it has these addresses: once, which they defend, and again.
second="$client_address $device_address"
for address in $second; do
    ip -n other address add "$address/32" dev other
    ip netns exec other arping -q -U -c 2 -I other "$address" || true
done
await_record dhcp-client.log ".change == \"declined\" and .address == \"${second% *}\"" 1 30
await_record dhcp-client.log '.change == "bound"' 2 40
await_record camera.log '.change == "address" and (.value | test("^192[.]168[.]77[.]1"))' 2 40
await_addresses '^192[.]168[.]77[.]1[01][0-9]'
check_reach "leased after the second decline"
stop "$client" INT
stop "$camera" INT
expect "what dhcp-client declined" "$(messages dhcp-client $our_mac 04 | xargs)" \
    "$(hex_of "${first% *}") $(hex_of "${second% *}")"
expect "what the device declined" "$(messages camera $camera_mac 04 | xargs)" \
    "$(hex_of "${first#* }") $(hex_of "${second#* }")"
