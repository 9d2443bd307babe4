#include "support/platform/ReadWriteLock.h"

#include <mutex>

namespace kivo::templates::platform {

namespace {
using SectionGuard = std::lock_guard<os::CriticalSection>;
}

ReadWriteLock::~ReadWriteLock() = default;

void ReadWriteLock::acquireRead()
{
    do {
        m_noWriterEvent.wait();
    } while (!tryRead());
}

bool ReadWriteLock::tryRead()
{
    const SectionGuard guard(m_section);
    if (m_writerActive || m_waitingWriters > 0)
        return false;
    ++m_readers;
    m_noReadersEvent.reset();
    return true;
}

void ReadWriteLock::acquireWrite()
{
    {
        const SectionGuard guard(m_section);
        ++m_waitingWriters;
    }
    do {
        m_noReadersEvent.wait();
        m_noWriterEvent.wait();
    } while (!tryWrite());
}

bool ReadWriteLock::tryWrite()
{
    const SectionGuard guard(m_section);
    if (m_readers > 0 || m_writerActive)
        return false;
    --m_waitingWriters;
    m_writerActive = true;
    m_noWriterEvent.reset();
    return true;
}

void ReadWriteLock::release()
{
    const SectionGuard guard(m_section);
    if (m_writerActive) {
        m_writerActive = false;
        m_noWriterEvent.set();
    } else if (--m_readers == 0) {
        m_noReadersEvent.set();
    }
}

} // namespace kivo::templates::platform
