#pragma once

#include <QByteArray>

#include <ostream>
#include <vector>

/// Bytes of a text of hexadecimal digits; blanks don't count.
inline QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// Several getters at once.
using Values = std::vector<quint64>;

/// Lets a failed comparison show what is different.
inline void PrintTo(const QByteArray& bytes, std::ostream* out) // NOLINT: the name GoogleTest looks for
{
    *out << bytes.toHex(' ').constData() << " (" << bytes.size() << " bytes)";
}

/// Memory of exactly the size of its bytes, so that a sanitizer sees a read behind the end. A QByteArray of
/// its own has a spare byte there.
class TightBytes {
public:
    explicit TightBytes(const QByteArray& bytes)
        : m_memory(bytes.begin(), bytes.end())
    {
    }
    QByteArray array() const
    {
        return QByteArray::fromRawData(m_memory.data(), static_cast<int>(m_memory.size()));
    }

private:
    std::vector<char> m_memory;
};

/// Calls @p use with every beginning of @p good and with each of its bytes changed in three ways, each time
/// in memory without a spare byte behind it.
template <typename Use>
void forEachDamage(const QByteArray& good, Use use)
{
    for (int length = 0; length <= good.size(); ++length)
        use(TightBytes(good.left(length)).array());
    for (int at = 0; at < good.size(); ++at)
        for (const int flipped : {0x01, 0x80, 0xff}) {
            QByteArray damaged = good;
            damaged[at] = char(damaged[at] ^ flipped);
            use(TightBytes(damaged).array());
        }
}
