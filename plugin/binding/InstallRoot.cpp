#include "plugin/binding/InstallRoot.h"

#include "plugin/binding/InstallRootWalk.h"
#include "support/platform/SpinLockVariableGuard.h"
#include "support/platform/os/Environment.h"
#include "support/platform/os/Module.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace kivo::plugin {

namespace os = templates::platform::os;

namespace {

constexpr std::size_t rootSizeMaxBytes = 1024; // with the terminator

char installRoot[rootSizeMaxBytes];
bool installRootKnown = false;
std::atomic<std::uint32_t> installRootSpin{0};

/// The file system's own names keep their case, but ASCII is all that the names compared with have.
char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isLibraryDirectory(std::string_view name)
{
    constexpr std::string_view names[] = {"bin", "dll", "gate modules", "lib", "lib64"};
    return std::any_of(std::begin(names), std::end(names), [name](std::string_view each) {
        return std::equal(name.begin(), name.end(), each.begin(), each.end(),
                          [](char c, char lower) { return lowered(c) == lower; });
    });
}

/// Steps back over a run of separators, not past the start.
std::size_t beforeSeparators(std::string_view path, std::size_t position)
{
    while (position > 0 && path[position] == os::pathSeparator)
        --position;
    return position;
}

/// Takes the root from the place of this library's own file into `installRoot`.
bool takeRootOfOwnFile()
{
    const std::size_t length = os::modulePathOf(&installRootKnown, installRoot, rootSizeMaxBytes);
    if (length == 0 || length >= rootSizeMaxBytes)
        return false;
    const std::size_t rootLength = binding::rootLengthAbove(std::string_view(installRoot, length));
    installRoot[rootLength] = '\0';
    return rootLength != 0;
}

/// A value that doesn't fit counts as not set: a cut one would name another directory. So does an empty
/// one, which names none.
bool takeRootOfEnvironment(const char* variable)
{
    const std::optional<std::string> value = os::environmentVariable(variable);
    if (!value || value->empty() || value->size() >= rootSizeMaxBytes)
        return false;
    const std::size_t length = binding::lengthWithoutTrailingSeparators(*value);
    std::memcpy(installRoot, value->data(), length);
    installRoot[length] = '\0';
    return true;
}

} // namespace

namespace binding {

std::size_t rootLengthAbove(std::string_view file)
{
    std::size_t position = file.rfind(os::pathSeparator);
    if (position == std::string_view::npos)
        return 0;
    while (position > 0) {
        position = beforeSeparators(file, position);
        const std::size_t end = position + 1;
        while (position > 0 && file[position] != os::pathSeparator)
            --position;
        if (isLibraryDirectory(file.substr(position + 1, end - position - 1)))
            return beforeSeparators(file, position) + 1;
    }
    return 0;
}

std::size_t lengthWithoutTrailingSeparators(std::string_view path)
{
    const std::size_t last = path.find_last_not_of(os::pathSeparator);
    return last == std::string_view::npos ? 0 : last + 1;
}

} // namespace binding

const char* findInstallRoot()
{
    const templates::platform::SpinLockVariableGuard guard(&installRootSpin, nullptr);
    if (!installRootKnown)
        installRootKnown =
            takeRootOfOwnFile() || takeRootOfEnvironment("KIVODIR5_64") || takeRootOfEnvironment("KIVODIR5");
    return installRootKnown ? installRoot : nullptr;
}

} // namespace kivo::plugin
