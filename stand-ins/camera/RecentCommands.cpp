#include "stand-ins/camera/RecentCommands.h"

#include "packets/ByteArrayHelpers.h"

#include <algorithm>

namespace emulated_camera {

namespace {

quint16 idOf(const QByteArray& command)
{
    constexpr int idAt = 6;
    return readField<quint16>(command, idAt);
}

} // namespace

const RecentCommands::Entry* RecentCommands::find(const Application& who, const QByteArray& command,
                                                  mesk::stack::TimePoint now) const
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& each) {
        return each.who == who && each.command == command;
    });
    return found == m_entries.end() || now - found->since > keptFor ? nullptr : &*found;
}

void RecentCommands::add(const Application& who, const QByteArray& command, const QByteArray& answer,
                         mesk::stack::TimePoint now)
{
    int ofSender = 1; // the new one
    m_entries.remove_if([&](const Entry& each) {
        return each.who == who && (idOf(each.command) == idOf(command) || ++ofSender > commandsPerSenderMax);
    });
    m_entries.push_front({who, command, answer, now});
    if (m_entries.size() > commandsMax)
        m_entries.pop_back();
}

void RecentCommands::forgetAllBut(quint16 code)
{
    constexpr int codeAt = 2;
    m_entries.remove_if(
        [code](const Entry& each) { return readField<quint16>(each.command, codeAt) != code; });
}

void RecentCommands::clear()
{
    m_entries.clear();
}

} // namespace emulated_camera
