#pragma once

#include <QByteArray>

#include <memory>
#include <string>

namespace mesk::host {

/// Writes frames to a capture file (pcap, link type Ethernet) in the order in which they come.
class CaptureWriter {
public:
    /// @throws Failure (usage) if the file can't be made.
    explicit CaptureWriter(const std::string& path);
    ~CaptureWriter();
    CaptureWriter(const CaptureWriter&) = delete;
    CaptureWriter& operator=(const CaptureWriter&) = delete;

    /// [any thread] Adds a frame with the time of now.
    void write(const QByteArray& frame);
    /// @throws Failure if not all frames reached the file.
    void close();

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
