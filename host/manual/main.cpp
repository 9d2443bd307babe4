#include "host/manual/Completion.h"
#include "host/manual/ManPage.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>

// Fills the manual page and the completion scripts of mesk-phy, so that they say what its parser takes.

using namespace mesk::host;

namespace {

using Parts = std::map<std::string, std::string>;

Parts makeParts()
{
    const ProgramText program = readProgramText();
    return {{"version", program.version},         {"exit-codes", manText(program.exitCodes)},
            {"man-options", manOptions(program)}, {"man-verbs", manVerbs(program)},
            {"verb-words", verbWords(program)},   {"link-words", linkWords()},
            {"level-words", levelWords()},        {"bash-options", bashOptions(program)},
            {"bash-values", bashValues(program)}, {"zsh-options", zshOptions(program)},
            {"zsh-verbs", zshVerbs(program)},     {"zsh-arguments", zshArguments(program)}};
}

/// Puts a part where its name stands as @{name}.
std::string filled(std::string line, const Parts& parts)
{
    for (std::size_t start = line.find("@{"); start != std::string::npos; start = line.find("@{", start)) {
        const std::size_t end = line.find('}', start);
        const std::size_t name = start + 2;
        if (end == std::string::npos) {
            throw std::runtime_error("no end of a name in: " + line);
        }
        const std::string& part = parts.at(line.substr(name, end - name));
        line.replace(start, end + 1 - start, part);
        start += part.size();
    }
    return line;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::ifstream stream(argc == 2 ? argv[1] : "");
        if (!stream) {
            throw std::runtime_error("usage: mesk-phy-manual TEMPLATE");
        }
        const Parts parts = makeParts();
        for (std::string line; std::getline(stream, line);) {
            const std::string text = filled(line, parts);
            std::cout << text << (!text.empty() && text.back() == '\n' ? "" : "\n");
        }
        return std::cout.flush() ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mesk-phy-manual: %s\n", error.what());
        return 1;
    }
}
