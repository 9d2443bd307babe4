#include "packets/InternetChecksum.h"

#include <QtEndian>

#include <algorithm>

namespace {
constexpr std::size_t wordBytes = sizeof(quint16);
// So many words can't overflow a 32-bit sum, which is what compilers add up several words at a time.
constexpr std::size_t blockWordsMax = 0x10000;
} // namespace

quint64 sumOfWords(const char* data, std::size_t size) noexcept
{
    quint64 sum = 0;
    for (std::size_t words = size / wordBytes; words > 0;) {
        const std::size_t block = std::min(words, blockWordsMax);
        quint32 blockSum = 0;
        for (std::size_t i = 0; i < block; ++i)
            blockSum += qFromBigEndian<quint16>(data + i * wordBytes);
        sum += blockSum;
        data += block * wordBytes;
        words -= block;
    }
    if (size % wordBytes != 0)
        sum += quint32(quint8(*data)) << 8;
    return sum;
}
