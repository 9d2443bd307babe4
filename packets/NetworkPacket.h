#pragma once

#include <QtGlobal>

/// Root of the packet classes: one class per protocol, one object per layer.
///
/// An object either was parsed from bytes (nothing behind its own header is looked at before it is asked for)
/// or was built to be serialised. No packet operation throws, logs or verifies a checksum. A packet belongs
/// to one thread at a time.
class NetworkPacket {
public:
    NetworkPacket& operator=(const NetworkPacket&) = delete;
    virtual ~NetworkPacket() = default;

    /// Layer of the class: 2 link, 3 network, 4 transport, 5 application.
    virtual quint32 layer() const = 0;
    /// Size in bytes of this packet's own header.
    virtual quint32 headerSize() const = 0;
    /// Size in bytes of what follows the header.
    virtual quint32 payloadSize() const = 0;
    /// Size in bytes of header and payload together.
    virtual quint32 totalSize() const;

protected:
    NetworkPacket() = default;
    /// For the classes that can be copied; the others delete theirs.
    NetworkPacket(const NetworkPacket&) = default;
};
