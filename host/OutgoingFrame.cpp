#include "host/OutgoingFrame.h"

#include "packets/EthernetFrame.h"

namespace mesk::host {

namespace {

constexpr int frameSizeMaxBytes = 1518; // IEEE 802.3, as the port applies it
constexpr int frameSizeMinBytes = static_cast<int>(EthernetFrame::minimumFrameSize);

} // namespace

QByteArray OutgoingFrame::onWire() const
{
    return filledUp ? bytes + QByteArray(frameSizeMinBytes - bytes.size(), '\0') : bytes;
}

OutgoingFrame prepareFrame(const QByteArray& captured)
{
    OutgoingFrame frame;
    // A frame object made of too few bytes keeps none of them.
    if (captured.size() > frameSizeMaxBytes || EthernetFrame(captured).headerSize() == 0) {
        frame.refused = true;
        return frame;
    }
    frame.bytes = captured;
    frame.filledUp = captured.size() < frameSizeMinBytes;
    frame.madeEven = !frame.filledUp && captured.size() % 2 != 0;
    if (frame.madeEven) {
        frame.bytes.append('\0');
    }
    return frame;
}

} // namespace mesk::host
