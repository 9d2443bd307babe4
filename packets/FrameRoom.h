#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstring>

/// Where the bytes of one layer go in the one array that a whole frame is written into: the innermost layer
/// makes the array, and each layer further out writes its header in front of what is there.
struct FrameRoom {
    int before = 0;  ///< bytes of the headers further out
    int sizeMin = 0; ///< of the whole array

    /// The room of what @p headerBytes of header stand in front of.
    FrameRoom behind(int headerBytes) const { return {before + headerBytes, sizeMin}; }

    /// A new array for @p size bytes of this layer, which are not set; what is behind them is filled up with
    /// zeros.
    QByteArray array(int size) const
    {
        const int written = before + size;
        QByteArray array(std::max(written, sizeMin), Qt::Uninitialized);
        std::memset(array.data() + written, 0, std::size_t(array.size() - written));
        return array;
    }

    /// A new array with the bytes of this layer, given as a QByteArray or a ByteSlice.
    template <typename Bytes>
    QByteArray arrayOf(const Bytes& bytes) const
    {
        QByteArray array = this->array(bytes.size());
        std::memcpy(array.data() + before, bytes.constData(), std::size_t(bytes.size()));
        return array;
    }
};
