#pragma once

// Shared by the fuzz targets. Each target is one function over the bytes of one
// input; built with libFuzzer it is LLVMFuzzerTestOneInput, built into the
// replay program (which runs the checked-in inputs in the ordinary test run) it
// is a function of its own name, chosen by CUBRIX_FUZZ_TARGET.

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#if defined(CUBRIX_FUZZ_TARGET)
#define CUBRIX_FUZZ_ENTRY(name) extern "C" int name(const uint8_t *data, size_t size)
#else
#define CUBRIX_FUZZ_ENTRY(name) extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
#endif

inline QByteArray fuzzBytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// A fresh, empty folder of this process below the system's temporary folder.
inline QString fuzzFolder(const char *name)
{
    const QString path = QDir::tempPath()
                         + QStringLiteral("/cubrix-fuzz-%1-%2")
                               .arg(QLatin1StringView(name))
                               .arg(qint64(QCoreApplication::applicationPid()));
    QDir(path).removeRecursively();
    QDir().mkpath(path);
    return path;
}

inline void fuzzWrite(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        std::abort();
    }
}
