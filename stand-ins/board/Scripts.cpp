#include "stand-ins/board/Scripts.h"

namespace emulated_board {

void Scripts::add(const std::string& operation, std::uint64_t first, std::uint64_t count,
                  ScriptedAnswer answer)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_scripts.push_back({operation, first, count, answer, 0});
    m_areThere.store(true, std::memory_order_relaxed);
}

void Scripts::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_scripts.clear();
    m_answered = 0;
    m_areThere.store(false, std::memory_order_relaxed);
}

/// Whether this call is one that the script answers.
bool Scripts::Script::counts(const char* called)
{
    if (operation != "*" && operation != called)
        return false;
    ++calls;
    return calls >= first && (count == 0 || calls - first < count);
}

std::optional<ScriptedAnswer> Scripts::answer(const char* operation)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::optional<ScriptedAnswer> answer;
    for (Script& script : m_scripts) {
        if (script.counts(operation) && !answer)
            answer = script.answer;
    }
    if (answer)
        ++m_answered;
    return answer;
}

std::uint64_t Scripts::answered() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_answered;
}

} // namespace emulated_board
