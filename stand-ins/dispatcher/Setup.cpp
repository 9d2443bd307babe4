#include "stand-ins/dispatcher/Setup.h"

#include "stand-ins/dispatcher/Parsing.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <tuple>

// The file is read by hand, as the order of its rules counts and each bad line is to be told by number:
// the INI readers at hand sort the keys, or give up at the first bad line.

namespace kivo::dispatcher {

namespace {

constexpr std::uintmax_t setupSizeMaxBytes = 1U << 20;
constexpr std::size_t complaintsMax = 20;
constexpr std::size_t shownMaxBytes = 80;
constexpr std::uint64_t logFileSizeMinBytes = 1024;
constexpr std::uint64_t logFileSizeMaxBytes = std::uint64_t{1} << 40;
constexpr std::uint32_t logFileCountMax = 1000;

template <typename Number>
bool takeNumber(std::string_view text, Number least, Number most, Number& into)
{
    const auto number = parseNumber<Number>(text);
    if (!number || *number < least || *number > most)
        return false;
    into = *number;
    return true;
}

bool takeSwitch(std::string_view text, bool& into)
{
    if (text != "true" && text != "false")
        return false;
    into = text == "true";
    return true;
}

/// What may go to a terminal of a line that nobody vouches for.
std::string shown(std::string_view line)
{
    std::string text(line.substr(0, shownMaxBytes));
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return line.size() > shownMaxBytes ? text + "..." : text;
}

class SetupReader {
public:
    SetupReader(const std::filesystem::path& path, Setup& setup)
        : m_path(path)
        , m_setup(setup)
    {
    }

    void takeLine(std::string_view line)
    {
        ++m_number;
        const bool isComment = line.empty() || line.front() == ';' || line.front() == '#';
        if (!isComment && !(line.front() == '[' ? takeSection(line) : takeKey(line)))
            complain(line);
    }

private:
    enum class Section { none, unknown, levels, sinks };

    bool takeSection(std::string_view line)
    {
        m_section = Section::unknown;
        if (line == "[levels]")
            m_section = Section::levels;
        else if (line == "[sinks]")
            m_section = Section::sinks;
        return m_section != Section::unknown;
    }

    bool takeKey(std::string_view line)
    {
        if (m_section == Section::unknown) // told at its head
            return true;
        const std::size_t sign = line.find('=');
        if (m_section == Section::none || sign == std::string_view::npos)
            return false;
        const std::string_view key = trimmed(line.substr(0, sign));
        const std::string_view value = trimmed(line.substr(sign + 1));
        return m_section == Section::levels ? m_setup.levels.add(key, value) : takeSink(key, value);
    }

    bool takeSink(std::string_view key, std::string_view value)
    {
        SinkSetup& sinks = m_setup.sinks;
        if (key == "stderr")
            return takeSwitch(value, sinks.toStderr);
        if (key == "fileSizeBytes")
            return takeNumber(value, logFileSizeMinBytes, logFileSizeMaxBytes, sinks.fileSizeBytes);
        if (key == "fileCount")
            return takeNumber(value, 1U, logFileCountMax, sinks.fileCount);
        if (key != "file")
            return false;
        // An absolute one replaces the folder.
        sinks.file = value.empty() ? std::string() : (m_path.parent_path() / value).string();
        return true;
    }

    void complain(std::string_view line)
    {
        std::vector<std::string>& complaints = m_setup.complaints;
        if (complaints.size() < complaintsMax)
            complaints.push_back(m_path.string() + ":" + std::to_string(m_number) + ": '" + shown(line) +
                                 "' is not understood, ignored");
        else if (complaints.size() == complaintsMax)
            complaints.push_back(m_path.string() + ": more lines are not understood, ignored");
    }

    const std::filesystem::path& m_path;
    Setup& m_setup;
    Section m_section = Section::none;
    unsigned m_number = 0;
};

} // namespace

bool SinkSetup::operator==(const SinkSetup& other) const
{
    return std::tie(toStderr, file, fileSizeBytes, fileCount) ==
           std::tie(other.toStderr, other.file, other.fileSizeBytes, other.fileCount);
}

Setup readSetup(const std::string& path)
{
    Setup setup;
    const std::filesystem::path file(path);
    std::error_code error;
    const auto type = std::filesystem::status(file, error).type();
    if (type == std::filesystem::file_type::not_found)
        return setup;
    // Looked at before it is opened, which would wait for the other end of a pipe.
    const bool isFile = type == std::filesystem::file_type::regular &&
                        std::filesystem::file_size(file, error) <= setupSizeMaxBytes;
    std::ifstream stream;
    if (isFile)
        stream.open(file);
    if (!stream.is_open()) {
        setup.complaints.push_back(path + ": no readable file of at most 1 MiB, ignored");
        return setup;
    }
    SetupReader reader(file, setup);
    for (std::string line; std::getline(stream, line);)
        reader.takeLine(trimmed(line));
    return setup;
}

} // namespace kivo::dispatcher
