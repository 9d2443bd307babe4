#pragma once

#include "stand-ins/camera/ControlPrivilege.h"

#include <QByteArray>

#include <list>

namespace emulated_camera {

/// The last command of each sender with its answer, so that one which comes again is not executed again. The
/// whole command is compared, since a client that begins anew may use the same id for another one; and it is
/// remembered for a short time only, since a client may mean what it says twice. [one thread at a time]
class RecentCommands {
public:
    static constexpr std::size_t sendersMax = 16; ///< the one that was silent longest is forgotten
    static constexpr mesk::stack::Duration keptFor = std::chrono::seconds(2);

    struct Entry {
        Application who;
        QByteArray command;
        std::optional<QByteArray> answer{}; ///< not there: not answered yet; empty: has none
        mesk::stack::TimePoint answeredAt{};
    };

    /// @returns null for a command that did not come before. Good until the next call.
    const Entry* find(const Application& who, const QByteArray& command, mesk::stack::TimePoint now) const;
    void add(const Application& who, const QByteArray& command);
    /// Does nothing if the command is forgotten.
    void setAnswer(const Application& who, const QByteArray& command, const QByteArray& answer,
                   mesk::stack::TimePoint now);
    void clear();

private:
    std::list<Entry> m_entries; ///< the newest first
};

} // namespace emulated_camera
