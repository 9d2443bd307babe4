#include "plugin/LibraryInitController.h"

#include "support/platform/SpinLockVariableGuard.h"

using kivo::templates::platform::SpinLockVariableGuard;

LibraryInitController* LibraryInitController::s_instance = nullptr;
std::atomic<std::uint32_t> LibraryInitController::s_useCount{0};
std::atomic<std::uint32_t> LibraryInitController::s_spinVariable{0};
std::atomic<std::uint32_t> LibraryInitController::s_ownerVariable{0};

void LibraryInitController::init()
{
    const SpinLockVariableGuard guard(&s_spinVariable, &s_ownerVariable);
    if (s_useCount == 0)
        s_instance = new LibraryInitController; // first, so that a use isn't counted without it
    ++s_useCount;
}

void LibraryInitController::deinit()
{
    const SpinLockVariableGuard guard(&s_spinVariable, &s_ownerVariable);
    if (--s_useCount != 0)
        return;
    // The framework's teardown may log, so the singletons outlive it.
    s_instance->callDeinitFunctions();
    s_instance->endSingletons();
    delete s_instance;
    s_instance = nullptr;
}

void LibraryInitController::registerLibrary(Function initFunction, Function deinitFunction)
{
    const SpinLockVariableGuard guard(&s_spinVariable, &s_ownerVariable);
    if (s_instance != nullptr)
        s_instance->m_deinitFunctions.push_front(deinitFunction);
    initFunction();
}

void LibraryInitController::registerSingleton(GuardedSingletonBase* singleton)
{
    const SpinLockVariableGuard guard(&s_spinVariable, &s_ownerVariable);
    if (s_instance != nullptr)
        s_instance->m_singletons.push_front(singleton);
}

std::uint32_t LibraryInitController::useCount()
{
    return s_useCount;
}

void LibraryInitController::callDeinitFunctions()
{
    for (const Function deinitFunction : m_deinitFunctions)
        deinitFunction();
}

void LibraryInitController::endSingletons()
{
    for (GuardedSingletonBase* const singleton : m_singletons) {
        singleton->deinit();
        GuardedSingletonBase::InstancePointer* instancePointer = nullptr;
        singleton->instancePointer(&instancePointer);
        delete singleton;
        instancePointer->store(nullptr, std::memory_order_release);
    }
}
