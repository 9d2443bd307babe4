#pragma once

#include "benchmarks/board/BenchBoard.h"
#include "interface/KivoGbePhysicalNetworkInterface.h"

#include <memory>

namespace mesk::benchmarks {

using kivo::core::mesk::KivoGbePhysicalNetworkInterface;

/// An open port on the benchmarks' board. The board library has been bound.
std::unique_ptr<KivoGbePhysicalNetworkInterface> openBenchPort();

/// An exported name of the benchmarks' board library.
void* benchBoardSymbol(const char* name);

template <typename Function>
Function benchBoardFunction(const char* name)
{
    return reinterpret_cast<Function>(benchBoardSymbol(name));
}

} // namespace mesk::benchmarks
