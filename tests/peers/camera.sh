#!/usr/bin/env bash
# The emulated device against the clients of aravis. Usage: camera.sh arv-tool|arv-camera-test
source "$(dirname "$0")/lib.sh"
need arv-tool-0.8 arv-camera-test-0.8 arping

make_veth
start_camera
tool() {
    far arv-tool-0.8 -a $camera_address "$@" 2>&1
}
await "the device" 15 far arping -c 1 -w 1 -I far $camera_address

with_arv_tool() {
    far arv-tool-0.8 >list.log
    expect "discovery" "$(cat list.log)" "Emulated-EC-1-EC0001 ($camera_address)"

    tool genicam >theirs.xml
    local description=$MESK_SOURCE/stand-ins/camera/description/emulated-camera.xml
    expect_file "description" <(head -c "$(stat -c %s "$description")" theirs.xml) "$description"
    tool features >features.log
    local feature
    for feature in $(sed -n 's/.*<pFeature>\(.*\)<\/pFeature>.*/\1/p' "$description"); do
        expect_line "feature list" features.log "\b$feature\b"
    done

    tool control Width=320 Height=200 >/dev/null
    expect "features written" "$(tool control Width Height | cut -d' ' -f1-3 | xargs)" "Width = 320 Height = 200"
    tool control DeviceUserID=peer >/dev/null
    expect "text written" "$(tool control DeviceUserID)" "DeviceUserID = peer"
    expect "feature without a word to read" "$(tool control ActionCount | cut -d' ' -f1-3)" "ActionCount = 0"

    tool control 'R[0xfffffff0]' >status.log
    tool control 'R[0x939]' >>status.log
    tool control 'R[0x0]=1' >>status.log
    expect_line "no such register" status.log '0xfffffff0.*\(invalid-access\)'
    expect_line "odd address" status.log '0x00000939.*\(bad-alignment\)'
    expect_line "read-only register" status.log '0x00000000.*\(write-protect\)'
}

with_arv_camera_test() {
    start_far holder stdbuf -oL arv-camera-test-0.8 --width=320 --height=240 --duration=60
    local holder=$started
    await_record camera.log ".change == \"control\" and (.value | startswith(\"$far_address:\"))"
    await_line holder.log '^payload *= 76800 bytes'
    expect "what it found and set" "$(sed -n 's/ *= /=/p' holder.log | head -n 6 | xargs -d '\n')" \
        "vendor name=Emulated model name=EC-1 device serial number=EC0001 image width=320 image height=240\
 payload=76800 bytes"

    # Held for longer than the heartbeat time, which the client refreshes.
    sleep 4
    tool control Width=100 >denied.log
    expect_line "second client" denied.log 'access-denied'
    stop "$holder" KILL
    await_record camera.log '.change == "control" and .value == "none"'
    expect "width that the client left" "$(tool control Width | cut -d' ' -f1-3)" "Width = 320"
}

"with_${1//-/_}"
stop "$camera" INT
expect "heartbeats that stayed away" "$(json camera.log '.statistics.heartbeatsLost // empty')" \
    "$([ "$1" = arv-camera-test ] && echo 1 || echo 0)"

if [ "$1" = arv-tool ]; then
    # shellcheck disable=SC2046
    start example "$MESK_PHY" $(example camera)
    await_line example.log ' address .*persistent'
    ip -n far address add 10.77.1.1/24 dev far
    expect "example of its help" "$(far arv-tool-0.8)" "Emulated-EC-1-EC0001 (10.77.1.20)"
    stop "$started" INT
fi
