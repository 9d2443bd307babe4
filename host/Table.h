#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace mesk::host {

using Json = nlohmann::ordered_json;

/// Lays records (objects with the same keys in the same order) out in columns. The headings are the
/// records' own keys, so table and JSON can't differ in their names: "framesSent" stands above its
/// column as "FRAMES SENT".
class Table {
public:
    /// @param example a record that shows keys and types: numbers stand at the right of their column.
    /// @param widths least width of each column; a missing one is 0.
    explicit Table(const Json& example, std::vector<std::size_t> widths = {});

    /// Widens the columns to what a record needs.
    void fit(const Json& record);
    std::string heading() const;
    std::string row(const Json& record) const;

private:
    std::string line(const std::vector<std::string>& cells) const;

    std::vector<std::string> m_headings;
    std::vector<bool> m_right;
    std::vector<std::size_t> m_widths;
};

/// A text as it can be put on a terminal: control characters, C1 (0x80 to 0x9f)
/// among them, and what is no UTF-8 become "?".
std::string printable(const std::string& text);

} // namespace mesk::host
