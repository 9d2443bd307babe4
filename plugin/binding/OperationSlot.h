#pragma once

#include "plugin/binding/LoadedLibrary.h"

#include <atomic>

namespace kivo::plugin::binding {

/// Tells the compiler which way a test seldom goes, so that the other way stays the straight one.
inline bool seldom(bool condition)
{
    return __builtin_expect(condition ? 1 : 0, 0) != 0;
}

template <typename Function, auto answer>
class OperationSlot;

/// Where the address of one operation of a closed library stands once it is bound. [any thread]
///
/// `answer` is what the caller gets where the operation isn't there. The calls expect the plain test
/// of the table's sentinel before them: it is the acquire that makes the slots of a bound table
/// visible, so the slots themselves are read relaxed.
template <typename Result, typename... Arguments, auto answer>
class OperationSlot<Result(Arguments...), answer> {
public:
    using Function = Result (*)(Arguments...);

    bool isEmpty() const { return m_function.load(std::memory_order_acquire) == nullptr; }

    /// Calls the operation of a slot that is never empty in a bound table.
    Result call(Arguments... arguments) const
    {
        return m_function.load(std::memory_order_relaxed)(arguments...);
    }

    /// Calls the operation, or gives the answer for a slot that may be empty.
    Result callOrAnswer(Arguments... arguments) const
    {
        const Function function = m_function.load(std::memory_order_relaxed);
        return function != nullptr ? function(arguments...) : Result{answer};
    }

    /// Binds the table first. Out of line: what follows a failed test of the sentinel.
    [[gnu::noinline, gnu::cold]] Result bindAndCall(std::int32_t (*bindTable)(), Arguments... arguments) const
    {
        bindTable(); // a library that isn't there leaves the slots empty, which the call looks at
        return callOrAnswer(arguments...);
    }

    /// Looks the operation up. @returns null if the library doesn't export it.
    static Function find(const LoadedLibrary& library, const char* name)
    {
        return reinterpret_cast<Function>(library.symbol(name));
    }

    /// Looks the operation up. @returns a function that gives the answer if the library doesn't export
    /// it, so that a call needs no test.
    static Function findOrAnswer(const LoadedLibrary& library, const char* name)
    {
        const Function function = find(library, name);
        return function != nullptr ? function : giveAnswer;
    }

    void store(Function function, std::memory_order order = std::memory_order_relaxed)
    {
        m_function.store(function, order);
    }

private:
    static Result giveAnswer(Arguments... /*unused*/) { return Result{answer}; }

    std::atomic<Function> m_function{nullptr};
};

} // namespace kivo::plugin::binding
