#include "tests/stand-ins/EmulatedBoard.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace mesk::tests {

namespace {

constexpr std::size_t journalCapacityCalls = 100000;

const KivoBoardControl* loadBoard()
{
    // Never unloaded: the product's binding keeps it for the life of the process, too.
    void* const library = ::dlopen(MESK_TEST_KIVO_HAL, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(::dlerror());
    const auto table = reinterpret_cast<KivoBoardControlFunction>(::dlsym(library, "KivoBoardControlTable"));
    if (table == nullptr || table(KIVO_BOARD_CONTROL_VERSION) == nullptr)
        throw std::runtime_error("no control interface in " MESK_TEST_KIVO_HAL);
    return table(KIVO_BOARD_CONTROL_VERSION);
}

/// Which of the numbers of an operation are shown: those from `first` up to `end`. Of others none is.
struct Shown {
    const char* operation;
    std::size_t first;
    std::size_t end;
};

constexpr Shown shownOf[] = {
    {"KHalInitDevice", 0, 1},
    {"KHalGetDevice", 0, 1},
    {"KHalRegisterWrite", 2, 3},
    {"KHalDataQueueClear", 1, 2},
    {"KHalDataQueueReadBufferLong", 1, 4},
    {"KHalDataQueueGetNrOfLostWords", 1, 2},
    {"DovFirmwareTrampoline", 0, 2},
    {"DovLoadDovFileWithType", 0, 1},
};

std::string lineOf(const KivoBoardCall& call)
{
    const std::string operation = call.operation;
    if (operation == "note")
        return call.text;
    std::string inside = call.text;
    // A register id that is no register's stands for itself.
    if (inside.empty() && operation.rfind("KHalRegister", 0) == 0)
        inside = std::to_string(call.arguments[1]);
    for (const Shown& shown : shownOf) {
        if (operation != shown.operation)
            continue;
        for (std::size_t i = shown.first; i < shown.end; ++i)
            inside.append(inside.empty() ? "" : ", ").append(std::to_string(call.arguments[i]));
    }
    return operation + "(" + inside + ")";
}

} // namespace

EmulatedBoard::EmulatedBoard(const std::string& setupIniText)
    : m_control(loadBoard())
{
    std::int32_t status = -1;
    if (setupIniText.empty()) {
        status = m_control->loadSetup(nullptr);
    } else {
        static std::atomic<unsigned> number{0};
        const auto path = std::filesystem::temp_directory_path() /
                          ("board-" + std::to_string(::getpid()) + "-" + std::to_string(number++) + ".ini");
        std::ofstream(path) << setupIniText;
        status = m_control->loadSetup(path.c_str());
        std::filesystem::remove(path);
    }
    if (status != 0)
        throw std::runtime_error("the set-up was refused");
    unplugCameras();
    m_control->setJournalCapacity(journalCapacityCalls);
    m_control->clearJournal();
}

void EmulatedBoard::unplugCameras() const
{
    for (std::uint32_t board = 0; board < m_control->boardCount(); ++board) {
        for (std::uint32_t port = 0; port < m_control->portCount(board); ++port) {
            std::array<char, 8> link{};
            m_control->link(board, port, link.data(), link.size());
            if (std::string(link.data()) == "camera")
                m_control->plug(board, port, "none", nullptr, 0);
        }
    }
}

void EmulatedBoard::failCall(std::uint64_t n)
{
    m_control->script("*", n, 1, 1, 0);
}

bool EmulatedBoard::scriptFired() const
{
    return m_control->scriptedCalls() != 0;
}

KivoBoardHeld EmulatedBoard::held() const
{
    KivoBoardHeld held{};
    m_control->held(&held);
    return held;
}

std::vector<KivoBoardCall> EmulatedBoard::calls() const
{
    if (m_control->journalDropped() != 0)
        throw std::runtime_error("the journal was too small for the calls");
    std::vector<KivoBoardCall> calls;
    KivoBoardCall call{};
    while (m_control->journalEntry(calls.size(), &call) == 0)
        calls.push_back(call);
    return calls;
}

std::vector<std::string> EmulatedBoard::journal() const
{
    std::vector<std::string> lines;
    for (const KivoBoardCall& call : calls())
        lines.push_back(lineOf(call));
    return lines;
}

void EmulatedBoard::clearJournal()
{
    m_control->clearJournal();
}

void EmulatedBoard::inject(std::uint32_t queue, const std::vector<std::uint32_t>& words, std::uint32_t board)
{
    m_control->injectWords(board, queue, words.data(), std::uint32_t(words.size()));
}

} // namespace mesk::tests
