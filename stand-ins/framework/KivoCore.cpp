#include <kivo/core/Core.h>
#include <kivo/core/FrameworkJournal.h>

#include <deque>
#include <mutex>

namespace kivo::core {

namespace {

constexpr std::size_t journalEntriesMax = 1024; // a host may bring the libraries up any number of times

struct Journal {
    std::mutex mutex;
    std::deque<std::string> entries;
};

Journal& journal()
{
    static Journal theJournal;
    return theJournal;
}

} // namespace

std::vector<std::string> frameworkJournal()
{
    Journal& j = journal();
    const std::lock_guard<std::mutex> lock(j.mutex);
    return {j.entries.begin(), j.entries.end()};
}

void clearFrameworkJournal()
{
    Journal& j = journal();
    const std::lock_guard<std::mutex> lock(j.mutex);
    j.entries.clear();
}

void noteFrameworkCall(const char* name)
{
    Journal& j = journal();
    const std::lock_guard<std::mutex> lock(j.mutex);
    if (j.entries.size() == journalEntriesMax)
        j.entries.pop_front();
    j.entries.emplace_back(name);
}

} // namespace kivo::core

void KivoCoreInit()
{
    kivo::core::noteFrameworkCall("KivoCoreInit");
}

void KivoCoreDeinit()
{
    kivo::core::noteFrameworkCall("KivoCoreDeinit");
}
