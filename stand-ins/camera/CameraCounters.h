#pragma once

#include <QtGlobal>

#include <map>

namespace emulated_camera {

/// What a device did since it was made.
struct CameraCounters {
    quint64 framesIn = 0;
    quint64 framesOut = 0; ///< as the device meant to send them, whatever the faults made of it
    quint64 commands = 0;
    quint64 ignored = 0;         ///< datagrams to the port of GVCP that are no command for this device
    quint64 retransmissions = 0; ///< commands that came again, and were not executed again
    quint64 pending = 0;         ///< pending acknowledges
    quint64 heartbeatsLost = 0;  ///< controllers that were not heard of in time
    quint64 actions = 0;         ///< action signals that a command triggered
    quint64 resends = 0;         ///< requests for stream packets, of which there are none
    quint64 events = 0;
    quint64 eventsRepeated = 0;
    quint64 eventsLost = 0;                  ///< found no room, or were never acknowledged
    quint64 conflicts = 0;                   ///< own addresses that somebody else used
    std::map<quint16, quint64> acknowledges; ///< by status

    /// What the faults did.
    quint64 framesLost = 0;
    quint64 framesDoubled = 0;
    quint64 framesDelayed = 0;
    quint64 acknowledgesCut = 0;
    quint64 wrongIds = 0;
};

} // namespace emulated_camera
