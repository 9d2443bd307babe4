#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstring>
#include <string>

/// Ethernet address (IEEE 802 MAC-48): six bytes in wire order. Index 0 is the first byte on the wire and the
/// first pair of digits of the text. A value; [one thread at a time].
class MacAddress {
public:
    static constexpr int sizeBytes = 6;

    /// 00:00:00:00:00:00.
    MacAddress() noexcept = default;
    /// Six bytes in wire order.
    MacAddress(quint8 byte0, quint8 byte1, quint8 byte2, quint8 byte3, quint8 byte4, quint8 byte5) noexcept;
    /// @param sixBytes six bytes in wire order; they are copied.
    explicit MacAddress(const quint8* sixBytes) noexcept { std::memcpy(m_bytes.data(), sixBytes, sizeBytes); }
    /// @param number byte i of the address is bits 8i to 8i+7; bits 48 to 63 are dropped.
    explicit MacAddress(quint64 number) noexcept;
    /// As parse(); 00:00:00:00:00:00 where that gives false.
    explicit MacAddress(const QByteArray& bytesOrText);
    explicit MacAddress(const QString& text);
    explicit MacAddress(const std::string& text);

    /// Takes exactly six bytes as they are, whatever they hold, and anything else as text of the form
    /// 00:1a:2B:3c:4d:5e. A zero byte ends the text.
    /// @returns false, with the address unchanged, if the text has another form.
    bool parse(const QByteArray& bytesOrText);
    /// The same with the UTF-8 form of the text, so six ASCII characters count as six bytes here too.
    bool parse(const QString& text);
    bool parse(const std::string& text);

    bool operator==(const MacAddress& other) const noexcept { return m_bytes == other.m_bytes; }
    bool operator!=(const MacAddress& other) const noexcept { return !(*this == other); }

    /// True for ff:ff:ff:ff:ff:ff.
    bool isBroadcast() const noexcept { return *this == broadcast(); }
    static MacAddress broadcast() noexcept { return {0xff, 0xff, 0xff, 0xff, 0xff, 0xff}; }

    /// Inverse of the constructor from a number.
    quint64 toUInt64() const noexcept;
    /// The six bytes in wire order; valid while the address lives.
    const quint8* constData() const noexcept { return m_bytes.data(); }
    /// View of the six bytes without a copy; valid while the address lives, and shows its changes.
    QByteArray rawBytes() const;

    /// Six pairs of lower-case digits with @p separator (UTF-8, zero-terminated) between them.
    QString toString(const char* separator) const;
    QByteArray toByteArray(const char* separator) const;
    std::string toStdString(const char* separator) const;

private:
    std::array<quint8, sizeBytes> m_bytes{};
};

/// Address at @p at; zero if it is cut short, since five bytes are none. Reads in place.
/// @p Bytes is a QByteArray or a ByteSlice.
template <typename Bytes>
MacAddress readMacAddress(const Bytes& bytes, int at) noexcept
{
    if (bytes.size() < at + MacAddress::sizeBytes)
        return {};
    return MacAddress(reinterpret_cast<const quint8*>(bytes.constData() + at));
}
