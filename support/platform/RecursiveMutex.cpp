#include "support/platform/RecursiveMutex.h"

namespace kivo::templates::platform {

RecursiveMutex::~RecursiveMutex() = default;

void RecursiveMutex::lock()
{
    m_native.lock();
}

void RecursiveMutex::unlock()
{
    m_native.unlock();
}

} // namespace kivo::templates::platform
