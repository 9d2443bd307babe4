#pragma once

#include <QtGlobal>

#include <random>

namespace mesk::host {

/// Request ids, one after the other and never 0. They start anywhere, so that what answers an earlier run
/// answers nothing of this one.
class RequestIds {
public:
    RequestIds()
        : m_last(static_cast<quint16>(std::random_device{}()))
    {
    }
    explicit RequestIds(quint16 last)
        : m_last(last)
    {
    }
    quint16 next()
    {
        ++m_last;
        m_last = m_last == 0 ? 1 : m_last;
        return m_last;
    }

private:
    quint16 m_last;
};

} // namespace mesk::host
