#pragma once

#include <QByteArray>

#include <boost/shared_ptr.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo::core::mesk {
class PhysicalNetworkInterface;
class PhysicalNetworkInterfaceEventQueue;
} // namespace kivo::core::mesk

namespace mesk::host {

class CaptureWriter;
struct OutgoingFrame;
class PluginHost;

/// One interface of the plugin, from its making to its end in the framework's order.
class Port {
public:
    /// Makes the interface and hands its properties over; the board isn't touched yet.
    /// @param plugin must outlive the port.
    /// @param resetBoard whether `open` may reset the board's GigE hardware.
    Port(const PluginHost& plugin, int board, int port, bool resetBoard);
    /// Destroys the interface, and stops it first.
    ~Port();
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    /// Opens the interface and starts its workers. Takes some 5 s where it resets the board.
    bool open();

    /// [one thread at a time] Puts a frame on the wire. It must not be a refused one.
    void send(const OutgoingFrame& frame);
    /// [one thread at a time] Waits for a frame for 100 ms at most (200 ms in the middle of one).
    std::optional<QByteArray> receive();
    void resetPhy();
    /// Has the interface log its debug report, which takes 1 s, and 4 s after a reset.
    void debugOutput();
    /// The way of the interface's events. What it holds must be gone before the plugin goes.
    boost::shared_ptr<kivo::core::mesk::PhysicalNetworkInterfaceEventQueue> eventQueue();
    /// Stops the workers of an open port and has the interface log its statistics; once.
    void stop();

    int number() const;
    /// The interface's name, which its log lines bear.
    const std::string& id() const;

    /// Where all frames go that pass from now on; null for nowhere.
    void record(CaptureWriter* writer);

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
