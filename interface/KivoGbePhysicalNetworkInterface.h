#pragma once

#include <kivo/core/mesk/PhysicalNetworkInterface.h>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include <atomic>
#include <cstdint>
#include <string>

namespace kivo::core::mesk {

/// One GigE port of one frame-grabber board.
///
/// Life: construct, inject `boardId` and `portId`, `open`, `startWorkers`, then frames and events; at
/// the end `requestStop`, `finish`, destruction. Each object holds a device handle and a firmware design
/// of its own. Operations are called by one thread at a time unless their tag says otherwise; `sendFrame`
/// and `receiveFrame` may run beside each other. What goes wrong is told in the log.
class KivoGbePhysicalNetworkInterface final : public PhysicalNetworkInterface {
public:
    /// Touches neither board nor library.
    KivoGbePhysicalNetworkInterface();
    /// Ends the worker thread if it still runs, and gives design and device back.
    ~KivoGbePhysicalNetworkInterface() override;

    /// Takes `boardId` (int), `portId` (int) and `resetBoard` (std::string; exactly "false" leaves the
    /// board's hardware alone at `open`, for good). Any other key is the base class's.
    /// Throws `AnyException` for a value of another type; the property then keeps its value.
    void injectDependency(const std::string& key, const boost::any& value) override;

    /// [any thread] The logger of all interfaces; owned by `Logging`.
    tools::logging::Logger* logger() override
    {
        tools::logging::Logger* const cached = m_logger.load(std::memory_order_acquire);
        return cached != nullptr ? cached : fetchLogger();
    }

    /// [one thread at a time; never together with reinitialize()] Waits for the next received frame,
    /// 100 ms for its announcement, 100 ms for its data, and 100 ms after a read error.
    /// @param[out] ok whether there is a frame; may be null.
    /// @returns the frame, its bytes as the firmware delivers them; empty after a time-out or a failure.
    boost::shared_ptr<EthernetFrame> receiveFrame(bool* ok) override;

    /// [one thread at a time; never together with reinitialize()] Puts one frame on the wire and drops
    /// its reference to it. With the hardware's CRC generation switched off a frame without one gets its
    /// CRC appended. A frame of more than 1518 bytes is refused, one that the transmitter isn't ready for
    /// within a second is dropped. The last byte of an odd size is not sent.
    /// @param frame must not be null.
    void sendFrame(boost::shared_ptr<EthernetFrame> frame) override;

    void emptyOperation() override;

    /// Brings the port up: device, firmware design, hardware reset (once per board, 4.6 seconds),
    /// registers, start values of the counters, empty queues.
    /// @returns true if the port is ready; false if no device is held.
    bool open() override;
    /// Starts the worker thread, where the firmware has action commands.
    void startWorkers() override;
    /// [any thread] Tells the worker thread to end, interrupts the event queue for good, and lets the
    /// next `open` of any port reset its board again. Doesn't wait.
    void requestStop() override;
    /// Waits for the worker thread's end, which `requestStop` must have asked for, and logs statistics.
    void finish() override;
    /// Brackets a restart of the board.
    /// @param mode 0 releases the device, 1 gets it back with the design that is held; any other value
    ///     does nothing.
    /// @returns false if the device could not be got back.
    bool reinitialize(std::uint32_t mode) override;
    /// Resets the port's PHY alone, in 1.3 seconds.
    void resetPhy() override;

    /// Whether the firmware's CRC generation can be switched; false before `open`.
    bool supportsCrcGenerationControl() override;
    bool isCrcGenerationDisabled() override;
    void setCrcGenerationDisabled(bool disable) override;

    /// [any thread] The queue of this interface's events; may outlive the interface.
    boost::shared_ptr<PhysicalNetworkInterfaceEventQueue> eventQueue() override;

    /// Logs what is known of board, devices, firmware and PHY. Takes some four seconds.
    void debugOutput() override;

    /// [the worker thread] One attempt to read a report of timed-out action commands, which takes up to
    /// 100 ms. A report is logged and goes to the event queue, which blocks while the queue is full.
    void pollActionTimeoutQueue();

private:
    struct D;

    tools::logging::Logger* fetchLogger();
    void warnOfFilledFifos();
    void takePreSendWait();
    bool isTransmitterReady();
    void reportUnsent(const std::string& text);
    boost::shared_ptr<EthernetFrame> receiveNext();
    boost::shared_ptr<EthernetFrame> receiveTransmission(std::uint32_t announcedBytes);
    void handleReadError(std::int32_t result);
    void watchCrcErrors();
    template <typename... Parts>
    void logDetail(const Parts&... parts);
    void logOwnDevice();
    void logDevicesFound();
    void logFirmwareRegisters();
    void logPhyRegisters();

    std::atomic<tools::logging::Logger*> m_logger{nullptr};
    boost::shared_ptr<D> d;
};

} // namespace kivo::core::mesk
