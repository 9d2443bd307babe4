#include "stand-ins/board/links/SentFrames.h"

#include <algorithm>
#include <string_view>

namespace emulated_board {

namespace {

std::size_t printOf(const std::uint8_t* frame, std::size_t size)
{
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(frame), size});
}

} // namespace

void SentFrames::add(const std::uint8_t* frame, std::size_t size)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_sent.size() == rememberedMax)
        m_sent.pop_front();
    m_sent.push_back({printOf(frame, size), Clock::now()});
}

bool SentFrames::takeBack(const std::uint8_t* frame, std::size_t size)
{
    const std::size_t print = printOf(frame, size);
    const auto oldest = Clock::now() - rememberedFor;
    const std::lock_guard<std::mutex> lock(m_mutex);
    while (!m_sent.empty() && m_sent.front().when < oldest)
        m_sent.pop_front();
    const auto found =
        std::find_if(m_sent.begin(), m_sent.end(), [print](const Sent& each) { return each.print == print; });
    if (found == m_sent.end())
        return false;
    m_sent.erase(found);
    return true;
}

} // namespace emulated_board
