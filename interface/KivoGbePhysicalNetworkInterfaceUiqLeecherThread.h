#pragma once

#include "support/platform/SimpleThread.h"

#include <atomic>
#include <cstdint>

namespace kivo::core::mesk {

class KivoGbePhysicalNetworkInterface;

/// Drains one of the hardware queues of a port for as long as it isn't told to stop. A thread that has
/// ended after `requestStop` does nothing more when it is started again.
class KivoGbePhysicalNetworkInterfaceUiqLeecherThread : public templates::platform::SimpleThread {
public:
    static constexpr std::uint32_t actionTimeouts = 0; ///< the one kind of queue there is

    /// @param port not owned, must outlive the thread.
    /// @param board, portNumber for the thread's name.
    KivoGbePhysicalNetworkInterfaceUiqLeecherThread(KivoGbePhysicalNetworkInterface* port, int board,
                                                    int portNumber, std::uint32_t kind);

    void run() override;
    /// `requestStop` must have been called if the thread runs.
    ~KivoGbePhysicalNetworkInterfaceUiqLeecherThread() override;

    /// [any thread] Lets `run` return after the poll that it is in. Doesn't wait.
    void requestStop() { stopRequested = true; }

private:
    void nameThread() const;

    KivoGbePhysicalNetworkInterface* const networkInterface;
    const std::uint32_t queueKind;
    std::atomic<bool> stopRequested{false}; ///< never cleared
    const int boardId;
    const int portId;
};

} // namespace kivo::core::mesk
