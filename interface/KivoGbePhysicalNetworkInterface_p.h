#pragma once

#include "interface/DeviceGate.h"
#include "interface/KivoGbePhysicalNetworkInterface.h"
#include "interface/LogLine.h"
#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/RelaxedAtomic.h"
#include "plugin/binding/KHal.h"

namespace kivo::core::mesk {

class KivoGbePhysicalNetworkInterfaceUiqLeecherThread;

constexpr std::uint32_t portsOfBoard = 4;
constexpr std::uint32_t allPortsMask = 0xF;
constexpr std::uint32_t actionTimeoutQueueOffset = 8;    ///< queue number minus port number
constexpr std::uint32_t actionTimeoutCountMask = 0xFFFF; ///< of a report word
constexpr std::uint32_t queueReadTimeoutMs = 100;
constexpr std::uint32_t readErrorPauseMs = 100;      ///< keeps a run of failing reads from spinning
constexpr std::uint32_t endOfTransmission = 0x10000; ///< bit 16 of the last word of a transmission

/// The interface's private record: everything that belongs to one port. Fields that more than one of
/// the framework's threads and the worker thread use are atomics; each has one writer at a time.
struct KivoGbePhysicalNetworkInterface::D {
    D();
    D(const D&) = delete;
    D& operator=(const D&) = delete;
    /// Ends the thread, then gives back design and device; the event queue lives on with its holders.
    ~D();

    /// The logger, for operations that hold nothing but this record. [any thread]
    tools::logging::Logger& cachedLogger();

    /// Takes a device and loads the firmware design into it; looks the design up if none is held.
    /// @param id the interface's name, for messages.
    /// @returns false if no device is held.
    bool initDevice(const std::string& id);
    /// The second half of `initDevice`, with a device held.
    bool loadDesign(const std::string& id);
    bool findDesign(const std::string& id);
    void freeDevice();

    /// The worker thread; null where the firmware has no action commands.
    KivoGbePhysicalNetworkInterfaceUiqLeecherThread* worker() const;

    /// What one read of the action-timeout queue gave.
    struct ActionRead {
        std::int32_t result = 0;
        std::uint32_t word = 0;
        std::string fault; ///< what is to be told about it; empty if nothing is
    };
    ActionRead readActionTimeout(const std::string& id);

    void resolveRegisters();
    /// Id of the register that is called `baseName` followed by the port's number; 0 if there is none.
    std::uint32_t resolvePortRegister(const char* baseName, std::uint32_t port) const;
    /// Reads a register into a field, if the design has the register; a failed read changes nothing.
    void readInto(std::uint32_t registerId, RelaxedAtomic<std::uint64_t>& field) const;
    void takeStartValues();
    void writeRegister(std::uint32_t registerId, std::uint64_t value) const;

    /// Resets the PHYs of `portMask` and sets them up. Unless `phyOnly`, once per board only, and then
    /// the transceivers are switched on too. Blocks for about 1.1 seconds for each PHY.
    void resetGigeHardware(std::uint32_t portMask, bool phyOnly);
    void resolveResetRegisters();
    void pulsePhyReset(std::uint32_t portMask) const;
    /// @returns false if the PHY never cleared its reset bit.
    bool configurePhy(std::uint32_t phy, bool driverClass) const;
    void enableTransceivers() const;
    /// Accesses to the PHY that was last selected. The caller holds the board's MDIO lock.
    void mdioWrite(std::uint8_t phyRegister, std::uint16_t value) const;
    /// A failed read leaves `value` as it was.
    void mdioRead(std::uint8_t phyRegister, std::uint16_t& value) const;

    std::atomic<tools::logging::Logger*> logger{nullptr};
    RelaxedAtomic<std::uint32_t> regMdioRead;
    RelaxedAtomic<std::uint32_t> regMdioWrite;
    RelaxedAtomic<std::uint32_t> regMdioData;
    RelaxedAtomic<std::uint32_t> regMdioRegAddr;
    RelaxedAtomic<std::uint32_t> regMdioPhyAddr;
    RelaxedAtomic<std::uint32_t> regMdioReadData;
    RelaxedAtomic<std::uint32_t> regGigeReset;
    RelaxedAtomic<std::uint32_t> boardId;
    RelaxedAtomic<std::uint32_t> portId; ///< also the number of the receive queue
    RelaxedAtomic<bool> resetBoard{true};
    RelaxedAtomic<bool> txCrcGenerationDisabled;
    RelaxedAtomic<std::uint32_t> preSendWaitMs;
    RelaxedAtomic<std::uint64_t> boardHandle;    ///< 0: no device is held
    RelaxedAtomic<std::uint64_t> firmwareDesign; ///< 0: no design is held
    RelaxedAtomic<bool> uiqReadErrorLatched;
    RelaxedAtomic<bool> zeroSizeLatched;
    RelaxedAtomic<bool> actionUiqErrorLatched;
    RelaxedAtomic<bool> rxEventReported;
    RelaxedAtomic<bool> actionEventReported;
    RelaxedAtomic<bool> txEventReported;
    // Register ids of this port; 0 where the design has no such register.
    RelaxedAtomic<std::uint32_t> regBufferReset;
    RelaxedAtomic<std::uint32_t> regWriteData;
    RelaxedAtomic<std::uint32_t> regWriteComplete;
    RelaxedAtomic<std::uint32_t> regTxTransferActive;
    RelaxedAtomic<std::uint32_t> regTxDisableCrcGeneration;
    RelaxedAtomic<std::uint32_t> regRecvPktCnt;
    RelaxedAtomic<std::uint32_t> regRecvErrCnt;
    RelaxedAtomic<std::uint32_t> regCtrlPktReceivedCnt;
    RelaxedAtomic<std::uint32_t> regCtrlPktSendUiqCnt;
    RelaxedAtomic<std::uint32_t> regGvspFifoOverflow;
    RelaxedAtomic<std::uint32_t> regGvcpFifoNotEmpty;
    // Counted over the life of the object.
    RelaxedAtomic<std::uint64_t> framesSent;
    RelaxedAtomic<std::uint64_t> bytesSent;
    RelaxedAtomic<std::uint64_t> framesReceived;
    RelaxedAtomic<std::uint64_t> bytesReceived;
    RelaxedAtomic<std::uint64_t> zeroSizeTransmissions;
    RelaxedAtomic<std::uint64_t> invalidEots;
    RelaxedAtomic<std::uint64_t> invalidTransmissionSizes;
    RelaxedAtomic<std::uint64_t> uiqReadErrors;
    // The firmware's counters run on by themselves: what they showed at open.
    RelaxedAtomic<std::uint64_t> hwPacketCountAtOpen;
    RelaxedAtomic<std::uint64_t> hwPacketErrorsAtOpen;
    RelaxedAtomic<std::uint64_t> hwPacketErrorsSeen;
    RelaxedAtomic<std::uint64_t> ctrlPacketsReceivedAtOpen;
    RelaxedAtomic<std::uint64_t> ctrlPacketsSentUiqAtOpen;
    RelaxedAtomic<std::uint64_t> gvspFifoOverflowFlags;
    RelaxedAtomic<std::uint64_t> gvcpFifoNotEmptyFlags;
    /// Owned. Atomic, since a stop may be requested while `open` makes it.
    std::atomic<KivoGbePhysicalNetworkInterfaceUiqLeecherThread*> leecherThread{nullptr};
    RelaxedAtomic<bool> actionCommandsPresent;
    const boost::shared_ptr<PhysicalNetworkInterfaceEventQueue> eventQueue;
    DeviceGate deviceGate;
};

/// Part of a line: the count of words that a queue lost. The board is asked when the part is printed,
/// so not for a line that nobody wants.
struct LostWords {
    std::uint64_t boardHandle;
    std::uint32_t queue;
};
inline LineText& operator<<(LineText& text, LostWords lost)
{
    return text << plugin::KHalDataQueueGetNrOfLostWords(lost.boardHandle, lost.queue);
}

/// Writes one record to the system event log, unless the flag says that this was done; then sets it.
void reportOnceToEventLog(const std::string& text, RelaxedAtomic<bool>& reported);

} // namespace kivo::core::mesk
