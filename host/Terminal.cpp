#include "host/Terminal.h"

#include "support/platform/os/Environment.h"

#include <sys/stat.h>
#include <unistd.h>

namespace mesk::host {

using kivo::templates::platform::os::environmentVariable;

namespace {

bool isTerminal(int descriptor)
{
    return isatty(descriptor) == 1 && environmentVariable("TERM").value_or("dumb") != "dumb";
}

} // namespace

bool standardOutputIsTerminal()
{
    return isTerminal(STDOUT_FILENO);
}

bool standardErrorIsTerminal()
{
    return isTerminal(STDERR_FILENO);
}

bool standardOutputIsFile()
{
    struct stat output = {};
    struct stat nowhere = {};
    return fstat(STDOUT_FILENO, &output) == 0 &&
           (S_ISREG(output.st_mode) ||
            (stat("/dev/null", &nowhere) == 0 && output.st_rdev == nowhere.st_rdev));
}

bool colourWanted()
{
    return standardOutputIsTerminal() && environmentVariable("NO_COLOR").value_or("").empty();
}

} // namespace mesk::host
