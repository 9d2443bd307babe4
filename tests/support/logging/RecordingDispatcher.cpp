#include "tests/support/logging/RecordingDispatcher.h"

#include "support/platform/os/Module.h"
#include "tests/support/logging/RecordingDispatcherRecord.h"

#include <regex>
#include <stdexcept>
#include <utility>

namespace mesk::tests {

namespace {

using Lock = std::lock_guard<std::mutex>;

RecordingDispatcherRecord& loadRecord()
{
    namespace os = kivo::templates::platform::os;
    // Loaded by the same file as the product does, so that both mean one library; and like there it
    // stays for the rest of the process.
    const os::ModuleLoad load = os::loadModule(MESK_UNIT_BIN "/common-logging-dispatcher.so");
    auto* const record =
        static_cast<RecordingDispatcherRecord**>(os::moduleSymbol(load.handle, recordingDispatcherSymbol));
    if (record == nullptr)
        throw std::runtime_error("no recording dispatcher: " + load.errorText);
    return **record;
}

RecordingDispatcherRecord& theRecord()
{
    static RecordingDispatcherRecord& record = loadRecord();
    return record;
}

} // namespace

RecordingDispatcher::RecordingDispatcher()
    : m_record(theRecord())
{
    {
        const Lock lock(m_record.mutex);
        m_record.lines.clear();
        m_record.detachCount = 0;
    }
    setLevel(7);
}

RecordingDispatcher::~RecordingDispatcher()
{
    const Lock lock(m_record.mutex);
    m_record.lineObserver = nullptr;
    m_record.attachObserver = nullptr;
}

void RecordingDispatcher::setLevel(std::uint32_t level)
{
    std::map<std::string, std::uint64_t> ids;
    {
        const Lock lock(m_record.mutex);
        m_record.level = level;
        ids = m_record.ids;
    }
    for (const auto& each : ids)
        changeLevel(each.first, level);
}

std::vector<RecordedLine> RecordingDispatcher::lines() const
{
    const Lock lock(m_record.mutex);
    return m_record.lines;
}

std::vector<std::string> RecordingDispatcher::texts(std::uint32_t level) const
{
    std::vector<std::string> texts;
    for (const RecordedLine& line : lines()) {
        if (line.level != level)
            continue;
        // A line without the head stays whole, so that a test sees that it is missing.
        static const std::regex head("^thread-id=[0-9]+\\|");
        texts.push_back(std::regex_replace(line.text, head, ""));
    }
    return texts;
}

void RecordingDispatcher::clear()
{
    const Lock lock(m_record.mutex);
    m_record.lines.clear();
}

void RecordingDispatcher::onLine(std::function<void(const RecordedLine&)> observer)
{
    const Lock lock(m_record.mutex);
    m_record.lineObserver = std::move(observer);
}

void RecordingDispatcher::changeLevel(const std::string& name, std::uint32_t level)
{
    std::unique_lock<std::mutex> lock(m_record.mutex);
    const std::uint64_t id = m_record.idOf(name);
    const auto function = m_record.client.levelChanged;
    lock.unlock();
    if (function != nullptr)
        function(id, level);
}

void RecordingDispatcher::goAway()
{
    std::unique_lock<std::mutex> lock(m_record.mutex);
    const auto gone = std::exchange(m_record.client, {}).gone;
    lock.unlock();
    if (gone != nullptr)
        gone();
}

} // namespace mesk::tests
