#pragma once

#include <cstdint>
#include <string_view>

namespace mesk::host {

/// Takes the fields of one frame, layer by layer, and puts them down in its own form. Names are literals.
/// [one thread at a time]
class FieldSink {
public:
    FieldSink() = default;
    FieldSink(const FieldSink&) = delete;
    FieldSink& operator=(const FieldSink&) = delete;
    virtual ~FieldSink() = default;

    /// A layer, under the name of its class.
    virtual void openLayer(std::string_view className) = 0;
    virtual void closeLayer() = 0;
    /// A list of items that have fields of their own.
    virtual void openList(std::string_view name) = 0;
    virtual void openItem() = 0;
    virtual void closeItem() = 0;
    virtual void closeList() = 0;

    virtual void number(std::string_view name, std::uint64_t value) = 0;
    virtual void signedNumber(std::string_view name, std::int64_t value) = 0;
    /// A number that people read in hexadecimal, with so many digits.
    virtual void code(std::string_view name, std::uint64_t value, int digits) = 0;
    virtual void flag(std::string_view name, bool value) = 0;
    /// Text of any origin: it needn't be UTF-8.
    virtual void text(std::string_view name, std::string_view value) = 0;
    virtual void bytes(std::string_view name, std::string_view value) = 0;
};

} // namespace mesk::host
