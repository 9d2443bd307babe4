#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace mesk::host {

/// What a capture tells of a frame beside its bytes.
struct FrameStamp {
    std::int64_t seconds = 0; ///< since 1970, UTC
    std::uint32_t nanoseconds = 0;
    std::uint32_t originalBytes = 0; ///< on the wire; more than are there where the capture has cut it
};

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

    /// @param stamp takes what the capture tells of the frame; null for nobody.
    /// @returns false at the end, and once an interrupt was requested while a stream had no more.
    /// @throws Failure where the file is damaged, or goes on with another link type; everything before that
    /// place has been given.
    bool next(QByteArray& frame, FrameStamp* stamp = nullptr);

    /// How many frames were read. [any thread]
    std::uint64_t framesRead() const;
    /// What part of the file was read, where it has a size. [any thread]
    std::optional<double> fractionRead() const;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
