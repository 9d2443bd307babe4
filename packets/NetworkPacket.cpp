#include "packets/NetworkPacket.h"

NetworkPacket::~NetworkPacket() = default;

quint32 NetworkPacket::totalSize() const
{
    return payloadSize() + headerSize();
}
