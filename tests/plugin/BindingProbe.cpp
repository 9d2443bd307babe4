// What the binding does is seen once in a process, since bound slots stay. So each case of the tests
// runs this program, from a place that decides which root it finds, and reads what it says.

#include "plugin/binding/Dov.h"
#include "plugin/binding/InstallRoot.h"
#include "plugin/binding/KHal.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::mutex lookUpsMutex;
std::map<std::string, int> lookUps;

} // namespace

// The linker (--wrap) puts this in the place of os::moduleSymbol, so that look-ups can be counted. The
// system's own dlsym isn't touched, since a sanitizer's runtime calls it before this program is set up.
// NOLINTBEGIN(bugprone-reserved-identifier): the linker makes the names
extern "C" void* __real__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(void* handle, const char* name);
extern "C" void* __wrap__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(void* handle, const char* name)
{
    {
        const std::lock_guard<std::mutex> lock(lookUpsMutex);
        ++lookUps[name];
    }
    return __real__ZN4kivo9templates8platform2os12moduleSymbolEPvPKc(handle, name);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using namespace kivo::plugin;

/// One call of each operation, a line each.
std::string callAll()
{
    std::uint64_t four = 4;
    const char* const text = KHalGetBoardInfoString(1, "key");
    std::ostringstream out;
    out << "KHalInitDevice " << KHalInitDevice(3) << "\nKHalFreeDevice " << KHalFreeDevice(1)
        << "\nKHalGetDeviceCount " << KHalGetDeviceCount() << "\nKHalGetDevice " << KHalGetDevice(5)
        << "\nKHalPutDevice " << KHalPutDevice(1) << "\nKHalGetBoardInfoInt " << KHalGetBoardInfoInt(1, "a")
        << "\nKHalGetBoardInfoString " << (text != nullptr ? text : "null") << "\nKHalConfigureFpga "
        << KHalConfigureFpga(1, 2) << "\nKHalRegisterWrite " << KHalRegisterWrite(1, 2, 3)
        << "\nKHalRegisterRead " << KHalRegisterRead(1, 2, &four) << "\nKHalDataQueueClear "
        << KHalDataQueueClear(1, 2) << "\nKHalDataQueueReadBufferLong "
        << KHalDataQueueReadBufferLong(1, 2, &four, 8, 16) << "\nKHalDataQueueGetNrOfLostWords "
        << KHalDataQueueGetNrOfLostWords(1, 2) << "\nDovFirmwareTrampoline " << DovFirmwareTrampoline(1, 2)
        << "\nDovGetRegisterByName " << DovGetRegisterByName(1, "a") << "\nDovUnloadDovFile "
        << DovUnloadDovFile(1) << '\n';
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
    } else if (mode == "counts") {
        callAll();
        callAll();
        for (const auto& [name, count] : lookUps)
            std::cout << name << ' ' << count << '\n';
        std::cout << "bindKHal " << bindKHal() << "\nbindDov " << bindDov() << '\n';
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
            if (result != results[0])
                std::cout << "another result:\n" << result;
        std::cout << results[0];
    } else {
        std::cerr << "usage: binding-probe root | calls | counts | late FROM TO... | threads\n";
        return 2;
    }
    return 0;
}
