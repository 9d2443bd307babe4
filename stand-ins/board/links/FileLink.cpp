#include "stand-ins/board/links/FileLink.h"

#include <chrono>
#include <cstdio>
#include <fmt/core.h>
#include <pcap/pcap.h>
#include <stdexcept>

namespace emulated_board {

namespace {

constexpr int snapshotMaxBytes = 65535;

} // namespace

void FileLink::PcapCloser::operator()(pcap* handle) const
{
    pcap_close(handle);
}

void FileLink::PcapCloser::operator()(pcap_dumper* dumper) const
{
    pcap_dump_close(dumper);
}

FileLink::FileLink(const std::string& replayPath, std::string recordPath, LineEnd& end)
    : m_replayPath(replayPath)
    , m_recordPath(std::move(recordPath))
    , m_end(end)
    , m_out([this](WireFrame frame, const std::atomic<bool>&) { record(std::move(frame)); },
            [this] {
                if (m_record)
                    pcap_dump_flush(m_record.get());
            })
    , m_replayed(replayPath.empty())
{
    if (!m_replayPath.empty()) {
        char error[PCAP_ERRBUF_SIZE] = "";
        m_capture.reset(pcap_open_offline(m_replayPath.c_str(), error));
        if (!m_capture)
            throw std::runtime_error(error);
        if (pcap_datalink(m_capture.get()) != DLT_EN10MB)
            throw std::runtime_error(m_replayPath + ": not a capture of Ethernet frames");
    }
    // The record is begun at start, not here: the link that this one replaces may still write to it.
    if (!m_recordPath.empty()) {
        std::FILE* file = std::fopen(m_recordPath.c_str(), "ab");
        if (file == nullptr)
            throw std::runtime_error(m_recordPath + ": can't be written");
        (void)std::fclose(file);
    }
}

FileLink::~FileLink()
{
    FileLink::stop();
}

void FileLink::start()
{
    if (!m_recordPath.empty()) {
        m_recordFormat.reset(pcap_open_dead(DLT_EN10MB, snapshotMaxBytes));
        m_record.reset(pcap_dump_open(m_recordFormat.get(), m_recordPath.c_str()));
        if (!m_record)
            throw std::runtime_error(pcap_geterr(m_recordFormat.get()));
        pcap_dump_flush(m_record.get());
    }
    m_out.start();
    if (m_capture)
        m_replayThread = std::thread([this] { replay(); });
}

void FileLink::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_readerMutex);
        m_stopped.store(true, std::memory_order_relaxed);
    }
    m_readerChanged.notify_all();
    if (m_replayThread.joinable())
        m_replayThread.join();
    m_out.stop();
    m_record.reset();
}

void FileLink::readerCame()
{
    {
        const std::lock_guard<std::mutex> lock(m_readerMutex);
        m_hasReader = true;
    }
    m_readerChanged.notify_all();
}

bool FileLink::send(WireFrame frame)
{
    return m_out.send(std::move(frame));
}

bool FileLink::isBusy() const
{
    return m_out.isFull();
}

bool FileLink::isIdle() const
{
    return m_replayed.load(std::memory_order_acquire);
}

bool FileLink::waitForReader()
{
    std::unique_lock<std::mutex> lock(m_readerMutex);
    const auto isStopped = [this] { return m_stopped.load(std::memory_order_relaxed); };
    m_readerChanged.wait(lock, [&] { return m_hasReader || isStopped(); });
    return !isStopped();
}

void FileLink::replay()
{
    if (!waitForReader())
        return;
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    int result = 0;
    while (!m_stopped.load(std::memory_order_relaxed) &&
           (result = pcap_next_ex(m_capture.get(), &header, &bytes)) == 1) {
        WireFrame frame;
        frame.bytes.assign(bytes, bytes + header->caplen);
        m_tally.in().add(header->caplen);
        m_end.arrive(std::move(frame), Patience::untilRead, m_stopped);
    }
    if (result == PCAP_ERROR) {
        m_tally.failed();
        fmt::print(stderr, "emulated board: {}: {}\n", m_replayPath, pcap_geterr(m_capture.get()));
    }
    m_replayed.store(true, std::memory_order_release);
}

void FileLink::record(WireFrame frame)
{
    // A network card at the far end would drop it, too.
    if (!frame.isIntact()) {
        m_end.refusedAtFarEnd();
        m_tally.refused();
        return;
    }
    m_tally.out().add(frame.size());
    if (!m_record)
        return;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now);
    pcap_pkthdr header{};
    header.ts.tv_sec = seconds.count();
    header.ts.tv_usec = std::chrono::duration_cast<std::chrono::microseconds>(now - seconds).count();
    header.caplen = header.len = bpf_u_int32(frame.size());
    pcap_dump(reinterpret_cast<u_char*>(m_record.get()), &header, frame.bytes.data());
}

} // namespace emulated_board
