# shellcheck shell=bash disable=SC2034
#
# Sourced by each test of this folder: namespaces, peers in them, and checks that compare values.
#
# The test runs again in network, mount and process namespaces of its own. Their first process is the test
# itself, so whatever way it ends (done, failed, killed by ctest), the kernel ends every program that it started
# and takes every interface away. Nothing of it can be seen from outside, so tests run side by side.
#
# ctest gives MESK_PHY (the program) and PEERS_WORK (a folder of this build for logs and captures).

set -euo pipefail
: "${MESK_PHY:?}" "${PEERS_WORK:?}"

readonly skipped=77 # what ctest is told to take for a skipped test
test_name=$(basename "$0" .sh)${1:+-$1}
work=$PEERS_WORK/$test_name
captures=$work/captures

# Addresses. The program keeps the defaults of its own options.
readonly our_mac=02:4b:00:00:00:01 our_address=192.168.77.1
readonly far_mac=02:4b:00:00:00:0a far_address=192.168.77.10
readonly camera_mac=02:4b:00:00:00:20 camera_address=192.168.77.20
readonly net_bits=24

skip() {
    echo "skipped: $*"
    exit $skipped
}

# need PROGRAM...: skips where one of them isn't there.
need() {
    local program
    for program in "$@"; do
        command -v "$program" >/dev/null || skip "$program is not installed (scripts/packages-peers has its package)"
    done
}

enter_namespaces() {
    local form refusal=
    local -a forms=("" "--user --map-root-user")
    [ "$(id -u)" -eq 0 ] || forms=("--user --map-root-user")
    for form in "${forms[@]}"; do
        # shellcheck disable=SC2206
        local -a own=(unshare $form --net --mount --pid --fork --kill-child --mount-proc)
        if refusal=$("${own[@]}" true 2>&1); then
            PEERS_INSIDE=1 exec "${own[@]}" "$BASH" "$0" "$@"
        fi
    done
    skip "namespaces may not be made here ($refusal)"
}

if [ -z "${PEERS_INSIDE:-}" ]; then
    PATH=$PATH:/usr/sbin:/sbin
    need unshare ip jq
    enter_namespaces "$@"
fi

rm -rf "$work"
mkdir -p "$captures"
mount -t tmpfs none /run
mkdir /run/netns
ip link set lo up
cd "$work"

checks=0
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# expect WHAT ACTUAL EXPECTED
expect() {
    checks=$((checks + 1))
    [ "$2" = "$3" ] || fail "$1: '$2' where '$3' is due"
}

# expect_line WHAT FILE REGEX: some line of the file matches the extended regular expression.
expect_line() {
    checks=$((checks + 1))
    grep -qE -- "$3" "$2" || fail "$1: no line matches '$3' in: $(head -n 20 "$2")"
}

# expect_file WHAT ACTUAL EXPECTED: the same bytes.
expect_file() {
    checks=$((checks + 1))
    cmp "$2" "$3" || fail "$1: $(basename "$2") differs from $(basename "$3")"
}

report() {
    local code=$? log
    if [ $code -eq $skipped ]; then
        return
    fi
    if [ $code -eq 0 ] && [ $failures -eq 0 ] && [ $checks -gt 0 ]; then
        echo "$checks checks in $SECONDS s"
        return
    fi
    echo "$test_name: $failures of $checks checks failed, end $code; the logs in $work:"
    # What still runs ends as with Ctrl-C, so that its log and its capture are whole.
    # shellcheck disable=SC2046
    kill -INT $(jobs -p) 2>/dev/null && sleep 0.5
    for log in *.log; do
        [ -s "$log" ] && printf -- '--- %s\n%s\n' "$log" "$(tail -n 25 "$log" | cut -c1-300)"
    done
    exit 1
}
trap report EXIT

# make_veth: "near" here, for the program; "far" in a namespace "far", with an address of the kernel's.
make_veth() {
    ip netns add far
    ip link add near type veth peer name far netns far
    ip link set near up
    ip -n far link set lo up
    ip -n far link set far address $far_mac up
    ip -n far address add $far_address/$net_bits dev far
    link=interface:near
}

# make_bridge: as make_veth, with a third host on the same net: "other" in a namespace "other", without an address.
# The far side is a bridge between the two.
make_bridge() {
    ip netns add far
    ip netns add other
    ip link add near type veth peer name to-near netns far
    ip -n other link add other type veth peer name to-other netns far
    ip -n far link add far type bridge forward_delay 0 2>bridge.log ||
        skip "this kernel makes no bridge ($(cat bridge.log))"
    ip -n far link set to-near master far up
    ip -n far link set to-other master far up
    ip link set near up
    ip -n other link set other up
    ip -n far link set lo up
    ip -n far link set far address $far_mac up
    ip -n far address add $far_address/$net_bits dev far
    link=interface:near
}

# make_tap: a TAP whose kernel side has the address of the far side, here; no other namespace.
make_tap() {
    { : <>/dev/net/tun; } 2>/dev/null || skip "/dev/net/tun can't be opened here"
    ip tuntap add tap0 mode tap
    ip link set tap0 address $far_mac up
    ip address add $far_address/$net_bits dev tap0
    link=tap:tap0
}

# far COMMAND...: on the kernel's side, bounded in time.
far() {
    local -a where=()
    [ ! -e /run/netns/far ] || where=(ip netns exec far)
    timeout --kill-after=2 30 "${where[@]}" "$@"
}

# start NAME COMMAND...: in the background on this side, output to NAME.log; its process id in $started.
start() {
    local log=$1.log
    shift
    env --default-signal=INT "$@" >>"$log" 2>&1 </dev/null & # bash would have it ignore Ctrl-C
    started=$!
}

start_far() {
    local name=$1
    shift
    if [ -e /run/netns/far ]; then
        start "$name" ip netns exec far "$@"
    else
        start "$name" "$@"
    fi
}

# stop PID [SIGNAL]: ends what start started, waits for it, gives its exit code in $ended.
stop() {
    kill "-${2:-TERM}" "$1" 2>/dev/null || true
    ended=0
    { wait "$1" || ended=$?; } 2>/dev/null # without bash's word on who was killed
}

# await WHAT SECONDS COMMAND...: until the command succeeds.
await() {
    local what=$1 limit=$((SECONDS + $2 + 1))
    shift 2
    until "$@" >/dev/null 2>&1; do
        if [ $SECONDS -ge $limit ]; then
            fail "$what: never came"
            exit 1
        fi
        sleep 0.05
    done
    checks=$((checks + 1))
}

# await_line FILE REGEX [COUNT [SECONDS]]: until so many lines match.
await_line() {
    local file=$1 pattern=$2 count=${3:-1} seconds=${4:-15}
    await "line '$pattern' in $file" "$seconds" has_lines "$file" "$pattern" "$count"
}

has_lines() {
    [ "$(grep -cE -- "$2" "$1" 2>/dev/null)" -ge "$3" ]
}

runs=0
# mesk VERB...: the program on $link, its frames to a capture, JSON to stdout and its exit code in $code.
mesk() {
    runs=$((runs + 1))
    code=0
    timeout --kill-after=2 30 "$MESK_PHY" --json --quiet --link "$link" \
        --write "$captures/$runs-$1.pcap" "$@" >"$1.json" 2>"$1.log" || code=$?
}

# start_mesk VERB...: the same in the background, output to VERB.log.
start_mesk() {
    runs=$((runs + 1))
    start "$1" "$MESK_PHY" --json --quiet --link "$link" --write "$captures/$runs-$1.pcap" "$@"
}

# example VERB: the first example of a verb's help, on $link.
example() {
    "$MESK_PHY" "$1" --help | sed -nE "2{s/^ *mesk-phy //; s#--link [^ ]*#--link $link#; p}"
}

# json FILE FILTER: a value of the program's output, compact; the last record where there are several.
json() {
    jq -c -r "$2" "$1" 2>/dev/null | tail -n 1
}

# await_record FILE FILTER [COUNT [SECONDS]]: until so many records of a running program satisfy the filter.
await_record() {
    await "record '$2' in $1" "${4:-15}" has_records "$1" "$2" "${3:-1}"
}

# Its last line may be half written.
has_records() {
    [ "$(jq -R "fromjson? | select($2) | 1" "$1" 2>/dev/null | wc -l)" -ge "$3" ]
}

# frames VERB FILTER: what jq's filter gives for the frames of the last capture of a verb that has ended.
frames() {
    local -a written
    mapfile -t written < <(ls -t "$captures"/*-"$1".pcap)
    "$MESK_PHY" dump --json "${written[0]}" 2>/dev/null | jq -r "$2"
}

# await_udp PORT: until a program on the far side listens there.
await_udp() {
    await "a listener on port $1" 15 udp_listens "$1"
}

udp_listens() {
    [ -n "$(far ss -Hlun "sport = :$1")" ]
}

# start_camera ARGUMENT...: the emulated device on $link; $camera is its process id.
start_camera() {
    start_mesk camera "$@"
    camera=$started
}
