#include "packets/NetworkPacket.h"

quint32 NetworkPacket::totalSize() const
{
    return payloadSize() + headerSize();
}
