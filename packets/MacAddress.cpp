#include "packets/MacAddress.h"

#include "packets/AddressText.h"

#include <algorithm>

namespace {
constexpr char digits[] = "0123456789abcdef";
constexpr int bitsPerByte = 8;
} // namespace

MacAddress::MacAddress(quint8 byte0, quint8 byte1, quint8 byte2, quint8 byte3, quint8 byte4,
                       quint8 byte5) noexcept
    : m_bytes{byte0, byte1, byte2, byte3, byte4, byte5}
{
}

MacAddress::MacAddress(quint64 number) noexcept
{
    for (quint8& byte : m_bytes) {
        byte = quint8(number);
        number >>= bitsPerByte;
    }
}

MacAddress::MacAddress(const QByteArray& bytesOrText)
{
    parse(bytesOrText);
}

MacAddress::MacAddress(const QString& text)
{
    parse(text);
}

MacAddress::MacAddress(const std::string& text)
{
    parse(text);
}

bool MacAddress::parse(const QByteArray& bytesOrText)
{
    std::array<quint8, sizeBytes> read{};
    if (bytesOrText.size() == sizeBytes) {
        std::copy_n(bytesOrText.constData(), read.size(), read.begin());
        m_bytes = read;
        return true;
    }
    AddressText text(bytesOrText);
    for (quint8& byte : read) {
        if (&byte != read.data() && !text.skip(':'))
            return false;
        const int high = text.digit(16);
        const int low = text.digit(16);
        if (high < 0 || low < 0)
            return false;
        byte = quint8(high << 4 | low);
    }
    if (!text.atEnd())
        return false;
    m_bytes = read;
    return true;
}

bool MacAddress::parse(const QString& text)
{
    return parse(QByteArray::fromStdString(text.toStdString()));
}

bool MacAddress::parse(const std::string& text)
{
    return parse(QString::fromStdString(text));
}

quint64 MacAddress::toUInt64() const noexcept
{
    quint64 number = 0;
    for (auto byte = m_bytes.rbegin(); byte != m_bytes.rend(); ++byte)
        number = number << bitsPerByte | *byte;
    return number;
}

QByteArray MacAddress::rawBytes() const
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(m_bytes.data()), sizeBytes);
}

QString MacAddress::toString(const char* separator) const
{
    const QString between = QString::fromUtf8(separator);
    QString text;
    text.reserve(sizeBytes * 2 + (sizeBytes - 1) * between.size());
    for (const quint8& byte : m_bytes) {
        if (&byte != m_bytes.data())
            text += between;
        text += QLatin1Char(digits[byte >> 4]);
        text += QLatin1Char(digits[byte & 0xf]);
    }
    return text;
}

QByteArray MacAddress::toByteArray(const char* separator) const
{
    return toString(separator).toUtf8();
}

std::string MacAddress::toStdString(const char* separator) const
{
    return toString(separator).toStdString();
}
