#pragma once

#include <cstddef>
#include <string_view>

namespace kivo::plugin::binding {

/// Finds the root of the installation to which a file belongs: the parent of the nearest directory
/// above it that is called `bin`, `dll`, `Gate Modules`, `lib` or `lib64`, in any case of letters.
/// Looks at the text alone. [any thread]
/// @param file an absolute path.
/// @returns the length of the root at the path's start, without a separator at its end ("/" alone keeps
///     its one); 0 if no directory has such a name.
std::size_t rootLengthAbove(std::string_view file);

/// The length of a path without the separators at its end. [any thread]
std::size_t lengthWithoutTrailingSeparators(std::string_view path);

} // namespace kivo::plugin::binding
