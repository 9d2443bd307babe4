#!/usr/bin/env bash
# All captures that the other tests of this folder left, against tshark. No namespaces are needed.
set -euo pipefail
: "${MESK_PHY:?}" "${PEERS_WORK:?}"
for program in tshark mergecap python3; do
    command -v $program >/dev/null || {
        echo "skipped: $program is not installed (scripts/packages-peers has its package)"
        exit 77
    }
done

# One file per test, since each start of tshark takes its time.
work=$PEERS_WORK/captures
rm -rf "$work"
mkdir -p "$work"
whole=true
for folder in "$PEERS_WORK"/*/captures; do
    captures=("$folder"/*.pcap)
    [ -s "${captures[0]}" ] || continue
    mergecap -a -F pcap -w "$work/$(basename "$(dirname "$folder")").pcap" "${captures[@]}" || whole=false
done
merged=("$work"/*.pcap)
if [ ! -e "${merged[0]}" ]; then
    echo "skipped: no test of this folder left a capture"
    exit 77
fi
python3 "$(dirname "$0")/compare-captures.py" "$MESK_PHY" "${merged[@]}"
$whole
