#include "stand-ins/dispatcher/Dispatcher.h"

#include <dlfcn.h>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>

// What the library shows: the record of its clients' calls and the control interface.
extern "C" {
extern kivo::dispatcher::DispatcherDescriptor logging_dispatcher_descriptor
    __attribute__((visibility("default")));
__attribute__((visibility("default"))) void KivoDispatcherObserve(const char* pattern, std::uint32_t level,
                                                                  KivoDispatcherObserver observer,
                                                                  void* context);
}

namespace kivo::dispatcher {

namespace {

constexpr std::uint32_t levelOff = 7;

/// `logging.conf` in the folder above the one in which this library really lies.
std::string setupFile()
{
    Dl_info own{};
    if (dladdr(&logging_dispatcher_descriptor, &own) == 0)
        return "logging.conf";
    std::error_code error;
    const auto library = std::filesystem::canonical(own.dli_fname, error);
    return (library.parent_path().parent_path() / "logging.conf").string();
}

/// Where the dispatcher is found. Itself it is never destroyed, as calls may come, on any thread, after
/// the destructors of this library have run; they find no dispatcher then.
struct Place {
    std::mutex mutex;
    std::shared_ptr<Dispatcher> dispatcher;
};

/// At the end of the process, or when the library is unloaded.
struct Farewell {
    Place& place;
    ~Farewell()
    {
        std::shared_ptr<Dispatcher> leaving;
        {
            const std::lock_guard<std::mutex> lock(place.mutex);
            leaving.swap(place.dispatcher);
        }
        leaving->goAway();
    }
};

Place& place()
{
    alignas(Place) static unsigned char storage[sizeof(Place)];
    static Place* const made = new (storage) Place{{}, std::make_shared<Dispatcher>(setupFile())};
    static const Farewell farewell{*made};
    return *made;
}

std::shared_ptr<Dispatcher> dispatcher()
{
    Place& there = place();
    const std::lock_guard<std::mutex> lock(there.mutex);
    return there.dispatcher;
}

void getLogger(const char* name, std::uint64_t* id, std::uint32_t* level)
{
    *level = levelOff;
    if (const auto there = dispatcher())
        there->getLogger(name, id, level);
}

void log(std::uint64_t id, std::uint32_t level, const char* text, std::uint32_t /*extraSize*/,
         const void* /*extraData*/)
{
    if (const auto there = dispatcher())
        there->log(id, level, text);
}

void attach(void* client, ClientCall dispatcherGone, LevelChangedCall levelChanged,
            GetLoggerCall* getLoggerOut, LogCall* logOut)
{
    *getLoggerOut = getLogger;
    *logOut = log;
    if (const auto there = dispatcher())
        there->attach(client, dispatcherGone, levelChanged);
}

void detach(void* client)
{
    if (const auto there = dispatcher())
        there->detach(client);
}

} // namespace

} // namespace kivo::dispatcher

kivo::dispatcher::DispatcherDescriptor logging_dispatcher_descriptor = {
    kivo::dispatcher::attach,
    kivo::dispatcher::detach,
};

void KivoDispatcherObserve(const char* pattern, std::uint32_t level, KivoDispatcherObserver observer,
                           void* context)
{
    if (const auto there = kivo::dispatcher::dispatcher())
        there->observe(pattern, level, observer, context);
}
