#include "host/Progress.h"

#include "host/BoardAccess.h"
#include "host/Output.h"
#include "host/Terminal.h"
#include "support/platform/os/Clock.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

namespace {

constexpr std::size_t journalCalls = 4096; // more than a whole reset makes
constexpr std::uint64_t stepNs = 100'000'000;
constexpr auto redrawPause = std::chrono::milliseconds(100);
constexpr unsigned barWidth = 30;

/// The writes that a wait of 100 ms follows.
bool isStep(const KivoBoardCall& call)
{
    static constexpr std::array<const char*, 4> registers = {"GigE_Reset", "GigE_MdioPhyAddr", "GigE_MdioWR",
                                                             "GigE_MdioRD"};
    return std::strcmp(call.operation, "KHalRegisterWrite") == 0 &&
           std::any_of(registers.begin(), registers.end(),
                       [&call](const char* each) { return std::strcmp(call.text, each) == 0; });
}

} // namespace

struct ResetProgress::D {
    unsigned stepsDone()
    {
        if (control == nullptr) {
            return static_cast<unsigned>((os::monotonicNowNs() - startNs) / stepNs);
        }
        KivoBoardCall call;
        while (control->journalEntry(journalAt, &call) >= 0) {
            journalSteps += isStep(call) ? 1 : 0;
            ++journalAt;
        }
        return journalSteps;
    }
    void draw()
    {
        const unsigned done = std::min(stepsDone(), steps);
        const unsigned filled = barWidth * done / steps;
        std::fprintf(stderr, "\r%s [%s%s] %3u %%", title.c_str(), std::string(filled, '#').c_str(),
                     std::string(barWidth - filled, '.').c_str(), 100 * done / steps);
        std::fflush(stderr);
    }
    void run()
    {
        std::unique_lock lock(mutex);
        do {
            draw();
        } while (!condition.wait_for(lock, redrawPause, [this] { return ended; }));
        std::fputs("\r\033[K", stderr);
    }

    const KivoBoardControl* control = nullptr;
    std::string title;
    unsigned steps = 0;
    std::uint64_t startNs = os::monotonicNowNs();
    std::size_t journalAt = 0;
    unsigned journalSteps = 0;
    std::mutex mutex;
    std::condition_variable condition;
    bool ended = false;
    std::thread thread;
};

ResetProgress::ResetProgress(const BoardAccess& board, Output& output, const std::string& title,
                             unsigned steps)
    : d(std::make_unique<D>())
{
    if (output.quiet() || !standardOutputIsTerminal() || !standardErrorIsTerminal()) {
        output.words(fmt::format("{}, about {} s", title, (steps + 9) / 10));
        return;
    }
    d->control = board.control();
    d->title = title;
    d->steps = steps;
    if (d->control != nullptr) {
        d->control->clearJournal();
        d->control->setJournalCapacity(journalCalls);
    }
    d->thread = std::thread([this] { d->run(); });
}

ResetProgress::~ResetProgress()
{
    if (!d->thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(d->mutex);
        d->ended = true;
    }
    d->condition.notify_one();
    d->thread.join();
    if (d->control != nullptr) {
        d->control->setJournalCapacity(0);
    }
}

} // namespace mesk::host
