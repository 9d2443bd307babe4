#include "stand-ins/board/links/PairLink.h"

namespace emulated_board {

struct PairLink::Way {
    explicit Way(LineEnd& end)
        : wire([this, &end](WireFrame frame, const std::atomic<bool>& stopped) {
            carried.add(frame.size());
            end.arrive(std::move(frame), Patience::flowControl, stopped);
        })
    {
    }

    FrameCount carried;
    Wire wire; // ends first
};

PairLink::PairLink(std::shared_ptr<Way> out, std::shared_ptr<Way> in)
    : m_out(std::move(out))
    , m_in(std::move(in))
{
}

PairLink::~PairLink()
{
    m_out->wire.stop();
    m_in->wire.stop();
}

PairLink::Ends PairLink::join(LineEnd& first, LineEnd& second)
{
    const auto toSecond = std::make_shared<Way>(second);
    if (&first == &second)
        return {std::make_unique<PairLink>(toSecond, toSecond), nullptr};
    const auto toFirst = std::make_shared<Way>(first);
    return {std::make_unique<PairLink>(toSecond, toFirst), std::make_unique<PairLink>(toFirst, toSecond)};
}

// Each end starts its own way out; the whole cable goes with the first end that is pulled.
void PairLink::start()
{
    m_out->wire.start();
}

void PairLink::stop()
{
    m_out->wire.stop();
    m_in->wire.stop();
}

bool PairLink::send(WireFrame frame)
{
    return m_out->wire.send(std::move(frame));
}

bool PairLink::isBusy() const
{
    return m_out->wire.isFull();
}

bool PairLink::isIdle() const
{
    return m_in->wire.isIdle();
}

KivoBoardLinkCounters PairLink::counters() const
{
    KivoBoardLinkCounters result = Link::counters();
    result.framesOut = m_out->carried.frames();
    result.bytesOut = m_out->carried.bytes();
    result.framesIn = m_in->carried.frames();
    result.bytesIn = m_in->carried.bytes();
    return result;
}

} // namespace emulated_board
