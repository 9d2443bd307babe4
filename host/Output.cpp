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
        if (name != tables.front()) {
            printLine("");
        }
        Table table(records.front());
        for (const Json& each : records) {
            table.fit(each);
        }
        printHeading(table);
        for (const Json& each : records) {
            printLine(table.row(each));
        }
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
            printHeading(*m_stream);
        }
        printLine(m_stream->row(record));
    }
    flush();
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
}

void Output::printHeading(const Table& table)
{
    printLine(m_colour ? "\033[1m" + table.heading() + "\033[0m" : table.heading());
}

void Output::flush()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        (errno == EPIPE ? m_readerGone : m_failed) = true;
        std::clearerr(stdout);
    }
}

} // namespace mesk::host
