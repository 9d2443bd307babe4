#include "support/platform/SimpleThread.h"

#include "support/platform/RecursiveMutexGuard.h"

namespace kivo::templates::platform {

namespace {
constexpr std::uint64_t msPerSecond = 1000;
}

SimpleThread::~SimpleThread()
{
    join();
}

bool SimpleThread::start()
{
    const RecursiveMutexGuard guard(&m_mutex);
    if (m_running)
        return true;
    m_thread.join(); // of an earlier run that nobody joined
    m_running = true;
    m_finished = false;
    m_endEvent.reset();
    // The new thread waits for the mutex at its entry, so its handle stands before `run` begins.
    if (!m_thread.start(&SimpleThread::enter, this)) {
        m_running = false;
        m_finished = true;
        m_endEvent.set();
    }
    return m_running;
}

void SimpleThread::enter(void* self)
{
    auto* const thread = static_cast<SimpleThread*>(self);
    {
        const RecursiveMutexGuard guard(&thread->m_mutex);
        thread->m_threadId = os::currentThreadId();
    }
    thread->run();
    thread->finish();
}

void SimpleThread::finish()
{
    const RecursiveMutexGuard guard(&m_mutex);
    m_running = false;
    m_finished = true;
    m_threadId = 0;
    // The handle stays for whoever joins or starts next: a thread can't wait for its own end, and
    // without that wait the library could be unloaded under its last instructions.
    m_endEvent.set();
}

bool SimpleThread::join(std::uint32_t timeoutSeconds)
{
    RecursiveMutexGuard guard(&m_mutex);
    if (m_running) {
        if (m_threadId == os::currentThreadId())
            return false; // it would wait for itself
        guard.unlock();
        if (timeoutSeconds == noTimeout)
            m_endEvent.wait();
        else
            m_endEvent.waitFor(timeoutSeconds * msPerSecond);
        guard.lock();
    }
    // Holding the mutex is safe here: a thread that has finished takes it no more.
    if (m_finished)
        m_thread.join();
    return m_finished;
}

void setCurrentThreadName(const char* name)
{
    os::nameCurrentThread(name);
}

} // namespace kivo::templates::platform
