#!/usr/bin/env bash
# dhcp-server with clients that others wrote. Usage: dhcp-server.sh udhcpc|dhclient|both
source "$(dirname "$0")/lib.sh"
need udhcpc dhclient

make_bridge
ip -n far address flush dev far
other_mac=02:4b:00:00:00:0b
ip -n other link set other address $other_mac

# What both clients call when something changes: tells it, and sets the address.
cat >changed <<'END'
#!/bin/sh
[ -n "$reason" ] && ip=$new_ip_address subnet=$new_subnet_mask lease=$new_dhcp_lease_time serverid=$new_dhcp_server_identifier
echo "${reason:-$1} ip=$ip subnet=$subnet lease=$lease server=$serverid" >>"$CHANGES"
# Kept after a release: dhclient would take the address away before the kernel has sent the release.
case ${reason:-$1} in
    bound | BOUND | REBOOT) ip address flush dev "$interface" && ip address add "$ip/24" dev "$interface" ;;
esac
exit 0
END
chmod +x changed
cat >dhclient.conf <<'END'
supersede dhcp-renewal-time 2;
timeout 20;
initial-interval 1;
backoff-cutoff 2;
END

# start_udhcpc NAMESPACE, start_dhclient NAMESPACE: on the interface of the same name.
start_udhcpc() {
    start udhcpc ip netns exec "$1" env CHANGES="$work/udhcpc.changes" udhcpc -f -i "$1" -s "$work/changed" -t 20 -T 1
    udhcpc=$started
}
dhclient_in() {
    ip netns exec "$1" dhclient "${@:2}" -v -cf "$work/dhclient.conf" -lf "$work/dhclient.leases" \
        -pf "$work/dhclient.pid" -sf "$work/changed" -e CHANGES="$work/dhclient.changes" "$1"
}
start_dhclient() {
    start dhclient ip netns exec "$1" dhclient -d -v -cf "$work/dhclient.conf" -lf "$work/dhclient.leases" \
        -pf "$work/dhclient.pid" -sf "$work/changed" -e CHANGES="$work/dhclient.changes" "$1"
    dhclient=$started
}
# server_says CHANGE MAC ADDRESS [COUNT]
await_server() {
    await_record dhcp-server.log ".change == \"$1\" and .client == \"$2\" and .address == \"$3\"" "${4:-1}"
}
address_of() {
    sed -n 's/^\(bound\|BOUND\) ip=\([0-9.]*\) .*/\2/p' "$1.changes" | tail -n 1
}
# check_lease PROGRAM: what it was given.
check_lease() {
    local address
    address=$(address_of "$1")
    expect_line "lease of $1" "$1.changes" \
        "^(bound|BOUND) ip=192\.168\.77\.10[0-3] subnet=255\.255\.255\.0 lease=600 server=$our_address\$"
    await_server bound "$2" "$address"
}

touch dhclient.leases udhcpc.changes dhclient.changes
start_mesk dhcp-server --pool 192.168.77.100-192.168.77.103 --lease-seconds 600
server=$started

with_udhcpc() {
    start_udhcpc far
    await_line udhcpc.changes '^bound '
    check_lease udhcpc $far_mac
    local address
    address=$(address_of udhcpc)
    kill -USR1 "$udhcpc"
    await_line udhcpc.changes "^renew ip=$address subnet=255\.255\.255\.0 lease=600"
    await_server bound $far_mac "$address" 2
    kill -USR2 "$udhcpc"
    await_server released $far_mac "$address"
    # Asked for again, it comes again.
    kill -USR1 "$udhcpc"
    await_line udhcpc.changes "^bound ip=$address " 2
    stop "$udhcpc"
}

with_dhclient() {
    # A lease of another net that it remembers: refused, then a new one.
    cat >dhclient.leases <<END
lease {
  interface "far";
  fixed-address 192.0.2.77;
  option dhcp-lease-time 36000;
  option dhcp-server-identifier $our_address;
  option subnet-mask 255.255.255.0;
  renew 2 2036/01/01 00:00:00;
  rebind 2 2036/01/01 00:00:00;
  expire 2 2036/01/01 00:00:00;
}
END
    start_dhclient far
    await_line dhclient.log '^DHCPNAK from 192\.168\.77\.1'
    await_server refused $far_mac 192.0.2.77
    await_line dhclient.changes '^BOUND '
    check_lease dhclient $far_mac
    local address
    address=$(address_of dhclient)
    await_line dhclient.changes "^RENEW ip=$address subnet=255\.255\.255\.0 lease=600"
    await_server bound $far_mac "$address" 2
    # Stopped without a release, it asks for the address that it remembers.
    stop "$dhclient"
    start_dhclient far
    await_line dhclient.changes "^REBOOT ip=$address "
    stop "$dhclient"
    dhclient_in far -r >release.log 2>&1
    await_server released $far_mac "$address"
}

with_both() {
    start_udhcpc far
    start_dhclient other
    await_line udhcpc.changes '^bound '
    await_line dhclient.changes '^BOUND '
    check_lease udhcpc $far_mac
    check_lease dhclient $other_mac
    [ "$(address_of udhcpc)" != "$(address_of dhclient)" ] || fail "both got $(address_of udhcpc)"
    kill -USR1 "$udhcpc"
    await_server bound $far_mac "$(address_of udhcpc)" 2
    await_server bound $other_mac "$(address_of dhclient)" 2
    stop "$udhcpc"
    stop "$dhclient"
}

"with_$1"
stop "$server" INT
