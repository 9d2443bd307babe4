#pragma once

#include "host/Table.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mesk::host {

/// Results on standard output, words about the work on standard error. One thread at a time.
class Output {
public:
    Output(bool json, bool quiet);

    /// Words about the work; nothing under --quiet.
    void words(const std::string& text);
    bool quiet() const { return m_quiet; }

    /// The whole result of a verb: under --json the object, else a table for each array of it that is
    /// named.
    void result(const Json& object, const std::vector<std::string>& tables);

    /// Lines under a title, for people alone: nothing under --json.
    void section(const std::string& title, const std::vector<std::string>& lines);

    /// One record of a stream: a line at once, also into a pipe.
    /// @param widths of the columns, used at the first record.
    /// @returns false once nobody takes the output any more.
    bool record(const Json& record, const std::vector<std::size_t>& widths);

    /// Results in a form of the caller's own, whole lines.
    /// @param flushed they get out at once.
    /// @returns false once nobody takes the output any more.
    bool write(std::string_view lines, bool flushed);
    /// A line that stands out from those below it.
    void printHeading(const std::string& text);

    /// @returns whether everything got out; a reader that has closed its end counts as content.
    bool finish();

private:
    void printLine(const std::string& line);
    void separate();
    void flush();

    bool m_json;
    bool m_quiet;
    bool m_colour;
    std::optional<Table> m_stream;
    bool m_printed = false;
    bool m_readerGone = false;
    bool m_failed = false;
};

} // namespace mesk::host
