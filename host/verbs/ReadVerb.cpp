#include "host/Session.h"
#include "host/verbs/DeviceAccess.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>

namespace mesk::host {

namespace {

class ReadVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addDeviceOption(app, m_device);
        app.add_option_function<std::vector<std::string>>(
               "ADDRESS",
               [this](const std::vector<std::string>& texts) {
                   for (const std::string& text : texts) {
                       const auto address = parseNumber(text);
                       if (!address) {
                           throw CLI::ValidationError("ADDRESS", "'" + text + "' is no number of 32 bits");
                       }
                       m_addresses.push_back(*address);
                   }
               },
               "registers, like 0xa00 or 2560")
            ->required()
            ->type_name("N");
    }

    ExitCode run(Session& session) override
    {
        DeviceAccess access(session, m_device);
        const std::vector<quint32> values = access.client().readRegisters(m_addresses);
        Json registers = Json::array();
        for (std::size_t index = 0; index < values.size(); ++index) {
            registers.push_back({{"address", hexText(m_addresses[index])},
                                 {"value", hexText(values[index])},
                                 {"number", values[index]}});
        }
        session.output().result({{"device", access.deviceText()}, {"registers", std::move(registers)}},
                                {"registers"});
        return ExitCode::Done;
    }

private:
    std::optional<IpAddress> m_device;
    std::vector<quint32> m_addresses;
};

} // namespace

std::unique_ptr<Verb> makeReadVerb()
{
    return std::make_unique<ReadVerb>();
}

} // namespace mesk::host
