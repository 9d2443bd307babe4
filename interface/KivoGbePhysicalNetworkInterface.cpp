#include "interface/KivoGbePhysicalNetworkInterface.h"

#include "interface/AnyException.h"
#include "interface/KivoGbePhysicalNetworkInterfaceStatics.h"
#include "interface/KivoGbePhysicalNetworkInterfaceUiqLeecherThread.h"
#include "interface/KivoGbePhysicalNetworkInterface_p.h"
#include "plugin/binding/Dov.h"
#include "plugin/binding/KHal.h"
#include "support/logging/Logging.h"
#include "support/platform/os/EventLog.h"

#include <boost/make_shared.hpp>

#include <memory>

namespace kivo::core::mesk {

namespace {

tools::logging::Logger* fetchInterfaceLogger(std::atomic<tools::logging::Logger*>& cache)
{
    auto* const fetched =
        tools::logging::Logging::getLogger("kivo.core.mesk.KivoGbePhysicalNetworkInterface");
    cache.store(fetched, std::memory_order_release);
    return fetched;
}

/// The value that a property holds, which must be of exactly this type.
template <typename T>
T propertyAs(const boost::any& value)
{
    try {
        return boost::any_cast<T>(value);
    } catch (const boost::bad_any_cast&) {
        throw AnyException("boost::bad_any_cast: failed conversion using boost::any_cast");
    }
}

} // namespace

KivoGbePhysicalNetworkInterface::D::D()
    : eventQueue(boost::make_shared<PhysicalNetworkInterfaceEventQueue>())
{
}

KivoGbePhysicalNetworkInterface::D::~D()
{
    if (const std::unique_ptr<KivoGbePhysicalNetworkInterfaceUiqLeecherThread> thread{leecherThread}) {
        // Without this a thread that nobody asked to stop would never be joined.
        thread->requestStop();
        eventQueue->queue->interrupt();
    }
    if (firmwareDesign != 0) {
        plugin::DovUnloadDovFile(firmwareDesign);
    }
    freeDevice();
}

KivoGbePhysicalNetworkInterfaceUiqLeecherThread* KivoGbePhysicalNetworkInterface::D::worker() const
{
    return actionCommandsPresent ? leecherThread.load() : nullptr;
}

tools::logging::Logger& KivoGbePhysicalNetworkInterface::D::cachedLogger()
{
    auto* const cached = logger.load(std::memory_order_acquire);
    return cached != nullptr ? *cached : *fetchInterfaceLogger(logger);
}

KivoGbePhysicalNetworkInterface::KivoGbePhysicalNetworkInterface()
    : d(boost::make_shared<D>())
{
}

KivoGbePhysicalNetworkInterface::~KivoGbePhysicalNetworkInterface() = default;

void KivoGbePhysicalNetworkInterface::injectDependency(const std::string& key, const boost::any& value)
{
    PhysicalNetworkInterface::injectDependency(key, value);
    if (key == "boardId") {
        d->boardId = static_cast<std::uint32_t>(propertyAs<int>(value));
    } else if (key == "portId") {
        d->portId = static_cast<std::uint32_t>(propertyAs<int>(value));
    } else if (key == "resetBoard") {
        if (propertyAs<std::string>(value) == "false") {
            d->resetBoard = false;
        }
    }
}

tools::logging::Logger* KivoGbePhysicalNetworkInterface::fetchLogger()
{
    return fetchInterfaceLogger(m_logger);
}

void KivoGbePhysicalNetworkInterface::emptyOperation() {}

void KivoGbePhysicalNetworkInterface::startWorkers()
{
    if (auto* const worker = d->worker()) {
        worker->start();
    }
}

void KivoGbePhysicalNetworkInterface::requestStop()
{
    if (auto* const worker = d->worker()) {
        worker->requestStop();
    }
    d->eventQueue->queue->interrupt();
    KivoGbePhysicalNetworkInterfaceStatics::instance()->clearResetBoards();
}

bool KivoGbePhysicalNetworkInterface::supportsCrcGenerationControl()
{
    return d->regTxDisableCrcGeneration != 0;
}

bool KivoGbePhysicalNetworkInterface::isCrcGenerationDisabled()
{
    return d->txCrcGenerationDisabled;
}

void KivoGbePhysicalNetworkInterface::setCrcGenerationDisabled(bool disable)
{
    if (supportsCrcGenerationControl()) {
        d->writeRegister(d->regTxDisableCrcGeneration, disable ? 1 : 0);
        d->txCrcGenerationDisabled = disable;
    }
}

boost::shared_ptr<PhysicalNetworkInterfaceEventQueue> KivoGbePhysicalNetworkInterface::eventQueue()
{
    return d->eventQueue;
}

void reportOnceToEventLog(const std::string& text, RelaxedAtomic<bool>& reported)
{
    if (!reported) {
        templates::platform::os::reportEventLogError(text.c_str());
        reported = true;
    }
}

} // namespace kivo::core::mesk
