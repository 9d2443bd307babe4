#include "packets/ByteSlice.h"

const QByteArray& ByteSlice::array() const
{
    if (m_size != m_array.size()) {
        m_array = QByteArray(constData(), m_size);
        m_at = 0;
    }
    return m_array;
}
