#include "stand-ins/board/Port.h"

#include <algorithm>
#include <utility>

namespace emulated_board {

namespace {

// IEEE 802.3: what a frame has at least, without check sequence.
constexpr std::size_t frameSizeMinBytes = 60;
// Below two addresses and a type nothing is a frame.
constexpr std::size_t headerBytes = 14;

} // namespace

Port::Port(std::uint32_t number, RegisterFile& registers, const MdioEngine& phys)
    : m_number(number)
    , m_registers(registers)
    , m_phys(phys)
{
}

void Port::powerOn(const BoardSetup& setup)
{
    m_transmitter.powerOn(setup.lineSpeed);
    m_receiveQueue.powerOn(setup.receiveCapacityWords, setup.readPartialWords);
    m_actionQueue.powerOn(setup.actionCapacityWords, false);
    m_announceOdd.store(setup.announceOdd, std::memory_order_relaxed);
    m_pauseMs.store(setup.pauseMs, std::memory_order_relaxed);
    for (Counter* each : {&m_framesSent, &m_bytesSent, &m_framesReceived, &m_bytesReceived, &m_framesDropped,
                          &m_crcErrors, &m_framesUnsent, &m_refusedAtFarEnd})
        each->store(0, std::memory_order_relaxed);
}

bool Port::isSending() const
{
    return m_registers.get(Register::txStart) != 0 && m_registers.get(Register::portTxStart, m_number) != 0 &&
           m_phys.isRunning(m_number);
}

bool Port::isReceiving() const
{
    return m_registers.get(Register::rxEnable) != 0 && m_phys.isRunning(m_number);
}

void Port::transmit()
{
    WireFrame frame;
    frame.bytes = m_transmitter.frame();
    if (frame.bytes.empty() || !isSending()) {
        add(m_framesUnsent, 1);
        return;
    }
    frame.sequenceByHardware = m_registers.get(Register::txDisableCrcGeneration, m_number) == 0;
    // Who makes the check sequence fills the frame up as well; otherwise it goes out as written.
    if (frame.sequenceByHardware)
        frame.bytes.resize(std::max(frame.bytes.size(), frameSizeMinBytes));
    const std::size_t size = frame.size();
    const std::shared_ptr<Link> plugged = link();
    if (plugged && !plugged->send(std::move(frame))) {
        add(m_framesUnsent, 1);
        return;
    }
    m_transmitter.occupyLine(size);
    add(m_framesSent, 1);
    add(m_bytesSent, size);
}

std::uint64_t Port::transferActive() const
{
    if (const std::uint64_t frozen = m_transmitter.frozen())
        return frozen;
    if (m_transmitter.isLineBusy())
        return 1;
    const std::shared_ptr<Link> plugged = link();
    if (plugged && plugged->isBusy())
        return 1;
    return m_registers.get(Register::txTransferActive, m_number);
}

bool Port::arrive(WireFrame frame, Patience patience, const std::atomic<bool>& stopped)
{
    if (!isReceiving()) {
        add(m_framesDropped, 1);
        return false;
    }
    // The sequence that hardware makes is right: nothing lies between.
    const std::size_t size = frame.size();
    if (!frame.isIntact() || size < headerBytes) {
        m_registers.count(Register::recvErrCnt, m_number);
        add(m_crcErrors, 1);
        return false;
    }
    m_registers.count(Register::recvPktCnt, m_number);
    m_registers.count(Register::ctrlPktReceivedCnt, m_number);
    return enqueue(frame.bytes, size, patience, stopped);
}

bool Port::enqueue(const std::vector<std::uint8_t>& frame, std::size_t size, Patience patience,
                   const std::atomic<bool>& stopped)
{
    // Sixteen bits of frame in each word. An odd frame is filled up by a zero byte; a set-up can have
    // its true size announced instead, and then its last byte does not come.
    const bool announceOdd = m_announceOdd.load(std::memory_order_relaxed);
    const std::size_t words = announceOdd ? size / 2 : (size + 1) / 2;
    std::vector<std::uint32_t> transmission;
    transmission.reserve(words + 1);
    transmission.push_back(std::uint32_t(announceOdd ? size : words * 2));
    for (std::size_t i = 0; i < words; ++i) {
        const std::uint32_t high = 2 * i + 1 < size ? frame[2 * i + 1] : 0U;
        transmission.push_back(frame[2 * i] | high << 8);
    }
    transmission.back() |= endOfTransmission;

    std::optional<std::chrono::milliseconds> wait;
    if (patience == Patience::flowControl)
        wait = std::chrono::milliseconds(m_pauseMs.load(std::memory_order_relaxed));
    const auto accepted = [this, size] {
        add(m_framesReceived, 1);
        add(m_bytesReceived, size);
        m_registers.count(Register::ctrlPktSendUiqCnt, m_number);
    };
    if (m_receiveQueue.put(transmission, wait, stopped, accepted))
        return true;
    add(m_framesDropped, 1);
    m_registers.set(Register::gvspFifoOverflow, m_number, 1);
    return false;
}

void Port::plug(std::string text, std::shared_ptr<Link> link)
{
    std::shared_ptr<Link> old;
    {
        const std::lock_guard<std::mutex> lock(m_plugMutex);
        old = std::exchange(m_link, std::move(link));
        m_linkText = std::move(text);
        m_linkWithoutReader.store(m_link != nullptr, std::memory_order_relaxed);
    }
    // A transmission under way may still hold it, so the destructor may run there; the threads end here.
    if (old)
        old->stop();
}

void Port::tellReaderToLink()
{
    std::shared_ptr<Link> plugged;
    {
        const std::lock_guard<std::mutex> lock(m_plugMutex);
        if (m_linkWithoutReader.exchange(false, std::memory_order_relaxed))
            plugged = m_link;
    }
    if (plugged)
        plugged->readerCame();
}

std::shared_ptr<Link> Port::link() const
{
    const std::lock_guard<std::mutex> lock(m_plugMutex);
    return m_link;
}

std::string Port::linkText() const
{
    const std::lock_guard<std::mutex> lock(m_plugMutex);
    return m_linkText;
}

KivoBoardLinkCounters Port::linkCounters() const
{
    const std::shared_ptr<Link> plugged = link();
    return plugged ? plugged->counters() : LinkTally().counters();
}

KivoBoardPortCounters Port::counters() const
{
    const auto value = [](const Counter& counter) { return counter.load(std::memory_order_relaxed); };
    KivoBoardPortCounters counters{};
    counters.framesSent = value(m_framesSent);
    counters.bytesSent = value(m_bytesSent);
    counters.framesReceived = value(m_framesReceived);
    counters.bytesReceived = value(m_bytesReceived);
    counters.framesDropped = value(m_framesDropped);
    counters.crcErrors = value(m_crcErrors);
    counters.lostWords = std::uint64_t(std::max(m_receiveQueue.lostWords(), 0));
    counters.framesUnsent = value(m_framesUnsent);
    counters.refusedAtFarEnd = value(m_refusedAtFarEnd);
    return counters;
}

} // namespace emulated_board
