#include "host/BoardAccess.h"
#include "host/Session.h"
#include "host/verbs/VerbTable.h"

namespace mesk::host {

namespace {

Json linksOf(const BoardAccess& access, const BoardInfo& info)
{
    Json links = Json::array();
    if (access.control() != nullptr) {
        for (int port = 0; port < info.ports; ++port) {
            links.push_back(access.link(info.board, port));
        }
    }
    return links;
}

class BoardsVerb : public Verb {
public:
    void declare(CLI::App& /*app*/) override {}

    ExitCode run(Session& session) override
    {
        const BoardAccess& access = session.board();
        if (session.options().link) {
            access.requirePort(session.options().board, session.options().port);
            session.plug(session.options().port, *session.options().link);
        }
        Json boards = Json::array();
        for (const BoardInfo& info : access.boards()) {
            boards.push_back({{"board", info.board},
                              {"name", info.name},
                              {"serial", info.serial},
                              {"type", info.type},
                              {"firmware", info.firmware},
                              {"ports", info.ports},
                              {"links", linksOf(access, info)}});
        }
        const bool found = !boards.empty();
        if (!found) {
            session.output().words("no boards found");
        }
        session.output().result({{"boards", std::move(boards)}}, {"boards"});
        return found ? ExitCode::Done : ExitCode::Nothing;
    }
};

} // namespace

std::unique_ptr<Verb> makeBoardsVerb()
{
    return std::make_unique<BoardsVerb>();
}

} // namespace mesk::host
