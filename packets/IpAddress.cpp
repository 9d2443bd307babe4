#include "packets/IpAddress.h"

#include "packets/AddressText.h"

namespace {
constexpr int sizeBytes = 4;
constexpr int bitsPerByte = 8;
constexpr int octetDigitsMax = 3;
constexpr int octetMax = 255;

// One to three decimal digits, leading zeros allowed; -1 for anything else.
int readOctet(AddressText& text)
{
    int octet = text.digit(10);
    for (int count = 1; octet >= 0 && count < octetDigitsMax; ++count) {
        const int digit = text.digit(10);
        if (digit < 0)
            break;
        octet = octet * 10 + digit;
    }
    return octet <= octetMax ? octet : -1;
}
} // namespace

bool IpAddress::parse(const QByteArray& bytesOrText)
{
    if (bytesOrText.size() == sizeBytes) {
        std::memmove(&m_value, bytesOrText.constData(), sizeBytes); // may be a view of this very address
        return true;
    }
    AddressText text(bytesOrText);
    quint32 read = 0;
    for (int i = 0; i < sizeBytes; ++i) {
        if (i > 0 && !text.skip('.'))
            return false;
        const int octet = readOctet(text);
        if (octet < 0)
            return false;
        read = read << bitsPerByte | quint32(octet);
    }
    if (!text.atEnd())
        return false;
    m_value = read;
    return true;
}

bool IpAddress::parse(const QString& text)
{
    return parse(QByteArray::fromStdString(text.toStdString()));
}

bool IpAddress::parse(const std::string& text)
{
    return parse(QString::fromStdString(text));
}

QByteArray IpAddress::rawBytes() const
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(&m_value), sizeBytes);
}

QString IpAddress::toString() const
{
    return QString::fromLatin1(toByteArray());
}

QByteArray IpAddress::toByteArray() const
{
    return QByteArray::fromStdString(toStdString());
}

std::string IpAddress::toStdString() const
{
    std::string text;
    for (int shift = (sizeBytes - 1) * bitsPerByte; shift >= 0; shift -= bitsPerByte) {
        text += std::to_string(m_value >> shift & 0xff);
        if (shift > 0)
            text += '.';
    }
    return text;
}
