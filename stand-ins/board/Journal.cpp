#include "stand-ins/board/Journal.h"

#include <algorithm>
#include <sys/syscall.h>
#include <unistd.h>

namespace emulated_board {

std::size_t copyText(const std::string& text, char* buffer, std::size_t size)
{
    if (buffer != nullptr && size != 0)
        buffer[text.copy(buffer, size - 1)] = '\0';
    return text.size();
}

void Journal::setCapacity(std::size_t calls)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_capacity.store(calls, std::memory_order_relaxed);
    trim(calls);
}

void Journal::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    m_dropped = 0;
}

void Journal::trim(std::size_t capacity)
{
    while (m_calls.size() > capacity) {
        m_calls.pop_front();
        ++m_dropped;
    }
}

void Journal::add(const char* operation, const std::string& text,
                  const std::array<std::uint64_t, 4>& arguments, std::int64_t result, std::uint64_t value)
{
    if (!isOn())
        return;
    KivoBoardCall call{};
    copyText(operation, call.operation, sizeof call.operation);
    copyText(text, call.text, sizeof call.text);
    std::copy(arguments.begin(), arguments.end(), call.arguments);
    call.result = result;
    call.value = value;
    call.threadId = std::uint32_t(::syscall(SYS_gettid));
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(call);
    trim(m_capacity.load(std::memory_order_relaxed));
}

std::size_t Journal::size() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls.size();
}

std::uint64_t Journal::dropped() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_dropped;
}

bool Journal::entry(std::size_t index, KivoBoardCall& call) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (index >= m_calls.size())
        return false;
    call = m_calls[index];
    return true;
}

} // namespace emulated_board
