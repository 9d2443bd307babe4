#pragma once

#include "host/Options.h"
#include "host/Verb.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mesk::host {

/// What a command line asks for: a verb to run, or a text and an exit code.
struct CommandLine {
    Options options;
    std::unique_ptr<Verb> verb; ///< null where `exitCode` says all
    ExitCode exitCode = ExitCode::Done;
    std::string output; ///< for standard output: help, version
    std::string error;  ///< for standard error, without the program's name
};

using DeclaredVerbs = std::map<const CLI::App*, std::unique_ptr<Verb>>;

/// Declares the options that every verb takes, and each verb as a subcommand. What `app` parses goes into
/// `options` and the verbs, so both must outlive that.
DeclaredVerbs declareProgram(CLI::App& app, Options& options);

/// @param arguments without the program's own name.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// "A.B.C.D" with decimal numbers.
std::optional<IpAddress> parseIpAddress(const std::string& text);
/// "A.B.C.D/P" with a prefix of 1 to 32 bits.
std::optional<stack::NetAddress> parseNetAddress(const std::string& text);
/// Six pairs of hexadecimal digits with ":" between them, of one station (no group address).
std::optional<MacAddress> parseStationAddress(const std::string& text);
/// A count of seconds above 0. Throws CLI::ValidationError with the option's name.
double parseSeconds(const std::string& option, const std::string& text);

} // namespace mesk::host
