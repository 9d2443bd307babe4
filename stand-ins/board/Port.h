#pragma once

#include "stand-ins/board/BoardControl.h"
#include "stand-ins/board/BoardSetup.h"
#include "stand-ins/board/DataQueue.h"
#include "stand-ins/board/MdioEngine.h"
#include "stand-ins/board/RegisterFile.h"
#include "stand-ins/board/Transmitter.h"
#include "stand-ins/board/links/Link.h"

#include <memory>
#include <mutex>
#include <string>

namespace emulated_board {

/// One GigE port: transmitter, receiver, its two queues, and the plug. [any thread]
class Port final : public LineEnd {
public:
    /// The board's registers and PHYs outlive the port.
    Port(std::uint32_t number, RegisterFile& registers, const MdioEngine& phys);

    void powerOn(const BoardSetup& setup);

    Transmitter& transmitter() { return m_transmitter; }
    DataQueue& receiveQueue() { return m_receiveQueue; }
    DataQueue& actionQueue() { return m_actionQueue; }

    /// Sends what the transmitter's buffer holds.
    void transmit();
    std::uint64_t transferActive() const;

    bool arrive(WireFrame frame, Patience patience, const std::atomic<bool>& stopped) override;
    void refusedAtFarEnd() override { m_refusedAtFarEnd.fetch_add(1, std::memory_order_relaxed); }

    /// Somebody is about to read the receive queue.
    void noteReader()
    {
        if (m_linkWithoutReader.load(std::memory_order_relaxed))
            tellReaderToLink();
    }

    /// Pulls out what was plugged, whose threads have ended when this returns, and plugs `link`, which
    /// may be null and is started.
    void plug(std::string text, std::shared_ptr<Link> link);
    std::shared_ptr<Link> link() const;
    std::string linkText() const;
    KivoBoardLinkCounters linkCounters() const;

    KivoBoardPortCounters counters() const;

private:
    using Counter = std::atomic<std::uint64_t>;
    static void add(Counter& counter, std::uint64_t count)
    {
        counter.fetch_add(count, std::memory_order_relaxed);
    }
    void tellReaderToLink();
    bool isSending() const;
    bool isReceiving() const;
    bool enqueue(const std::vector<std::uint8_t>& frame, std::size_t size, Patience patience,
                 const std::atomic<bool>& stopped);

    const std::uint32_t m_number;
    RegisterFile& m_registers;
    const MdioEngine& m_phys;
    Transmitter m_transmitter;
    DataQueue m_receiveQueue;
    DataQueue m_actionQueue;
    std::atomic<bool> m_announceOdd{false};
    std::atomic<std::uint32_t> m_pauseMs{0};

    mutable std::mutex m_plugMutex;
    std::shared_ptr<Link> m_link;
    std::string m_linkText = "none";
    std::atomic<bool> m_linkWithoutReader{false};

    Counter m_framesSent{0};
    Counter m_bytesSent{0};
    Counter m_framesReceived{0};
    Counter m_bytesReceived{0};
    Counter m_framesDropped{0};
    Counter m_crcErrors{0};
    Counter m_framesUnsent{0};
    Counter m_refusedAtFarEnd{0};
};

} // namespace emulated_board
