#include "host/CommandLine.h"

#include "host/ValueWords.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace mesk::host {

namespace {

constexpr const char* exitCodes =
    "Exit codes: 0 done, 1 nothing found, nothing came, refused, lost, different or\n"
    "            damaged, 2 usage, 3 board or library missing, 130 interrupted";
constexpr const char* programExamples = "mesk-phy tour\n"
                                        "mesk-phy read 0x938 --link camera\n"
                                        "mesk-phy relay samples/camera-session.pcap --to 1\n"
                                        "mesk-phy receive --link file:session.pcap, --json\n";

/// Who opens a help looks for something to copy, so examples come first.
class ExamplesFirst : public CLI::Formatter {
public:
    ExamplesFirst(const std::string& examples, std::string details)
        : m_details(std::move(details))
    {
        label("SUBCOMMAND", "VERB");
        std::size_t start = 0;
        for (std::size_t end = examples.find('\n'); end != std::string::npos;
             end = examples.find('\n', start)) {
            m_head += "  " + examples.substr(start, end - start) + "\n";
            start = end + 1;
        }
    }
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override
    {
        const std::string shown =
            app->get_parent() != nullptr ? app->get_parent()->get_name() + " " + name : name;
        const std::string rest = CLI::Formatter::make_help(app, shown, mode);
        return mode == CLI::AppFormatMode::Sub ? rest : "Examples:\n" + m_head + "\n" + rest;
    }

    std::string make_description(const CLI::App* app) const override
    {
        const std::string summary = CLI::Formatter::make_description(app);
        return m_details.empty() ? summary : summary + "\n" + m_details + "\n";
    }

private:
    std::string m_head;
    std::string m_details;
};

/// Reads a whole text as a decimal number of at most `limit`.
std::optional<unsigned> parseDecimal(const std::string& text, unsigned limit)
{
    unsigned value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value > limit) {
        return std::nullopt;
    }
    return value;
}

void checkLogLevel(const std::string& text)
{
    constexpr unsigned levelMax = 7;
    if (std::find(logLevelWords.begin(), logLevelWords.end(), text) == logLevelWords.end() &&
        !parseDecimal(text, levelMax)) {
        throw CLI::ValidationError(
            "--log", "detail, information, warning, error, off or a number up to 7, not '" + text + "'");
    }
}

void declareOptions(CLI::App& app, Options& options)
{
    const auto index = CLI::Range(0, std::numeric_limits<int>::max()).description("");
    app.add_option("--board", options.board, "board (0)")->check(index)->type_name("N");
    app.add_option("--port", options.port, "port of the board (0)")->check(index)->type_name("N");
    app.add_option("--link", options.link,
                   fmt::format("plug the port for this run (see docs/emulated-board.md):\n{}",
                               fmt::join(linkKinds, ", ")))
        ->type_name("LINK");
    app.add_option("--setup", options.setupFile,
                   "set-up of the emulated board, an INI file (see docs/emulated-board.md)")
        ->check(CLI::ExistingFile.description(""))
        ->type_name("FILE");
    app.add_option("--root", options.rootFolder, "installation root (the one that this program lies in)")
        ->check(CLI::ExistingDirectory.description(""))
        ->type_name("DIR");
    app.add_flag("--reset", options.reset, "reset the board's GigE hardware at open (about 5 s)");
    app.add_option_function<std::string>(
           "--mac",
           [&options](const std::string& text) {
               const auto mac = parseStationAddress(text);
               if (!mac) {
                   throw CLI::ValidationError(
                       "--mac", "'" + text + "' is no address of one station like 02:4b:00:00:00:01");
               }
               options.mac = *mac;
           },
           "MAC address of this side (02:4b:00:00:00:01)")
        ->type_name("M");
    app.add_option_function<std::string>(
           "--ip",
           [&options](const std::string& text) {
               const auto address = parseNetAddress(text);
               if (!address) {
                   throw CLI::ValidationError("--ip", "'" + text +
                                                          "' is no address with prefix like 192.168.77.1/24");
               }
               options.ip = *address;
           },
           "IP address of this side (192.168.77.1/24)")
        ->type_name("A.B.C.D/P");
    app.add_option("--write", options.writeFile, "write all frames of the run, both ways, to a capture file")
        ->type_name("FILE.pcap");
    app.add_option("--log", options.logLevel,
                   fmt::format("log level: {} or a number", fmt::join(logLevelWords, ", ")))
        ->each(checkLogLevel)
        ->type_name("LEVEL");
    app.add_flag("--json", options.json, "print JSON");
    app.add_flag("--quiet", options.quiet, "no words about the work on stderr");
}

std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

DeclaredVerbs declareProgram(CLI::App& app, Options& options)
{
    app.name("mesk-phy");
    app.description("Sends and receives raw Ethernet frames on the GigE ports of a frame-grabber board.");
    app.set_version_flag("--version", "mesk-phy " MESK_VERSION, "print the version");
    app.set_help_flag("-h,--help", "print this help");
    app.formatter(std::make_shared<ExamplesFirst>(programExamples, ""));
    app.footer(exitCodes);
    app.fallthrough();
    app.require_subcommand(0, 1);
    declareOptions(app, options);

    DeclaredVerbs verbs;
    for (const VerbEntry& entry : verbTable()) {
        CLI::App* sub = app.add_subcommand(entry.name, entry.summary);
        sub->group("Verbs");
        sub->formatter(std::make_shared<ExamplesFirst>(entry.examples, entry.details));
        sub->footer(fmt::format(
            "'mesk-phy --help' lists the options that every verb takes, before or after it.\n\n{}",
            exitCodes));
        auto verb = entry.make();
        verb->declare(*sub);
        verbs.emplace(sub, std::move(verb));
    }
    return verbs;
}

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    CommandLine line;
    CLI::App app;
    DeclaredVerbs verbs = declareProgram(app, line.options);
    const auto chosen = [&app]() -> CLI::App* {
        const auto subs = app.get_subcommands();
        return subs.empty() ? nullptr : subs.front();
    };

    try {
        auto reversed = std::vector<std::string>(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
        if (chosen() == nullptr) {
            throw CLI::RequiredError("A verb");
        }
        line.verb = std::move(verbs.at(chosen()));
        line.verb->adjust(line.options);
    } catch (const CLI::CallForHelp&) {
        line.output = (chosen() != nullptr ? chosen() : &app)->help();
    } catch (const CLI::CallForVersion& version) {
        line.output = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        line.exitCode = ExitCode::Usage;
        line.error = fmt::format("{} (see 'mesk-phy {}--help')", oneLine(error.what()),
                                 chosen() != nullptr ? chosen()->get_name() + " " : "");
    }
    return line;
}

std::optional<IpAddress> parseIpAddress(const std::string& text)
{
    quint32 address = 0;
    std::size_t start = 0;
    for (const char separator : {'.', '.', '.', '\0'}) {
        const std::size_t end = separator != '\0' ? text.find(separator, start) : text.size();
        if (end == std::string::npos) {
            return std::nullopt;
        }
        const auto part = parseDecimal(text.substr(start, end - start), 255);
        if (!part) {
            return std::nullopt;
        }
        address = address << 8 | *part;
        start = end + 1;
    }
    return IpAddress(address);
}

std::optional<stack::NetAddress> parseNetAddress(const std::string& text)
{
    const std::size_t slash = text.find('/');
    const auto address = parseIpAddress(text.substr(0, slash));
    const auto prefix = slash != std::string::npos ? parseDecimal(text.substr(slash + 1), 32) : std::nullopt;
    if (!address || !prefix || *prefix == 0) {
        return std::nullopt;
    }
    return stack::NetAddress{*address, *prefix};
}

std::optional<MacAddress> parseStationAddress(const std::string& text)
{
    constexpr std::size_t textLength = 17; // six characters would be taken as the bytes themselves
    MacAddress mac;
    if (text.size() != textLength || !mac.parse(text) || (mac.rawBytes().at(0) & 1) != 0) {
        return std::nullopt;
    }
    return mac;
}

double parseSeconds(const std::string& option, const std::string& text)
{
    double seconds = 0;
    constexpr double secondsMax = 1e9;
    if (!CLI::detail::lexical_cast(text, seconds) || !std::isfinite(seconds) || seconds <= 0 ||
        seconds > secondsMax) {
        throw CLI::ValidationError(option, "'" + text + "' is no number of seconds above 0");
    }
    return seconds;
}

} // namespace mesk::host
