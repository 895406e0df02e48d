#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTest>

// Whole-file reads and writes for tests that compare bytes on disk.

// The file's bytes; empty when it cannot be read.
inline QByteArray readBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file with `bytes`; a failure fails the running test.
inline void writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(bytes), bytes.size());
}
