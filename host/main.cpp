#include "host/CommandLine.h"
#include "host/Interrupt.h"
#include "host/Session.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

using namespace mesk::host;

namespace {

void printError(const std::string& text)
{
    std::fprintf(stderr, "mesk-phy: %s\n", text.c_str());
}

ExitCode runVerb(CommandLine& line)
{
    try {
        Session session(line.options);
        ExitCode code = line.verb->run(session);
        session.close();
        if (!session.output().finish()) {
            printError("the results could not be written");
            code = ExitCode::Nothing;
        }
        return interruptRequested() ? ExitCode::Interrupted : code;
    } catch (const Failure& failure) {
        printError(failure.what());
        return failure.code();
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        CommandLine line = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
        std::fputs(line.output.c_str(), stdout);
        if (!line.verb) {
            if (!line.error.empty()) {
                printError(line.error);
            }
            return static_cast<int>(line.exitCode);
        }
        catchInterrupts();
        return static_cast<int>(runVerb(line));
    } catch (const std::exception& error) {
        printError(error.what());
        return static_cast<int>(ExitCode::Nothing);
    }
}
