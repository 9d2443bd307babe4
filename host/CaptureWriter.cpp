#include "host/CaptureWriter.h"

#include "host/Failure.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace mesk::host {

namespace {

constexpr int snapshotSizeMaxBytes = 65535;

timeval wallClockNow()
{
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    constexpr auto perSecond = 1000000;
    return {static_cast<time_t>(now / perSecond), static_cast<suseconds_t>(now % perSecond)};
}

} // namespace

struct CaptureWriter::D {
    ~D()
    {
        if (dumper != nullptr) {
            pcap_dump_close(dumper);
        }
        if (pcap != nullptr) {
            pcap_close(pcap);
        }
    }

    std::string path;
    std::mutex mutex;
    pcap_t* pcap = nullptr;
    pcap_dumper_t* dumper = nullptr;
};

CaptureWriter::CaptureWriter(const std::string& path)
    : d(std::make_unique<D>())
{
    d->path = path;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {}", path, std::strerror(errno)));
    }
    d->pcap = pcap_open_dead(DLT_EN10MB, snapshotSizeMaxBytes);
    d->dumper = d->pcap != nullptr ? pcap_dump_fopen(d->pcap, file) : nullptr;
    if (d->dumper == nullptr) {
        std::fclose(file);
        throw Failure(ExitCode::Usage, fmt::format("{}: can't be written", path));
    }
}

CaptureWriter::~CaptureWriter() = default;

void CaptureWriter::write(const QByteArray& frame)
{
    const std::lock_guard lock(d->mutex);
    pcap_pkthdr header{};
    header.ts = wallClockNow();
    header.caplen = header.len = static_cast<bpf_u_int32>(frame.size());
    pcap_dump(reinterpret_cast<u_char*>(d->dumper), &header,
              reinterpret_cast<const u_char*>(frame.constData()));
}

void CaptureWriter::close()
{
    const std::lock_guard lock(d->mutex);
    if (pcap_dump_flush(d->dumper) != 0 || std::ferror(pcap_dump_file(d->dumper)) != 0) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: not all frames could be written", d->path));
    }
}

} // namespace mesk::host
