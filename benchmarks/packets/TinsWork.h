#pragma once

#include <QByteArray>

#include <cstdint>
#include <vector>

/// What PacketWork.h has, done by libtins.
namespace mesk::benchmarks::tins {

std::vector<std::uint8_t> buildAck(const QByteArray& payload);
std::vector<std::uint8_t> buildDevice();
/// Without the zeros behind the options.
std::vector<std::uint8_t> buildDhcp();

quint64 walkAck(const QByteArray& frame);
quint64 walkDevice(const QByteArray& frame);
quint64 walkDhcp(const QByteArray& frame);

} // namespace mesk::benchmarks::tins
