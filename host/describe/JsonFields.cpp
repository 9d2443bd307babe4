#include "host/describe/JsonFields.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstring>

namespace mesk::host {

namespace {

constexpr std::size_t numberMaxBytes = 20;
constexpr std::size_t bracketBytes = 1;
constexpr std::size_t quotesBytes = 2;

bool isPlain(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 0x20 && byte < 0x80 && letter != '"' && letter != '\\';
}

char* copy(char* to, std::string_view text)
{
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

/// Without a table and a branch, so that the compiler can do many at once.
char hexDigit(unsigned char nibble)
{
    return static_cast<char>(nibble + (nibble < 10 ? '0' : 'a' - 10));
}

void copyHex(char* to, std::string_view bytes)
{
    const auto* from = reinterpret_cast<const unsigned char*>(bytes.data());
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        to[2 * at] = hexDigit(from[at] >> 4);
        to[2 * at + 1] = hexDigit(from[at] & 0xf);
    }
}

} // namespace

void JsonFields::openRecord()
{
    m_out.push_back('{');
    m_first = true;
}

void JsonFields::closeRecord()
{
    m_out.push_back('}');
    m_out.push_back('\n');
}

void JsonFields::openLayer(std::string_view className)
{
    openItem();
    text("class", className);
}

void JsonFields::open(std::string_view name, char bracket)
{
    char* to = begin(name, bracketBytes);
    *to++ = bracket;
    end(to);
    m_first = true;
}

void JsonFields::close(char bracket)
{
    m_out.push_back(bracket);
    m_first = false;
}

void JsonFields::number(std::string_view name, std::uint64_t value)
{
    const fmt::format_int digits(value);
    end(copy(begin(name, numberMaxBytes), {digits.data(), digits.size()}));
}

void JsonFields::signedNumber(std::string_view name, std::int64_t value)
{
    const fmt::format_int digits(value);
    end(copy(begin(name, numberMaxBytes), {digits.data(), digits.size()}));
}

void JsonFields::flag(std::string_view name, bool value)
{
    const std::string_view word = value ? "true" : "false";
    end(copy(begin(name, word.size()), word));
}

void JsonFields::text(std::string_view name, std::string_view value)
{
    if (std::all_of(value.begin(), value.end(), isPlain)) {
        char* to = begin(name, value.size() + quotesBytes);
        *to++ = '"';
        to = copy(to, value);
        *to++ = '"';
        end(to);
        return;
    }
    end(begin(name, 0));
    // What is no UTF-8 becomes the replacement character.
    const QByteArray whole = QString::fromUtf8(value.data(), static_cast<int>(value.size())).toUtf8();
    putEscaped({whole.constData(), static_cast<std::size_t>(whole.size())});
}

void JsonFields::putEscaped(std::string_view value)
{
    m_out.push_back('"');
    for (const char letter : value) {
        const auto byte = static_cast<unsigned char>(letter);
        if (byte >= 0x80 || isPlain(letter)) {
            m_out.push_back(letter);
        } else if (byte >= 0x20) {
            m_out.push_back('\\');
            m_out.push_back(letter);
        } else {
            fmt::format_to(std::back_inserter(m_out), "\\u{:04x}", byte);
        }
    }
    m_out.push_back('"');
}

void JsonFields::bytes(std::string_view name, std::string_view value)
{
    const std::size_t digits = 2 * value.size();
    char* to = begin(name, digits + quotesBytes);
    *to++ = '"';
    copyHex(to, value);
    to += digits;
    *to++ = '"';
    end(to);
}

/// Puts the comma and the name, where the value has one.
/// @returns where the value goes, with room for so many bytes; `end` takes the place behind it.
char* JsonFields::begin(std::string_view name, std::size_t valueMaxBytes)
{
    constexpr std::size_t aroundNameBytes = 4; // comma, quotes, colon
    const std::size_t at = m_out.size();
    m_out.resize(at + name.size() + aroundNameBytes + valueMaxBytes);
    char* to = m_out.data() + at;
    if (!m_first) {
        *to++ = ',';
    }
    m_first = false;
    if (!name.empty()) {
        *to++ = '"';
        to = copy(to, name);
        *to++ = '"';
        *to++ = ':';
    }
    return to;
}

} // namespace mesk::host
