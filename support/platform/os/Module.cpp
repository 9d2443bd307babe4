#include "support/platform/os/Module.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <link.h>
#include <memory>
#include <sstream>

namespace kivo::templates::platform::os {

ModuleLoad loadModule(const char* path)
{
    ModuleLoad load;
    errno = 0;
    load.handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (load.handle == nullptr) {
        // The loader has texts, but codes only where a system call failed.
        load.error = static_cast<std::uint32_t>(errno != 0 ? errno : ELIBACC);
        const char* const text = ::dlerror();
        load.errorText = text != nullptr ? text : "";
    }
    return load;
}

void freeModule(ModuleHandle handle)
{
    if (handle != nullptr)
        ::dlclose(handle);
}

void* moduleSymbol(ModuleHandle handle, const char* name)
{
    return handle != nullptr ? ::dlsym(handle, name) : nullptr;
}

namespace {

/// The file that is mapped at an address, as the kernel knows it; empty if there is none.
std::string mappedFileOf(const void* address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t start = 0, end = 0;
        char dash = 0;
        std::istringstream(line) >> std::hex >> start >> dash >> end;
        const std::size_t path = line.find('/');
        if (start <= wanted && wanted < end && path != std::string::npos)
            return line.substr(path);
    }
    return {};
}

/// The name under which the loader holds a module may be relative to a folder that was left since, and it
/// has none for the program itself. Then the dynamic section says which file it is: that is mapped from the
/// file always, which a module's variables needn't be.
std::string fileOf(const link_map& module)
{
    return module.l_name[0] == pathSeparator ? module.l_name : mappedFileOf(module.l_ld);
}

} // namespace

std::size_t modulePathOf(const void* address, char* buffer, std::size_t size)
{
    Dl_info info{};
    link_map* map = nullptr;
    if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr)
        return 0;
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(fileOf(*map).c_str(), nullptr),
                                                           &std::free);
    if (path == nullptr)
        return 0;
    const std::size_t length = std::strlen(path.get());
    if (size > 0) {
        const std::size_t kept = length < size ? length : size - 1;
        std::memcpy(buffer, path.get(), kept);
        buffer[kept] = '\0';
    }
    return length;
}

} // namespace kivo::templates::platform::os
