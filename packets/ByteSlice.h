#pragma once

#include <QByteArray>

#include <algorithm>
#include <utility>

/// Part of a shared array: what one layer is of the frame that carries it, without a copy. It keeps the whole
/// array alive. One that was moved from is good for an assignment only. [one thread at a time, reading too]
class ByteSlice {
public:
    ByteSlice() noexcept = default;
    /// All of @p bytes, shared.
    explicit ByteSlice(QByteArray bytes) noexcept
        : m_array(std::move(bytes))
        , m_size(m_array.size())
    {
    }

    const char* constData() const noexcept { return m_array.constData() + m_at; }
    int size() const noexcept { return m_size; }

    /// Leaves the bytes from @p at on, at most @p size of them; all to the end if @p size is negative.
    /// @param at not negative; behind the end nothing is left.
    void narrow(int at, int size = -1);
    /// A further slice of these bytes, narrowed so.
    ByteSlice mid(int at, int size = -1) const
    {
        ByteSlice part = *this;
        part.narrow(at, size);
        return part;
    }
    /// The bytes as an array of their own, made when it is first asked for. The reference is good while the
    /// slice lives.
    const QByteArray& array() const;

private:
    // QByteArray::fromRawData gives an array that points to memory of somebody else, with no capacity of its
    // own.
    bool borrowsItsMemory() const { return m_array.capacity() == 0; }

    mutable QByteArray m_array;
    mutable int m_at = 0;
    int m_size = 0;
};

inline void ByteSlice::narrow(int at, int size)
{
    const int rest = std::max(m_size - at, 0);
    const int taken = size < 0 ? rest : std::min(size, rest);
    if (taken == 0) {
        *this = ByteSlice();
    } else if (taken < m_size && borrowsItsMemory()) {
        // Copied, as QByteArray::mid does it: a packet may outlive that memory.
        *this = ByteSlice(QByteArray(constData() + at, taken));
    } else {
        m_at += at;
        m_size = taken;
    }
}
