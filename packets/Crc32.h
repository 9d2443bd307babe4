#pragma once

#include <QtGlobal>

#include <cstddef>

/// CRC-32 of IEEE 802.3: reflected polynomial 0xEDB88320, register starting at 0xFFFFFFFF, final complement.
/// On the wire its least significant byte comes first. [any thread]
/// @param data may lie at any address; not read if @p size is 0.
quint32 ethernetCrc32(const char* data, std::size_t size) noexcept;
