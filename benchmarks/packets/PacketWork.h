#pragma once

#include <QByteArray>

/// The work that the packet classes and a peer do alike: frames built from what SampleMessages.h has, and
/// frames walked down to their last field, with a sum over all fields as the result.
namespace mesk::benchmarks::product {

QByteArray registerPayload();
QByteArray devicePayload();

/// A frame of an acknowledge with a payload that is there already: 50 bytes more, at least 60.
QByteArray buildAck(const QByteArray& payload);
/// The 298-byte frame of a discovery acknowledge whose block is made from its fields.
QByteArray buildDevice();
/// The 590-byte frame of a DHCP acknowledge.
QByteArray buildDhcp();

/// The payload of a read register acknowledge is read, that of a discovery acknowledge stays as it is.
quint64 walkAck(const QByteArray& frame);
/// Each field of the device information block too.
quint64 walkDevice(const QByteArray& frame);
/// Each of the sample's options.
quint64 walkDhcp(const QByteArray& frame);

} // namespace mesk::benchmarks::product
