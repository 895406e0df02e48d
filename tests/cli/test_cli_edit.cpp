// Runs cubrix-cli's item and symbol commands on a copy of the Castle example
// (floor, gate, torch, tower, wall with a..e) and reads the saved result back.

#include "CliRun.h"
#include "support/BlocksetFiles.h"
#include "support/BspTestBlocks.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class TestCliEdit : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    QPair<int, QJsonObject> cli(const QStringList &arguments)
    {
        const CliResult result = runCli(m_dir, arguments + QStringList{u"--json"_s});
        const QJsonObject report = QJsonDocument::fromJson(result.out).object();
        // What a command saved passes Rover's readers: the save would have said otherwise.
        for (const QJsonValue &message : report.value(u"messages"_s).toArray()) {
            if (message.toObject().value(u"title"_s) == u"Rover compatibility"_s)
                QTest::qFail(qPrintable(message.toObject().value(u"text"_s).toString()), __FILE__, __LINE__);
        }
        return {result.exitCode, report};
    }

    // The values of `key` in the blocks, sorted, or the style value `key`.
    static QStringList values(const QJsonObject &info, const QString &key)
    {
        if (info.value(u"style"_s).toObject().contains(key))
            return {info.value(u"style"_s).toObject().value(key).toString()};
        QStringList found;
        for (const QJsonValue &row : info.value(u"blocks"_s).toArray())
            found.append(row.toObject().value(key).toString());
        return found.sort(), found;
    }

private slots:
    void initTestCase()
    {
        // Files to add from, outside any blockset.
        for (const char *name : {"new wall.block", "sky.gif", "notes.txt"}) {
            QFile file(m_dir.filePath(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("<BLOCK NAME=\"new wall\" TYPE=\"structural\">\r\n</BLOCK>\r\n");
        }
    }

    void commands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("saved");
        const QStringList files{u"floor.block"_s, u"gate.block"_s, u"torch.block"_s, u"tower.block"_s, u"wall.block"_s};
        const QString newWall = m_dir.filePath(u"new wall.block"_s);
        QTest::newRow("add") << QStringList{u"add"_s, m_dir.filePath(u"sky.gif"_s), newWall} << 0 << u"symbol"_s
                             << QStringList{u"A"_s, u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
        QTest::newRow("add a file of no kind")
            << QStringList{u"add"_s, m_dir.filePath(u"notes.txt"_s)} << 2 << u"file"_s << files;
        QTest::newRow("replace, the source asked for")
            << QStringList{u"replace"_s, u"wall.block"_s, u"--from"_s, newWall} << 0 << u"file"_s
            << QStringList{u"floor.block"_s, u"gate.block"_s, u"new wall.block"_s, u"torch.block"_s, u"tower.block"_s};
        QTest::newRow("symbols") << QStringList{u"symbols"_s, u"wall.block"_s, u"Z"_s, u".Z"_s} << 0 << u"symbol"_s
                                 << QStringList{u"Z"_s, u"a"_s, u"b"_s, u"c"_s, u"d"_s};
        QTest::newRow("symbols not offered") << QStringList{u"symbols"_s, u"wall.block"_s, u"a"_s, u".a"_s} << 1
                                             << u"symbol"_s << QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
        QTest::newRow("remove") << QStringList{u"remove"_s, u"GATE.block"_s, u"bell.wav"_s, u"wall.block"_s} << 0
                                << u"file"_s << QStringList{u"floor.block"_s, u"torch.block"_s, u"tower.block"_s};
        QTest::newRow("remove unknown") << QStringList{u"remove"_s, u"moat.block"_s} << 2 << u"file"_s << files;
        QTest::newRow("rename") << QStringList{u"rename"_s, u"wall.block"_s, u"keep.block"_s} << 0 << u"file"_s
                                << QStringList{u"floor.block"_s, u"gate.block"_s, u"keep.block"_s, u"torch.block"_s,
                                               u"tower.block"_s};
        QTest::newRow("remap all") << QStringList{u"remap"_s, u"--all"_s, u"--prefix"_s, u"!"_s} << 0 << u"double"_s
                                   << QStringList{u"!A"_s, u"!B"_s, u"!C"_s, u"!D"_s, u"!E"_s};
        QTest::newRow("prefix") << QStringList{u"prefix"_s, u"x"_s} << 0 << u"double"_s
                                << QStringList{u"xa"_s, u"xb"_s, u"xc"_s, u"xd"_s, u"xe"_s};
        QTest::newRow("set colour") << QStringList{u"set"_s, u"skyColor"_s, u"(1,2,3)"_s} << 0 << u"skyColor"_s
                                    << QStringList{u"(1,2,3)"_s};
        QTest::newRow("set bad colour") << QStringList{u"set"_s, u"skyColor"_s, u"(1,2,300)"_s} << 1 << u"skyColor"_s
                                        << QStringList{u"(96,160,255)"_s};
        QTest::newRow("set a quote") << QStringList{u"set"_s, u"synopsis"_s, u"The \"Stone\" castle"_s} << 1
                                     << u"synopsis"_s << QStringList{u"Stone walls, a gate, a tower and a torch"_s};
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, key);
        QFETCH(QStringList, saved);
        const QString file = m_dir.filePath(u"Castle.bset"_s);
        QFile::remove(file);
        QVERIFY(QFile::copy(QStringLiteral(CUBRIX_EXAMPLES) + u"/Castle.bset"_s, file));
        QFile(file).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        arguments.insert(1, file);

        const auto [exitCode, report] = cli(arguments);
        QTEST(exitCode, "exitCode");
        if (exitCode == 0) // the command's own report: what it left in memory, plus its status texts
            QVERIFY(values(report, key) == saved && report.value(u"results"_s).isArray());
        const auto [infoCode, info] = cli({u"info"_s, file});
        QCOMPARE(infoCode, 0);
        QCOMPARE(values(info, key), saved);
    }

    void check()
    {
        const QString castle = m_dir.filePath(u"Castle.bset"_s);
        QFile::remove(castle);
        QVERIFY(QFile::copy(QStringLiteral(CUBRIX_EXAMPLES) + u"/Castle.bset"_s, castle));
        QVERIFY(writeFile(m_dir.filePath(u"Castle.txt"_s), updateFileText(u"1.0"_s, u"First"_s, 1)));
        auto [code, report] = cli({u"check"_s, castle});
        QCOMPARE(code, 0);
        QVERIFY(report.value(u"roverLoadsBlockset"_s).toBool() && report.value(u"roverSeesUpdate"_s).toBool());

        // A style entry without a symbol and one naming a missing file; an update id Rover cannot read.
        const QString broken = m_dir.filePath(u"Broken.bset"_s);
        QVERIFY(
            writeBset(broken, {{u"Broken.style"_s, styleFile(u"B"_s, u"<block symbol=\"\" file=\"a.block\"/>\n"
                                                                     "<block symbol=\"b\" file=\"gone.block\"/>\n"_s)},
                               {u"blocks/a.block"_s, blockFile(u"a"_s)}}));
        QVERIFY(writeFile(m_dir.filePath(u"Broken.txt"_s), updateFileText(u"2.5a"_s, u"Second"_s, 1)));
        std::tie(code, report) = cli({u"check"_s, broken});
        QCOMPARE(code, 1);
        QVERIFY(!report.value(u"roverLoadsBlockset"_s).toBool() && !report.value(u"roverSeesUpdate"_s).toBool());
        QStringList errors;
        for (const QJsonValue &finding : report.value(u"findings"_s).toArray()) {
            const QJsonObject f = finding.toObject();
            if (f.value(u"severity"_s) == u"error"_s)
                errors << f.value(u"file"_s).toString() + u':' + QString::number(f.value(u"line"_s).toInt());
        }
        QCOMPARE(errors, QStringList({u"Broken.style:2"_s, u"Broken.style:3"_s, u"Broken.txt:1"_s}));
    }

    // bsp builds a tree once, keeps it the next time, and passes a sprite by.
    void bsp()
    {
        const QString file = m_dir.filePath(u"Trees.bset"_s);
        const QByteArray walls =
            blockText(blockOf(box({0, 0, 120}, {256, 256, 136}) + box({120, 0, 0}, {136, 256, 256})));
        QVERIFY(
            writeBset(file, {{u"Trees.style"_s, dosText(u"<style name=\"T\" version=\"1.0\">\n"
                                                        "<block symbol=\"a\" file=\"walls.block\"/>\n"
                                                        "<block symbol=\"b\" file=\"torch.block\"/>\n</style>\n"_s)},
                             {u"blocks/walls.block"_s, walls},
                             {u"blocks/torch.block"_s, blockFile(u"torch"_s, u"facing sprite"_s)}}));
        for (const QString &outcome : {u"built"_s, u"kept"_s}) {
            const auto [code, report] = cli({u"bsp"_s, file});
            QCOMPARE(code, 0);
            const QJsonObject built = report.value(u"bsp"_s).toObject().value(u"walls.block"_s).toObject();
            QCOMPARE(built.value(u"outcome"_s).toString(), outcome);
            QCOMPARE(built.value(u"splits"_s).toInt() > 0, outcome == u"built"_s);
            QCOMPARE(report.value(u"bsp"_s).toObject().value(u"torch.block"_s).toObject().value(u"outcome"_s),
                     u"skipped"_s);
            QCOMPARE(values(report, u"bsp"_s), QStringList({u"n/a"_s, u"yes"_s}));
        }
    }
};

QTEST_GUILESS_MAIN(TestCliEdit)
#include "test_cli_edit.moc"
