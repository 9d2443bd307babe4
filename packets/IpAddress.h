#pragma once

#include <QByteArray>
#include <QString>

#include <string>

/// IPv4 address as a number in host byte order: 192.168.0.1 is 0xC0A80001. Network order exists in packets
/// only. A value; [one thread at a time].
class IpAddress {
public:
    /// 0.0.0.0.
    IpAddress() noexcept = default;
    /// @param value in host byte order.
    explicit IpAddress(quint32 value) noexcept
        : m_value(value)
    {
    }

    /// In host byte order.
    quint32 toUInt32() const noexcept { return m_value; }
    /// Sets 0.0.0.0.
    void clear() noexcept { m_value = 0; }

    bool operator==(const IpAddress& other) const noexcept { return m_value == other.m_value; }
    bool operator!=(const IpAddress& other) const noexcept { return !(*this == other); }

    /// True for 255.255.255.255.
    bool isBroadcast() const noexcept { return *this == broadcast(); }
    static IpAddress broadcast() noexcept { return IpAddress(0xffffffffU); }

    /// Takes exactly four bytes as the value lies in memory (the inverse of rawBytes(), no byte swap), and
    /// anything else as dotted decimal text of four numbers of one to three digits. A zero byte ends the
    /// text.
    /// @returns false, with the address unchanged, if the text has another form.
    bool parse(const QByteArray& bytesOrText);
    /// The same with the UTF-8 form of the text, so four ASCII characters count as four bytes here too.
    bool parse(const QString& text);
    bool parse(const std::string& text);

    /// View of the four bytes of the value as it lies in memory, without a copy; valid while the address
    /// lives.
    QByteArray rawBytes() const;

    /// Dotted decimal text.
    QString toString() const;
    QByteArray toByteArray() const;
    std::string toStdString() const;

private:
    quint32 m_value = 0;
};
