#include "packets/ByteArrayHelpers.h"
#include "packets/ByteSlice.h"
#include "tests/packets/TestBytes.h"

#include <gtest/gtest.h>

namespace {
const QByteArray sample = hex("81 92 a3 b4 c5 d6 e7 f8 09");

// What a short array reads as, in plain steps: half the width until enough bytes are there.
quint64 expectedMemory(const QByteArray& bytes, int width)
{
    while (width > 0 && width > bytes.size())
        width /= 2;
    quint64 value = 0;
    for (int i = width - 1; i >= 0; --i)
        value = value << 8 | quint8(bytes[i]);
    return value;
}

TEST(ByteArrayHelpers, shortArraysReadAsTheLargestHalfThatIsThere)
{
    for (int length = 0; length <= sample.size(); ++length) {
        const TightBytes tight(sample.left(length));
        const QByteArray bytes = tight.array();
        EXPECT_EQ(byteArrayToUInt8(bytes), expectedMemory(bytes, 1)) << length;
        EXPECT_EQ(byteArrayToUInt16(bytes), expectedMemory(bytes, 2)) << length;
        EXPECT_EQ(byteArrayToUInt32(bytes), expectedMemory(bytes, 4)) << length;
        EXPECT_EQ(byteArrayToUInt64(bytes), expectedMemory(bytes, 8)) << length;
        for (int at = 0; at <= length + 2; ++at) { // fields read in place as if cut out
            EXPECT_EQ(readField<quint8>(bytes, at), byteArrayToUInt8(bytes.mid(at)));
            EXPECT_EQ(readField<quint16>(bytes, at), qFromBigEndian(byteArrayToUInt16(bytes.mid(at, 2))));
            EXPECT_EQ(readField<quint32>(bytes, at), qFromBigEndian(byteArrayToUInt32(bytes.mid(at, 4))));
            EXPECT_EQ(readField<quint64>(bytes, at), qFromBigEndian(byteArrayToUInt64(bytes.mid(at, 8))));
        }
        EXPECT_EQ(readField<quint32>(bytes, -1), 0U);
    }
}

TEST(ByteArrayHelpers, valuesWriteAsTheyLieInMemory)
{
    EXPECT_EQ(byteArrayFromUInt8(0x81), hex("81"));
    EXPECT_EQ(byteArrayFromUInt16(qToBigEndian(quint16(0x8192))), hex("81 92"));
    EXPECT_EQ(byteArrayFromUInt32(qToBigEndian(0x8192a3b4U)), hex("81 92 a3 b4"));
    EXPECT_EQ(byteArrayFromUInt64(qToBigEndian(quint64(0x8192a3b4c5d6e7f8U))),
              hex("81 92 a3 b4 c5 d6 e7 f8"));
}

TEST(ByteArrayHelpers, wordsTurnToNetworkOrderAndTheRestIsDropped)
{
    for (int length = 0; length <= sample.size(); ++length) {
        QByteArray expected;
        for (int word = 0; word < length / 4; ++word)
            expected += byteArrayFromUInt32(qToBigEndian(byteArrayToUInt32(sample.mid(word * 4, 4))));
        EXPECT_EQ(byteArrayToNetworkWords(TightBytes(sample.left(length)).array()), expected) << length;
    }
}

TEST(ByteSlice, takesTheSamePartsAsTheArray)
{
    const ByteSlice inner = ByteSlice(sample).mid(2, 5);
    const QByteArray cut = sample.mid(2, 5);
    for (int at = 0; at <= 6; ++at) {
        for (int size = -1; size <= 6; ++size) {
            const ByteSlice part = inner.mid(at, size);
            EXPECT_EQ(readField<quint32>(part, 1), readField<quint32>(cut.mid(at, size), 1))
                << at << ' ' << size;
            EXPECT_EQ(part.array(), cut.mid(at, size)) << at << ' ' << size;
        }
    }
}

TEST(ByteSlice, sharesOwnedMemoryAndCopiesFromBorrowedMemory)
{
    EXPECT_EQ(ByteSlice(sample).mid(2).constData(), sample.constData() + 2);
    ByteSlice kept;
    {
        const TightBytes borrowed(sample);
        kept = ByteSlice(borrowed.array()).mid(2);
    }
    EXPECT_EQ(kept.array(), sample.mid(2));
}
} // namespace
