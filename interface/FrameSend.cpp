#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "packets/EthernetFrame.h"
#include "plugin/binding/KHal.h"
#include "support/platform/os/Clock.h"

#include <QByteArray>

#include <algorithm>
#include <utility>

namespace kivo::core::mesk {

namespace {

constexpr std::uint32_t frameSizeMaxBytes = 1518; // IEEE 802.3, applied with and without a CRC
constexpr std::uint32_t crcSizeBytes = 4;
constexpr std::uint32_t transmitterWaitMs = 1000;
constexpr std::uint64_t nsPerMs = 1000000;

constexpr std::uint64_t transferActiveUnexpected = 0xFF; // in the low byte: nobody answers
constexpr std::uint64_t lowByteMask = 0xFF;

/// The 16-bit word of the transmitter, first byte in the low half.
std::uint64_t wordOf(unsigned char first, unsigned char second)
{
    return static_cast<std::uint64_t>(first) | static_cast<std::uint64_t>(second) << 8;
}

/// Writes whole words to the data register, one call for each: there is no faster way into the firmware.
/// Flattened, so that the loop holds the wrapper's test and call and not a call of the wrapper.
[[gnu::flatten]] void writeWords(std::uint64_t boardHandle, std::uint32_t registerId,
                                 const unsigned char* bytes, std::uint32_t words)
{
    const unsigned char* const end = bytes + std::size_t{2} * words;
    for (; bytes != end; bytes += 2) {
        plugin::KHalRegisterWrite(boardHandle, registerId, wordOf(bytes[0], bytes[1]));
    }
}

/// Writes `words` words from the start of the image. Zeros stand for what a short image lacks.
void writeImage(std::uint64_t boardHandle, std::uint32_t registerId, const QByteArray& image,
                std::uint32_t words)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(image.constData());
    const auto imageSize = static_cast<std::uint32_t>(image.size());
    std::uint32_t written = std::min(words, imageSize / 2);
    writeWords(boardHandle, registerId, bytes, written);
    if (written < words && imageSize % 2 != 0) {
        plugin::KHalRegisterWrite(boardHandle, registerId, wordOf(bytes[imageSize - 1], 0));
        ++written;
    }
    for (; written < words; ++written) {
        plugin::KHalRegisterWrite(boardHandle, registerId, 0);
    }
}

} // namespace

void KivoGbePhysicalNetworkInterface::sendFrame(boost::shared_ptr<EthernetFrame> frame)
{
    // The caller destroys an argument, and may do so late: this way the reference ends here.
    const boost::shared_ptr<EthernetFrame> held(std::move(frame));
    D& r = *d;
    if (r.txCrcGenerationDisabled && !held->hasCrc()) {
        held->appendCrc(0);
    }
    const std::uint32_t size = held->totalSize();
    const QByteArray image = held->serialize();
    if (size > frameSizeMaxBytes) {
        logPhyLine(*logger(), levelWarning, id(), "': Packet is too large (packet size: ", size,
                   ", allowed size: ", frameSizeMaxBytes, ")");
        return;
    }
    if (r.preSendWaitMs != 0) {
        templates::platform::os::sleepMs(r.preSendWaitMs);
    }
    if (!isTransmitterReady()) {
        return;
    }
    const std::uint64_t boardHandle = r.boardHandle;
    plugin::KHalRegisterWrite(boardHandle, r.regBufferReset, 0);
    writeImage(boardHandle, r.regWriteData, image, size / 2);
    plugin::KHalRegisterWrite(boardHandle, r.regWriteComplete, 0);
    r.framesSent.add(1);
    r.bytesSent.add(std::uint64_t{size} + crcSizeBytes);
}

bool KivoGbePhysicalNetworkInterface::isTransmitterReady()
{
    const std::uint64_t boardHandle = d->boardHandle;
    const std::uint32_t registerId = d->regTxTransferActive;
    if (registerId == 0) {
        return true;
    }
    std::uint64_t active = 1;     // so a read that fails counts as busy
    std::uint64_t deadlineNs = 0; // set once the first read has found it busy
    for (;;) {
        // Looked at ahead of the read, so that a thread that was held up still reads once more.
        const bool last = deadlineNs != 0 && templates::platform::os::monotonicNowNs() >= deadlineNs;
        plugin::KHalRegisterRead(boardHandle, registerId, &active);
        if ((active & lowByteMask) == transferActiveUnexpected) {
            reportUnsent(phyText(
                id(), "': Unexpected value in KHalRegisterRead(...) (result = ", Hexadecimal{active}, ")"));
            return false;
        }
        if (active == 0) {
            return true;
        }
        if (deadlineNs == 0) {
            deadlineNs = templates::platform::os::monotonicNowNs() + transmitterWaitMs * nsPerMs;
        } else if (last) {
            reportUnsent(
                phyText(id(), "': Transmitter not ready after ", transmitterWaitMs, " milliseconds"));
            return false;
        }
    }
}

void KivoGbePhysicalNetworkInterface::reportUnsent(const std::string& text)
{
    logLine(*logger(), levelWarning, text);
    reportOnceToEventLog(text, d->txEventReported);
}

} // namespace kivo::core::mesk
