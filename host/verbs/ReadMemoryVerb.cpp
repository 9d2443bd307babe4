#include "host/Progress.h"
#include "host/Session.h"
#include "host/verbs/DeviceAccess.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>

namespace mesk::host {

namespace {

constexpr quint32 countMaxBytes = 256U << 20;
constexpr int lineBytes = 16;

/// "0x00000200  4c 6f 63 61 ...  Loca..."
std::string hexLine(quint32 address, const QByteArray& bytes)
{
    constexpr int digitsPerByte = 3;
    std::string text = bytes.toStdString();
    std::replace_if(
        text.begin(), text.end(), [](char each) { return each < ' ' || each > '~'; }, '.');
    return fmt::format("{}  {:<{}}  {}\n", hexText(address), bytes.toHex(' ').toStdString(),
                       lineBytes * digitsPerByte - 1, text);
}

class ReadMemoryVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addDeviceOption(app, m_device);
        addNumber(app, "ADDRESS", m_address, "first byte, like 0x200")->required();
        addNumber(app, "COUNT", m_count, "count of bytes")->required();
    }

    ExitCode run(Session& session) override
    {
        if (m_count == 0 || m_count > countMaxBytes) {
            throw Failure(ExitCode::Usage, fmt::format("COUNT is 1 to {} bytes", countMaxBytes));
        }
        DeviceAccess access(session, m_device);
        const QByteArray data = read(session, access.client());
        if (session.options().json) {
            session.output().result({{"device", access.deviceText()},
                                     {"address", hexText(m_address)},
                                     {"count", m_count},
                                     {"data", data.toHex().toStdString()}},
                                    {});
        } else {
            std::string lines;
            for (int at = 0; at < data.size(); at += lineBytes) {
                lines += hexLine(m_address + static_cast<quint32>(at), data.mid(at, lineBytes));
            }
            session.output().write(lines, true);
        }
        return ExitCode::Done;
    }

private:
    QByteArray read(Session& session, GvcpClient& client) const
    {
        std::atomic<quint32> done{0};
        const auto progress = Progress::start(Progress::wanted(session.output()), [this, &done] {
            return progressBar("Reading", static_cast<double>(done) / m_count);
        });
        return client.readMemory(m_address, m_count, [&done](quint32 bytes) { done = bytes; });
    }

    std::optional<IpAddress> m_device;
    quint32 m_address = 0;
    quint32 m_count = 0;
};

} // namespace

std::unique_ptr<Verb> makeReadMemoryVerb()
{
    return std::make_unique<ReadMemoryVerb>();
}

} // namespace mesk::host
