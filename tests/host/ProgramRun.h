#pragma once

#include <QProcess>

#include <nlohmann/json.hpp>

// Runs of the program as from a shell.

using nlohmann::json;

constexpr int runMaxMs = 60000;

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
    json result() const { return json::parse(out); }
};

inline Outcome finished(QProcess& process)
{
    Outcome run;
    if (process.waitForFinished(runMaxMs) && process.exitStatus() == QProcess::NormalExit) {
        run.exitCode = process.exitCode();
    }
    run.out = process.readAllStandardOutput().toStdString();
    run.err = process.readAllStandardError().toStdString();
    return run;
}

inline void start(QProcess& process, const QStringList& arguments)
{
    process.start(QStringLiteral(MESK_PHY_FILE), arguments);
}

inline Outcome runProgram(const QString& words, const QStringList& more = {})
{
    QProcess process;
    start(process, words.split(QLatin1Char(' ')) + more);
    return finished(process);
}
