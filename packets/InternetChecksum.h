#pragma once

#include <QtGlobal>

#include <cstddef>

/// Sum of the 16-bit words in network byte order at @p data, carries not folded; an odd last byte is the high
/// byte of a last word (RFC 1071). [any thread]
quint64 sumOfWords(const char* data, std::size_t size) noexcept;

/// One's complement sum: what is above the low 16 bits is added to them until nothing is left there.
constexpr quint16 foldedSum(quint64 sum) noexcept
{
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    return quint16(sum);
}
