#include "host/CaptureReader.h"

#include "host/Failure.h"

#include <fmt/format.h>
#include <pcap/pcap.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace mesk::host {

struct CaptureReader::D {
    ~D()
    {
        if (pcap != nullptr) {
            pcap_close(pcap); // closes the file
        } else if (file != nullptr && file != stdin) {
            std::fclose(file);
        }
    }

    std::string path;
    std::FILE* file = nullptr;
    pcap_t* pcap = nullptr;
    std::uint64_t frames = 0;
};

CaptureReader::CaptureReader(const std::string& path)
    : d(std::make_unique<D>())
{
    d->path = path;
    d->file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
    if (d->file == nullptr) {
        throw Failure(ExitCode::Usage, fmt::format("{}: {}", path, std::strerror(errno)));
    }
    std::array<char, PCAP_ERRBUF_SIZE> error{};
    d->pcap = pcap_fopen_offline(d->file, error.data());
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

bool CaptureReader::next(QByteArray& frame)
{
    pcap_pkthdr* header = nullptr;
    const u_char* data = nullptr;
    const int result = pcap_next_ex(d->pcap, &header, &data);
    if (result == PCAP_ERROR_BREAK) {
        return false;
    }
    if (result != 1) {
        throw Failure(ExitCode::Nothing, fmt::format("{}: damaged behind frame {}: {}", d->path, d->frames,
                                                     pcap_geterr(d->pcap)));
    }
    ++d->frames;
    frame = QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(header->caplen));
    return true;
}

} // namespace mesk::host
