#pragma once

#include "host/CaptureReader.h"
#include "host/describe/FrameChecksums.h"
#include "host/describe/JsonFields.h"
#include "host/describe/Summary.h"
#include "host/describe/TreeFields.h"

#include <QByteArray>

#include <fmt/format.h>

#include <cstdint>
#include <optional>

class EthernetFrame;

namespace mesk::host {

/// A frame of a capture.
struct CapturedFrame {
    std::uint64_t number = 0; ///< counted from 1
    FrameStamp stamp;
    QByteArray bytes;
};

/// Puts frames down in a buffer, one record after the other. [one thread at a time]
class FramePrinter {
public:
    /// @param out outlives this object.
    /// @param verify whether checksums are checked and told.
    FramePrinter(fmt::memory_buffer& out, bool verify);
    FramePrinter(const FramePrinter&) = delete;
    FramePrinter& operator=(const FramePrinter&) = delete;
    virtual ~FramePrinter() = default;

    /// @returns what the check has shown, nothing of it without one.
    FrameChecksums print(const CapturedFrame& captured);

protected:
    virtual void put(const CapturedFrame& captured, const EthernetFrame& frame,
                     const FrameChecksums& checksums) = 0;

    fmt::memory_buffer& m_out;

private:
    const bool m_verify;
};

/// One JSON object a line.
class JsonFramePrinter final : public FramePrinter {
public:
    JsonFramePrinter(fmt::memory_buffer& out, bool verify);

private:
    void put(const CapturedFrame& captured, const EthernetFrame& frame,
             const FrameChecksums& checksums) override;

    JsonFields m_fields;
};

/// A line a frame, with a tree of all fields below it if wanted.
class TextFramePrinter final : public FramePrinter {
public:
    TextFramePrinter(fmt::memory_buffer& out, bool verify, bool tree);

    static std::string heading();

private:
    void put(const CapturedFrame& captured, const EthernetFrame& frame,
             const FrameChecksums& checksums) override;
    void putLine(const CapturedFrame& captured, const FrameChecksums& checksums);

    const bool m_tree;
    fmt::memory_buffer m_branches;
    TreeFields m_fields;
    Summary m_summary;
    std::optional<FrameStamp> m_firstStamp;
};

} // namespace mesk::host
