#include "host/Session.h"

#include "host/BoardAccess.h"
#include "host/CaptureWriter.h"
#include "host/Failure.h"
#include "host/LogObserver.h"
#include "host/PluginHost.h"
#include "host/Port.h"
#include "host/ResetProgress.h"
#include "support/platform/os/Environment.h"
#include "support/platform/os/Module.h"

#include <QByteArray>

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <set>
#include <vector>

namespace mesk::host {

namespace os = kivo::templates::platform::os;

namespace {

constexpr std::size_t pathMaxBytes = 4096;

/// The parent of the folder in which this program's file really lies.
std::string ownRoot()
{
    static const char here = 0;
    std::array<char, pathMaxBytes> path{};
    const std::size_t length = os::modulePathOf(&here, path.data(), path.size());
    if (length == 0 || length >= path.size()) {
        throw Failure(ExitCode::Missing,
                      "the program's own folder can't be found, --root says where the libraries are");
    }
    return std::filesystem::path(path.data()).parent_path().parent_path().string();
}

void setEnvironment(const char* name, const std::string& value)
{
    qputenv(name, QByteArray::fromStdString(value));
}

/// The plugin looks for the user's settings below APPDATA alone.
void provideUserFolder()
{
    if (os::environmentVariable("APPDATA")) {
        return;
    }
    if (const auto config = os::environmentVariable("XDG_CONFIG_HOME"); config && !config->empty()) {
        setEnvironment("APPDATA", *config);
    } else if (const auto home = os::environmentVariable("HOME")) {
        setEnvironment("APPDATA", *home + "/.config");
    }
}

} // namespace

struct Session::D {
    explicit D(const Options& given)
        : options(given)
        , output(given.json, given.quiet)
    {
    }
    ~D() { release(); }

    /// What the plugin made goes first, then what is plugged (a recording is complete behind that), then
    /// the plugin, and the board library last.
    void release()
    {
        ports.clear();
        for (const int port : plugged) {
            board->unplug(options.board, port);
        }
        plugged.clear();
        plugin.reset();
    }
    void openHardware(Port& port)
    {
        const bool resets = options.reset && ports.size() == 1; // the plugin resets a board once
        std::unique_ptr<ResetProgress> progress;
        if (resets) {
            progress = std::make_unique<ResetProgress>(
                *board, output, fmt::format("Resetting the GigE hardware of board {}", options.board),
                pulseSteps + physPerBoard * stepsPerPhy);
        }
        if (!port.open()) {
            throw Failure(ExitCode::Missing,
                          fmt::format("board {} does not open (--log error tells why)", options.board));
        }
    }

    const Options options;
    Output output;
    std::string binFolder;
    std::unique_ptr<BoardAccess> board;
    std::unique_ptr<CaptureWriter> writer;
    std::unique_ptr<PluginHost> plugin;
    std::vector<std::unique_ptr<Port>> ports;
    std::set<int> plugged;
};

Session::Session(const Options& options)
    : d(std::make_unique<D>(options))
{
    provideUserFolder();
    if (options.setupFile) {
        setEnvironment("KIVO_BOARD_SETUP", *options.setupFile);
    }
    if (options.logLevel) {
        setEnvironment("KIVO_LOG", "*=" + *options.logLevel);
    }
    const std::string root =
        options.rootFolder ? std::filesystem::canonical(*options.rootFolder).string() : ownRoot();
    d->binFolder = root + os::pathSeparator + "bin";
}

Session::~Session() = default;

const Options& Session::options() const
{
    return d->options;
}

Output& Session::output()
{
    return d->output;
}

const BoardAccess& Session::board()
{
    if (!d->board) {
        d->board = std::make_unique<BoardAccess>(d->binFolder);
    }
    return *d->board;
}

Port& Session::openPort(int port)
{
    board().requirePort(d->options.board, port);
    if (d->options.writeFile && !d->writer) {
        d->writer = std::make_unique<CaptureWriter>(*d->options.writeFile);
    }
    if (!d->plugin) {
        d->plugin = std::make_unique<PluginHost>(d->binFolder);
    }
    Port& opened =
        *d->ports.emplace_back(std::make_unique<Port>(*d->plugin, d->options.board, port, d->options.reset));
    d->openHardware(opened);
    d->plugged.insert(port); // also what the set-up has plugged ends with the run
    if (port == d->options.port) {
        opened.record(d->writer.get());
        if (d->options.link) {
            plug(port, *d->options.link);
        }
    }
    return opened;
}

void Session::plug(int port, const std::string& link)
{
    board().plug(d->options.board, port, link);
    d->plugged.insert(port);
}

const std::vector<std::unique_ptr<Port>>& Session::ports() const
{
    return d->ports;
}

std::unique_ptr<LogObserver> Session::observeInterfaces(std::uint32_t level) const
{
    return std::make_unique<LogObserver>(d->binFolder, "kivo.core.mesk.KivoGbePhysicalNetworkInterface",
                                         level);
}

void Session::close()
{
    d->release();
    if (d->writer) {
        d->writer->close();
    }
}

} // namespace mesk::host
