#include "host/Session.h"
#include "host/tour/Tour.h"
#include "host/verbs/VerbTable.h"

#include <fmt/format.h>

#include <filesystem>

namespace mesk::host {

namespace {

constexpr const char* ownLink = "camera:dhcp,events=5";

class TourVerb : public Verb {
public:
    void declare(CLI::App& /*app*/) override {}

    void adjust(Options& options) override
    {
        m_ownDevice = options.link.has_value();
        options.link = options.link.value_or(ownLink);
        options.reset = true;
        options.writeFile =
            options.writeFile.value_or((std::filesystem::temp_directory_path() / "tour.pcap").string());
    }

    ExitCode run(Session& session) override
    {
        TourResult tour = Tour(session, !m_ownDevice).run();
        const std::string& capture = *session.options().writeFile;
        session.output().words(fmt::format("All frames of the tour are in {}", capture));
        session.output().result({{"board", session.options().board},
                                 {"port", session.options().port},
                                 {"link", *session.options().link},
                                 {"capture", capture},
                                 {"steps", std::move(tour.steps)},
                                 {"ports", std::move(tour.ports)},
                                 {"statistics", textsOf(tour.statistics)}},
                                {"steps", "ports"});
        showStatistics(session, tour.statistics);
        if (tour.code != ExitCode::Done) {
            throw Failure(tour.code, tour.failure);
        }
        return ExitCode::Done;
    }

private:
    bool m_ownDevice = false;
};

} // namespace

std::unique_ptr<Verb> makeTourVerb()
{
    return std::make_unique<TourVerb>();
}

} // namespace mesk::host
