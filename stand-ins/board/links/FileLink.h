#pragma once

#include "stand-ins/board/links/Wire.h"

#include <memory>
#include <string>

struct pcap;
struct pcap_dumper;

namespace emulated_board {

/// Replays a capture (pcap or pcapng, Ethernet) into the port and records what the port sends, with the
/// time of its sending and without check sequence. Either file name may be empty.
///
/// The replay begins when somebody reads the port's receive queue, and it waits for room there. Frames
/// are delivered as the file has them, also those below the 60 bytes of a line.
class FileLink : public Link {
public:
    /// Throws std::runtime_error if the capture can't be read or the record not be written.
    FileLink(const std::string& replayPath, std::string recordPath, LineEnd& end);
    ~FileLink() override;

    void start() override;
    void stop() override;
    void readerCame() override;
    bool send(WireFrame frame) override;
    bool isBusy() const override;
    bool isIdle() const override;

private:
    struct PcapCloser {
        void operator()(pcap* handle) const;
        void operator()(pcap_dumper* dumper) const;
    };

    void replay();
    void record(WireFrame frame);
    bool waitForReader();

    const std::string m_replayPath;
    const std::string m_recordPath;
    LineEnd& m_end;
    std::unique_ptr<pcap, PcapCloser> m_capture;
    std::unique_ptr<pcap, PcapCloser> m_recordFormat;
    std::unique_ptr<pcap_dumper, PcapCloser> m_record;
    Wire m_out;
    std::atomic<bool> m_replayed;
    std::mutex m_readerMutex;
    std::condition_variable m_readerChanged;
    bool m_hasReader = false;
    std::atomic<bool> m_stopped{false};
    std::thread m_replayThread;
};

} // namespace emulated_board
