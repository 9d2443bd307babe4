#include "support/platform/os/Thread.h"

#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <pthread.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace kivo::templates::platform::os {

namespace {

constexpr std::size_t threadNameMaxBytes = 15;

struct Start {
    NativeThread::Entry entry;
    void* argument;
};

void* enter(void* argument)
{
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    start->entry(start->argument);
    return nullptr;
}

} // namespace

static_assert(std::is_same_v<pthread_t, unsigned long>);

std::uint32_t currentThreadId()
{
    return static_cast<std::uint32_t>(::gettid());
}

void nameCurrentThread(const char* name)
{
    std::array<char, threadNameMaxBytes + 1> cut{};
    std::strncpy(cut.data(), name, threadNameMaxBytes);
    ::pthread_setname_np(::pthread_self(), cut.data());
}

NativeThread::~NativeThread()
{
    if (m_held)
        ::pthread_detach(m_thread);
}

bool NativeThread::start(Entry entry, void* argument)
{
    std::unique_ptr<Start> start(new (std::nothrow) Start{entry, argument});
    m_held = start != nullptr && ::pthread_create(&m_thread, nullptr, &enter, start.get()) == 0;
    if (m_held)
        static_cast<void>(start.release()); // the thread owns it now
    return m_held;
}

void NativeThread::join()
{
    if (m_held)
        ::pthread_join(m_thread, nullptr);
    m_held = false;
}

} // namespace kivo::templates::platform::os
