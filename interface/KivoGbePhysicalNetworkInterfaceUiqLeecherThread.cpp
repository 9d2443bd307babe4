#include "interface/KivoGbePhysicalNetworkInterfaceUiqLeecherThread.h"

#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "support/platform/os/Clock.h"

#include <array>
#include <cstdio>

namespace kivo::core::mesk {

KivoGbePhysicalNetworkInterfaceUiqLeecherThread::KivoGbePhysicalNetworkInterfaceUiqLeecherThread(
    KivoGbePhysicalNetworkInterface* port, int board, int portNumber, std::uint32_t kind)
    : networkInterface(port)
    , queueKind(kind)
    , boardId(board)
    , portId(portNumber)
{
}

KivoGbePhysicalNetworkInterfaceUiqLeecherThread::~KivoGbePhysicalNetworkInterfaceUiqLeecherThread()
{
    join(); // before the fields go that `run` works on
}

void KivoGbePhysicalNetworkInterfaceUiqLeecherThread::run()
{
    nameThread();
    while (!stopRequested) {
        try {
            networkInterface->pollActionTimeoutQueue();
        } catch (...) {
            // What goes wrong on the way of a line costs the line, and not the framework's process. The pause
            // keeps a board that fails at once from taking a core.
            templates::platform::os::sleepMs(readErrorPauseMs);
        }
    }
}

void KivoGbePhysicalNetworkInterfaceUiqLeecherThread::nameThread() const
{
    std::array<char, 32> name{}; // of fixed size, since nothing may be thrown here
    std::snprintf(name.data(), name.size(), "Uiq%s/%d-%d", queueKind == actionTimeouts ? "Act" : "", boardId,
                  portId);
    templates::platform::setCurrentThreadName(name.data());
}

KivoGbePhysicalNetworkInterface::D::ActionRead
KivoGbePhysicalNetworkInterface::D::readActionTimeout(const std::string& id)
{
    const DeviceGate::Poll poll(deviceGate);
    const std::uint32_t queue = portId + actionTimeoutQueueOffset;
    const LostWords lostWords{boardHandle, queue};
    ActionRead read;
    read.result = plugin::KHalDataQueueReadBufferLong(boardHandle, queue, &read.word, sizeof read.word,
                                                      queueReadTimeoutMs);
    if (read.result == plugin::kHalQueueTimeout) {
        return read;
    }
    if (read.result < 0) {
        if (!actionUiqErrorLatched) {
            read.fault =
                phyText(id, "': Error(s) in KHalDataQueueReadBufferLong(...) (result = ", read.result,
                        ", received words = 0) [lost words: ", lostWords, "]");
        }
    } else if ((read.word & endOfTransmission) == 0) {
        read.fault = phyText(id,
                             "': Too many received words for action command timeout UIQ buffer (received "
                             "words = 1) [lost words: ",
                             lostWords, "]");
    }
    return read;
}

void KivoGbePhysicalNetworkInterface::pollActionTimeoutQueue()
{
    D& r = *d;
    if (!r.deviceGate.standBack()) {
        return;
    }
    const D::ActionRead read = r.readActionTimeout(id());
    if (read.result == plugin::kHalQueueTimeout) {
        return;
    }
    if (read.result >= 0) {
        r.actionUiqErrorLatched = false;
    }
    if (!read.fault.empty()) {
        logLine(*logger(), levelError, read.fault);
        reportOnceToEventLog(read.fault, r.actionEventReported);
        r.actionUiqErrorLatched = true;
    }
    if (read.result < 0) {
        templates::platform::os::sleepMs(readErrorPauseMs);
    } else if ((read.word & endOfTransmission) != 0) {
        const auto count = static_cast<std::uint16_t>(read.word & actionTimeoutCountMask);
        logPhyLine(*logger(), levelInformation, id(),
                   "': Action command timeout detected --- Count: ", count);
        r.eventQueue->postActionCommandTimeout(count);
    }
}

} // namespace kivo::core::mesk
