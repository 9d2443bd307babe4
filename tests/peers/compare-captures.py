#!/usr/bin/env python3
"""Holds captures that mesk-phy wrote against tshark.

Usage: compare-captures.py MESK_PHY CAPTURE...

For each frame: tshark calls nothing malformed (but error acknowledges of GVCP, which carry no data, and in which it
looks for some); the checksums are right; mesk-phy dump reads the same fields and comes
to the same opinion on the checksums. Frames that a kernel's socket sent over a veth may carry the sum of the pseudo
header alone where the checksum belongs: a network interface would fill it in (checksum offload).
Prints what differs; ends with 1 if anything does.
"""

import json
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

FIELDS = """
frame.number frame.len eth.src eth.dst eth.type
arp.opcode arp.src.hw_mac arp.src.proto_ipv4 arp.dst.hw_mac arp.dst.proto_ipv4
ip.src ip.dst ip.proto ip.len ip.checksum.status
icmp.type icmp.code icmp.checksum icmp.checksum.status
udp.srcport udp.dstport udp.length udp.checksum udp.checksum.status udp.payload
dhcp.type dhcp.id dhcp.flags dhcp.ip.client dhcp.ip.your dhcp.ip.relay dhcp.hw.mac_addr dhcp.option.type
dhcp.option.value
gvcp.cmd.command gvcp.ack gvcp.cmd.status gvcp.cmd.flags gvcp.cmd.req_id gvcp.cmd.payloadlength
_ws.malformed _ws.expert.severity _ws.expert.message
""".split()
GOOD = "1"
SEVERITY_ERROR = 8388608
OWN_MACS = {"02:4b:00:00:00:01", "02:4b:00:00:00:20"}


def tshark_frames(capture):
    command = ["tshark", "-n", "-r", capture, "-o", "ip.check_checksum:TRUE", "-o", "udp.check_checksum:TRUE",
               "-T", "fields", "-E", "aggregator=|", "-E", "occurrence=a"]
    for field in FIELDS:
        command += ["-e", field]
    lines = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout
    frames = []
    for line in lines.splitlines():
        frames.append(dict(zip(FIELDS, line.split("\t"))))
    return frames


def our_frames(mesk_phy, capture):
    # A bad checksum ends it with 1: each is looked at here.
    lines = subprocess.run([mesk_phy, "dump", "--json", "--verify", capture], check=False, stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True).stdout
    for line in lines.splitlines():
        yield json.loads(line)


def number(text):
    """Of the first value: an ICMP error repeats the fields of what it quotes."""
    first = text.split("|")[0]
    return int(first, 0) if first else None


def first(text):
    return text.split("|")[0]


def partial_sum(frame):
    """What the kernel leaves to the interface: the folded sum over the pseudo header."""
    parts = [int(part) for address in (frame["ip.src"], frame["ip.dst"]) for part in first(address).split(".")]
    words = [parts[at] << 8 | parts[at + 1] for at in range(0, 8, 2)]
    total = sum(words) + number(frame["ip.proto"]) + number(frame["udp.length"])
    while total >> 16:
        total = (total & 0xffff) + (total >> 16)
    return total


def differences(frame, ours):
    """Texts that say what isn't as it should be."""
    layers = {layer["layer"]: layer for layer in ours["layers"]}
    checksums = ours.get("checksums", {})

    def same(what, theirs, mine):
        if theirs != mine:
            yield f"{what}: tshark {theirs}, mesk-phy {mine}"

    def checksum(protocol, status, may_be_partial=False):
        if status == "" or status == "3":
            return
        yield from same(f"{protocol} checksum", "good" if status == GOOD else "bad", checksums.get(protocol))
        if status != GOOD and not may_be_partial:
            yield f"{protocol} checksum is bad"

    is_error_acknowledge = bool(frame["gvcp.ack"]) and number(frame["gvcp.cmd.status"]) != 0
    if frame["_ws.malformed"] and not is_error_acknowledge:
        yield "malformed"
    for severity, message in zip(frame["_ws.expert.severity"].split("|"), frame["_ws.expert.message"].split("|")):
        if severity and int(severity, 0) >= SEVERITY_ERROR and \
                not is_error_acknowledge and "checksum" not in message.lower():
            yield f"tshark says: {message}"

    ethernet = layers[2]
    yield from same("length", int(frame["frame.len"]), ours["originalBytes"])
    yield from same("source", frame["eth.src"], ethernet["source"])
    yield from same("destination", frame["eth.dst"], ethernet["destination"])
    yield from same("type", number(frame["eth.type"]), ethernet["etherType"])

    network = layers.get(3, {})
    if frame["arp.opcode"]:
        for field, key in [("arp.src.hw_mac", "senderMacAddress"), ("arp.src.proto_ipv4", "sourceAddress"),
                           ("arp.dst.hw_mac", "targetMacAddress"), ("arp.dst.proto_ipv4", "destinationAddress")]:
            yield from same(field, frame[field], network.get(key))
        yield from same("operation", number(frame["arp.opcode"]), network.get("operation"))
    if not frame["ip.src"]:
        return
    yield from same("IPv4 source", first(frame["ip.src"]), network.get("sourceAddress"))
    yield from same("IPv4 destination", first(frame["ip.dst"]), network.get("destinationAddress"))
    yield from same("protocol", number(frame["ip.proto"]), network.get("protocol"))
    yield from same("IPv4 length", number(frame["ip.len"]), network.get("totalSize"))
    yield from checksum("ipv4", first(frame["ip.checksum.status"]))

    transport = layers.get(4, {})
    if frame["icmp.type"]:
        for field, key in [("icmp.type", "type"), ("icmp.code", "code"), ("icmp.checksum", "checksum")]:
            yield from same(field, number(frame[field]), transport.get(key))
        yield from checksum("icmp", first(frame["icmp.checksum.status"]))
        return
    if not frame["udp.srcport"]:
        return
    for field, key in [("udp.srcport", "sourcePort"), ("udp.dstport", "destinationPort"), ("udp.length", "length"),
                       ("udp.checksum", "checksum")]:
        yield from same(field, number(frame[field]), transport.get(key))
    yield from same("UDP payload", frame["udp.payload"].replace(":", ""), transport.get("payload"))
    left_to_interface = frame["eth.src"] not in OWN_MACS and number(frame["udp.checksum"]) == partial_sum(frame)
    yield from checksum("udp", frame["udp.checksum.status"], left_to_interface)

    application = layers.get(5, {})
    if frame["dhcp.type"]:
        yield from same("isRequest", frame["dhcp.type"] == "1", application.get("isRequest"))
        # The packet class keeps the id as it lies in memory.
        yield from same("xid", number(frame["dhcp.id"]),
                        int.from_bytes(application["xid"].to_bytes(4, sys.byteorder), "big"))
        yield from same("flags", number(frame["dhcp.flags"]), application.get("flags"))
        for field, key in [("dhcp.ip.client", "ciaddr"), ("dhcp.ip.your", "yiaddr"), ("dhcp.ip.relay", "giaddr")]:
            yield from same(field, frame[field], application.get(key))
        yield from same("chaddr", first(frame["dhcp.hw.mac_addr"]).replace(":", "").ljust(32, "0"), application.get("chaddr"))
        codes = sorted({int(code) for code in frame["dhcp.option.type"].split("|")} - {0, 255})
        yield from same("option codes", codes, sorted(option["code"] for option in application["options"]))
        values = sorted(value.replace(":", "") for value in frame["dhcp.option.value"].split("|") if value)
        yield from same("option values", values, sorted(option["option"] for option in application["options"]))
    if frame["gvcp.cmd.req_id"]:
        if frame["gvcp.cmd.command"]:
            yield from same("command", number(frame["gvcp.cmd.command"]), application.get("command"))
            yield from same("flags", number(frame["gvcp.cmd.flags"]), application.get("flags"))
        else:
            yield from same("acknowledge", number(frame["gvcp.ack"]), application.get("acknowledge"))
            yield from same("status", number(frame["gvcp.cmd.status"]), application.get("status"))
        yield from same("request id", number(frame["gvcp.cmd.req_id"]), application.get("requestId"))
        yield from same("payload length", number(frame["gvcp.cmd.payloadlength"]), application.get("payloadLength"))


def main():
    mesk_phy, *captures = sys.argv[1:]
    bad = total = 0
    with ThreadPoolExecutor(2) as pool:  # each start of tshark takes its time
        readings = list(pool.map(tshark_frames, captures))
    for capture, theirs in zip(captures, readings):
        ours = list(our_frames(mesk_phy, capture))
        if len(theirs) != len(ours) or not theirs:
            print(f"{capture}: tshark reads {len(theirs)} frames, mesk-phy {len(ours)}")
            bad += 1
        for frame, mine in zip(theirs, ours):
            total += 1
            for text in differences(frame, mine):
                print(f"{capture}, frame {frame['frame.number']}: {text}")
                bad += 1
    print(f"{total} frames in {len(captures)} captures, {bad} differences")
    return 1 if bad or not total else 0


if __name__ == "__main__":
    sys.exit(main())
