#pragma once

#include "host/describe/FieldSink.h"

#include <fmt/format.h>

namespace mesk::host {

/// Writes fields for people, a line a field, indented by layer and list.
class TreeFields final : public FieldSink {
public:
    /// @param out outlives this object.
    explicit TreeFields(fmt::memory_buffer& out)
        : m_out(out)
    {
    }

    void openLayer(std::string_view className) override { open(className); }
    void closeLayer() override { --m_depth; }
    void openList(std::string_view name) override { open(name); }
    void openItem() override { m_startsItem = true; }
    void closeItem() override { m_startsItem = false; }
    void closeList() override { --m_depth; }
    void number(std::string_view name, std::uint64_t value) override;
    void signedNumber(std::string_view name, std::int64_t value) override;
    void code(std::string_view name, std::uint64_t value, int digits) override;
    void flag(std::string_view name, bool value) override;
    void text(std::string_view name, std::string_view value) override;
    void bytes(std::string_view name, std::string_view value) override;

private:
    template <typename... Arguments>
    void line(std::string_view name, fmt::format_string<Arguments...> format, Arguments&&... arguments);
    void open(std::string_view name);
    void indent();

    fmt::memory_buffer& m_out;
    int m_depth = 1;
    bool m_startsItem = false; ///< the next field is the first one of an item of a list
};

} // namespace mesk::host
