#pragma once

#include "stand-ins/board/links/DeviceLink.h"
#include "stand-ins/board/links/SentFrames.h"

#include <memory>

struct pcap;

namespace emulated_board {

/// A cable to a network interface of this machine, hence to what is connected there. It hears all that
/// comes in at the interface, whoever it is for, and nothing that goes out there.
class InterfaceLink : public DeviceLink {
public:
    /// @param portName how the port is told to users.
    /// Throws std::runtime_error if the interface can't be had.
    InterfaceLink(const std::string& interface, const std::string& portName, LineEnd& end);
    ~InterfaceLink() override;

private:
    struct Closer {
        void operator()(pcap* handle) const;
    };
    using Handle = std::unique_ptr<pcap, Closer>;

    static Handle activate(const std::string& interface, int bufferBytes);
    Outcome receive(std::vector<std::uint8_t>& frame) override;
    Outcome transmit(const std::uint8_t* frame, std::size_t size) override;
    void interrupt() override;
    std::uint64_t lostFrames() const override;
    std::string goneReason() const override;

    // A handle holds the text of its last error, so each thread has its own.
    Handle m_in;
    Handle m_out;
    bool m_comesBack; // the kernel gives back what is sent
    SentFrames m_sent;
};

} // namespace emulated_board
