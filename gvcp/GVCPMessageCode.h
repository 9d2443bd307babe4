#pragma once

#include <QtGlobal>

/// Message codes of GVCP (GigE Vision), host byte order. The acknowledge of a command has the code behind
/// that of the command.
namespace GVCPMessageCode {
enum : quint16 {
    DiscoveryCommand = 0x0002,
    DiscoveryAck = 0x0003,
    ForceIpCommand = 0x0004,
    ForceIpAck = 0x0005,
    PacketResendCommand = 0x0040,
    PacketResendAck = 0x0041,
    ReadRegisterCommand = 0x0080,
    ReadRegisterAck = 0x0081,
    WriteRegisterCommand = 0x0082,
    WriteRegisterAck = 0x0083,
    ReadMemoryCommand = 0x0084,
    ReadMemoryAck = 0x0085,
    WriteMemoryCommand = 0x0086,
    WriteMemoryAck = 0x0087,
    PendingAck = 0x0089, ///< has no command of its own
    EventCommand = 0x00c0,
    EventAck = 0x00c1,
    EventDataCommand = 0x00c2,
    EventDataAck = 0x00c3,
    ActionCommand = 0x0100,
    ActionAck = 0x0101,
};
} // namespace GVCPMessageCode
