// Lets reads of the receive queue of port 0 fail, and shows what the port makes of it.
#include "LoadedPlugin.h"
#include "packets/EthernetFrame.h"
#include "stand-ins/board/BoardControl.h"

#include <cstdint>
#include <err.h>

int main(int argc, char** argv)
try {
    if (argc != 2)
        errx(2, "usage: break-board BIN-FOLDER");
    const LoadedPlugin plugin(argv[1]);
    const auto port = plugin.makePort(0, 0);
    if (!port->open())
        throw std::runtime_error("board 0 does not open");
    // The plugin has the board's library by now; this is one use more.
    void* const library = dlopen((std::string(argv[1]) + "/kivo_hal.so").c_str(), RTLD_NOW);
    const auto table = reinterpret_cast<KivoBoardControlFunction>(dlsym(library, "KivoBoardControlTable"));
    const KivoBoardControl& board = *table(KIVO_BOARD_CONTROL_VERSION);
    board.script("KHalDataQueueReadBufferLong", 1, 3, 0, -7); // the next three calls answer -7
    // No startWorkers(): the worker reads a queue as well, and the script would count its calls.
    for (int reads = 0; reads < 5; ++reads)
        port->receiveFrame(nullptr);
    const std::uint64_t failed = board.scriptedCalls();
    board.clearScripts();
    port->requestStop();
    port->finish();
    dlclose(library);
    return failed == 3 ? 0 : 1;
} catch (const std::exception& error) {
    errx(3, "%s", error.what());
}
