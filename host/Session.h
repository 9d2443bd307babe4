#pragma once

#include "host/Options.h"
#include "host/Output.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mesk::host {

class BoardAccess;
class LogObserver;
class Port;

/// What a verb works with: the options, the output, and, made when they are first asked for, the board
/// library and ports of the plugin.
class Session {
public:
    /// Sets the environment up that the libraries read when they are loaded.
    explicit Session(const Options& options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Options& options() const;
    Output& output();
    /// @throws Failure if the board library is missing.
    const BoardAccess& board();

    /// Opens a port of the board that the options name. The one that they name as well records its
    /// frames, and is plugged to their link once it is open, since `open` empties the queues.
    /// @returns a port that the session owns.
    /// @throws Failure if the plugin, the board or the port is missing, or doesn't open.
    Port& openPort(int port);
    Port& openPort() { return openPort(options().port); }

    /// Plugs a port until the session ends.
    void plug(int port, const std::string& link);

    /// The ports that were opened, in that order.
    const std::vector<std::unique_ptr<Port>>& ports() const;

    /// Collects what the interfaces of the plugin log at or above a level.
    /// @throws Failure if there is no logging dispatcher that lets it.
    std::unique_ptr<LogObserver> observeInterfaces(std::uint32_t level) const;

    /// Ends all in the right order; the destructor does it where this was not called.
    /// @throws Failure if frames could not be recorded.
    void close();

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
