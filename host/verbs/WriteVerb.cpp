#include "host/Session.h"
#include "host/verbs/DeviceAccess.h"
#include "host/verbs/NetArguments.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>

namespace mesk::host {

namespace {

class WriteVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        addDeviceOption(app, m_device);
        addNumber(app, "ADDRESS", m_address, "register, like 0xa00 or 2560")->required();
        addNumber(app, "VALUE", m_value, "what is written")->required();
    }

    ExitCode run(Session& session) override
    {
        DeviceAccess access(session, m_device);
        const ControlPrivilege control(access.client());
        access.client().writeRegister(m_address, m_value);
        const Json written = {
            {"address", hexText(m_address)}, {"value", hexText(m_value)}, {"number", m_value}};
        session.output().result({{"device", access.deviceText()}, {"registers", Json::array({written})}},
                                {"registers"});
        return ExitCode::Done;
    }

private:
    std::optional<IpAddress> m_device;
    quint32 m_address = 0;
    quint32 m_value = 0;
};

} // namespace

std::unique_ptr<Verb> makeWriteVerb()
{
    return std::make_unique<WriteVerb>();
}

} // namespace mesk::host
