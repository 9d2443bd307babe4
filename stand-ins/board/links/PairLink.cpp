#include "stand-ins/board/links/PairLink.h"

namespace emulated_board {

PairLink::PairLink(std::shared_ptr<Wire> out, std::shared_ptr<Wire> in)
    : m_out(std::move(out))
    , m_in(std::move(in))
{
}

PairLink::~PairLink()
{
    m_out->stop();
    m_in->stop();
}

PairLink::Ends PairLink::join(LineEnd& first, LineEnd& second)
{
    const auto wireTo = [](LineEnd& end) {
        return std::make_shared<Wire>([&end](WireFrame frame, const std::atomic<bool>& stopped) {
            end.arrive(std::move(frame), Patience::flowControl, stopped);
        });
    };
    const auto toSecond = wireTo(second);
    if (&first == &second)
        return {std::make_unique<PairLink>(toSecond, toSecond), nullptr};
    const auto toFirst = wireTo(first);
    return {std::make_unique<PairLink>(toSecond, toFirst), std::make_unique<PairLink>(toFirst, toSecond)};
}

// Each end starts its own way out; the whole cable goes with the first end that is pulled.
void PairLink::start()
{
    m_out->start();
}

void PairLink::stop()
{
    m_out->stop();
    m_in->stop();
}

bool PairLink::send(WireFrame frame)
{
    return m_out->send(std::move(frame));
}

bool PairLink::isBusy() const
{
    return m_out->isFull();
}

bool PairLink::isIdle() const
{
    return m_in->isIdle();
}

} // namespace emulated_board
