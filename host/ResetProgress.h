#pragma once

#include <memory>
#include <string>

namespace mesk::host {

class BoardAccess;
class Output;

/// How many steps of 100 ms a hardware reset consists of: the reset pulse takes two, then each PHY takes
/// one to select it and ten MDIO accesses.
constexpr unsigned pulseSteps = 2;
constexpr unsigned stepsPerPhy = 11;
constexpr unsigned physPerBoard = 4;

/// Shows how far a hardware reset has come while the object lives: a bar on a terminal, else a line.
class ResetProgress {
public:
    ResetProgress(const BoardAccess& board, Output& output, const std::string& title, unsigned steps);
    ~ResetProgress();
    ResetProgress(const ResetProgress&) = delete;
    ResetProgress& operator=(const ResetProgress&) = delete;

private:
    struct D;
    std::unique_ptr<D> d;
};

} // namespace mesk::host
