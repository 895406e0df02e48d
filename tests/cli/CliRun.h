#pragma once

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

// One run of the real cubrix-cli program with its settings hive and its "Temp"
// inside `dir`, started in `dir`.
struct CliResult {
    int exitCode = -1; // -1: it did not end normally within two minutes
    QByteArray out;
    QByteArray err;
};

inline CliResult runCli(const QTemporaryDir &dir, const QStringList &arguments)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("CUBRIX_REGISTRY"), dir.filePath(QStringLiteral("registry.reg")));
    env.insert(QStringLiteral("Temp"), dir.filePath(QStringLiteral("temp")));
    QDir().mkpath(dir.filePath(QStringLiteral("temp")));
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(dir.path());
    process.start(QStringLiteral(CUBRIX_CLI_PATH), arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return CliResult(); // killed when `process` goes
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}
