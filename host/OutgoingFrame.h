#pragma once

#include <QByteArray>

namespace mesk::host {

/// A frame as the port takes it, and what became of it on the way.
///
/// The transmitter takes whole 16-bit words and drops an odd last byte, so a frame of odd size gets one
/// zero byte; what is below the minimum the plugin fills up with zeros.
struct OutgoingFrame {
    QByteArray bytes;      ///< what goes into `EthernetFrame`; empty if refused
    bool filledUp = false; ///< shorter than 60 bytes
    bool madeEven = false; ///< of odd size, and not filled up
    bool refused = false;  ///< above 1518 bytes, or too short for its own header

    /// The frame as it arrives at the other end.
    QByteArray onWire() const;
};

OutgoingFrame prepareFrame(const QByteArray& captured);

} // namespace mesk::host
