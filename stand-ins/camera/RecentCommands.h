#pragma once

#include "stand-ins/camera/ControlPrivilege.h"

#include <QByteArray>

#include <list>

namespace emulated_camera {

/// The last commands of each sender with their answers, so that one which comes again is not executed again.
/// The whole command is compared, since a client that begins anew may use the same id for another one, which
/// takes the first one's place; and it is remembered for a short time only, since a client may mean what it
/// says twice. [one thread at a time]
class RecentCommands {
public:
    /// Of one sender: a sign of life may come between a command and its repetition. Not more, or a client
    /// that begins anew with the same ids would meet commands of its last run.
    static constexpr int commandsPerSenderMax = 2;
    static constexpr std::size_t commandsMax = 32; ///< of all senders; the oldest is forgotten
    static constexpr mesk::stack::Duration keptFor = std::chrono::seconds(2);

    struct Entry {
        Application who;
        QByteArray command;
        QByteArray answer; ///< empty: has none, or none yet
        mesk::stack::TimePoint since;
    };

    /// @returns null for a command that did not come before. Good until the next call.
    const Entry* find(const Application& who, const QByteArray& command, mesk::stack::TimePoint now) const;
    /// In the place of the sender's command with the same id.
    /// @param answer empty where there is none, or none yet: the command can be added again with it.
    void add(const Application& who, const QByteArray& command, const QByteArray& answer,
             mesk::stack::TimePoint now);
    void clear();
    void forgetAllBut(quint16 code);

private:
    std::list<Entry> m_entries; ///< the newest first
};

} // namespace emulated_camera
