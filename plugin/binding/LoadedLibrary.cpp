#include "plugin/binding/LoadedLibrary.h"

#include "plugin/binding/InstallRoot.h"

namespace kivo::plugin {

namespace os = templates::platform::os;

namespace {
constexpr std::size_t pathSizeMaxBytes = 1024; // with the terminator
}

LoadedLibrary::~LoadedLibrary()
{
    if (freeOnDestroy && handle != nullptr)
        os::freeModule(handle);
}

void* LoadedLibrary::symbol(const char* name) const
{
    return os::moduleSymbol(handle, name);
}

std::unique_ptr<LoadedLibrary> loadLibrary(const char* name, const char* root)
{
    if (root == nullptr)
        root = findInstallRoot();
    if (root == nullptr)
        return nullptr;

    auto library = std::make_unique<LoadedLibrary>();
    std::string& path = library->path;
    path.append(root).append(1, os::pathSeparator).append("bin").append(1, os::pathSeparator);
    path.append(name).append(os::librarySuffix);
    if (path.size() >= pathSizeMaxBytes)
        return nullptr;

    os::ModuleLoad load = os::loadModule(path.c_str());
    library->handle = load.handle;
    library->lastError = load.error;
    library->lastErrorText = std::move(load.errorText);
    return library->handle != nullptr ? std::move(library) : nullptr;
}

} // namespace kivo::plugin
