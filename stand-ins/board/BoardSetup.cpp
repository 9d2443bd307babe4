#include "stand-ins/board/BoardSetup.h"

#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <fmt/core.h>
#include <functional>
#include <stdexcept>

namespace emulated_board {

namespace {

constexpr std::int32_t firstSerial = 0x4B0001;
constexpr std::int32_t boardType = 0x0610;
constexpr std::uint32_t queueCapacityMaxWords = 1U << 24;
constexpr std::uint32_t waitMaxMs = 60000;
constexpr std::uint32_t actionTimeoutsMaxPerSecond = 1000;

BoardSetup boardWithDefaults(std::uint32_t number)
{
    BoardSetup board;
    board.device = number;
    board.infoInts["board/serial"] = firstSerial + std::int32_t(number);
    board.infoInts["board/type"] = boardType;
    board.infoTexts["board/name"] = "Emulated GigE board";
    board.infoTexts["board/caminterface"] = "GigE";
    return board;
}

/// What the information keys tell of the rest.
void completeInfo(BoardSetup& board)
{
    board.infoInts["ports/gige"] = std::int32_t(board.ports);
    board.infoInts["firmware/major"] = board.firmware.first;
    board.infoInts["firmware/minor"] = board.firmware.second;
}

[[noreturn]] void refuse(const QString& section, const QString& key, const std::string& reason)
{
    throw std::runtime_error(fmt::format("[{}] {}: {}", section.toStdString(), key.toStdString(), reason));
}

/// One key of a section, with its value as it stands in the file: QSettings splits values at commas.
class Value {
public:
    Value(const QString& section, const QString& key, const QVariant& value)
        : m_section(section)
        , m_key(key)
        , m_text(value.toStringList().join(QLatin1Char(',')).trimmed())
    {
    }

    std::string text() const { return m_text.toStdString(); }
    QStringList words() const { return m_text.split(QLatin1Char(','), Qt::SkipEmptyParts); }
    std::uint32_t number(std::uint32_t least, std::uint32_t most) const
    {
        bool ok = false;
        const qulonglong value = m_text.toULongLong(&ok, 0); // 0x for hexadecimal
        if (!ok || value < least || value > most)
            fail(fmt::format("'{}' is no number from {} to {}", text(), least, most));
        return std::uint32_t(value);
    }
    /// The index of the text in a choice of two.
    bool choice(const char* no, const char* yes) const
    {
        if (text() != no && text() != yes)
            fail(fmt::format("'{}' is neither '{}' nor '{}'", text(), no, yes));
        return text() == yes;
    }
    [[noreturn]] void fail(const std::string& reason) const { refuse(m_section, m_key, reason); }

private:
    QString m_section;
    QString m_key;
    QString m_text;
};

/// "2.1" of the key of a design or of a firmware.
FirmwareVersion parseVersion(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    bool majorOk = false;
    bool minorOk = false;
    const uint major = parts.value(0).toUInt(&majorOk);
    const uint minor = parts.value(1).toUInt(&minorOk);
    if (parts.size() != 2 || !majorOk || !minorOk || major > 255 || minor > 255)
        throw std::runtime_error(
            fmt::format("'{}' is no version in the form MAJOR.MINOR", text.toStdString()));
    return {std::uint8_t(major), std::uint8_t(minor)};
}

using Setter = std::function<void(BoardSetup&, const Value&)>;

const std::map<QString, Setter>& boardKeys()
{
    static const auto key = [](const char* name) { return QString::fromLatin1(name); };
    static const std::map<QString, Setter> keys{
        {key("device"), [](BoardSetup& b, const Value& v) { b.device = v.number(0, boardsMax - 1); }},
        {key("serial"),
         [](BoardSetup& b, const Value& v) {
             b.infoInts["board/serial"] = std::int32_t(v.number(0, UINT32_MAX));
         }},
        {key("type"),
         [](BoardSetup& b, const Value& v) {
             b.infoInts["board/type"] = std::int32_t(v.number(0, UINT32_MAX));
         }},
        {key("name"), [](BoardSetup& b, const Value& v) { b.infoTexts["board/name"] = v.text(); }},
        {key("caminterface"),
         [](BoardSetup& b, const Value& v) { b.infoTexts["board/caminterface"] = v.text(); }},
        {key("ports"), [](BoardSetup& b, const Value& v) { b.ports = v.number(0, portsMax); }},
        {key("firmware"),
         [](BoardSetup& b, const Value& v) { b.firmware = parseVersion(QString::fromStdString(v.text())); }},
        {key("receiveCapacity"),
         [](BoardSetup& b, const Value& v) { b.receiveCapacityWords = v.number(1, queueCapacityMaxWords); }},
        {key("actionCapacity"),
         [](BoardSetup& b, const Value& v) { b.actionCapacityWords = v.number(1, queueCapacityMaxWords); }},
        {key("lineSpeed"), [](BoardSetup& b, const Value& v) { b.lineSpeed = v.choice("false", "true"); }},
        {key("oddFrames"),
         [](BoardSetup& b, const Value& v) { b.announceOdd = v.choice("padded", "announced"); }},
        {key("partialWords"),
         [](BoardSetup& b, const Value& v) { b.readPartialWords = v.choice("left", "read"); }},
        {key("pauseMs"), [](BoardSetup& b, const Value& v) { b.pauseMs = v.number(0, waitMaxMs); }},
        {key("phyResetReads"),
         [](BoardSetup& b, const Value& v) { b.phyResetReads = v.number(0, UINT32_MAX); }},
    };
    return keys;
}

using PortSetter = std::function<void(BoardSetup&, std::uint32_t port, const Value&)>;

/// The keys that a port's number ends.
const std::map<QString, PortSetter>& portKeys()
{
    static const std::map<QString, PortSetter> keys{
        {QStringLiteral("link"),
         [](BoardSetup& b, std::uint32_t port, const Value& v) { b.links[port] = v.text(); }},
        {QStringLiteral("actionTimeoutsPerSecond"),
         [](BoardSetup& b, std::uint32_t port, const Value& v) {
             b.actionTimeoutsPerSecond[port] = v.number(0, actionTimeoutsMaxPerSecond);
         }},
    };
    return keys;
}

template <typename Values>
void refuseMissingPort(const QString& section, const QString& key, const Values& byPort, std::uint32_t ports)
{
    if (!byPort.empty() && byPort.rbegin()->first >= ports)
        refuse(section, key.arg(byPort.rbegin()->first), "no such port");
}

void readBoard(QSettings& settings, const QString& section, BoardSetup& board)
{
    const QStringList keys = settings.childKeys();
    for (const QString& key : keys) {
        const Value value(section, key, settings.value(key));
        const auto found = boardKeys().find(key);
        bool hasNumber = false;
        const uint port = key.right(1).toUInt(&hasNumber);
        const auto foundForPort = portKeys().find(key.chopped(1));
        if (found != boardKeys().end())
            found->second(board, value);
        else if (foundForPort != portKeys().end() && hasNumber && port < portsMax)
            foundForPort->second(board, port, value);
        else
            value.fail("unknown key");
    }
    completeInfo(board);
    refuseMissingPort(section, QStringLiteral("link%1"), board.links, board.ports);
    refuseMissingPort(section, QStringLiteral("actionTimeoutsPerSecond%1"), board.actionTimeoutsPerSecond,
                      board.ports);
}

FirmwareDesign readDesign(QSettings& settings, const QString& section)
{
    FirmwareDesign design;
    const QStringList keys = settings.childKeys();
    for (const QString& key : keys) {
        const Value value(section, key, settings.value(key));
        if (key != QLatin1String("lacks"))
            value.fail("unknown key");
        const QStringList words = value.words();
        for (const QString& word : words) {
            const std::string name = word.trimmed().toStdString();
            const auto which = registerOfBaseName(name);
            if (!which)
                value.fail(fmt::format("there is no register '{}'", name));
            design.remove(*which);
        }
    }
    return design;
}

} // namespace

Setup defaultSetup()
{
    Setup setup;
    setup.boards = {boardWithDefaults(0), boardWithDefaults(1)};
    setup.boards[1].ports = 2;
    setup.boards[1].firmware = {2, 1};
    for (BoardSetup& board : setup.boards)
        completeInfo(board);
    return setup;
}

Setup readSetup(const std::string& path)
{
    const QString file = QString::fromStdString(path);
    const QFileInfo info(file);
    if (!info.isFile() || !info.isReadable())
        throw std::runtime_error("no such file, or not readable");
    QSettings settings(file, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    Setup setup;
    const QStringList loose = settings.childKeys();
    if (settings.status() != QSettings::NoError)
        throw std::runtime_error("not an INI file");
    if (!loose.isEmpty())
        throw std::runtime_error(fmt::format("{}: a key outside of a section", loose.first().toStdString()));

    const QStringList sections = settings.childGroups();
    std::map<std::uint32_t, BoardSetup> boards;
    for (const QString& section : sections) {
        settings.beginGroup(section);
        bool isBoard = false;
        const uint number = section.startsWith(QLatin1String("Board")) ? section.mid(5).toUInt(&isBoard) : 0U;
        if (isBoard && number < boardsMax) {
            BoardSetup board = boardWithDefaults(number);
            readBoard(settings, section, board);
            boards[number] = board;
        } else if (section.startsWith(QLatin1String("Design"))) {
            setup.designs[parseVersion(section.mid(6))] = readDesign(settings, section);
        } else {
            throw std::runtime_error(fmt::format("[{}]: unknown section", section.toStdString()));
        }
        settings.endGroup();
    }
    std::uint32_t devicesTaken = 0;
    for (const auto& [number, board] : boards) {
        if (number != setup.boards.size())
            throw std::runtime_error(fmt::format("[Board{}] without [Board{}]", number, setup.boards.size()));
        if (((devicesTaken >> board.device) & 1U) != 0)
            throw std::runtime_error(fmt::format("[Board{}]: device {} is taken", number, board.device));
        devicesTaken |= 1U << board.device;
        setup.boards.push_back(board);
    }
    return setup;
}

} // namespace emulated_board
