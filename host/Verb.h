#pragma once

#include "host/Failure.h"

#include <memory>

namespace CLI {
class App;
}

namespace mesk::host {

struct Options;
class Session;

/// One thing that the program does, with the arguments of its own.
class Verb {
public:
    Verb() = default;
    Verb(const Verb&) = delete;
    Verb& operator=(const Verb&) = delete;
    virtual ~Verb() = default;

    /// Declares options and arguments; what they hold lives in the verb.
    virtual void declare(CLI::App& app) = 0;
    /// Sets what this verb has other defaults for among the options that every verb takes.
    virtual void adjust(Options& /*options*/) {}
    /// @throws Failure
    virtual ExitCode run(Session& session) = 0;
};

/// An entry of the verb table.
struct VerbEntry {
    const char* name;
    const char* summary;
    const char* examples; ///< one a line, without the leading blanks
    std::unique_ptr<Verb> (*make)();
    const char* details = ""; ///< what else one should know before, as sentences
};

} // namespace mesk::host
