#pragma once

#include <QByteArray>

#include <memory>
#include <optional>

namespace kivo::core::mesk {
class PhysicalNetworkInterface;
}

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
    /// Stops and destroys the interface.
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

    /// Where all frames go that pass from now on; null for nowhere.
    void record(CaptureWriter* writer);

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
