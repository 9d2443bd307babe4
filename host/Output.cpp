#include "host/Output.h"

#include "host/Terminal.h"

#include <cerrno>
#include <cstdio>

namespace mesk::host {

namespace {

constexpr int jsonIndent = 2;

/// Texts from boards and files may be no UTF-8.
std::string dump(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

} // namespace

Output::Output(bool json, bool quiet)
    : m_json(json)
    , m_quiet(quiet)
    , m_colour(!json && colourWanted())
{
}

void Output::words(const std::string& text)
{
    if (!m_quiet) {
        std::fprintf(stderr, "%s\n", printable(text).c_str());
    }
}

void Output::result(const Json& object, const std::vector<std::string>& tables)
{
    if (m_json) {
        printLine(dump(object, jsonIndent));
        flush();
        return;
    }
    for (const std::string& name : tables) {
        const Json& records = object.at(name);
        if (records.empty()) {
            continue;
        }
        separate();
        Table table(records.front());
        for (const Json& each : records) {
            table.fit(each);
        }
        printHeading(table.heading());
        for (const Json& each : records) {
            printLine(table.row(each));
        }
    }
    flush();
}

void Output::section(const std::string& title, const std::vector<std::string>& lines)
{
    if (m_json) {
        return;
    }
    separate();
    printHeading(title);
    for (const std::string& line : lines) {
        printLine(printable(line));
    }
    flush();
}

bool Output::record(const Json& record, const std::vector<std::size_t>& widths)
{
    if (m_json) {
        printLine(dump(record, -1));
    } else {
        if (!m_stream) {
            m_stream.emplace(record, widths);
            printHeading(m_stream->heading());
        }
        printLine(m_stream->row(record));
    }
    flush();
    return !m_readerGone && !m_failed;
}

bool Output::write(std::string_view lines, bool flushed)
{
    std::fwrite(lines.data(), 1, lines.size(), stdout);
    m_printed = true;
    if (flushed || std::ferror(stdout) != 0) {
        flush();
    }
    return !m_readerGone && !m_failed;
}

bool Output::finish()
{
    flush();
    return !m_failed;
}

void Output::printLine(const std::string& line)
{
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    m_printed = true;
}

/// An empty line before what isn't the first.
void Output::separate()
{
    if (m_printed) {
        printLine("");
    }
}

void Output::printHeading(const std::string& text)
{
    printLine(m_colour ? "\033[1m" + text + "\033[0m" : text);
    flush();
}

void Output::flush()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        (errno == EPIPE ? m_readerGone : m_failed) = true;
        std::clearerr(stdout);
    }
}

} // namespace mesk::host
