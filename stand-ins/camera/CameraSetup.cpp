#include "stand-ins/camera/CameraSetup.h"

#include <QList>

#include <array>
#include <map>
#include <stdexcept>

namespace emulated_camera {

namespace {

constexpr double eventsPerSecondMax = 1000;
constexpr int textSizeMaxBytes = 15;
constexpr double waitMaxMs = 60000;
constexpr unsigned prefixMaxBits = 30; // a net with room for two

/// One word, or a key with its value.
struct Option {
    QByteArray key;
    QByteArray value;
    bool hasValue = false;

    [[noreturn]] void refuse(const std::string& reason) const
    {
        const std::string text = key.toStdString() + (hasValue ? "=" + value.toStdString() : std::string());
        throw std::runtime_error("'" + text + "': " + reason);
    }
    double number(double most) const
    {
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok || !(number >= 0 && number <= most))
            refuse("not a number from 0 to " + QByteArray::number(most).toStdString());
        return number;
    }
    double probability() const { return number(1); }
    std::chrono::milliseconds milliseconds() const
    {
        return std::chrono::milliseconds(qint64(number(waitMaxMs)));
    }
    quint32 seed() const
    {
        bool ok = false;
        const quint32 number = value.toUInt(&ok, 0);
        if (!ok)
            refuse("not a whole number of 32 bits");
        return number;
    }
    ActionSignal actionSignal() const
    {
        const QList<QByteArray> parts = value.split('/');
        std::array<quint32, 3> numbers{};
        bool ok = parts.size() == int(numbers.size());
        for (std::size_t i = 0; ok && i < numbers.size(); ++i)
            numbers[i] = parts[int(i)].toUInt(&ok, 0);
        if (!ok)
            refuse("not a device key, a group key and a group mask, as in 1/1/0x1");
        return {numbers[0], numbers[1], numbers[2]};
    }
    QByteArray text() const
    {
        if (value.size() > textSizeMaxBytes)
            refuse("longer than " + std::to_string(textSizeMaxBytes) + " bytes");
        return value;
    }
    MacAddress mac() const
    {
        MacAddress mac;
        if (value.size() == MacAddress::sizeBytes || !mac.parse(value) || (mac.constData()[0] & 1U) != 0)
            refuse("not an address of one card, as in 02:4b:00:00:00:20");
        return mac;
    }
    mesk::stack::NetAddress netAddress() const
    {
        const int slash = value.indexOf('/');
        mesk::stack::NetAddress net;
        bool ok = false;
        net.prefixBits = value.mid(slash + 1).toUInt(&ok);
        const QByteArray address = value.left(slash);
        if (slash < 0 || !ok || net.prefixBits == 0 || net.prefixBits > prefixMaxBits ||
            address.size() == int(sizeof(quint32)) || !net.address.parse(address) || !net.isThere())
            refuse("not an address with a prefix, as in 192.168.77.20/24");
        return net;
    }
};

using Start = CameraSetup::Start;
using Setter = void (*)(CameraSetup&, const Option&);

const std::map<QByteArray, Setter>& words()
{
    static const std::map<QByteArray, Setter> table{
        {"dhcp", [](CameraSetup& s, const Option&) { s.start = Start::Dhcp; }},
        {"link-local", [](CameraSetup& s, const Option&) { s.start = Start::LinkLocal; }},
        {"zip", [](CameraSetup& s, const Option&) { s.zippedDescription = true; }},
        {"silent", [](CameraSetup& s, const Option&) { s.faults.silent = true; }},
    };
    return table;
}

const std::map<QByteArray, Setter>& keys()
{
    static const std::map<QByteArray, Setter> table{
        {"address",
         [](CameraSetup& s, const Option& o) {
             s.persistentAddress = o.netAddress();
             s.start = Start::Persistent;
         }},
        {"mac", [](CameraSetup& s, const Option& o) { s.mac = o.mac(); }},
        {"serial", [](CameraSetup& s, const Option& o) { s.serialNumber = o.text(); }},
        {"name", [](CameraSetup& s, const Option& o) { s.userName = o.text(); }},
        {"pending", [](CameraSetup& s, const Option& o) { s.pendingAfter = o.milliseconds(); }},
        {"events", [](CameraSetup& s, const Option& o) { s.eventsPerSecond = o.number(eventsPerSecondMax); }},
        {"action", [](CameraSetup& s, const Option& o) { s.action = o.actionSignal(); }},
        {"seed", [](CameraSetup& s, const Option& o) { s.faults.seed = o.seed(); }},
        {"loss", [](CameraSetup& s, const Option& o) { s.faults.loss = o.probability(); }},
        {"duplicates", [](CameraSetup& s, const Option& o) { s.faults.duplicates = o.probability(); }},
        {"wrong-ids", [](CameraSetup& s, const Option& o) { s.faults.wrongIds = o.probability(); }},
        {"cut", [](CameraSetup& s, const Option& o) { s.faults.cut = o.probability(); }},
        {"delay", [](CameraSetup& s, const Option& o) { s.faults.delay = o.milliseconds(); }},
    };
    return table;
}

void apply(const Option& option, CameraSetup& setup)
{
    const std::map<QByteArray, Setter>& table = option.hasValue ? keys() : words();
    const auto found = table.find(option.key);
    if (found != table.end())
        found->second(setup, option);
    else if (words().count(option.key) != 0)
        option.refuse("takes no value");
    else
        option.refuse(keys().count(option.key) != 0 ? "needs a value" : "no option of a camera");
}

} // namespace

CameraSetup parseCameraSetup(const std::string& text, CameraSetup defaults)
{
    const QList<QByteArray> parts = QByteArray::fromStdString(text).split(',');
    for (const QByteArray& part : parts) {
        const int equals = part.indexOf('=');
        if (equals >= 0)
            apply({part.left(equals), part.mid(equals + 1), true}, defaults);
        else if (!part.isEmpty())
            apply({part, {}, false}, defaults);
    }
    return defaults;
}

} // namespace emulated_camera
