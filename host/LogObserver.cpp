#include "host/LogObserver.h"

#include "host/Failure.h"
#include "stand-ins/dispatcher/DispatcherControl.h"
#include "support/platform/os/Module.h"

#include <fmt/format.h>

#include <mutex>
#include <utility>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

namespace {

constexpr const char* observeName = "KivoDispatcherObserve";

} // namespace

struct LogObserver::D {
    ~D()
    {
        if (observe != nullptr) {
            observe("", 0, nullptr, nullptr);
        }
        if (handle != nullptr) {
            os::freeModule(handle);
        }
    }
    static void collect(void* context, const char* logger, std::uint32_t level, const char* text)
    {
        D& r = *static_cast<D*>(context);
        const std::lock_guard lock(r.mutex);
        r.lines.push_back({level, logger, text});
    }

    os::ModuleHandle handle = nullptr;
    KivoDispatcherObserveFunction observe = nullptr;
    std::mutex mutex;
    std::vector<LogLine> lines;
};

LogObserver::LogObserver(const std::string& binFolder, const std::string& pattern, std::uint32_t level)
    : d(std::make_unique<D>())
{
    const std::string path =
        fmt::format("{}{}common-logging-dispatcher{}", binFolder, os::pathSeparator, os::librarySuffix);
    const os::ModuleLoad load = os::loadModule(path.c_str());
    if (load.handle == nullptr) {
        throw Failure(ExitCode::Missing, fmt::format("no logging dispatcher: {}", load.errorText));
    }
    d->handle = load.handle;
    d->observe = reinterpret_cast<KivoDispatcherObserveFunction>(os::moduleSymbol(d->handle, observeName));
    if (d->observe == nullptr) {
        throw Failure(
            ExitCode::Missing,
            fmt::format("no logging dispatcher that can be observed: {} has no '{}'", path, observeName));
    }
    d->observe(pattern.c_str(), level, D::collect, d.get());
}

LogObserver::~LogObserver() = default;

std::vector<LogLine> LogObserver::take()
{
    const std::lock_guard lock(d->mutex);
    return std::exchange(d->lines, {});
}

std::string messageOf(const LogLine& line, const std::string& interfaceId)
{
    const std::string head = "|PHY Id '" + interfaceId + "'";
    const std::size_t thread = line.text.find('|');
    if (thread == std::string::npos) {
        return line.text;
    }
    std::size_t start = thread + 1;
    if (line.text.compare(thread, head.size(), head) == 0) {
        start = thread + head.size();
        start += line.text.compare(start, 1, ":") == 0 ? 1 : 0;
        start += line.text.compare(start, 1, " ") == 0 ? 1 : 0;
    }
    return line.text.substr(start);
}

} // namespace mesk::host
