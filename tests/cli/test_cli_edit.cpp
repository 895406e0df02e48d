// Runs cubrix-cli's item and symbol commands on a copy of the Castle example
// and checks the exit status, the saved result and what it reports.

#include <QtTest>

using namespace Qt::StringLiterals;

class TestCliEdit : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    struct Run {
        int exitCode = -1;
        QJsonObject json;
        QByteArray err;
    };

    Run cli(const QStringList &arguments)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"CUBRIX_REGISTRY"_s, m_dir.filePath(u"registry.reg"_s));
        env.insert(u"Temp"_s, m_dir.filePath(u"temp"_s));
        QDir().mkpath(m_dir.filePath(u"temp"_s));
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(CUBRIX_CLI_PATH), arguments);
        if (!process.waitForFinished(120000))
            return {};
        return {process.exitCode(), QJsonDocument::fromJson(process.readAllStandardOutput()).object(),
                process.readAllStandardError()};
    }

    // A fresh copy of the example: floor, gate, torch, tower, wall with a..e.
    QString castle()
    {
        const QString path = m_dir.filePath(u"Castle.bset"_s);
        QFile::remove(path);
        QFile::remove(m_dir.filePath(u"Castle.txt"_s));
        QFile::copy(QStringLiteral(CUBRIX_EXAMPLES) + u"/Castle.bset"_s, path);
        QFile(path).setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        return path;
    }

    static QStringList column(const QJsonObject &info, const QString &list, const QString &key)
    {
        QStringList values;
        for (const QJsonValue &row : info.value(list).toArray())
            values.append(row.toObject().value(key).toString());
        return values;
    }

private slots:
    void commands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values"); // read back by info after the command
        const QStringList files{u"floor.block"_s, u"gate.block"_s, u"torch.block"_s, u"tower.block"_s, u"wall.block"_s};
        QTest::newRow("remove") << QStringList{u"remove"_s, u"GATE.block"_s, u"bell.wav"_s, u"wall.block"_s} << 0
                                << u"blocks"_s << u"file"_s
                                << QStringList{u"floor.block"_s, u"torch.block"_s, u"tower.block"_s};
        QTest::newRow("remove unknown") << QStringList{u"remove"_s, u"moat.block"_s} << 2 << u"blocks"_s << u"file"_s << files;
        QTest::newRow("rename") << QStringList{u"rename"_s, u"wall.block"_s, u"keep.block"_s} << 0 << u"blocks"_s
                                << u"file"_s
                                << QStringList{u"floor.block"_s, u"gate.block"_s, u"keep.block"_s, u"torch.block"_s, u"tower.block"_s};
        QTest::newRow("rename extension") << QStringList{u"rename"_s, u"wall.block"_s, u"wall.gif"_s} << 1 << u"blocks"_s
                                          << u"file"_s << files;
        QTest::newRow("remap all") << QStringList{u"remap"_s, u"--all"_s, u"--prefix"_s, u"!"_s} << 0 << u"blocks"_s
                                   << u"double"_s << QStringList{u"!A"_s, u"!B"_s, u"!C"_s, u"!D"_s, u"!E"_s};
        QTest::newRow("prefix") << QStringList{u"prefix"_s, u"x"_s} << 0 << u"blocks"_s << u"double"_s
                                << QStringList{u"xa"_s, u"xb"_s, u"xc"_s, u"xd"_s, u"xe"_s};
        QTest::newRow("set colour") << QStringList{u"set"_s, u"skyColor"_s, u"(1,2,3)"_s} << 0 << u"style"_s
                                    << u"skyColor"_s << QStringList{u"(1,2,3)"_s};
        QTest::newRow("set bad colour") << QStringList{u"set"_s, u"skyColor"_s, u"(1,2,300)"_s} << 1 << u"style"_s
                                        << u"skyColor"_s << QStringList();
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, list);
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        const QString file = castle();
        arguments.insert(1, file);
        const Run run = cli(arguments + QStringList{u"--json"_s});
        QTEST(run.exitCode, "exitCode");
        // What was saved, read back by a second program run.
        const Run info = cli({u"info"_s, file, u"--json"_s});
        QCOMPARE(info.exitCode, 0);
        if (list == "style"_L1) {
            if (!values.isEmpty())
                QCOMPARE(info.json.value(list).toObject().value(key).toString(), values.first());
            else
                QVERIFY(run.err.contains("rgbSky"));
            return;
        }
        QCOMPARE(column(info.json, list, key), values);
        if (run.exitCode == 0) { // the command's own report holds the same rows (in the list's order)
            QStringList reported = column(run.json, list, key);
            reported.sort();
            QCOMPARE(reported, values);
        }
        QCOMPARE(run.json.contains(u"results"_s), run.exitCode != 2);
    }
};

QTEST_GUILESS_MAIN(TestCliEdit)
#include "test_cli_edit.moc"
