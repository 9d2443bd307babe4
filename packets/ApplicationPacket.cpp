#include "packets/ApplicationPacket.h"

quint32 ApplicationPacket::layer() const
{
    return 5;
}
