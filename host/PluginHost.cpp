#include "host/PluginHost.h"

#include "host/Failure.h"
#include "support/platform/os/Module.h"

#include <fmt/format.h>

namespace mesk::host {

namespace os = kivo::templates::platform::os;
using kivo::core::PluginDescriptor;
using kivo::core::PluginEntry;

struct PluginHost::D {
    ~D()
    {
        if (deinit != nullptr) {
            deinit();
        }
        if (handle != nullptr) {
            os::freeModule(handle);
        }
    }
    /// All that the plugin exports is data.
    template <typename T>
    const T& data(const char* name) const
    {
        const void* address = os::moduleSymbol(handle, name);
        if (address == nullptr) {
            throw Failure(ExitCode::Missing, fmt::format("{}: no symbol '{}'", path, name));
        }
        return *static_cast<const T*>(address);
    }

    std::string path;
    os::ModuleHandle handle = nullptr;
    const PluginDescriptor* descriptor = nullptr;
    PluginEntry deinit = nullptr; ///< set while the plugin is in use
};

PluginHost::PluginHost(const std::string& binFolder)
    : d(std::make_unique<D>())
{
    d->path = fmt::format("{}{}kivo-plugin-mesk-phy-gige{}", binFolder, os::pathSeparator, os::librarySuffix);
    const os::ModuleLoad load = os::loadModule(d->path.c_str());
    if (load.handle == nullptr) {
        throw Failure(ExitCode::Missing, fmt::format("plugin not loaded: {}", load.errorText));
    }
    d->handle = load.handle;
    const PluginEntry init = d->data<PluginEntry>("plugin_init");
    const PluginEntry deinit = d->data<PluginEntry>("plugin_deinit");
    init();
    d->deinit = deinit;
    if (d->data<std::int64_t>("plugin_count") != 1) {
        throw Failure(ExitCode::Missing, fmt::format("{}: not one plugin in it", d->path));
    }
    d->descriptor = &d->data<PluginDescriptor>("plugin_descriptor");
}

PluginHost::~PluginHost() = default;

const PluginDescriptor& PluginHost::descriptor() const
{
    return *d->descriptor;
}

} // namespace mesk::host
