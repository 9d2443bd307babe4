#include "host/Progress.h"
#include "host/Session.h"
#include "host/verbs/DeviceAccess.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>

#include <atomic>

namespace mesk::host {

namespace {

class WriteMemoryVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addDeviceOption(app, m_device);
        addNumber(app, "ADDRESS", m_address, "first byte, like 0xe8")->required();
        app.add_option_function<std::string>(
               "HEX", [this](const std::string& text) { m_data = parseHex(text); },
               "bytes, a whole number of words of 4, like 6e616d65")
            ->required()
            ->type_name("TEXT");
    }

    ExitCode run(Session& session) override
    {
        DeviceAccess access(session, m_device);
        const ControlPrivilege control(access.client());
        write(session, access.client());
        const Json written = {{"address", hexText(m_address)}, {"count", m_data.size()}};
        session.output().result({{"device", access.deviceText()}, {"memory", Json::array({written})}},
                                {"memory"});
        return ExitCode::Done;
    }

private:
    static QByteArray parseHex(const std::string& text)
    {
        QByteArray data = QByteArray::fromHex(QByteArray::fromStdString(text));
        if (data.isEmpty() || data.toHex() != QByteArray::fromStdString(text).toLower()) {
            throw CLI::ValidationError("HEX", "'" + text + "' is no run of pairs of hexadecimal digits");
        }
        if (data.size() % static_cast<int>(GvcpClient::wordSizeBytes) != 0) {
            throw CLI::ValidationError("HEX", "memory is written in whole words of 4 bytes, not " +
                                                  std::to_string(data.size()) + " bytes");
        }
        return data;
    }
    void write(Session& session, GvcpClient& client) const
    {
        std::atomic<quint32> done{0};
        const auto progress = Progress::start(Progress::wanted(session.output()), [this, &done] {
            return progressBar("Writing", static_cast<double>(done) / m_data.size());
        });
        client.writeMemory(m_address, m_data, [&done](quint32 bytes) { done = bytes; });
    }

    std::optional<IpAddress> m_device;
    quint32 m_address = 0;
    QByteArray m_data;
};

} // namespace

std::unique_ptr<Verb> makeWriteMemoryVerb()
{
    return std::make_unique<WriteMemoryVerb>();
}

} // namespace mesk::host
