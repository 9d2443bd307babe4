#include "support/platform/os/Module.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <memory>

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

std::size_t modulePathOf(const void* address, char* buffer, std::size_t size)
{
    Dl_info info{};
    link_map* map = nullptr;
    if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr)
        return 0;
    // The program itself has no name in the loader's list, and argv[0] may be relative to a folder that
    // was left since.
    const char* const name = map->l_name[0] != '\0' ? map->l_name : "/proc/self/exe";
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(name, nullptr), &std::free);
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
