#include "stand-ins/camera/RecentCommands.h"

#include <algorithm>

namespace emulated_camera {

const RecentCommands::Entry* RecentCommands::find(const Application& who, const QByteArray& command,
                                                  mesk::stack::TimePoint now) const
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& each) { return each.who == who; });
    if (found == m_entries.end() || found->command != command)
        return nullptr;
    const bool isOld = found->answer && now - found->answeredAt > keptFor;
    return isOld ? nullptr : &*found;
}

void RecentCommands::add(const Application& who, const QByteArray& command)
{
    m_entries.remove_if([&](const Entry& each) { return each.who == who; });
    m_entries.push_front({who, command});
    if (m_entries.size() > sendersMax)
        m_entries.pop_back();
}

void RecentCommands::setAnswer(const Application& who, const QByteArray& command, const QByteArray& answer,
                               mesk::stack::TimePoint now)
{
    for (Entry& each : m_entries)
        if (each.who == who && each.command == command) {
            each.answer = answer;
            each.answeredAt = now;
        }
}

void RecentCommands::clear()
{
    m_entries.clear();
}

} // namespace emulated_camera
