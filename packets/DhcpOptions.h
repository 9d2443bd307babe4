#pragma once

#include "packets/ByteSlice.h"

#include <QByteArray>
#include <QList>

#include <vector>

/// The options of a DHCP message by their codes (RFC 2132). Values that were received stay where they were
/// received until they are asked for. [one thread at a time]
class DhcpOptions {
public:
    static constexpr quint8 messageTypeCode = 53;
    static constexpr int areaSizeBytes = 308;
    static constexpr int valueSizeMaxBytes = 255;

    /// Reads an option area into this empty object.
    /// @param area areaSizeBytes bytes: the received ones and zeros behind them.
    /// @param received the received ones.
    void read(const char* area, ByteSlice&& received);

    bool has(quint8 code) const;
    /// Empty if there is no such option.
    QByteArray value(quint8 code) const;
    /// @param value at most valueSizeMaxBytes; it is shared.
    void set(quint8 code, const QByteArray& value);
    /// In ascending order.
    QList<quint8> codes() const;
    /// Writes the message type, the other options in ascending order of their codes and the end code. An
    /// option that doesn't fit is left out; what stands behind the end code stays.
    /// @param area areaSizeBytes bytes, none of which may be received ones.
    void write(char* area) const;

private:
    struct Option {
        quint8 code;
        quint8 size;
        quint16 at;       // place in m_received; notReceived for a value of its own
        QByteArray value; // empty in a received one
    };
    static constexpr quint16 notReceived = 0; // no value stands there: code and length come before it

    const Option* option(quint8 code) const;
    void put(Option&& option);
    void copyValue(const Option& option, char* to) const;
    char* writeOption(const Option& option, char* to, const char* end) const;

    std::vector<Option> m_options; // ascending
    ByteSlice m_received;
};
