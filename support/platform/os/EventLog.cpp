#include "support/platform/os/EventLog.h"

#include <mutex>
#include <syslog.h>

namespace kivo::templates::platform::os {

void reportEventLogError(const char* text)
{
    // The system's log has one ident for the whole process, kept by address: it is given back at once,
    // so that it never points into a library that was unloaded.
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    openlog("kivo-gige-phy", 0, LOG_USER);
    syslog(LOG_ERR, "[category 0, event 2] %s", text);
    closelog();
}

} // namespace kivo::templates::platform::os
