#include "host/verbs/VerbTable.h"

namespace mesk::host {

const std::vector<VerbEntry>& verbTable()
{
    static const std::vector<VerbEntry> table = {
        {"boards", "Show boards, ports, firmware, serials and links",
         "mesk-phy boards\n"
         "mesk-phy boards --json | jq -r '.boards[].serial'\n",
         makeBoardsVerb},
        {"relay", "Send a capture from port to port, both ways at once, and compare",
         "mesk-phy relay samples/camera-session.pcap --to 1\n"
         "mesk-phy relay --port 2 --to 3 session.pcapng --write seen-at-port-2.pcap\n",
         makeRelayVerb},
        {"send", "Send a capture", "mesk-phy send session.pcap --link file:,recorded.pcap\n", makeSendVerb},
        {"receive", "Show the frames that arrive; under --json a line each, the last with the statistics",
         "mesk-phy receive --link file:session.pcap, --count 5 --json\n"
         "mesk-phy receive --seconds 2\n",
         makeReceiveVerb},
        {"reset-phy", "Reset the PHY of the port", "mesk-phy reset-phy --port 2\n", makeResetPhyVerb},
        {"report", "Show the debug report (with --reset the PHY dump too) and the statistics",
         "mesk-phy report --reset\n"
         "mesk-phy report --json | jq -r '.lines[].text'\n",
         makeReportVerb},
        {"events", "Show the events of the port as they come",
         "mesk-phy events --setup samples/action-timeouts.ini --seconds 2\n"
         "mesk-phy events --port 1 --seconds 60 --json | jq .count\n",
         makeEventsVerb},
        {"dump", "Show the frames of a capture, layer by layer",
         "mesk-phy dump samples/camera-session.pcap\n"
         "mesk-phy dump session.pcapng -v --verify\n"
         "tcpdump -i eth1 -U -w - | mesk-phy dump - --json | jq -c '.layers[-1]'\n",
         makeDumpVerb},
        {"discover", "Show the devices that answer a discovery",
         "mesk-phy discover --link camera\n"
         "mesk-phy discover --link interface:eth1 --ip 10.77.1.99/24 --json | jq -r '.devices[].address'\n",
         makeDiscoverVerb},
        {"read", "Read registers of a device",
         "mesk-phy read 0x938 0xa00 --link camera\n"
         "mesk-phy read --device 192.168.77.20 0x938 --link camera --json | jq '.registers[0].number'\n",
         makeReadVerb},
        {"write", "Write a register of a device, under the control privilege",
         "mesk-phy write 0x938 5000 --link camera\n"
         "mesk-phy write --device 192.168.77.20 0x938 0x7d0 --link camera --json\n",
         makeWriteVerb},
        {"read-memory", "Read memory of a device",
         "mesk-phy read-memory 0x200 64 --link camera\n"
         "mesk-phy read-memory 0x48 32 --link camera --json | jq -r .data | xxd -r -p\n",
         makeReadMemoryVerb},
        {"write-memory", "Write memory of a device, under the control privilege",
         "mesk-phy write-memory 0xe8 6e616d65 --link camera\n"
         "mesk-phy write-memory --device 192.168.77.20 0xe8 6e616d6500000000 --link camera --json\n",
         makeWriteMemoryVerb},
        {"action", "Send an action command, and show who acknowledges it",
         "mesk-phy action --device-key 1 --group-key 1 --group-mask 1 --link camera:action=1/1/1\n"
         "mesk-phy action --device-key 0x10 --group-key 2 --group-mask 0xff --device 10.77.1.20 "
         "--link interface:eth1 --ip 10.77.1.99/24\n",
         makeActionVerb,
         "A device acts and acknowledges if both keys are its own and the masks have a bit in common. The\n"
         "emulated camera has none before a client writes them, or "
         "camera:action=DEVICE_KEY/GROUP_KEY/GROUP_MASK."},
        {"ping", "Ask for echoes, and show the time they took",
         "mesk-phy ping 192.168.77.20 --link camera --count 3\n"
         "mesk-phy ping 192.168.77.20 --link camera --size 1472 --interval 0.1 --json | jq .lossPercent\n",
         makePingVerb},
        {"arp", "Ask who has an address",
         "mesk-phy arp 192.168.77.20 --link camera\n"
         "mesk-phy arp 192.168.77.20 --link camera --probe --json\n",
         makeArpVerb},
        {"dhcp-server", "Give addresses to who asks for one, as a DHCP server",
         "mesk-phy dhcp-server --pool 192.168.77.100-192.168.77.120 --link camera:dhcp --seconds 2\n"
         "mesk-phy dhcp-server --pool 10.77.1.50-10.77.1.59 --ip 10.77.1.99/24 --link interface:eth1\n",
         makeDhcpServerVerb},
        {"dhcp-client", "Take an address from a DHCP server, and keep it",
         "mesk-phy dhcp-client --link interface:eth1 --once --release\n"
         "mesk-phy dhcp-client --link tap:mesk0 --json\n",
         makeDhcpClientVerb, "The server is at the far end of the link; the emulated camera is none."},
        {"camera", "Play the emulated camera, for clients on the port's link",
         "mesk-phy camera --link interface:eth1 --ip 10.77.1.20/24\n"
         "mesk-phy camera dhcp,events=2 --link tap:mesk0 --seconds 60\n",
         makeCameraVerb, "Without --link the far end has an emulated camera of its own, and no client."},
        {"tour", "Do the main job step by step, with the emulated camera or a device of one's own",
         "mesk-phy tour\n"
         "mesk-phy tour --link interface:eth1 --ip 10.77.1.99/24 --write tour.pcap --json\n",
         makeTourVerb,
         "It resets the board's GigE hardware. For 5 s it gives an address to whoever asks for one by DHCP: "
         "not\n"
         "for a net that has a server. A device is controlled for a moment, and one of its registers is "
         "written\n"
         "and put back. Without --write all frames go to tour.pcap in the folder for temporary files "
         "(/tmp)."},
    };
    return table;
}

} // namespace mesk::host
