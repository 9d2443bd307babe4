#include "plugin/binding/Dov.h"

namespace kivo::plugin {

namespace binding {
DovTable dov;
}

std::int32_t bindDov()
{
    const std::unique_ptr<LoadedLibrary> library = loadLibrary("dovrt", nullptr);
    if (library == nullptr)
        return dovNotLoaded;

    binding::DovTable& table = binding::dov;
    const auto loadDovFileWithType = table.loadDovFileWithType.find(*library, "DovLoadDovFileWithType");
    table.firmwareTrampoline.store(table.firmwareTrampoline.find(*library, "DovFirmwareTrampoline"));
    table.getRegisterByName.store(table.getRegisterByName.findOrAnswer(*library, "DovGetRegisterByName"));
    table.unloadDovFile.store(table.unloadDovFile.findOrAnswer(*library, "DovUnloadDovFile"));
    // Last, and released: a thread that sees the sentinel sees the whole table. A runtime without this
    // name is bound anew by every call, and works.
    table.loadDovFileWithType.store(loadDovFileWithType, std::memory_order_release);
    return 0;
}

} // namespace kivo::plugin
