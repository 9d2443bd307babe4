#pragma once

#include "packets/MacAddress.h"
#include "stack/NetworkNode.h"

#include <string>

namespace emulated_camera {

/// What goes wrong on purpose, drawn from `seed`. Probabilities from 0 to 1.
struct Faults {
    quint32 seed = 1;
    double loss = 0;                    ///< frames not sent
    double duplicates = 0;              ///< frames sent twice
    double wrongIds = 0;                ///< acknowledges with another id
    double cut = 0;                     ///< acknowledges that are cut short
    std::chrono::milliseconds delay{0}; ///< of every frame
    bool silent = false;                ///< hears all, says nothing
};

/// What action signal 0 is triggered by, as if a client had written it. Without a bit in the mask: nothing.
struct ActionSignal {
    quint32 deviceKey = 0;
    quint32 groupKey = 0;
    quint32 groupMask = 0;
};

struct CameraSetup {
    enum class Start { Persistent, Dhcp, LinkLocal };

    MacAddress mac{0x02, 0x4b, 0x00, 0x00, 0x00, 0x20};
    QByteArray serialNumber = "EC0001"; ///< up to 15 bytes
    QByteArray userName;                ///< up to 15 bytes
    Start start = Start::Persistent;
    mesk::stack::NetAddress persistentAddress{IpAddress(0xc0a84d14), 24}; ///< 192.168.77.20
    std::chrono::milliseconds pendingAfter{0}; ///< how long reads and writes take; 0: no pending acknowledges
    bool zippedDescription = false;
    double eventsPerSecond = 0; ///< while the message channel is open; up to 1000
    ActionSignal action;
    Faults faults;
};

/// Reads the text behind "camera:": words and KEY=VALUE, with commas between them: dhcp, link-local,
/// address=A.B.C.D/P, mac=, serial=, name=, pending=MS, zip, events=PER_SECOND,
/// action=DEVICE_KEY/GROUP_KEY/GROUP_MASK, seed=, loss=, duplicates=, wrong-ids=, cut=, delay=MS, silent.
/// @param defaults what is not named. @throws std::runtime_error whose text is for the user.
CameraSetup parseCameraSetup(const std::string& text, CameraSetup defaults);

} // namespace emulated_camera
