#include "interface/KivoGbePhysicalNetworkInterface.h"
#include "plugin/LibraryInitController.h"
#include "support/logging/Logging.h"
#include "support/platform/os/Thread.h"

#include <kivo/core/Core.h>
#include <kivo/core/PluginDescriptor.h>
#include <kivo/core/mesk/Mesk.h>

#include <cstdint>
#include <locale>
#include <new>
#include <sstream>

// What the framework finds by name, and nothing else: the version script hides the rest. It can't bring
// a hidden symbol back, so each of the four is made visible on its first declaration.
//
// A POSIX system calls no entry point when a thread starts or ends, so there is no such notification to
// turn off at load, and the library needs no entry point: nothing at all happens before plugin_init.
extern "C" {
KIVO_EXPORT extern std::int64_t plugin_count; // records in plugin_descriptor
KIVO_EXPORT extern kivo::core::PluginEntry plugin_init;
KIVO_EXPORT extern kivo::core::PluginEntry plugin_deinit;
KIVO_EXPORT extern kivo::core::PluginDescriptor plugin_descriptor;
}

namespace {

using kivo::core::mesk::KivoGbePhysicalNetworkInterface;

void logUseCount(const char* what)
{
    using kivo::tools::logging::levelDetail;
    // Never kept: the last deinit takes the logger away.
    kivo::tools::logging::Logger* const logger = kivo::tools::logging::Logging::getLogger("guard.library");
    if (!logger->isEnabled(levelDetail))
        return;
    std::ostringstream line;
    line.imbue(std::locale::classic()); // the program's own may put marks into numbers
    line << "thread-id=" << kivo::templates::platform::os::currentThreadId() << '|' << what
         << "KivoGbePhysicalNetworkInterface (useCount: " << LibraryInitController::useCount() << ')';
    logger->log(levelDetail, line.str().c_str(), 0, nullptr);
}

void initPlugin()
{
    LibraryInitController::init();
    logUseCount("PLUGIN INIT: ");
    // At every use: the framework's libraries count their uses themselves.
    LibraryInitController::registerLibrary(KivoCoreInit, KivoCoreDeinit);
    LibraryInitController::registerLibrary(KivoMeskInit, KivoMeskDeinit);
}

void deinitPlugin()
{
    logUseCount("PLUGIN DEINIT: ");
    LibraryInitController::deinit();
}

kivo::core::Plugin* createInterface()
{
    return new (std::nothrow) KivoGbePhysicalNetworkInterface;
}

void destroyInterface(kivo::core::Plugin* plugin)
{
    delete plugin;
}

} // namespace

std::int64_t plugin_count = 1;
kivo::core::PluginEntry plugin_init = initPlugin;
kivo::core::PluginEntry plugin_deinit = deinitPlugin;
kivo::core::PluginDescriptor plugin_descriptor = {
    createInterface,
    destroyInterface,
    "mesk-phy-gige",
    "Mesk GigE Physical Network Interface",
    "Kivo Vision GmbH",
    "26.08.2010",
    1,
    70010,
    {},
};
