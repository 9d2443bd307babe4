#include "host/CaptureReader.h"
#include "host/Interrupt.h"
#include "host/Progress.h"
#include "host/Session.h"
#include "host/Terminal.h"
#include "host/describe/FramePrinter.h"
#include "host/verbs/VerbTable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace mesk::host {

namespace {

constexpr std::size_t chunkBytes = 65536; // what is written at once to a file or pipe

class DumpVerb : public Verb {
public:
    void declare(CLI::App& app) override
    {
        app.add_option("CAPTURE", m_capture, "pcap or pcapng file of Ethernet frames, - for standard input")
            ->required();
        app.add_flag("-v,--verbose", m_tree, "show all fields of each layer");
        app.add_flag("--verify", m_verify, "check IPv4, ICMP and UDP checksums; 1 if one is bad");
    }

    ExitCode run(Session& session) override
    {
        CaptureReader reader(m_capture);
        Output& output = session.output();
        std::unique_ptr<FramePrinter> printer;
        if (session.options().json) {
            printer = std::make_unique<JsonFramePrinter>(m_buffer, m_verify);
        } else {
            printer = std::make_unique<TextFramePrinter>(m_buffer, m_verify, m_tree);
            output.printHeading(TextFramePrinter::heading());
        }
        {
            const auto progress =
                Progress::start(!output.quiet() && standardErrorIsTerminal() && standardOutputIsFile(),
                                [&reader] { return captureProgress("Reading", reader); });
            printAll(reader, *printer, output);
        }
        output.words(fmt::format("{} frames{}", m_frames,
                                 m_verify ? fmt::format(", {} with a bad checksum", m_badFrames) : ""));
        return m_frames == 0 || m_badFrames != 0 ? ExitCode::Nothing : ExitCode::Done;
    }

private:
    void printAll(CaptureReader& reader, FramePrinter& printer, Output& output)
    {
        // Whoever looks at a stream wants to see each frame when it comes.
        const bool live = !reader.fractionRead() || standardOutputIsTerminal();
        CapturedFrame frame;
        bool taken = true;
        try {
            while (taken && !interruptRequested() && reader.next(frame.bytes, &frame.stamp)) {
                frame.number = ++m_frames;
                m_badFrames += printer.print(frame).anyBad() ? 1 : 0;
                if (live || m_buffer.size() >= chunkBytes) {
                    taken = flush(output, live);
                }
            }
        } catch (...) {
            flush(output, true); // all that stands before the damage
            throw;
        }
        flush(output, true);
    }
    bool flush(Output& output, bool flushed)
    {
        const bool taken = output.write({m_buffer.data(), m_buffer.size()}, flushed);
        m_buffer.clear();
        return taken;
    }

    std::string m_capture;
    bool m_tree = false;
    bool m_verify = false;
    fmt::memory_buffer m_buffer;
    std::uint64_t m_frames = 0;
    std::uint64_t m_badFrames = 0;
};

} // namespace

std::unique_ptr<Verb> makeDumpVerb()
{
    return std::make_unique<DumpVerb>();
}

} // namespace mesk::host
