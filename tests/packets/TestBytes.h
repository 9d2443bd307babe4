#pragma once

#include <QByteArray>

#include <ostream>
#include <vector>

/// Bytes of a text of hexadecimal digits; blanks don't count.
inline QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

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
