// Path, file and date helpers, and FileFilter: the program's compact filter
// texts and Windows-style pattern matching. Leaves out: drive letters and "\"
// paths on a real Windows file system (fileExists is run with this platform's
// paths); what QFileDialog makes of the filter entries (test_gui_prompts).
#include "common/CommonFunctions.h"
#include "common/FileFilter.h"
#include "support/DataRows.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using Entries = QList<FileFilterEntry>;

class TestCommonFunctions : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QVERIFY(QDir(m_dir.path()).mkpath("worlds/sub.bset") && QDir(m_dir.path()).mkpath("empty"));
        for (const char *name :
             {"worlds/Castle.BSET", "worlds/readme", "worlds/.hidden.block", "with blank/wall.gif"}) {
            QVERIFY(QDir(m_dir.path()).mkpath(QFileInfo(m_dir.filePath(name)).path()));
            QFile file(m_dir.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QVERIFY(QFile::link(m_dir.filePath("worlds/Castle.BSET"), m_dir.filePath("with blank/link.jpg")));
        QVERIFY(QFile::link(m_dir.filePath("worlds/gone"), m_dir.filePath("empty/dangling.bset")));
    }

    void windowsPaths_data()
    {
        addColumns<QString, QString, QString, QString, QString>("path", "fileName", "folder", "extension", "baseName");
        addRow("full path", "C:\\Worlds\\castle.bset", "castle.bset", "C:\\Worlds", "bset", "castle");
        addRow("in the root", "\\castle.bset", "castle.bset", "", "bset", "castle");
        addRow("drive root", "C:\\file", "file", "C:", "", "file");
        addRow("folder with dot", "C:\\a.b\\file", "file", "C:\\a.b", "b\\file", "file");
        addRow("trailing backslash", "C:\\dir\\", "", "C:\\dir", "", "");
        addRow("name ending in dot", "name.", "name.", "", "", "name");
        addRow("forward slashes stay", "C:/w/a.gif", "C:/w/a.gif", "", "gif", "C:/w/a");
    }
    void windowsPaths()
    {
        QFETCH(QString, path);
        QFETCH(QString, fileName);
        QFETCH(QString, folder);
        QFETCH(QString, baseName);
        QCOMPARE(getFileName(path), fileName);
        QCOMPARE(getFolder(path), folder);
        QTEST(getExtension(path), "extension");
        QCOMPARE(getBaseName(path), baseName);
        // The same rules with "/" for addresses and this platform's paths.
        QString slashed = path;
        slashed.replace('/', '|').replace('\\', '/');
        QCOMPARE(getUrlFileName(slashed), QString(fileName).replace('/', '|'));
        QCOMPARE(nativeFileName(slashed), QString(fileName).replace('/', '|'));
        QCOMPARE(nativeFolder(slashed), QString(folder).replace('\\', '/'));
        QCOMPARE(nativeBaseName(slashed), QString(baseName).replace('/', '|'));
    }

    void fileExists_data()
    {
        // path: "$" stands for the temporary folder.
        addColumns<QString, bool>("path", "exists");
        addRow("file", "$/worlds/Castle.BSET", true);
        addRow("missing file", "$/worlds/castle.gif", false);
        addRow("folder named like a file", "$/worlds/sub.bset", false);
        addRow("file in missing folder", "$/nowhere/Castle.BSET", false);
        addRow("pattern matches, ignoring case", "$/worlds/*.bset", true);
        addRow("question mark needs a character", "$/worlds/readme?", false);
        addRow("star dot star matches names without dot", "$/empty/../worlds/read*.*", true);
        addRow("pattern skips folders", "$/worlds/sub.*", false);
        addRow("dangling link is no file", "$/empty/*.bset", false);
        addRow("link to a file counts", "$/with blank/*.jpg", true);
        addRow("wildcard in folder part", "$/w*/Castle.BSET", false);
        addRow("empty", "", false);
        addRow("NUL inside", QString("$/worlds/Castle.BSET") + QChar(0) + "x", false);
    }
    void fileExists()
    {
        QFETCH(QString, path);
        QTEST(::fileExists(path.replace('$', m_dir.path())), "exists");
    }

    void dates_data()
    {
        // both: the seconds also give back the date.
        addColumns<QDateTime, qint32, bool>("date", "seconds", "both");
        addRow("epoch", QDateTime(QDate(1970, 1, 1), QTime(0, 0)), 0, true);
        addRow("before the epoch", QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59)), -1, true);
        addRow("summer day, no offset", QDateTime(QDate(2003, 7, 14), QTime(13, 45, 10)), 1058190310, true);
        addRow("largest", QDateTime(QDate(2038, 1, 19), QTime(3, 14, 7)), 2147483647, true);
        addRow("milliseconds dropped", QDateTime(QDate(1970, 1, 1), QTime(0, 0, 1, 999)), 1, false);
        addRow("past 32 bits is clamped", QDateTime(QDate(2100, 1, 1), QTime(0, 0)), 2147483647, false);
        addRow("invalid date", QDateTime(), 0, false);
        addRow("UTC value: the fields count", QDateTime(QDate(1970, 1, 1), QTime(1, 0), Qt::UTC), 3600, false);
    }
    void dates()
    {
        QFETCH(QDateTime, date);
        QFETCH(qint32, seconds);
        QFETCH(bool, both);
        QCOMPARE(dateToUnixTime(date), seconds);
        if (both) {
            QCOMPARE(unixTimeToDate(seconds), date);
            QCOMPARE(unixTimeToDate(seconds).timeSpec(), Qt::LocalTime);
        }
    }

    void parse_data()
    {
        addColumns<QString, Entries>("filter", "entries");
        addRow("images", "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,All files (*.*),*.*",
               Entries{{"All supported Images (*.gif;*.jpg)", {"*.gif", "*.jpg"}},
                       {"GIF images (*.gif)", {"*.gif"}},
                       {"All files (*.*)", {"*.*"}}});
        addRow("empty", "", Entries{});
        addRow("trailing label dropped", "A,*.a,B", Entries{{"A", {"*.a"}}});
        addRow("empty field ends the list", "A,*.a,,*.b,C,*.c", Entries{{"A", {"*.a"}}});
        addRow("blanks and empty patterns", "A, *.a ;;*.b;", Entries{{"A", {"*.a", "*.b"}}});
    }
    void parse()
    {
        QFETCH(QString, filter);
        QTEST(FileFilter::parse(filter), "entries");
    }

    void matches_data()
    {
        addColumns<QString, QString, bool>("pattern", "name", "match");
        addRow("extension ignores case", "*.bset", "CASTLE.BSET", true);
        addRow("other extension", "*.bset", "castle.bset.txt", false);
        addRow("star dot star, no dot", "*.*", "readme", true);
        addRow("name dot star, bare name", "readme.*", "readme", true);
        addRow("name dot star, longer name", "readme.*", "readmes", false);
        addRow("question mark", "?.gif", "a.gif", true);
        addRow("question mark needs one", "?.gif", ".gif", false);
        addRow("two stars, wrong order", "*a*b", "bxa", false);
        addRow("backtracking", "*ab", "aab", true);
        addRow("bracket is no set", "[a].gif", "[a].gif", true);
        addRow("accented letters ignore case", "\xc3\x89t\xc3\xa9.wav", "\xc3\xa9T\xc3\x89.WAV", true);
        addRow("empty pattern", "", "a", false);
    }
    void matches()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QTEST(FileFilter::matches(pattern, name), "match");
    }
    void longNamesStayFast()
    {
        // Star-heavy patterns against long names must not explode.
        QVERIFY(!FileFilter::matches("*a*a*a*a*a*b", QString(20000, 'a')));
    }
};

QTEST_GUILESS_MAIN(TestCommonFunctions)
#include "test_common_functions.moc"
