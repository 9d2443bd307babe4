#include "benchmarks/interface/BenchPort.h"

#include "plugin/binding/LoadedLibrary.h"

#include <cstdio>
#include <cstdlib>

namespace mesk::benchmarks {

std::unique_ptr<KivoGbePhysicalNetworkInterface> openBenchPort()
{
    auto port = std::make_unique<KivoGbePhysicalNetworkInterface>();
    port->injectDependency("boardId", 0);
    port->injectDependency("portId", 0);
    port->injectDependency("resetBoard", std::string("false"));
    if (!port->open()) {
        std::fputs("the benchmarks' board can't be opened\n", stderr);
        std::exit(3);
    }
    return port;
}

void* benchBoardSymbol(const char* name)
{
    const auto library = kivo::plugin::loadLibrary("kivo_hal", nullptr);
    void* const symbol = library ? library->symbol(name) : nullptr;
    if (symbol == nullptr) {
        std::fprintf(stderr, "the benchmarks' board library has no %s\n", name);
        std::exit(3);
    }
    return symbol;
}

} // namespace mesk::benchmarks
