#include "host/CaptureReader.h"

#include "host/Failure.h"
#include "host/InputFile.h"
#include "host/Interrupt.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace mesk::host {

namespace {

constexpr std::uint64_t framesPerLook = 64; // at the place in the file

} // namespace

struct CaptureReader::D {
    ~D()
    {
        if (pcap != nullptr) {
            pcap_close(pcap); // closes the file
        } else if (file != nullptr) {
            std::fclose(file);
        }
    }

    std::string path;
    std::FILE* file = nullptr;
    pcap_t* pcap = nullptr;
    std::uint64_t sizeBytes = 0; ///< 0 for a stream
    std::atomic<std::uint64_t> frames{0};
    std::atomic<std::uint64_t> bytesRead{0};
};

CaptureReader::CaptureReader(const std::string& path)
    : d(std::make_unique<D>())
{
    d->path = path;
    d->file = openInput(path);
    if (d->file == nullptr) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {}", path, std::strerror(errno)));
    }
    if (path != "-") { // a file of that name may be there
        std::error_code noSize;
        const auto size = std::filesystem::file_size(path, noSize);
        d->sizeBytes = noSize ? 0 : size;
    }
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    d->pcap = pcap_fopen_offline_with_tstamp_precision(d->file, PCAP_TSTAMP_PRECISION_NANO, error.data());
    if (d->pcap == nullptr && interruptRequested()) {
        return; // a stream that has told nothing yet
    }
    if (d->pcap == nullptr) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: no capture: {}", path, error.data()));
    }
    if (const int type = pcap_datalink(d->pcap); type != DLT_EN10MB) {
        const char* name = pcap_datalink_val_to_name(type);
        throw Failure(ExitCode::Nothing, fmt::format("{}: link type {}, only EN10MB (Ethernet) can be used",
                                                     path, name != nullptr ? name : std::to_string(type)));
    }
}

CaptureReader::~CaptureReader() = default;

bool CaptureReader::next(QByteArray& frame, FrameStamp* stamp)
{
    if (d->pcap == nullptr) {
        return false;
    }
    pcap_pkthdr* header = nullptr;
    const u_char* data = nullptr;
    const int result = pcap_next_ex(d->pcap, &header, &data);
    if (result == PCAP_ERROR_BREAK || (result != 1 && interruptRequested())) {
        return false;
    }
    if (result != 1) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: can't be read behind frame {}: {}", d->path,
                                                     framesRead(), pcap_geterr(d->pcap)));
    }
    const std::uint64_t frames = framesRead() + 1;
    d->frames.store(frames, std::memory_order_relaxed);
    if (frames % framesPerLook == 0) {
        const auto at = std::ftell(d->file);
        d->bytesRead.store(at < 0 ? 0 : static_cast<std::uint64_t>(at), std::memory_order_relaxed);
    }
    if (stamp != nullptr) {
        *stamp = {header->ts.tv_sec, static_cast<std::uint32_t>(header->ts.tv_usec), header->len};
    }
    frame = QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(header->caplen));
    return true;
}

std::uint64_t CaptureReader::framesRead() const
{
    return d->frames.load(std::memory_order_relaxed);
}

std::optional<double> CaptureReader::fractionRead() const
{
    if (d->sizeBytes == 0) {
        return std::nullopt;
    }
    return static_cast<double>(d->bytesRead.load(std::memory_order_relaxed)) /
           static_cast<double>(d->sizeBytes);
}

} // namespace mesk::host
