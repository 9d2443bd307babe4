#include "stand-ins/board/Operations.h"

#include "stand-ins/board/Bench.h"
#include "stand-ins/board/Status.h"

#include <chrono>
#include <cstring>

namespace emulated_board::operations {

namespace {

using Numbers = std::array<std::uint64_t, 4>;

template <typename Result>
Result scriptedResult(std::int64_t number)
{
    return Result(number);
}
template <>
const char* scriptedResult<const char*>(std::int64_t number)
{
    return number != 0 ? "" : nullptr;
}

template <typename Result>
std::int64_t numberOf(Result result)
{
    return std::int64_t(result);
}
template <>
std::int64_t numberOf<const char*>(const char* result)
{
    return result != nullptr ? 1 : 0;
}

std::string textOf(const char* text)
{
    return text != nullptr ? text : "";
}

/// Runs an operation under the eyes of scripts and journal.
template <typename Result, typename Text, typename Action>
[[gnu::noinline]] Result performWatched(Bench& bench, const char* operation, Result failure,
                                        const Numbers& numbers, Text text, Action action)
{
    std::uint64_t value = 0;
    const auto script = bench.scripts().answer(operation);
    Result result = failure;
    if (!script)
        result = action(bench, value);
    else if (!script->natural)
        result = scriptedResult<Result>(script->result);
    if (bench.journal().isOn())
        bench.journal().add(operation, text(), numbers, numberOf(result), value);
    return result;
}

/// Runs an operation. `text` gives the journal's text, `action` does the work and may leave a value for
/// the journal. Kept apart from what is rarely on: a register write is done for every word of a frame.
template <typename Result, typename Text, typename Action>
Result perform(const char* operation, Result failure, const Numbers& numbers, Text text, Action action)
{
    Bench& bench = Bench::instance();
    if (bench.isWatched())
        return performWatched(bench, operation, failure, numbers, text, action);
    std::uint64_t value = 0;
    return action(bench, value);
}

std::string noText()
{
    return {};
}

std::string nameOfId(std::uint32_t id)
{
    const auto address = registerOfId(id);
    return address ? registerName(*address) : std::string();
}

std::int32_t release(Bench& bench, HandleKind kind, std::uint64_t handle)
{
    Board* const board = bench.boardOf(handle);
    if (!bench.handles().remove(kind, handle))
        return statusBadHandle;
    if (board != nullptr)
        board->wakeReaders(); // those that read with this handle are told
    return 0;
}

} // namespace

std::uint64_t initDevice(std::uint32_t board)
{
    return perform("KHalInitDevice", std::uint64_t(0), {board}, noText, [=](Bench& bench, std::uint64_t&) {
        return bench.board(board) != nullptr ? bench.handles().add(HandleKind::device, board) : 0;
    });
}

std::int32_t freeDevice(std::uint64_t handle)
{
    return perform("KHalFreeDevice", statusFailed, {handle}, noText,
                   [=](Bench& bench, std::uint64_t&) { return release(bench, HandleKind::device, handle); });
}

std::uint32_t getDeviceCount()
{
    return perform("KHalGetDeviceCount", std::uint32_t(0), {}, noText,
                   [](Bench& bench, std::uint64_t&) { return bench.boardCount(); });
}

std::uint64_t getDevice(std::uint32_t index)
{
    return perform("KHalGetDevice", std::uint64_t(0), {index}, noText, [=](Bench& bench, std::uint64_t&) {
        for (std::uint32_t n = 0; n < bench.boardCount(); ++n) {
            const Board* const board = bench.board(n);
            if (board != nullptr && board->device() == index)
                return bench.handles().add(HandleKind::listedDevice, n);
        }
        return std::uint64_t(0);
    });
}

std::int32_t putDevice(std::uint64_t handle)
{
    return perform("KHalPutDevice", statusFailed, {handle}, noText, [=](Bench& bench, std::uint64_t&) {
        return release(bench, HandleKind::listedDevice, handle);
    });
}

std::int32_t getBoardInfoInt(std::uint64_t handle, const char* key)
{
    const auto text = [=] { return textOf(key); };
    return perform("KHalGetBoardInfoInt", 0, {handle}, text, [=](Bench& bench, std::uint64_t&) {
        const Board* const board = bench.boardOf(handle);
        return board != nullptr ? board->infoInt(textOf(key)) : 0;
    });
}

const char* getBoardInfoString(std::uint64_t handle, const char* key)
{
    const auto text = [=] { return textOf(key); };
    const char* const none = nullptr;
    return perform("KHalGetBoardInfoString", none, {handle}, text, [=](Bench& bench, std::uint64_t&) {
        const Board* const board = bench.boardOf(handle);
        return board != nullptr ? board->infoText(textOf(key)) : nullptr;
    });
}

std::int32_t configureFpga(std::uint64_t handle, std::uint64_t design)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        Board* const board = bench.boardOf(handle);
        const auto registers = bench.handles().design(design);
        if (board == nullptr || !registers)
            return statusBadHandle;
        board->configure(FirmwareDesign(*registers));
        return 0;
    };
    return perform("KHalConfigureFpga", statusFailed, {handle, design}, noText, action);
}

std::int32_t registerWrite(std::uint64_t handle, std::uint32_t id, std::uint64_t value)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        Board* const board = bench.boardOf(handle);
        return board != nullptr ? board->writeRegister(id, value) : statusBadHandle;
    };
    return perform(
        "KHalRegisterWrite", statusFailed, {handle, id, value}, [=] { return nameOfId(id); }, action);
}

std::int32_t registerRead(std::uint64_t handle, std::uint32_t id, std::uint64_t* value)
{
    const auto action = [=](Bench& bench, std::uint64_t& seen) {
        const Board* const board = bench.boardOf(handle);
        if (board == nullptr)
            return statusBadHandle;
        if (value == nullptr)
            return statusBadArgument;
        const std::int32_t status = board->readRegister(id, seen);
        if (status == 0)
            *value = seen;
        return status;
    };
    return perform(
        "KHalRegisterRead", statusFailed, {handle, id}, [=] { return nameOfId(id); }, action);
}

std::int32_t dataQueueClear(std::uint64_t handle, std::uint32_t queue)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        Board* const board = bench.boardOf(handle);
        if (board == nullptr)
            return statusBadHandle;
        DataQueue* const found = board->queue(queue);
        if (found == nullptr)
            return statusBadArgument;
        found->clear();
        return 0;
    };
    return perform("KHalDataQueueClear", statusFailed, {handle, queue}, noText, action);
}

std::int32_t dataQueueReadBufferLong(std::uint64_t handle, std::uint32_t queue, void* buffer,
                                     std::uint32_t sizeBytes, std::uint32_t timeoutMs)
{
    const auto action = [=](Bench& bench, std::uint64_t& first) {
        Board* const board = bench.boardOf(handle);
        if (board == nullptr)
            return statusBadHandle;
        DataQueue* const found = board->queue(queue);
        if (found == nullptr || buffer == nullptr)
            return statusBadArgument;
        board->noteReader(queue);
        const auto usable = [&] { return bench.boardOf(handle) != nullptr; };
        const std::int32_t result =
            found->read(buffer, sizeBytes, std::chrono::milliseconds(timeoutMs), usable);
        if (result >= 4)
            std::memcpy(&first, buffer, 4); // the words are little-endian here, as is all of this platform
        return result;
    };
    return perform("KHalDataQueueReadBufferLong", statusFailed, {handle, queue, sizeBytes, timeoutMs}, noText,
                   action);
}

std::int32_t dataQueueGetNrOfLostWords(std::uint64_t handle, std::uint32_t queue)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        Board* const board = bench.boardOf(handle);
        if (board == nullptr)
            return statusBadHandle;
        const DataQueue* const found = board->queue(queue);
        return found != nullptr ? found->lostWords() : statusBadArgument;
    };
    return perform("KHalDataQueueGetNrOfLostWords", 0, {handle, queue}, noText, action);
}

std::uint64_t firmwareTrampoline(std::uint8_t major, std::uint8_t minor)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        const auto design = bench.design({major, minor});
        return design ? bench.handles().add(HandleKind::design, design->registers()) : 0;
    };
    return perform("DovFirmwareTrampoline", std::uint64_t(0), {major, minor}, noText, action);
}

std::uint32_t getRegisterByName(std::uint64_t design, const char* name)
{
    const auto action = [=](Bench& bench, std::uint64_t&) {
        const auto registers = bench.handles().design(design);
        const auto address = registerOfName(textOf(name));
        const bool has = registers && address && FirmwareDesign(*registers).has(address->which);
        return has ? registerId(*address) : 0U;
    };
    return perform(
        "DovGetRegisterByName", 0U, {design}, [=] { return textOf(name); }, action);
}

std::int32_t unloadDovFile(std::uint64_t design)
{
    return perform("DovUnloadDovFile", statusFailed, {design}, noText, [=](Bench& bench, std::uint64_t&) {
        return bench.handles().remove(HandleKind::design, design) ? 0 : statusBadHandle;
    });
}

std::uint64_t loadDovFileWithType(const char* path, std::uint32_t type)
{
    // The designs of this board are built in: there is no file to be had.
    return perform(
        "DovLoadDovFileWithType", std::uint64_t(0), {type}, [=] { return textOf(path); },
        [](Bench&, std::uint64_t&) { return std::uint64_t(0); });
}

} // namespace emulated_board::operations
