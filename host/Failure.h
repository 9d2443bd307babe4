#pragma once

#include <stdexcept>
#include <string>

namespace mesk::host {

/// What the program's exit code says.
enum class ExitCode : int {
    Done = 0,
    Nothing = 1, ///< nothing found, nothing came, refused, lost, different or damaged
    Usage = 2,
    Missing = 3, ///< board or library missing
    Interrupted = 130,
};

/// Ends a verb with a text for standard error and an exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text)
        : std::runtime_error(text)
        , m_code(code)
    {
    }
    ExitCode code() const { return m_code; }

private:
    ExitCode m_code;
};

} // namespace mesk::host
