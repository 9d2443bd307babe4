#include "stand-ins/board/links/Rights.h"

#include <fmt/core.h>

namespace emulated_board {

std::string adviceOnRights(const std::string& capability)
{
    // A right in the program's file (setcap) won't do: for such a program the loader passes its own folder
    // over, where the libraries are.
    return fmt::format("run it as root, or with cap_{0} alone: sudo setpriv --reuid=$(id -u) "
                       "--regid=$(id -g) --init-groups --inh-caps=+{0} --ambient-caps=+{0} COMMAND",
                       capability);
}

} // namespace emulated_board
