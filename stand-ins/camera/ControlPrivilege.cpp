#include "stand-ins/camera/ControlPrivilege.h"

#include "stand-ins/camera/GvcpStatus.h"

namespace emulated_camera {

namespace {

constexpr quint32 exclusive = 0x1, control = 0x2, switchover = 0x4, known = exclusive | control | switchover;
constexpr unsigned keyShift = 16;
constexpr quint32 reserved = 0xffff & ~known;

} // namespace

quint16 ControlPrivilege::request(quint32 value, const Application& who, mesk::stack::TimePoint now)
{
    const quint32 key = value >> keyShift;
    if (m_controller && !isController(who)) {
        const bool isOpen = (m_bits & switchover) != 0 && (m_bits & exclusive) == 0;
        if (!isOpen || key != m_switchoverKey)
            return GvcpStatus::AccessDenied;
    }
    if ((value & reserved) != 0)
        return GvcpStatus::InvalidParameter;
    if ((value & (exclusive | control)) == 0) {
        // Only who has the privilege can give it back.
        if (isController(who))
            release();
        return GvcpStatus::Success;
    }
    m_controller = who;
    m_bits = value & known;
    m_switchoverKey = key;
    m_lastHeard = now;
    return GvcpStatus::Success;
}

quint32 ControlPrivilege::value() const
{
    return m_bits;
}

const std::optional<Application>& ControlPrivilege::controller() const
{
    return m_controller;
}

bool ControlPrivilege::mayRead(const Application& who) const
{
    return (m_bits & exclusive) == 0 || isController(who);
}

bool ControlPrivilege::isController(const Application& who) const
{
    return m_controller && *m_controller == who;
}

void ControlPrivilege::release()
{
    *this = ControlPrivilege();
}

void ControlPrivilege::refresh(mesk::stack::TimePoint now)
{
    m_lastHeard = now;
}

mesk::stack::TimePoint ControlPrivilege::lastHeard() const
{
    return m_lastHeard;
}

} // namespace emulated_camera
