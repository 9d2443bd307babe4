#include "host/Table.h"

#include <QString>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace mesk::host {

namespace {

std::string headingOf(const std::string& key)
{
    std::string heading;
    for (const char letter : key) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isupper(byte) != 0) {
            heading += ' ';
        }
        heading += static_cast<char>(std::toupper(byte));
    }
    return heading;
}

std::string cellOf(const Json& value)
{
    if (value.is_string()) {
        return printable(value.get<std::string>());
    }
    if (value.is_array()) {
        std::string joined;
        for (const Json& each : value) {
            joined += (joined.empty() ? "" : ", ") + cellOf(each);
        }
        return joined;
    }
    if (value.is_number_float()) {
        return fmt::format("{}", value.get<double>()); // dump() doesn't always find the fewest digits
    }
    return value.dump();
}

} // namespace

Table::Table(const Json& example, std::vector<std::size_t> widths)
    : m_widths(std::move(widths))
{
    m_widths.resize(example.size());
    for (const auto& item : example.items()) {
        m_headings.push_back(headingOf(item.key()));
        m_right.push_back(item.value().is_number());
        std::size_t& width = m_widths[m_headings.size() - 1];
        width = std::max(width, m_headings.back().size());
    }
}

void Table::fit(const Json& record)
{
    std::size_t column = 0;
    for (const Json& value : record) {
        m_widths[column] = std::max(m_widths[column], cellOf(value).size());
        ++column;
    }
}

std::string Table::heading() const
{
    return line(m_headings);
}

std::string Table::row(const Json& record) const
{
    std::vector<std::string> cells;
    for (const Json& value : record) {
        cells.push_back(cellOf(value));
    }
    return line(cells);
}

std::string Table::line(const std::vector<std::string>& cells) const
{
    std::string text;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        const std::size_t cellSize = cells[column].size();
        const std::string fill(cellSize < m_widths[column] ? m_widths[column] - cellSize : 0, ' ');
        text += (column == 0 ? "" : "  ") + (m_right[column] ? fill + cells[column] : cells[column] + fill);
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string printable(const std::string& text)
{
    if (std::all_of(text.begin(), text.end(), [](char each) { return each >= ' ' && each <= '~'; })) {
        return text;
    }
    QString letters = QString::fromStdString(text); // with a replacement for what is no UTF-8
    std::replace_if(
        letters.begin(), letters.end(),
        [](QChar each) {
            return each.category() == QChar::Other_Control || each == QChar::ReplacementCharacter;
        },
        QLatin1Char('?'));
    return letters.toStdString();
}

} // namespace mesk::host
