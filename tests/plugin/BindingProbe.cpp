// What the binding does is seen once in a process, since bound slots stay. So each case of the tests
// runs this program, from a place that decides which root it finds, and reads what it says.

#include "plugin/binding/Dov.h"
#include "plugin/binding/InstallRoot.h"
#include "plugin/binding/KHal.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::mutex lookUpsMutex;
std::vector<std::string> lookUps;

} // namespace

// The linker (--wrap) puts this in the place of os::moduleSymbol, so that look-ups can be noted. The
// system's own dlsym isn't touched, since a sanitizer's runtime calls it before this program is set up.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker makes the names
extern "C" void* __real__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(void* handle, const char* name);
extern "C" void* __wrap__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(void* handle, const char* name)
{
    {
        const std::lock_guard<std::mutex> lock(lookUpsMutex);
        lookUps.emplace_back(name);
    }
    return __real__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(handle, name);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using namespace kivo::plugin;

/// One call of each operation, a line each. Handles and register values need more than 32 bits.
std::string callAll()
{
    constexpr std::uint64_t device = (std::uint64_t{2} << 32U) + 1;
    constexpr std::uint64_t design = (std::uint64_t{3} << 32U) + 1;
    std::uint64_t value = (std::uint64_t{4} << 32U) + 1;
    std::ostringstream out;
    const auto say = [&out](auto answer) { out << answer << '\n'; };
    say(KHalInitDevice(7));
    say(KHalFreeDevice(device));
    say(KHalGetDeviceCount());
    say(KHalGetDevice(7));
    say(KHalPutDevice(device));
    say(KHalGetBoardInfoInt(device, "8"));
    const char* const text = KHalGetBoardInfoString(device, "key");
    say(text != nullptr ? text : "null");
    say(KHalConfigureFpga(device, design));
    say(KHalRegisterWrite(device, 7, value));
    say(KHalRegisterRead(device, 7, &value));
    say(KHalDataQueueClear(device, 7));
    say(KHalDataQueueReadBufferLong(device, 7, &value, 8, 9));
    say(KHalDataQueueGetNrOfLostWords(device, 7));
    say(DovFirmwareTrampoline(7, 8));
    say(DovGetRegisterByName(design, "8"));
    say(DovUnloadDovFile(design));
    return out.str();
}

void sayRoot()
{
    const char* const root = findInstallRoot();
    std::cout << (root != nullptr ? root : "null") << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "root") { // three looks, the environment changing between them
        sayRoot();
        setenv("KIVODIR5", "/late", 1);
        sayRoot();
        setenv("KIVODIR5", "/later", 1);
        sayRoot();
    } else if (mode == "calls") {
        std::cout << callAll();
    } else if (mode == "lookups") {
        callAll();
        callAll();
        for (const std::string& name : lookUps)
            std::cout << name << '\n';
        std::cout << bindKHal() << ' ' << bindDov() << '\n';
    } else if (mode == "late") { // the libraries come after the first calls
        callAll();
        for (int at = 2; at + 1 < argc; at += 2)
            std::filesystem::copy_file(argv[at], argv[at + 1]);
        std::cout << callAll();
    } else if (mode == "threads") {
        std::vector<std::string> results(4);
        std::vector<std::thread> threads;
        threads.reserve(results.size());
        for (std::string& result : results)
            threads.emplace_back([&result] { result = callAll(); });
        for (std::thread& thread : threads)
            thread.join();
        for (const std::string& result : results)
            std::cout << result;
    } else {
        std::cerr << "usage: binding-probe root | calls | lookups | late FROM TO... | threads\n";
        return 2;
    }
    return 0;
}
