#include "packets/DhcpOptions.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {
constexpr quint8 padCode = 0, endCode = 255;
constexpr int headSizeBytes = 2; // code and length
// An option has two bytes at least, so at the last byte of the area none begins.
constexpr int lastPlace = DhcpOptions::areaSizeBytes - headSizeBytes;
constexpr std::size_t usualCount = 16;

// Where the option with the code stands, or would stand.
template <typename Options>
auto placeOf(Options& options, quint8 code)
{
    return std::lower_bound(options.begin(), options.end(), code,
                            [](const auto& each, quint8 wanted) { return each.code < wanted; });
}
} // namespace

void DhcpOptions::read(const char* area, ByteSlice&& received)
{
    // Some senders leave the area empty; what follows a pad in front isn't looked for.
    if (quint8(*area) == padCode)
        return;
    m_received = std::move(received);
    for (int at = 0; at <= lastPlace;) {
        const auto code = quint8(area[at]);
        if (code == endCode)
            return;
        if (code == padCode) {
            ++at;
            continue;
        }
        const auto size = quint8(area[at + 1]);
        const int valueAt = at + headSizeBytes;
        if (valueAt + size > areaSizeBytes)
            return;
        put({code, size, quint16(valueAt), {}});
        at = valueAt + size;
    }
}

bool DhcpOptions::has(quint8 code) const
{
    return option(code) != nullptr;
}

QByteArray DhcpOptions::value(quint8 code) const
{
    const Option* const found = option(code);
    if (found == nullptr)
        return {};
    if (found->at == notReceived)
        return found->value;
    QByteArray value(found->size, Qt::Uninitialized);
    copyValue(*found, value.data());
    return value;
}

void DhcpOptions::set(quint8 code, const QByteArray& value)
{
    put({code, quint8(value.size()), notReceived, value});
}

QList<quint8> DhcpOptions::codes() const
{
    QList<quint8> codes;
    codes.reserve(int(m_options.size()));
    for (const Option& each : m_options)
        codes.append(each.code);
    return codes;
}

void DhcpOptions::write(char* area) const
{
    const char* const end = area + areaSizeBytes;
    const Option* const first = option(messageTypeCode);
    char* to = area;
    if (first != nullptr)
        to = writeOption(*first, to, end);
    for (const Option& each : m_options)
        if (&each != first)
            to = writeOption(each, to, end);
    *to = char(endCode);
}

const DhcpOptions::Option* DhcpOptions::option(quint8 code) const
{
    const auto found = placeOf(m_options, code);
    return found != m_options.end() && found->code == code ? &*found : nullptr;
}

void DhcpOptions::put(Option&& option)
{
    m_options.reserve(usualCount);
    const auto place = placeOf(m_options, option.code);
    if (place != m_options.end() && place->code == option.code)
        *place = std::move(option);
    else
        m_options.insert(place, std::move(option));
}

void DhcpOptions::copyValue(const Option& option, char* to) const
{
    if (option.at == notReceived) {
        std::memcpy(to, option.value.constData(), option.size);
        return;
    }
    // A value may reach into the zeros behind a message that came short.
    const int there = std::clamp(m_received.size() - option.at, 0, int(option.size));
    std::memset(to + there, 0, std::size_t(option.size - there));
    if (there > 0)
        std::memcpy(to, m_received.constData() + option.at, std::size_t(there));
}

// Returns the place behind the option; the same place if it and the end code don't fit before the end.
char* DhcpOptions::writeOption(const Option& option, char* to, const char* end) const
{
    const int written = option.size == 0 ? 1 : headSizeBytes + option.size;
    if (end - to <= written)
        return to;
    to[0] = char(option.code);
    if (option.size > 0) {
        to[1] = char(option.size);
        copyValue(option, to + headSizeBytes);
    }
    return to + written;
}
