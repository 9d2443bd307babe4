#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "packets/EthernetFrame.h"
#include "plugin/binding/KHal.h"
#include "support/platform/os/Clock.h"
#include "support/platform/os/Environment.h"

#include <QByteArray>
#include <QtEndian>

#include <boost/shared_ptr.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace kivo::core::mesk {

namespace {

constexpr std::uint32_t wordBytes = 4;      // of the queue
constexpr std::uint32_t frameWordBytes = 2; // of the frame, in the low half of each word
constexpr std::uint32_t frameMaxBytes = 65536;
constexpr std::uint32_t transmissionMaxBytes = frameMaxBytes / frameWordBytes * wordBytes;

/// Packs the low halves of the words, low byte first. A plain loop over 16-bit stores, which the compiler
/// turns into vector instructions.
void packWords(const std::uint32_t* __restrict words, std::size_t count, char* __restrict bytes)
{
    for (std::size_t i = 0; i < count; ++i) {
        const quint16 half = qToLittleEndian(static_cast<quint16>(words[i]));
        std::memcpy(bytes + i * frameWordBytes, &half, frameWordBytes);
    }
}

bool isCrcErrorWatchOn()
{
    static const bool on =
        templates::platform::os::environmentVariable("KIVO_CRC_ERROR_WATCH").value_or("") == "1";
    return on;
}

} // namespace

boost::shared_ptr<EthernetFrame> KivoGbePhysicalNetworkInterface::receiveFrame(bool* ok)
{
    if (ok != nullptr) {
        *ok = false;
    }
    if (isCrcErrorWatchOn()) {
        watchCrcErrors();
    }
    auto frame = receiveNext();
    if (ok != nullptr) {
        *ok = frame != nullptr;
    }
    return frame;
}

boost::shared_ptr<EthernetFrame> KivoGbePhysicalNetworkInterface::receiveNext()
{
    D& r = *d;
    std::uint32_t announcedBytes = 0;
    const std::int32_t result = plugin::KHalDataQueueReadBufferLong(
        r.boardHandle, r.portId, &announcedBytes, sizeof announcedBytes, queueReadTimeoutMs);
    if (result < 0) {
        handleReadError(result);
        return {};
    }
    r.uiqReadErrorLatched = false;
    if (announcedBytes == 0) {
        if (!r.zeroSizeLatched) {
            logPhyLine(*logger(), levelWarning, id(),
                       "': transmission size of zero received from KHalDataQueueReadBufferLong(...) "
                       "[lost words: ",
                       LostWords{r.boardHandle, r.portId}, "]!");
            r.zeroSizeLatched = true;
        }
        r.zeroSizeTransmissions.add(1);
        return {};
    }
    r.zeroSizeLatched = false;
    return receiveTransmission(announcedBytes);
}

boost::shared_ptr<EthernetFrame>
KivoGbePhysicalNetworkInterface::receiveTransmission(std::uint32_t announcedBytes)
{
    D& r = *d;
    // On the stack, and filled below as far as the board is asked.
    std::array<std::uint32_t, transmissionMaxBytes / wordBytes> words; // NOLINT(*-member-init)
    const bool fits = announcedBytes <= frameMaxBytes;
    const std::uint32_t asked = fits ? announcedBytes * 2U : transmissionMaxBytes;
    // A library that rounds up may fill the word that an odd announcement asks half of.
    const std::uint32_t askedWords = (asked + wordBytes - 1) / wordBytes;
    // So that a library that claims words without writing them can't bring an earlier frame back.
    std::memset(words.data(), 0, std::size_t{askedWords} * wordBytes);
    const std::int32_t result =
        plugin::KHalDataQueueReadBufferLong(r.boardHandle, r.portId, words.data(), asked, queueReadTimeoutMs);
    if (result < 0) {
        handleReadError(result);
        return {};
    }
    r.uiqReadErrorLatched = false;

    std::uint32_t transmissionSize = announcedBytes * 2U;
    const std::uint32_t received = static_cast<std::uint32_t>(result) / wordBytes * wordBytes;
    // A library that claims more than it was asked for must not lead behind the buffer.
    const std::uint32_t delivered = std::min(received / wordBytes, askedWords);
    const std::uint32_t lastWord = delivered == 0 ? 0 : words[delivered - 1];
    const LostWords lostWords{r.boardHandle, r.portId};
    if ((lastWord & endOfTransmission) == 0) {
        logPhyLine(*logger(), levelWarning, id(),
                   "': end of transmission validity check failed! [lost words: ", lostWords, "]");
        logPhyLine(*logger(), levelDetail, id(), "': ... EOT: ", Hexadecimal{lastWord},
                   " - TRANSMISSION_SIZE: ", transmissionSize, " - RESULT: ", received, "\n");
        r.invalidEots.add(1);
        return {};
    }
    if (fits && transmissionSize == received + 2) {
        // An odd announcement: twice its size is no whole number of words.
        transmissionSize = received;
    } else if (!fits || transmissionSize != received) {
        logPhyLine(*logger(), levelWarning, id(),
                   "': transmission size validity check failed! (expected: ", transmissionSize,
                   ", received: ", received, ") [lost words: ", lostWords, "]");
        r.invalidTransmissionSizes.add(1);
        return {};
    }

    QByteArray bytes(static_cast<int>(transmissionSize / 2), Qt::Uninitialized);
    packWords(words.data(), transmissionSize / wordBytes, bytes.data());
    // Not make_shared: the copy that it makes of its pointer costs two locked instructions, more than the
    // second allocation.
    boost::shared_ptr<EthernetFrame> frame(new EthernetFrame(std::move(bytes)));
    r.framesReceived.add(1);
    r.bytesReceived.add(transmissionSize / 2);
    return frame;
}

void KivoGbePhysicalNetworkInterface::handleReadError(std::int32_t result)
{
    if (result == plugin::kHalQueueTimeout) {
        return;
    }
    D& r = *d;
    if (!r.uiqReadErrorLatched) {
        const std::string text =
            phyText(id(), "': Error(s) in KHalDataQueueReadBufferLong(...) (result = ", result, ")");
        logLine(*logger(), levelWarning, text);
        reportOnceToEventLog(text, r.rxEventReported);
        r.uiqReadErrorLatched = true;
    }
    r.uiqReadErrors.add(1);
    templates::platform::os::sleepMs(readErrorPauseMs);
}

void KivoGbePhysicalNetworkInterface::watchCrcErrors()
{
    D& r = *d;
    const std::uint64_t seen = r.hwPacketErrorsSeen;
    r.readInto(r.regRecvErrCnt, r.hwPacketErrorsSeen);
    const std::uint64_t more = r.hwPacketErrorsSeen - seen;
    if (more != 0) {
        logPhyLine(*logger(), levelWarning, id(), "': Detected ", static_cast<std::int64_t>(more),
                   " new CRC packet errors");
    }
}

} // namespace kivo::core::mesk
