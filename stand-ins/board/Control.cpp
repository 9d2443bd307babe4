#include "stand-ins/board/Bench.h"
#include "stand-ins/board/Operations.h"
#include "stand-ins/board/Status.h"

#include <fmt/core.h>
#include <optional>

// The functions of the control table, in its order.
namespace emulated_board {

namespace {

Bench& bench()
{
    return Bench::instance();
}

Port* findPort(std::uint32_t board, std::uint32_t port)
{
    Board* const found = bench().board(board);
    return found != nullptr ? found->port(port) : nullptr;
}

DataQueue* findQueue(std::uint32_t board, std::uint32_t queue)
{
    Board* const found = bench().board(board);
    return found != nullptr ? found->queue(queue) : nullptr;
}

std::int32_t status(bool done)
{
    return done ? 0 : statusFailed;
}

std::int32_t loadSetup(const char* path)
{
    try {
        bench().powerCycle(path != nullptr ? std::optional<std::string>(path) : std::nullopt);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "emulated board: {}: {}\n", path != nullptr ? path : "", error.what());
        return statusFailed;
    }
}

std::uint32_t boardCount()
{
    return bench().boardCount();
}

std::uint32_t portCount(std::uint32_t board)
{
    const Board* const found = bench().board(board);
    return found != nullptr ? found->portCount() : 0;
}

std::int32_t plug(std::uint32_t board, std::uint32_t port, const char* link, char* error,
                  std::size_t errorSize)
{
    try {
        bench().plug({board, port}, link != nullptr ? link : "none");
        return 0;
    } catch (const std::exception& reason) {
        copyText(reason.what(), error, errorSize);
        return statusFailed;
    }
}

std::size_t link(std::uint32_t board, std::uint32_t port, char* text, std::size_t size)
{
    const Port* const found = findPort(board, port);
    return copyText(found != nullptr ? found->linkText() : std::string(), text, size);
}

std::int32_t linkIdle(std::uint32_t board, std::uint32_t port)
{
    const Port* const found = findPort(board, port);
    if (found == nullptr)
        return statusFailed;
    const auto plugged = found->link();
    return !plugged || plugged->isIdle() ? 1 : 0;
}

std::int32_t addScript(const char* operation, std::uint64_t first, std::uint64_t count, std::int32_t natural,
                       std::int64_t result)
{
    if (operation == nullptr || first == 0)
        return statusFailed;
    bench().scripts().add(operation, first, count, {natural != 0, result});
    return 0;
}

void clearScripts()
{
    bench().scripts().clear();
}

std::uint64_t scriptedCalls()
{
    return bench().scripts().answered();
}

std::uint32_t injectWords(std::uint32_t board, std::uint32_t queue, const std::uint32_t* words,
                          std::uint32_t count)
{
    DataQueue* const found = findQueue(board, queue);
    return found != nullptr && words != nullptr ? found->putSome(words, count) : 0;
}

std::uint32_t queuedWords(std::uint32_t board, std::uint32_t queue)
{
    const DataQueue* const found = findQueue(board, queue);
    return found != nullptr ? found->size() : 0;
}

void setLostWords(std::uint32_t board, std::uint32_t queue, std::int32_t count)
{
    if (DataQueue* const found = findQueue(board, queue))
        found->setLostWords(count);
}

std::int32_t freezeTransmitter(std::uint32_t board, std::uint32_t port, std::uint64_t value)
{
    Port* const found = findPort(board, port);
    if (found != nullptr)
        found->transmitter().freeze(value);
    return status(found != nullptr);
}

std::int32_t holdPhy(std::uint32_t board, std::uint32_t phy, std::int32_t hold)
{
    Board* const found = bench().board(board);
    return status(found != nullptr && found->phys().hold(phy, hold != 0));
}

std::int32_t setPhyResetReads(std::uint32_t board, std::uint32_t phy, std::uint32_t reads)
{
    Board* const found = bench().board(board);
    return status(found != nullptr && found->phys().setResetReads(phy, reads));
}

std::uint16_t phyRegister(std::uint32_t board, std::uint32_t phy, std::uint32_t number)
{
    Board* const found = bench().board(board);
    return found != nullptr ? found->phys().peek(phy, number) : std::uint16_t(0xFFFF);
}

std::uint16_t phyIndirect(std::uint32_t board, std::uint32_t phy, std::uint32_t selector)
{
    Board* const found = bench().board(board);
    return found != nullptr ? found->phys().peekIndirect(phy, std::uint16_t(selector))
                            : std::uint16_t(0xFFFF);
}

void setPhyRegister(std::uint32_t board, std::uint32_t phy, std::uint32_t number, std::uint16_t value)
{
    if (Board* const found = bench().board(board))
        found->phys().poke(phy, number, value);
}

std::int32_t registerValue(std::uint32_t board, const char* name, std::uint64_t* value)
{
    const Board* const found = bench().board(board);
    const auto address = registerOfName(name != nullptr ? name : "");
    if (found == nullptr || !address || value == nullptr)
        return statusFailed;
    *value = found->value(*address);
    return 0;
}

std::int32_t setRegisterValue(std::uint32_t board, const char* name, std::uint64_t value)
{
    Board* const found = bench().board(board);
    const auto address = registerOfName(name != nullptr ? name : "");
    if (found == nullptr || !address)
        return statusFailed;
    found->setValue(*address, value);
    return 0;
}

std::int32_t setInfoInt(std::uint32_t board, const char* key, std::int32_t value)
{
    Board* const found = bench().board(board);
    if (found == nullptr || key == nullptr)
        return statusFailed;
    found->setInfoInt(key, value);
    return 0;
}

std::int32_t setInfoString(std::uint32_t board, const char* key, const char* value)
{
    Board* const found = bench().board(board);
    if (found == nullptr || key == nullptr)
        return statusFailed;
    found->setInfoText(key, value);
    return 0;
}

std::int32_t counters(std::uint32_t board, std::uint32_t port, KivoBoardPortCounters* result)
{
    const Port* const found = findPort(board, port);
    if (found == nullptr || result == nullptr)
        return statusFailed;
    *result = found->counters();
    return 0;
}

void held(KivoBoardHeld* result)
{
    if (result != nullptr)
        *result = {bench().handles().held(false), bench().handles().held(true)};
}

void setJournalCapacity(std::size_t calls)
{
    bench().journal().setCapacity(calls);
}

void clearJournal()
{
    bench().journal().clear();
}

std::size_t journalSize()
{
    return bench().journal().size();
}

std::uint64_t journalDropped()
{
    return bench().journal().dropped();
}

std::int32_t journalEntry(std::size_t index, KivoBoardCall* call)
{
    return status(call != nullptr && bench().journal().entry(index, *call));
}

void note(const char* text)
{
    bench().journal().add("note", text != nullptr ? text : "", {}, 0, 0);
}

std::int32_t actionTimeout(std::uint32_t board, std::uint32_t port, std::uint16_t count)
{
    Board* const found = bench().board(board);
    return found != nullptr ? found->reportActionTimeout(port, count) : statusFailed;
}

std::int32_t linkCounters(std::uint32_t board, std::uint32_t port, KivoBoardLinkCounters* result)
{
    const Port* const found = findPort(board, port);
    if (found == nullptr || result == nullptr)
        return statusFailed;
    *result = found->linkCounters();
    return 0;
}

constexpr KivoBoardControl table{
    KIVO_BOARD_CONTROL_VERSION,
    sizeof(KivoBoardControl),
    loadSetup,
    boardCount,
    portCount,
    plug,
    link,
    linkIdle,
    addScript,
    clearScripts,
    scriptedCalls,
    injectWords,
    queuedWords,
    setLostWords,
    freezeTransmitter,
    holdPhy,
    setPhyResetReads,
    phyRegister,
    phyIndirect,
    setPhyRegister,
    registerValue,
    setRegisterValue,
    setInfoInt,
    setInfoString,
    counters,
    held,
    setJournalCapacity,
    clearJournal,
    journalSize,
    journalDropped,
    journalEntry,
    note,
    actionTimeout,
    linkCounters,
};

} // namespace

const KivoBoardControl* operations::controlTable(std::uint32_t version)
{
    return version == KIVO_BOARD_CONTROL_VERSION ? &table : nullptr;
}

} // namespace emulated_board
