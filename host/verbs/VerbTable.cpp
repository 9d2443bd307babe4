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
        {"send", "Send a capture",
         "mesk-phy send session.pcap --link interface:eth1\n"
         "mesk-phy send session.pcap --link file:,recorded.pcap\n",
         makeSendVerb},
        {"receive", "Show the frames that arrive",
         "mesk-phy receive --link interface:eth1 --seconds 10\n"
         "mesk-phy receive --link file:session.pcap, --count 5 --json\n",
         makeReceiveVerb},
        {"reset-phy", "Reset the PHY of the port", "mesk-phy reset-phy --port 2\n", makeResetPhyVerb},
    };
    return table;
}

} // namespace mesk::host
