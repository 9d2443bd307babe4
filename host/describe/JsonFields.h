#pragma once

#include "host/describe/FieldSink.h"

#include <fmt/format.h>

namespace mesk::host {

/// Writes fields as JSON straight into a buffer: codes as numbers, bytes as hexadecimal text.
class JsonFields final : public FieldSink {
public:
    /// @param out outlives this object.
    explicit JsonFields(fmt::memory_buffer& out)
        : m_out(out)
    {
    }

    /// One record: a line of its own.
    void openRecord();
    void closeRecord();
    /// An object inside the record.
    void openObject(std::string_view name) { open(name, '{'); }
    void closeObject() { close('}'); }

    void openLayer(std::string_view className) override;
    void closeLayer() override { closeObject(); }
    void openList(std::string_view name) override { open(name, '['); }
    void openItem() override { open("", '{'); }
    void closeItem() override { closeObject(); }
    void closeList() override { close(']'); }
    void number(std::string_view name, std::uint64_t value) override;
    void signedNumber(std::string_view name, std::int64_t value) override;
    void code(std::string_view name, std::uint64_t value, int /*digits*/) override { number(name, value); }
    void flag(std::string_view name, bool value) override;
    void text(std::string_view name, std::string_view value) override;
    void bytes(std::string_view name, std::string_view value) override;

private:
    void open(std::string_view name, char bracket);
    void close(char bracket);
    char* begin(std::string_view name, std::size_t valueMaxBytes);
    void end(const char* behind) { m_out.resize(static_cast<std::size_t>(behind - m_out.data())); }
    void putEscaped(std::string_view value);

    fmt::memory_buffer& m_out;
    bool m_first = true; ///< nothing stands in the innermost object or list yet
};

} // namespace mesk::host
