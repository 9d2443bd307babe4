#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <string>

namespace mesk::host {

/// Reads the frames of a capture (pcap or pcapng, link type Ethernet) one after the other, so that a
/// file of any size takes no more memory than its largest frame. One thread at a time.
class CaptureReader {
public:
    /// @param path "-" is standard input.
    /// @throws Failure: usage if there is no such file, else if it is no capture of Ethernet frames.
    explicit CaptureReader(const std::string& path);
    ~CaptureReader();
    CaptureReader(const CaptureReader&) = delete;
    CaptureReader& operator=(const CaptureReader&) = delete;

    /// @returns false at the end.
    /// @throws Failure where the file is damaged; everything before that place has been given.
    bool next(QByteArray& frame);

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
