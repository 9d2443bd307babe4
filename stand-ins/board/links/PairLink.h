#pragma once

#include "stand-ins/board/links/Wire.h"

#include <memory>

namespace emulated_board {

/// A cable between two ports, seen from one of its ends: a wire out and a wire in. The other end has
/// the same two wires the other way round.
class PairLink : public Link {
public:
    struct Ends;
    /// Both ends of a cable. If `first` and `second` are one port, it hears itself, and `second` of the
    /// result is null.
    static Ends join(LineEnd& first, LineEnd& second);

    /// One direction, and what it has carried.
    struct Way;

    PairLink(std::shared_ptr<Way> out, std::shared_ptr<Way> in);
    ~PairLink() override;

    void start() override;
    void stop() override;
    bool send(WireFrame frame) override;
    bool isBusy() const override;
    bool isIdle() const override;
    KivoBoardLinkCounters counters() const override;

private:
    std::shared_ptr<Way> m_out;
    std::shared_ptr<Way> m_in;
};

struct PairLink::Ends {
    std::unique_ptr<Link> first;
    std::unique_ptr<Link> second;
};

} // namespace emulated_board
