#include "stand-ins/dispatcher/Sinks.h"

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <unistd.h>

namespace kivo::dispatcher {

namespace {

constexpr const char* pattern = "%Y-%m-%d %H:%M:%S.%e [%n] %^%v%$"; // coloured from %^ to %$

/// Several processes that rotate one file would take it away from one another.
std::string withProcessId(std::string path)
{
    constexpr std::string_view mark = "%p";
    const std::size_t at = path.rfind(mark);
    return at == std::string::npos ? path : path.replace(at, mark.size(), std::to_string(getpid()));
}

} // namespace

spdlog::sink_ptr makeStderrSink()
{
    // Set and not empty, as https://no-color.org has it.
    const char* const noColor = std::getenv("NO_COLOR");
    const bool isPlain = noColor != nullptr && *noColor != '\0';
    auto sink = std::make_shared<spdlog::sinks::stderr_color_sink_mt>(
        isPlain ? spdlog::color_mode::never : spdlog::color_mode::automatic);
    sink->set_pattern(pattern);
    return sink;
}

spdlog::sink_ptr makeFileSink(const SinkSetup& setup)
{
    const std::string path = withProcessId(setup.file);
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    // A device isn't to be renamed, and the opening of a pipe waits for its reader.
    if (type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found)
        throw spdlog::spdlog_ex(path + ": no regular file that can be written");
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_st>(path, std::size_t{setup.fileSizeBytes},
                                                                       std::size_t{setup.fileCount - 1});
    sink->set_pattern(pattern);
    return sink;
}

} // namespace kivo::dispatcher
