// The plugin as the framework sees it: loaded by name from its installation, with nothing linked but the
// framework itself and what its side of the event queue needs; with the real clock and the emulated board.

#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/PniActionCommandTimeout.h"
#include "stand-ins/board/BoardControl.h"
#include "tests/plugin/TemporaryRoot.h"

#include <kivo/core/FrameworkJournal.h>
#include <kivo/core/PluginDescriptor.h>
#include <kivo/core/mesk/PhysicalNetworkInterface.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <dlfcn.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

using kivo::core::clearFrameworkJournal;
using kivo::core::frameworkJournal;
using kivo::core::PluginDescriptor;
using kivo::core::PluginEntry;
using kivo::core::mesk::PhysicalNetworkInterface;
using kivo::core::mesk::PhysicalNetworkInterfaceEvent;
using kivo::core::mesk::PniActionCommandTimeout;
using mesk::tests::TemporaryRoot;
using testing::ElementsAre;
using testing::IsEmpty;

/// The plugin, loaded as the framework loads it.
class LoadedPlugin {
public:
    explicit LoadedPlugin(std::string path)
        : m_path(std::move(path))
        , m_handle(dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL))
    {
        if (m_handle == nullptr)
            throw std::runtime_error(dlerror());
    }
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;
    ~LoadedPlugin() // the library must be gone then
    {
        dlclose(m_handle);
        if (MESK_COVERAGE_BUILD) // without the map, shared names of the C++ library keep it
            return;
        EXPECT_EQ(dlopen(m_path.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
        const std::string shown = m_path.substr(m_path.rfind("./", 0) == 0 ? 2 : 0); // maps are absolute
        EXPECT_EQ(mesk::tests::bytesOf("/proc/self/maps").find(shown), std::string::npos);
    }

    template <typename T>
    T& symbol(const char* name) const
    {
        return *static_cast<T*>(dlsym(m_handle, name));
    }
    const PluginDescriptor& descriptor() const { return symbol<PluginDescriptor>("plugin_descriptor"); }
    void init() const { symbol<PluginEntry>("plugin_init")(); }
    void deinit() const { symbol<PluginEntry>("plugin_deinit")(); }

private:
    const std::string m_path;
    void* const m_handle;
};

using Interface = std::shared_ptr<PhysicalNetworkInterface>;

Interface makeInterface(const LoadedPlugin& plugin)
{
    return {static_cast<PhysicalNetworkInterface*>(plugin.descriptor().create()),
            [&plugin](PhysicalNetworkInterface* made) { plugin.descriptor().destroy(made); }};
}

/// What was written to the standard error stream, without the time before the logger's name.
std::vector<std::string> capturedLines()
{
    std::istringstream text(testing::internal::GetCapturedStderr());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(line.substr(std::min(line.find('['), line.size())));
    return lines;
}

/// The emulated board, which the plugin has loaded, too.
const KivoBoardControl& board()
{
    static void* const library = dlopen(MESK_BOARD_FILE, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(dlerror());
    const auto table = reinterpret_cast<KivoBoardControlFunction>(dlsym(library, "KivoBoardControlTable"));
    return *table(KIVO_BOARD_CONTROL_VERSION);
}

class PluginBinaryTest : public testing::Test {
protected:
    static void SetUpTestSuite() { setenv("KIVO_LOG", "guard.library=detail", 1); }
    PluginBinaryTest() { clearFrameworkJournal(); }

    static Interface makePort(const LoadedPlugin& plugin)
    {
        Interface port = makeInterface(plugin);
        port->postConstruct();
        port->injectDependency("id", std::string("board 0 port 0"));
        port->injectDependency("boardId", 0);
        port->injectDependency("portId", 0);
        port->injectDependency("resetBoard", std::string("false"));
        port->postInjection();
        return port;
    }
};

TEST_F(PluginBinaryTest, showsFourVariablesAndNothingElse)
{
    if (MESK_COVERAGE_BUILD)
        GTEST_SKIP() << "a coverage build has no export list";
    FILE* const pipe =
        popen("nm -D --defined-only --format=posix " MESK_PLUGIN_FILE " | cut -d' ' -f1,2", "r");
    std::string names;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;)
        names += static_cast<char>(c);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(names, "plugin_count D\nplugin_deinit D\nplugin_descriptor D\nplugin_init D\n");
}

TEST_F(PluginBinaryTest, describesItself)
{
    const LoadedPlugin plugin(MESK_PLUGIN_FILE);
    EXPECT_EQ(plugin.symbol<std::int64_t>("plugin_count"), 1);
    const PluginDescriptor& descriptor = plugin.descriptor();
    EXPECT_STREQ(descriptor.name, "mesk-phy-gige");
    EXPECT_STREQ(descriptor.title, "Mesk GigE Physical Network Interface");
    EXPECT_STREQ(descriptor.vendor, "Kivo Vision GmbH");
    EXPECT_STREQ(descriptor.date, "26.08.2010");
    EXPECT_EQ(descriptor.firstNumber, 1);
    EXPECT_EQ(descriptor.secondNumber, 0x1117A);
    EXPECT_THAT(descriptor.reserved, testing::Each(0));
    descriptor.destroy(nullptr);
    EXPECT_THAT(frameworkJournal(), IsEmpty()) << "loading alone does nothing";
}

TEST_F(PluginBinaryTest, entriesBringTheFrameworkUpAndDownAndTellTheirUses)
{
    const std::string head = "[guard.library] detail: thread-id=" + std::to_string(syscall(SYS_gettid)) + '|';
    const auto line = [&head](const char* what, int useCount) {
        return head + what + ": KivoGbePhysicalNetworkInterface (useCount: " + std::to_string(useCount) + ')';
    };
    const LoadedPlugin plugin(MESK_PLUGIN_FILE);
    for (int life = 0; life < 2; ++life) {
        clearFrameworkJournal();
        testing::internal::CaptureStderr();
        plugin.init();
        plugin.init();
        plugin.deinit();
        EXPECT_THAT(frameworkJournal(),
                    ElementsAre("KivoCoreInit", "KivoMeskInit", "KivoCoreInit", "KivoMeskInit"));
        clearFrameworkJournal();
        plugin.deinit();
        EXPECT_THAT(frameworkJournal(),
                    ElementsAre("KivoMeskDeinit", "KivoCoreDeinit", "KivoMeskDeinit", "KivoCoreDeinit"));
        EXPECT_THAT(capturedLines(), ElementsAre(line("PLUGIN INIT", 1), line("PLUGIN INIT", 2),
                                                 line("PLUGIN DEINIT", 2), line("PLUGIN DEINIT", 1)));
    }
}

TEST_F(PluginBinaryTest, aPortLivesAsTheFrameworkWantsIt)
{
    const LoadedPlugin plugin(MESK_PLUGIN_FILE);
    for (std::uint64_t life = 1; life <= 2; ++life) {
        plugin.init();
        {
            const Interface port = makePort(plugin);
            EXPECT_EQ(port->id(), "board 0 port 0");
            board().plug(0, 0, "none", nullptr, 0);
            ASSERT_TRUE(port->open());
            const auto events = port->eventQueue();
            events->enabled = true;
            port->startWorkers();
            bool ok = true;
            EXPECT_EQ(port->receiveFrame(&ok), nullptr) << "nothing is plugged to the port";
            EXPECT_FALSE(ok);
            std::vector<std::uint32_t> words(1 + 60 / 2); // a frame of zeros
            words.front() = 60;
            words.back() = 0x10000; // end of transmission
            board().injectWords(0, 0, words.data(), static_cast<std::uint32_t>(words.size()));
            port->sendFrame(port->receiveFrame(&ok));
            EXPECT_TRUE(ok);
            KivoBoardPortCounters counters{};
            board().counters(0, 0, &counters);
            EXPECT_EQ(counters.framesSent, life);
            EXPECT_EQ(counters.bytesSent, 60 * life);

            board().actionTimeout(0, 0, 7);
            boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
            for (int tries = 0; tries < 5000 && !events->queue->tryPop(event); ++tries)
                usleep(1000);
            ASSERT_NE(event, nullptr);
            EXPECT_EQ(dynamic_cast<PniActionCommandTimeout&>(*event).count, 7);
            EXPECT_TRUE(port->reinitialize(0));
            EXPECT_TRUE(port->reinitialize(1));
            port->requestStop();
            port->finish();
        }
        plugin.deinit();
    }
}

TEST_F(PluginBinaryTest, loadedByARelativePathItFindsItsRootFromAnywhere)
{
    const std::filesystem::path file = MESK_PLUGIN_FILE;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(file.parent_path());
    const LoadedPlugin plugin("./" + file.filename().string());
    std::filesystem::current_path(before);
    plugin.init();
    EXPECT_TRUE(makePort(plugin)->open());
    plugin.deinit();
}

TEST_F(PluginBinaryTest, aPropertyOfTheWrongTypeIsRefusedWithAnExceptionThatPassesTheLibrary)
{
    const LoadedPlugin plugin(MESK_PLUGIN_FILE);
    plugin.init();
    {
        const Interface port = makeInterface(plugin);
        for (const boost::any& value : {boost::any(0U), boost::any(std::int64_t{0}), boost::any()}) {
            std::string text = "none";
            try {
                port->injectDependency("boardId", value);
            } catch (const std::runtime_error& exception) {
                text = exception.what();
            }
            EXPECT_EQ(text, "boost::bad_any_cast: failed conversion using boost::any_cast");
        }
    }
    plugin.deinit();
}

TEST_F(PluginBinaryTest, withoutDispatcherAndBoardItIsSilentAndOpensNothing)
{
    const TemporaryRoot root;
    const std::string copied = root.copy(MESK_PLUGIN_FILE, "bin/plugin.so").string();
    const LoadedPlugin plugin(copied);
    testing::internal::CaptureStderr();
    plugin.init();
    {
        const Interface port = makePort(plugin);
        EXPECT_FALSE(port->open());
        port->requestStop();
        port->finish();
    }
    plugin.deinit();
    EXPECT_THAT(capturedLines(), IsEmpty());
    EXPECT_THAT(frameworkJournal(),
                ElementsAre("KivoCoreInit", "KivoMeskInit", "KivoMeskDeinit", "KivoCoreDeinit"));
}

} // namespace
