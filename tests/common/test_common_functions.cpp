// Path, file and date helpers. Leaves out: drive letters and "\" paths on a
// real Windows file system (fileExists is run with this platform's paths).
#include "common/CommonFunctions.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <ctime>

class TestCommonFunctions : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    void touch(const QString &relative)
    {
        QFile file(m_dir.filePath(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir(m_dir.path()).mkpath("worlds/sub.bset"));
        QVERIFY(QDir(m_dir.path()).mkpath("empty"));
        QVERIFY(QDir(m_dir.path()).mkpath("textures only"));
        touch("worlds/Castle.BSET");
        touch("worlds/readme");
        touch("worlds/.hidden.block");
        touch("textures only/wall.gif");
        QVERIFY(QFile::link(m_dir.filePath("worlds/Castle.BSET"), m_dir.filePath("textures only/link.jpg")));
        QVERIFY(QFile::link(m_dir.filePath("worlds/gone"), m_dir.filePath("empty/dangling.bset")));
    }

    void windowsPaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("baseName");
        QTest::newRow("full path") << "C:\\Worlds\\castle.bset" << "castle.bset" << "C:\\Worlds" << "bset" << "castle";
        QTest::newRow("drive root") << "C:\\file" << "file" << "C:" << "" << "file";
        QTest::newRow("folder with dot") << "C:\\a.b\\file" << "file" << "C:\\a.b" << "b\\file" << "file";
        QTest::newRow("trailing backslash") << "C:\\dir\\" << "" << "C:\\dir" << "" << "";
        QTest::newRow("bare name") << "file" << "file" << "" << "" << "file";
        QTest::newRow("name ending in dot") << "name." << "name." << "" << "" << "name";
        QTest::newRow("two dots") << "D:\\archive.tar.bset" << "archive.tar.bset" << "D:" << "bset" << "archive.tar";
        QTest::newRow("only extension") << "C:\\x\\.bset" << ".bset" << "C:\\x" << "bset" << "";
        QTest::newRow("empty") << "" << "" << "" << "" << "";
        QTest::newRow("forward slashes stay") << "C:/w/a.gif" << "C:/w/a.gif" << "" << "gif" << "C:/w/a";
        QTest::newRow("unc") << "\\\\server\\share\\b.wav" << "b.wav" << "\\\\server\\share" << "wav" << "b";
    }
    void windowsPaths()
    {
        QFETCH(QString, path);
        QFETCH(QString, fileName);
        QFETCH(QString, folder);
        QFETCH(QString, extension);
        QFETCH(QString, baseName);
        QCOMPARE(getFileName(path), fileName);
        QCOMPARE(getFolder(path), folder);
        QCOMPARE(getExtension(path), extension);
        QCOMPARE(getBaseName(path), baseName);
    }

    void urlFileName_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("fileName");
        QTest::newRow("address") << "http://www.example.com/sets/castle.bset" << "castle.bset";
        QTest::newRow("trailing slash") << "http://www.example.com/sets/" << "";
        QTest::newRow("no slash") << "castle.bset" << "castle.bset";
        QTest::newRow("backslash is no separator") << "http://h/a\\b.bset" << "a\\b.bset";
    }
    void urlFileName()
    {
        QFETCH(QString, url);
        QFETCH(QString, fileName);
        QCOMPARE(getUrlFileName(url), fileName);
    }

    void nativePaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("baseName");
        QTest::newRow("absolute") << "/home/ann/castle.bset" << "castle.bset" << "/home/ann" << "castle";
        QTest::newRow("in the root") << "/castle.bset" << "castle.bset" << "" << "castle";
        QTest::newRow("relative") << "sets/a.b.bset" << "a.b.bset" << "sets" << "a.b";
        QTest::newRow("dot in folder") << "/x.y/readme" << "readme" << "/x.y" << "readme";
        QTest::newRow("trailing slash") << "/home/ann/" << "" << "/home/ann" << "";
        QTest::newRow("bare") << "castle" << "castle" << "" << "castle";
        QTest::newRow("hidden") << "/h/.bset" << ".bset" << "/h" << "";
#ifdef Q_OS_WIN
        QTest::newRow("backslash") << "C:\\w\\a.gif" << "a.gif" << "C:\\w" << "a";
        QTest::newRow("mixed") << "C:\\w/x\\a.gif" << "a.gif" << "C:\\w/x" << "a";
#else
        QTest::newRow("backslash is a name character") << "/w/a\\b.gif" << "a\\b.gif" << "/w" << "a\\b";
#endif
    }
    void nativePaths()
    {
        QFETCH(QString, path);
        QFETCH(QString, fileName);
        QFETCH(QString, folder);
        QFETCH(QString, baseName);
        QCOMPARE(nativeFileName(path), fileName);
        QCOMPARE(nativeFolder(path), folder);
        QCOMPARE(nativeBaseName(path), baseName);
    }

    void fileExists_data()
    {
        QTest::addColumn<QString>("relative"); // "" = the temporary folder itself
        QTest::addColumn<bool>("exists");
        QTest::newRow("file") << "worlds/Castle.BSET" << true;
        QTest::newRow("file without extension") << "worlds/readme" << true;
        QTest::newRow("missing file") << "worlds/castle.gif" << false;
        QTest::newRow("folder") << "worlds" << false;
        QTest::newRow("folder named like a file") << "worlds/sub.bset" << false;
        QTest::newRow("folder with slash") << "worlds/" << false;
        QTest::newRow("file in missing folder") << "nowhere/Castle.BSET" << false;
        QTest::newRow("pattern matches") << "worlds/*.bset" << true;
        QTest::newRow("pattern ignores case") << "worlds/castle.*" << true;
        QTest::newRow("question marks") << "worlds/C?stle.bset" << true;
        QTest::newRow("question mark needs a character") << "worlds/readme?" << false;
        QTest::newRow("star dot star matches names without dot") << "empty/../worlds/read*.*" << true;
        QTest::newRow("star dot star in a folder of folders") << "worlds/sub.bset/*.*" << false;
        QTest::newRow("pattern skips folders") << "worlds/sub.*" << false;
        QTest::newRow("pattern in empty folder") << "empty/*" << false;
        QTest::newRow("dangling link is no file") << "empty/*.bset" << false;
        QTest::newRow("link to a file counts") << "textures only/*.jpg" << true;
        QTest::newRow("blank in folder") << "textures only/*.gif" << true;
        QTest::newRow("hidden file") << "worlds/*.block" << true;
        QTest::newRow("pattern without match") << "worlds/*.wav" << false;
        QTest::newRow("pattern in missing folder") << "nowhere/*.bset" << false;
        QTest::newRow("wildcard in folder part") << "w*/Castle.BSET" << false;
        QTest::newRow("temporary folder") << "" << false;
    }
    void fileExists()
    {
        QFETCH(QString, relative);
        QFETCH(bool, exists);
        const QString path = relative.isEmpty() ? m_dir.path() : m_dir.path() + '/' + relative;
        QCOMPARE(::fileExists(path), exists);
    }

    void fileExistsOddInput_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("empty") << "";
        QTest::newRow("NUL inside") << QString("/tmp/a") + QChar(0) + "b";
        QTest::newRow("only a pattern of nothing") << "/nonexistent-folder-xyz/*";
        QTest::newRow("root") << "/";
    }
    void fileExistsOddInput()
    {
        QFETCH(QString, path);
        QVERIFY(!::fileExists(path));
    }

    void fileExistsRelativePattern()
    {
        const QString old = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.filePath("worlds")));
        const bool found = ::fileExists("*.bset");
        const bool missing = ::fileExists("*.gif");
        QVERIFY(QDir::setCurrent(old));
        QVERIFY(found);
        QVERIFY(!missing);
    }

    void dateToSeconds_data()
    {
        QTest::addColumn<QDateTime>("date");
        QTest::addColumn<qint32>("seconds");
        QTest::newRow("epoch") << QDateTime(QDate(1970, 1, 1), QTime(0, 0)) << 0;
        QTest::newRow("one day") << QDateTime(QDate(1970, 1, 2), QTime(0, 0)) << 86400;
        QTest::newRow("before the epoch") << QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59)) << -1;
        QTest::newRow("summer day") << QDateTime(QDate(2003, 7, 14), QTime(13, 45, 10)) << 1058190310;
        QTest::newRow("winter day") << QDateTime(QDate(2003, 1, 14), QTime(13, 45, 10)) << 1042551910;
        QTest::newRow("milliseconds dropped") << QDateTime(QDate(1970, 1, 1), QTime(0, 0, 1, 999)) << 1;
        QTest::newRow("last 32-bit second") << QDateTime(QDate(2038, 1, 19), QTime(3, 14, 7)) << 2147483647;
        QTest::newRow("past 32 bits is clamped") << QDateTime(QDate(2100, 1, 1), QTime(0, 0)) << 2147483647;
        QTest::newRow("far past is clamped") << QDateTime(QDate(1800, 1, 1), QTime(0, 0)) << qint32(-2147483647 - 1);
        QTest::newRow("invalid date") << QDateTime() << 0;
        // The fields count, whatever zone the value carries.
        QTest::newRow("UTC value") << QDateTime(QDate(1970, 1, 1), QTime(1, 0), Qt::UTC) << 3600;
        QTest::newRow("offset value") << QDateTime(QDate(1970, 1, 1), QTime(1, 0), Qt::OffsetFromUTC, 7200) << 3600;
    }
    void dateToSeconds()
    {
        QFETCH(QDateTime, date);
        QFETCH(qint32, seconds);
        QCOMPARE(dateToUnixTime(date), seconds);
    }

    void secondsToDate_data()
    {
        QTest::addColumn<qint32>("seconds");
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QTime>("time");
        QTest::newRow("epoch") << 0 << QDate(1970, 1, 1) << QTime(0, 0);
        QTest::newRow("negative") << -86400 << QDate(1969, 12, 31) << QTime(0, 0);
        QTest::newRow("summer") << 1058190310 << QDate(2003, 7, 14) << QTime(13, 45, 10);
        QTest::newRow("largest") << 2147483647 << QDate(2038, 1, 19) << QTime(3, 14, 7);
        QTest::newRow("smallest") << qint32(-2147483647 - 1) << QDate(1901, 12, 13) << QTime(20, 45, 52);
    }
    void secondsToDate()
    {
        QFETCH(qint32, seconds);
        QFETCH(QDate, date);
        QFETCH(QTime, time);
        const QDateTime result = unixTimeToDate(seconds);
        QVERIFY(result.isValid());
        QCOMPARE(result.date(), date);
        QCOMPARE(result.time(), time);
        QCOMPARE(result.timeSpec(), Qt::LocalTime);
        QCOMPARE(dateToUnixTime(result), seconds);
    }

    // Every second of a year that has daylight-saving changes survives the round
    // trip, including the hour the clock skips and the hour it repeats.
    void roundTripAcrossDaylightSaving_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::newRow("Berlin") << QByteArray("Europe/Berlin");
        QTest::newRow("New York") << QByteArray("America/New_York");
        QTest::newRow("Sydney") << QByteArray("Australia/Sydney");
    }
    void roundTripAcrossDaylightSaving()
    {
        QFETCH(QByteArray, zone);
        if (!QFile::exists("/usr/share/zoneinfo/" + zone))
            QSKIP("no time zone data on this machine");
        const QByteArray oldZone = qgetenv("TZ");
        qputenv("TZ", zone);
        tzset();
        int failures = 0;
        QString firstFailure;
        const qint32 start = 1609459200; // 1/1/2021
        for (qint32 s = start; s < start + 366 * 86400; s += 900) {
            const QDateTime date = unixTimeToDate(s);
            if (!date.isValid() || dateToUnixTime(date) != s) {
                if (failures++ == 0)
                    firstFailure = QString::number(s);
            }
        }
        // The skipped hour: its fields are still shown and still counted.
        const QDateTime gap = unixTimeToDate(zone == "Europe/Berlin" ? 1616898600 : 0); // 3/28/2021 2:30
        if (oldZone.isEmpty())
            qunsetenv("TZ");
        else
            qputenv("TZ", oldZone);
        tzset();
        QVERIFY2(failures == 0, qPrintable(firstFailure));
        if (zone == "Europe/Berlin") {
            QVERIFY(gap.isValid());
            QCOMPARE(gap.time(), QTime(2, 30));
            QCOMPARE(gap.date(), QDate(2021, 3, 28));
            QCOMPARE(gap.timeSpec(), Qt::UTC); // no such local time: the zone was in force
        }
    }
};

QTEST_GUILESS_MAIN(TestCommonFunctions)
#include "test_common_functions.moc"
