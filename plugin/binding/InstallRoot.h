#pragma once

namespace kivo::plugin {

/// The root of the installation, without a separator at its end unless it is the file system's. [any thread]
///
/// First the parent of the nearest directory above this library's own file that is called `bin`,
/// `dll`, `Gate Modules`, `lib` or `lib64` (in any case of letters), then the environment:
/// `KIVODIR5_64`, then `KIVODIR5`.
/// @returns a text that stays valid and unchanged for the life of the process; null if there is no
///     root, and then the next call searches again.
const char* findInstallRoot();

} // namespace kivo::plugin
