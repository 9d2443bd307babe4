#include "host/Progress.h"

#include "host/CaptureReader.h"
#include "host/Output.h"
#include "host/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace mesk::host {

namespace {

constexpr auto moment = std::chrono::milliseconds(300);
constexpr auto redrawPause = std::chrono::milliseconds(100);
constexpr int barWidth = 30;

} // namespace

Progress::Progress(std::function<std::string()> text)
    : m_thread([this, drawn = std::move(text)] { run(drawn); })
{
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
    }
    m_ending.notify_one();
    m_thread.join();
}

std::unique_ptr<Progress> Progress::start(bool shown, std::function<std::string()> text)
{
    return shown ? std::make_unique<Progress>(std::move(text)) : nullptr;
}

bool Progress::wanted(const Output& output)
{
    return !output.quiet() && standardOutputIsTerminal() && standardErrorIsTerminal();
}

void Progress::run(const std::function<std::string()>& text)
{
    const auto ended = [this] { return m_ended; };
    std::unique_lock lock(m_mutex);
    if (m_ending.wait_for(lock, moment, ended)) {
        return;
    }
    do {
        std::fprintf(stderr, "\r\033[K%s", text().c_str());
        std::fflush(stderr);
    } while (!m_ending.wait_for(lock, redrawPause, ended));
    std::fputs("\r\033[K", stderr);
}

std::string progressBar(const std::string& title, double fraction)
{
    const double done = std::clamp(fraction, 0.0, 1.0);
    const int filled = static_cast<int>(barWidth * done);
    return fmt::format("{} [{:#<{}}{:.<{}}] {:3.0f} %", title, "", filled, "", barWidth - filled, 100 * done);
}

std::string captureProgress(const std::string& title, const CaptureReader& reader)
{
    const auto fraction = reader.fractionRead();
    return fraction ? progressBar(title, *fraction) : fmt::format("{} {} frames", title, reader.framesRead());
}

} // namespace mesk::host
