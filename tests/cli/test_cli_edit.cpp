// Runs cubrix-cli's item and symbol commands on a copy of the Castle example
// (floor, gate, torch, tower, wall with a..e) and reads the saved result back.

#include "CliRun.h"
#include "support/BlocksetFiles.h"
#include "support/DataRows.h"

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
        addColumns<QStringList, int, QString, QStringList>("arguments", "exitCode", "key", "saved");
        const QStringList files{"floor.block", "gate.block", "torch.block", "tower.block", "wall.block"};
        const QString newWall = m_dir.filePath(u"new wall.block"_s);
        addRow("add", QStringList{"add", m_dir.filePath(u"sky.gif"_s), newWall}, 0, "symbol",
               QStringList{"A", "a", "b", "c", "d", "e"});
        addRow("add a file of no kind", QStringList{"add", m_dir.filePath(u"notes.txt"_s)}, 2, "file", files);
        addRow("replace, the source asked for", QStringList{"replace", "wall.block", "--from", newWall}, 0, "file",
               QStringList{"floor.block", "gate.block", "new wall.block", "torch.block", "tower.block"});
        addRow("symbols", QStringList{"symbols", "wall.block", "Z", ".Z"}, 0, "symbol",
               QStringList{"Z", "a", "b", "c", "d"});
        addRow("symbols not offered", QStringList{"symbols", "wall.block", "a", ".a"}, 1, "symbol",
               QStringList{"a", "b", "c", "d", "e"});
        addRow("remove", QStringList{"remove", "GATE.block", "bell.wav", "wall.block"}, 0, "file",
               QStringList{"floor.block", "torch.block", "tower.block"});
        addRow("remove unknown", QStringList{"remove", "moat.block"}, 2, "file", files);
        addRow("rename", QStringList{"rename", "wall.block", "keep.block"}, 0, "file",
               QStringList{"floor.block", "gate.block", "keep.block", "torch.block", "tower.block"});
        addRow("remap all", QStringList{"remap", "--all", "--prefix", "!"}, 0, "double",
               QStringList{"!A", "!B", "!C", "!D", "!E"});
        addRow("prefix", QStringList{"prefix", "x"}, 0, "double", QStringList{"xa", "xb", "xc", "xd", "xe"});
        addRow("set colour", QStringList{"set", "skyColor", "(1,2,3)"}, 0, "skyColor", QStringList{"(1,2,3)"});
        addRow("set bad colour", QStringList{"set", "skyColor", "(1,2,300)"}, 1, "skyColor",
               QStringList{"(96,160,255)"});
        addRow("set a quote", QStringList{"set", "synopsis", "The \"Stone\" castle"}, 2, "synopsis",
               QStringList{"Stone walls, a gate, a tower and a torch"});
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
};

QTEST_GUILESS_MAIN(TestCliEdit)
#include "test_cli_edit.moc"
