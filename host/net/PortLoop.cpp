#include "host/net/PortLoop.h"

#include "host/Interrupt.h"
#include "host/Port.h"

namespace mesk::host {

PortLoop::PortLoop(Port& port, ReceiveFrame receive, Expire expire)
    : m_port(port)
    , m_receive(std::move(receive))
    , m_expire(std::move(expire))
{
}

stack::TimePoint PortLoop::now() const
{
    return std::chrono::steady_clock::now();
}

Loop::End PortLoop::runUntil(stack::TimePoint deadline, Interrupts interrupts, const Turn& turn)
{
    for (;;) {
        const stack::TimePoint before = now();
        m_expire(before);
        if (turn(before)) {
            return End::Done;
        }
        if (interrupts == Interrupts::EndTheWait && interruptRequested()) {
            return End::Interrupted;
        }
        if (before >= deadline) {
            return End::Deadline;
        }
        if (const auto frame = m_port.receive()) {
            m_receive(*frame, now());
        }
    }
}

} // namespace mesk::host
