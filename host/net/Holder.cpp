#include "host/net/Holder.h"

#include "host/OutgoingFrame.h"
#include "host/Port.h"
#include "host/Session.h"

#include <fmt/format.h>

namespace mesk::host {

Holder::Holder(Session& session)
    : m_port(session.openPort())
    , m_node(session.options().ownMac(),
             [this](const QByteArray& frame) { m_port.send(prepareFrame(frame)); })
    , m_loop(
          m_port, [this](const QByteArray& frame, stack::TimePoint now) { m_node.receive(frame, now); },
          [this](stack::TimePoint now) { m_node.expire(now); })
{
    m_node.setAddress(session.options().ownAddress());
    m_node.onConflict([this, &session, told = false](const MacAddress& who, bool /*isDefended*/,
                                                     stack::TimePoint /*now*/) mutable {
        if (!told) {
            told = true;
            session.output().words(fmt::format("{} uses the address {} as well (see --ip)",
                                               who.toStdString(":"), m_node.address().address.toStdString()));
        }
    });
}

} // namespace mesk::host
