#include "packets/ByteSlice.h"

#include <algorithm>

namespace {
// QByteArray::fromRawData gives an array that points to memory of somebody else, with no capacity of its own.
bool borrowsItsMemory(const QByteArray& bytes)
{
    return bytes.capacity() == 0;
}
} // namespace

ByteSlice ByteSlice::mid(int at, int size) const
{
    const int rest = std::max(m_size - at, 0);
    const int taken = size < 0 ? rest : std::min(size, rest);
    if (taken == 0)
        return {};
    // A part of borrowed memory is copied, as QByteArray::mid does it: a packet may outlive that memory.
    if (taken < m_size && borrowsItsMemory(m_array))
        return ByteSlice(QByteArray(constData() + at, taken));
    ByteSlice part;
    part.m_array = m_array;
    part.m_at = m_at + at;
    part.m_size = taken;
    return part;
}

const QByteArray& ByteSlice::array() const
{
    if (m_size != m_array.size()) {
        m_array = QByteArray(constData(), m_size);
        m_at = 0;
    }
    return m_array;
}
