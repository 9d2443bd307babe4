#include "host/ResetProgress.h"

#include "host/BoardAccess.h"
#include "host/Output.h"
#include "host/Progress.h"
#include "host/Stopwatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace mesk::host {

namespace {

constexpr std::size_t journalCalls = 4096; // more than a whole reset makes
constexpr double stepsPerSecond = 10;

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
            return static_cast<unsigned>(watch.seconds() * stepsPerSecond);
        }
        KivoBoardCall call;
        while (control->journalEntry(journalAt, &call) >= 0) {
            journalSteps += isStep(call) ? 1 : 0;
            ++journalAt;
        }
        return journalSteps;
    }

    const KivoBoardControl* control = nullptr;
    const Stopwatch watch;
    std::size_t journalAt = 0;
    unsigned journalSteps = 0;
    std::optional<Progress> progress;
};

ResetProgress::ResetProgress(const BoardAccess& board, Output& output, const std::string& title,
                             unsigned steps)
    : d(std::make_unique<D>())
{
    if (!Progress::wanted(output)) {
        output.words(fmt::format("{}, about {} s", title, (steps + 9) / 10));
        return;
    }
    d->control = board.control();
    if (d->control != nullptr) {
        d->control->clearJournal();
        d->control->setJournalCapacity(journalCalls);
    }
    d->progress.emplace(
        [this, title, steps] { return progressBar(title, static_cast<double>(d->stepsDone()) / steps); });
}

ResetProgress::~ResetProgress()
{
    d->progress.reset();
    if (d->control != nullptr) {
        d->control->setJournalCapacity(0);
    }
}

} // namespace mesk::host
