#pragma once

#include "packets/NetworkPacket.h"

#include <QByteArray>

/// Application layer packet: what a UdpPacket makes of its payload, and whose bytes it can be built from.
class ApplicationPacket : public NetworkPacket {
public:
    /// 5.
    quint32 layer() const override;
    /// The whole message; an empty array if there is none to send.
    virtual QByteArray serialize() const = 0;

protected:
    ApplicationPacket() = default;
};
