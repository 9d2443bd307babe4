#pragma once

#include <QByteArray>
#include <QRegExp>
#include <QStringList>
#include <QtEndian>

// What the readers of addresses stand for: bytes as they are, or a pattern for the whole text, whose pieces
// are numbers. An address as it lies in memory; nothing for a text of another form.

inline QByteArray readByRule(QRegExp& pattern, char separator, int base, const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    QByteArray result;
    if (pattern.exactMatch(text)) {
        for (const QString& piece : text.split(QLatin1Char(separator)))
            result += char(piece.toUInt(nullptr, base));
    }
    return result;
}

inline QByteArray macByRule(const QByteArray& bytes)
{
    static QRegExp pattern(QStringLiteral("([0-9a-fA-F]{2}:){5}[0-9a-fA-F]{2}"));
    return bytes.size() == 6 ? bytes : readByRule(pattern, ':', 16, bytes);
}

inline QByteArray ipByRule(const QByteArray& bytes)
{
    static const QString octet = QStringLiteral("(25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)");
    static QRegExp pattern(QStringList{octet, octet, octet, octet}.join(QStringLiteral("\\.")));
    if (bytes.size() == 4)
        return bytes;
    QByteArray read = readByRule(pattern, '.', 10, bytes);
    qFromBigEndian<quint32>(read.constData(), read.size() / 4, read.data());
    return read;
}
