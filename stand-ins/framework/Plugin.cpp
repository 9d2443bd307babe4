#include <kivo/core/Plugin.h>

namespace kivo::core {

Command::~Command() = default;

Plugin::Plugin() = default;

Plugin::~Plugin() = default;

void Plugin::postConstruct() {}

void Plugin::injectDependency(const std::string& /*key*/, const boost::any& /*value*/) {}

void Plugin::postInjection() {}

boost::shared_ptr<Command> Plugin::createInitializationApplicationCommand()
{
    return nullptr;
}

boost::shared_ptr<Command> Plugin::createCleanupApplicationCommand()
{
    return nullptr;
}

} // namespace kivo::core
