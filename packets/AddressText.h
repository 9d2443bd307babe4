#pragma once

#include <QByteArray>

#include <cstring>

/// Reads the text of an address byte by byte. Addresses are pure ASCII, so the encoded text is scanned as it
/// lies there.
class AddressText {
public:
    /// @param text must stay unchanged while it is read. A zero byte ends it, and a byte order mark in front
    /// of it is passed over, as in the conversion of an array to a QString.
    explicit AddressText(const QByteArray& text) noexcept
        : m_at(text.constData())
        , m_end(m_at + qstrnlen(m_at, uint(text.size())))
    {
        if (m_end - m_at >= 3 && std::memcmp(m_at, "\xef\xbb\xbf", 3) == 0)
            m_at += 3;
    }

    bool atEnd() const noexcept { return m_at == m_end; }

    /// Passes over @p expected if it comes next.
    bool skip(char expected) noexcept
    {
        if (atEnd() || *m_at != expected)
            return false;
        ++m_at;
        return true;
    }

    /// Takes a digit of the given base if one comes next.
    /// @returns its value, else -1.
    int digit(int base) noexcept
    {
        const int value = atEnd() ? -1 : digitValue(*m_at);
        if (value < 0 || value >= base)
            return -1;
        ++m_at;
        return value;
    }

private:
    static int digitValue(char c) noexcept
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    }

    const char* m_at;
    const char* m_end;
};
