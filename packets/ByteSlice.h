#pragma once

#include <QByteArray>

/// Part of a shared array: what one layer is of the frame that carries it, without a copy. It keeps the whole
/// array alive. [one thread at a time, reading too]
class ByteSlice {
public:
    ByteSlice() noexcept = default;
    /// All of @p bytes, shared.
    explicit ByteSlice(const QByteArray& bytes)
        : m_array(bytes)
        , m_size(bytes.size())
    {
    }

    const char* constData() const noexcept { return m_array.constData() + m_at; }
    int size() const noexcept { return m_size; }

    /// The bytes from @p at on, at most @p size of them; all to the end if @p size is negative.
    /// @param at not negative; behind the end nothing is left.
    ByteSlice mid(int at, int size = -1) const;
    /// The bytes as an array of their own, made when it is first asked for. The reference is good while the
    /// slice lives.
    const QByteArray& array() const;

private:
    mutable QByteArray m_array;
    mutable int m_at = 0;
    int m_size = 0;
};
