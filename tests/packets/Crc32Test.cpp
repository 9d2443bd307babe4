#include "packets/Crc32.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

namespace {
// The definition, a bit at a time.
quint32 plainCrc(const QByteArray& bytes)
{
    quint32 crc = 0xffffffffU;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xedb88320U : 0U);
    }
    return ~crc;
}

TEST(Crc32, knownValues)
{
    EXPECT_EQ(ethernetCrc32("123456789", 9), 0xcbf43926U);
    EXPECT_EQ(ethernetCrc32(nullptr, 0), 0U);
    EXPECT_EQ(ethernetCrc32(QByteArray(14, '\0').constData(), 14), 0xd1bb79c7U);
}

TEST(Crc32, agreesWithTheDefinitionAtEveryLengthAndOffset)
{
    QByteArray bytes(320, Qt::Uninitialized);
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i * 151 + (i >> 3));
    for (int length = 0; length <= 300; ++length) {
        for (int offset = 0; offset < (length % 16 == 0 ? 17 : 3); ++offset) {
            const TightBytes tight(bytes.left(offset + length));
            EXPECT_EQ(ethernetCrc32(tight.array().constData() + offset, std::size_t(length)),
                      plainCrc(bytes.mid(offset, length)))
                << length << " at " << offset;
        }
    }
}
} // namespace
