#pragma once

#include "host/Verb.h"

#include <vector>

namespace mesk::host {

/// All verbs, in the order of the help.
const std::vector<VerbEntry>& verbTable();

std::unique_ptr<Verb> makeBoardsVerb();
std::unique_ptr<Verb> makeRelayVerb();
std::unique_ptr<Verb> makeSendVerb();
std::unique_ptr<Verb> makeReceiveVerb();
std::unique_ptr<Verb> makeResetPhyVerb();
std::unique_ptr<Verb> makeReportVerb();
std::unique_ptr<Verb> makeEventsVerb();
std::unique_ptr<Verb> makeDumpVerb();
std::unique_ptr<Verb> makeDiscoverVerb();
std::unique_ptr<Verb> makeReadVerb();
std::unique_ptr<Verb> makeWriteVerb();
std::unique_ptr<Verb> makeReadMemoryVerb();
std::unique_ptr<Verb> makeWriteMemoryVerb();
std::unique_ptr<Verb> makeActionVerb();
std::unique_ptr<Verb> makePingVerb();
std::unique_ptr<Verb> makeArpVerb();
std::unique_ptr<Verb> makeDhcpServerVerb();
std::unique_ptr<Verb> makeDhcpClientVerb();
std::unique_ptr<Verb> makeCameraVerb();
std::unique_ptr<Verb> makeTourVerb();

} // namespace mesk::host
