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
         "mesk-phy relay samples/camera-session.pcap --to 1 --reset\n"
         "mesk-phy relay --port 2 --to 3 session.pcapng --write seen-at-port-2.pcap\n",
         makeRelayVerb},
        {"send", "Send a capture", "mesk-phy send session.pcap --link file:,recorded.pcap\n", makeSendVerb},
        {"receive", "Show the frames that arrive; under --json a line each, the last with the statistics",
         "mesk-phy receive --link file:session.pcap, --count 5 --json\n"
         "mesk-phy receive --seconds 10\n",
         makeReceiveVerb},
        {"reset-phy", "Reset the PHY of the port", "mesk-phy reset-phy --port 2\n", makeResetPhyVerb},
        {"report", "Show the debug report (with --reset the PHY dump too) and the statistics",
         "mesk-phy report --reset\n"
         "mesk-phy report --json | jq -r '.lines[].text'\n",
         makeReportVerb},
        {"events", "Show the events of the port as they come",
         "mesk-phy events --seconds 10\n"
         "mesk-phy events --setup samples/action-timeouts.ini --json | jq .count\n",
         makeEventsVerb},
        {"dump", "Show the frames of a capture, layer by layer",
         "mesk-phy dump samples/camera-session.pcap\n"
         "mesk-phy dump session.pcapng -v --verify\n"
         "tcpdump -i eth1 -U -w - | mesk-phy dump - --json | jq -c '.layers[-1]'\n",
         makeDumpVerb},
    };
    return table;
}

} // namespace mesk::host
