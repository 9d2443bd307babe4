#include "tests/support/logging/RecordingDispatcher.h"

#include "support/platform/os/Module.h"
#include "tests/support/logging/RecordingDispatcherControl.h"

#include <stdexcept>
#include <utility>

namespace mesk::tests {

namespace {

RecordingDispatcherControl& loadControl()
{
    namespace os = kivo::templates::platform::os;
    // Loaded by the same file as the product does, so that both mean one library; and like there it
    // stays for the rest of the process.
    const os::ModuleLoad load = os::loadModule(MESK_UNIT_BIN "/common-logging-dispatcher.so");
    auto* const control = static_cast<RecordingDispatcherControl**>(
        os::moduleSymbol(load.handle, recordingDispatcherControlSymbol));
    if (control == nullptr)
        throw std::runtime_error("no recording dispatcher: " + load.errorText);
    return **control;
}

RecordingDispatcherControl& theControl()
{
    static RecordingDispatcherControl& control = loadControl();
    return control;
}

} // namespace

RecordingDispatcher::RecordingDispatcher()
    : m_control(theControl())
{
    m_control.reset();
}

RecordingDispatcher::~RecordingDispatcher()
{
    m_control.onLine(nullptr);
    m_control.onAttach(nullptr);
}

void RecordingDispatcher::setLevel(std::uint32_t level)
{
    m_control.setLevel(level);
}

std::vector<RecordedLine> RecordingDispatcher::lines() const
{
    return m_control.lines();
}

std::vector<std::string> RecordingDispatcher::texts(std::uint32_t level) const
{
    std::vector<std::string> texts;
    for (const RecordedLine& line : lines()) {
        if (line.level != level)
            continue;
        // A line without the head stays whole, so that a test sees that it is missing.
        const std::string head = "thread-id=";
        const std::size_t digits = line.text.find_first_not_of("0123456789", head.size());
        const bool hasHead = line.text.compare(0, head.size(), head) == 0 && digits > head.size() &&
                             digits != std::string::npos && line.text[digits] == '|';
        texts.push_back(hasHead ? line.text.substr(digits + 1) : line.text);
    }
    return texts;
}

void RecordingDispatcher::clear()
{
    m_control.clear();
}

void RecordingDispatcher::onLine(std::function<void(const RecordedLine&)> observer)
{
    m_control.onLine(std::move(observer));
}

} // namespace mesk::tests
