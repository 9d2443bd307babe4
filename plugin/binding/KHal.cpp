#include "plugin/binding/KHal.h"

namespace kivo::plugin {

namespace binding {
KHalTable kHal;
}

std::int32_t bindKHal()
{
    const std::unique_ptr<LoadedLibrary> library = loadLibrary("kivo_hal", nullptr);
    if (library == nullptr)
        return kHalUnavailable;

    // Tables that two threads bind at once get the same addresses twice, which does no harm.
    const auto bind = [&library](auto& slot, const char* name) {
        slot.store(slot.findOrAnswer(*library, name));
    };
    const auto bindOptional = [&library](auto& slot, const char* name) {
        slot.store(slot.find(*library, name));
    };
    binding::KHalTable& table = binding::kHal;
    const auto initDevice = table.initDevice.findOrAnswer(*library, "KHalInitDevice");
    bind(table.freeDevice, "KHalFreeDevice");
    bind(table.getDeviceCount, "KHalGetDeviceCount");
    bindOptional(table.getDevice, "KHalGetDevice");
    bindOptional(table.putDevice, "KHalPutDevice");
    bind(table.getBoardInfoInt, "KHalGetBoardInfoInt");
    bind(table.getBoardInfoString, "KHalGetBoardInfoString");
    bind(table.configureFpga, "KHalConfigureFpga");
    bind(table.registerWrite, "KHalRegisterWrite");
    bind(table.registerRead, "KHalRegisterRead");
    bind(table.dataQueueClear, "KHalDataQueueClear");
    bind(table.dataQueueReadBufferLong, "KHalDataQueueReadBufferLong");
    bind(table.dataQueueGetNrOfLostWords, "KHalDataQueueGetNrOfLostWords");
    // Last, and released: a thread that sees the sentinel sees the whole table.
    table.initDevice.store(initDevice, std::memory_order_release);
    return 0;
}

} // namespace kivo::plugin
