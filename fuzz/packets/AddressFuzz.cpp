#include "fuzz/Check.h"
#include "packets/MacAddress.h"
#include "tests/packets/AddressRule.h"

namespace {
template <typename Address, typename Text>
void check(const Text& text, const QByteArray& bytes, Address before)
{
    Address address = before;
    require(address.parse(text) == !bytes.isEmpty(), "what the rule takes is an address");
    require(address.rawBytes() == (bytes.isEmpty() ? before.rawBytes() : bytes), "it is the one of the text");
}
} // namespace

/// The text of an address.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = viewOf(data, size);
    const std::string standard = bytes.toStdString();
    const QString characters = QString::fromStdString(standard); // without a byte order mark in front
    check(bytes, macByRule(bytes), MacAddress(9, 9, 9, 9, 9, 9));
    check(bytes, ipByRule(bytes), IpAddress(9));
    check(characters, macByRule(characters.toUtf8()), MacAddress());
    check(characters, ipByRule(characters.toUtf8()), IpAddress());
    check(standard, macByRule(characters.toUtf8()), MacAddress());
    check(standard, ipByRule(characters.toUtf8()), IpAddress());
    MacAddress mac;
    IpAddress ip;
    if (mac.parse(bytes))
        check(mac.toString(":"), mac.rawBytes(), MacAddress());
    if (ip.parse(bytes))
        check(ip.toString(), ip.rawBytes(), IpAddress());
    return 0;
}
