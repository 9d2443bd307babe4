#pragma once

#include "interface/KivoGbePhysicalNetworkInterface.h"
#include "plugin/LibraryInitController.h"
#include "support/platform/os/Thread.h"
#include "tests/stand-ins/EmulatedBoard.h"
#include "tests/support/logging/RecordingDispatcher.h"
#include "tests/support/os/TestClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <regex>
#include <string>
#include <vector>

namespace mesk::tests {

using Interface = kivo::core::mesk::KivoGbePhysicalNetworkInterface;
using Port = std::unique_ptr<Interface>;

/// Sets an environment variable for a scope; null takes it away.
struct ScopedVariable {
    ScopedVariable(const char* variable, const char* value)
        : name(variable)
    {
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    ~ScopedVariable() { unsetenv(name); }
    const char* name;
};

/// A board whose journal also holds the sleeps ("sleep 100") and the log lines (level and text), so that
/// a test compares the whole order of events: a text with a line for each.
class PortFixture : public testing::Test {
public:
    PortFixture()
    {
        TestClock::reset();
        TestEventLog::reset();
        TestClock::onSleep([this](std::uint32_t ms) { note("sleep " + std::to_string(ms)); });
        log.setLevel(2);
        log.onLine([this](const RecordedLine& line) {
            const std::string head =
                "thread-id=" + std::to_string(kivo::templates::platform::os::currentThreadId()) + "|";
            const bool good = line.logger == "kivo.core.mesk.KivoGbePhysicalNetworkInterface" &&
                              line.text.compare(0, head.size(), head) == 0;
            note(std::to_string(line.level) + " " + (good ? line.text.substr(head.size()) : "no head!"));
        });
    }
    ~PortFixture() override { TestClock::onSleep(nullptr); }

protected:
    void note(const std::string& text) { board.control().note(text.c_str()); }

    /// An interface that is called "p".
    static Port makePort(int portId, bool resetBoard = false, int boardId = 0)
    {
        auto port = std::make_unique<Interface>();
        port->injectDependency("id", std::string("p"));
        port->injectDependency("boardId", boardId);
        port->injectDependency("portId", portId);
        port->injectDependency("resetBoard", std::string(resetBoard ? "true" : "false"));
        return port;
    }
    static Port openPort(int portId, bool resetBoard = false)
    {
        auto port = makePort(portId, resetBoard);
        EXPECT_TRUE(port->open());
        return port;
    }
    void setFirmware(int versionMajor, int versionMinor)
    {
        board.control().setInfoInt(0, "firmware/major", versionMajor);
        board.control().setInfoInt(0, "firmware/minor", versionMinor);
    }

    /// What an action leaves in the journal: "X = 5" for a register that is written, "X ?" for one that
    /// is read, "find X" for a look-up, other calls without their library's prefix, lines without "PHY Id".
    template <typename Action>
    std::string journalOf(const Action& action)
    {
        board.clearJournal();
        action();
        static const std::pair<std::regex, const char*> forms[]{
            {std::regex("^KHalRegisterWrite\\((\\w+), (\\d+)\\)"), "$1 = $2"},
            {std::regex("^KHalRegisterRead\\((\\w+)\\)"), "$1 ?"},
            {std::regex("^DovGetRegisterByName\\((\\w+)\\)"), "find $1"},
            {std::regex("^(KHal|Dov)"), ""},
            {std::regex("^(\\d) PHY Id "), "$1 "}};
        std::string all;
        for (std::string entry : board.journal()) {
            for (const auto& [pattern, form] : forms) {
                entry = std::regex_replace(entry, pattern, form);
            }
            all += entry + "\n";
        }
        return all;
    }

    /// Frames and bytes sent, frames and bytes received, sizes of zero, bad ends, bad sizes, read errors.
    std::vector<unsigned> counters(Interface& port)
    {
        log.clear();
        port.finish();
        std::string text;
        for (const auto& line : log.texts(3)) {
            text += line;
        }
        std::vector<unsigned> numbers;
        const std::regex number("[0-9]+");
        for (std::sregex_iterator each(text.begin(), text.end(), number); numbers.size() < 8; ++each) {
            numbers.push_back(static_cast<unsigned>(std::stoul(each->str())));
        }
        return numbers;
    }

    struct LibraryLife {
        LibraryLife() { LibraryInitController::init(); }
        ~LibraryLife() { LibraryInitController::deinit(); }
    } life; // around all others: their logger goes with it
    EmulatedBoard board;
    RecordingDispatcher log;
};

} // namespace mesk::tests
