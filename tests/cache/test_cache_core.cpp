// Rover lookups in fake Wine prefixes, the cache index and the manager's commands.

#include "storage/ArchiveWriter.h"
#include "cache/CacheIndex.h"
#include "cache/CacheLocation.h"
#include "cache/CacheManager.h"
#include "common/CommonFunctions.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "rover/RoverCacheRules.h"
#include "support/ScriptedPrompts.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A hive section line for `key` (single backslashes) holding `value` of `name`.
QByteArray section(QByteArray key, const QByteArray &values)
{
    key.replace("\\", "\\\\");
    return "\n[" + key + "] 1\n#time=1\n" + values + "\n";
}

// What Rover's own index reader says of the bytes.
bool roverAccepts(const QByteArray &index)
{
    return !hasRoverError(checkRoverCache(index));
}

} // namespace

class TestCacheCore : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString prefix() const { return m_dir.path() + u"/prefix"_s; }

    void makePrefix(const QByteArray &arch, const QByteArray &sections)
    {
        QDir().mkpath(prefix() + u"/dosdevices"_s);
        QDir().mkpath(prefix() + u"/drive_c/Program Files (x86)/Rover/Flatland/www.Host.com/Sets"_s);
        QDir().mkpath(prefix() + u"/drive_c/Program Files/Netscape/Plugins"_s);
        QFile::link(u"../drive_c"_s, prefix() + u"/dosdevices/c:"_s);
        writeBytes(prefix() + u"/system.reg"_s,
                   "WINE REGISTRY Version 2\n;; All keys relative to \\\\Machine\n\n#arch=" + arch + "\n" + sections);
        qputenv("WINEPREFIX", prefix().toLocal8Bit());
    }

    void makeBlockset(const QString &path, const QByteArray &style, const QStringList &items)
    {
        QTemporaryDir content;
        for (const QString &item : items)
            writeBytes(content.path() + u'/' + item, "x");
        if (!style.isEmpty())
            writeBytes(content.path() + u'/' + nativeBaseName(path) + u".style"_s, style);
        ArchiveWriter archive(path);
        QVERIFY(archive.addFolder(content.path()));
        QVERIFY(archive.write());
    }

private slots:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.path());
    }

    void lookups_data()
    {
        QTest::addColumn<QByteArray>("arch");
        QTest::addColumn<QByteArray>("sections");
        QTest::addColumn<bool>("pluginFile");
        QTest::addColumn<QString>("ie");
        QTest::addColumn<QString>("netscape");

        const QByteArray ie32 = section("Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                                        "\"Location\"=\"C:\\\\Program Files\\\\Plugin\\\\NPROVER.DLL\"");
        const QByteArray ie64 =
            section("Software\\Wow6432Node\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                    "\"Location\"=\"C:\\\\Program Files (x86)\\\\Rover\\\\npRover.dll\"");
        const QByteArray ns = section("Software\\Netscape\\Netscape Navigator", "\"CurrentVersion\"=\"4.7 (en)\"")
                              + section("Software\\Netscape\\Netscape Navigator\\4.7 (en)\\Main",
                                        "\"Plugins Directory\"=\"C:\\\\Program Files\\\\Netscape\\\\Plugins\"");
        const QString nsFolder = u"c:\\program files\\netscape\\plugins\\flatland"_s;
        QTest::newRow("32-bit IE") << QByteArray("win32") << ie32 << false << u"c:\\program files\\plugin\\flatland"_s
                                   << QString();
        QTest::newRow("64-bit view first") << QByteArray("win64") << (ie32 + ie64) << false
                                           << u"c:\\program files (x86)\\rover\\flatland"_s << QString();
        QTest::newRow("netscape with plug-in") << QByteArray("win32") << ns << true << QString() << nsFolder;
        QTest::newRow("netscape, plug-in missing") << QByteArray("win32") << ns << false << QString() << QString();
        QTest::newRow("both") << QByteArray("win64") << (ns + ie64) << true
                              << u"c:\\program files (x86)\\rover\\flatland"_s << nsFolder;
        QTest::newRow("nothing") << QByteArray("win64") << QByteArray() << true << QString() << QString();
    }
    void lookups()
    {
        QFETCH(QByteArray, arch);
        QFETCH(QByteArray, sections);
        QFETCH(bool, pluginFile);
        QFETCH(QString, ie);
        QFETCH(QString, netscape);
        makePrefix(arch, sections);
        if (pluginFile)
            writeBytes(prefix() + u"/drive_c/Program Files/Netscape/Plugins/NPRover.dll"_s, "dll");
        const QByteArray hiveBefore = readBytes(prefix() + u"/system.reg"_s);

        RoverMachine machine;
        QCOMPARE(findCacheFolderIE(machine.registry()), ie);
        QCOMPARE(machine.cacheFolderNetscape(), netscape);
        QCOMPARE(machine.cacheFolderIE(), ie);

        HiveRegistry settingsHive(m_dir.path() + u"/settings.reg"_s);
        RegistryWrapper settings(settingsHive);
        ScriptedPrompts prompts;
        CacheManager manager(machine, prompts, settings);
        manager.load();
        const CacheManager::Browser expected = !ie.isEmpty()         ? CacheManager::Browser::InternetExplorer
                                               : !netscape.isEmpty() ? CacheManager::Browser::Netscape
                                                                     : CacheManager::Browser::None;
        QCOMPARE(manager.browser(), expected);
        QCOMPARE(manager.cacheFolder().isEmpty(), expected == CacheManager::Browser::None);
        if (expected == CacheManager::Browser::None)
            QCOMPARE(manager.processText(), u"Flatland Rover is not installed. No blockset cache found."_s);
        QCOMPARE(readBytes(prefix() + u"/system.reg"_s), hiveBefore); // never written
        QCOMPARE(QDir(prefix()).entryList(QDir::Files), QStringList{u"system.reg"_s});
    }

    void mapsMixedCaseAndRejectsUnmappable()
    {
        makePrefix("win64", {});
        RoverMachine machine;
        QCOMPARE(machine.hostPath(u"c:\\program files (x86)\\rover\\flatland\\www.host.com"_s),
                 QDir(prefix() + u"/drive_c"_s).canonicalPath()
                     + u"/Program Files (x86)/Rover/Flatland/www.Host.com"_s);
        QCOMPARE(machine.hostPath(u"d:\\rover"_s), QString());
        QCOMPARE(machine.hostPath(u"\\\\server\\share\\rover"_s), QString());
    }

    void readIndex_data()
    {
        QTest::addColumn<QByteArray>("index");
        QTest::addColumn<QStringList>("updated"); // Last Updated of castle, house
        QTest::addColumn<QString>("castleName");

        const QString date = QLocale().toString(unixTimeToDate(1600000000), QLocale::ShortFormat);
        QTest::newRow("markers") << QByteArray(
            "<CACHE>\r\n\t<BLOCKSET HREF=\"http://h/castle.bset\" UPDATED=\"0\" NAME=\"Castle\"/>\r\n</CACHE>\r\n")
                                 << QStringList{u"<force download>"_s, u"---"_s} << u"Castle"_s;
        QTest::newRow("listed twice") << QByteArray(
            "<cache><blockset href=\"http://h/castle.bset\" updated=\"0\" name=\"\"/>"
            "<!-- a note --><blockset href = \"http://x/castle.bset\" updated=\"1600000000\" name=\"First\"/>"
            "<blockset href=\"http://y/castle.bset\" name=\"Second\" updated=\"1600000000\"/></cache>")
                                      << QStringList{date, u"---"_s} << u"First"_s;
        QTest::newRow("no href, after end") << QByteArray(
            "<CACHE><BLOCKSET UPDATED=\"5\" NAME=\"x\"/></CACHE><BLOCKSET HREF=\"house.bset\" UPDATED=\"0\"/>")
                                            << QStringList{u"---"_s, u"---"_s} << u"?"_s;
        QTest::newRow("case of file name")
            << QByteArray("<CACHE><BLOCKSET HREF=\"h/Castle.bset\" UPDATED=\"0\"/></CACHE>")
            << QStringList{u"---"_s, u"---"_s} << u"?"_s;
    }
    void readIndex()
    {
        QFETCH(QByteArray, index);
        QFETCH(QStringList, updated);
        QFETCH(QString, castleName);
        QList<CacheRow> rows(2);
        rows[0].fileName = u"castle.bset"_s;
        rows[1].fileName = u"house.bset"_s;
        rows[1].name = u"From archive"_s;
        readCacheIndex(index, rows);
        QCOMPARE((QStringList{rows[0].lastUpdatedText(), rows[1].lastUpdatedText()}), updated);
        QCOMPARE(rows[0].name, castleName);
        QCOMPARE(rows[1].name, u"From archive"_s);
    }

    void writeIndexRoundTrip()
    {
        QList<CacheRow> rows(3);
        rows[0] = {u"a.bset"_s, u"www.host.com\\sets\\old"_s, 1234567, u"1.0"_s, u"Ä name"_s, u"say \"hi\""_s};
        rows[0].updated = CacheRow::Updated::Date;
        rows[0].updatedTime = 1600000059; // seconds a short date form would drop
        rows[1] = {u"b.bset"_s, u"h"_s, 10};
        rows[1].updated = CacheRow::Updated::ForceDownload;
        rows[2] = {u"c.bset"_s, u"h"_s, 10};
        rows[2].updated = CacheRow::Updated::NotListed;
        QByteArray bytes;
        QVERIFY(cacheIndexBytes(rows, bytes));
        QVERIFY2(roverAccepts(bytes), bytes.constData());
        QVERIFY(bytes.contains("HREF=\"http://www.host.com/sets/old/a.bset\" SIZE=\"1234567\" UPDATED=\"1600000059\""));
        QVERIFY(!bytes.contains("c.bset"));

        QList<CacheRow> back(3);
        for (int i = 0; i < 3; ++i)
            back[i].fileName = rows[i].fileName;
        readCacheIndex(bytes, back);
        QCOMPARE(back[0].updatedTime, 1600000059);
        QCOMPARE(back[0].name, u"Ä name"_s);
        QCOMPARE(back[0].synopsis, u"say 'hi'"_s);
        QCOMPARE(back[0].version, u"1.0"_s);
        QCOMPARE(back[1].lastUpdatedText(), u"<force download>"_s);
        QCOMPARE(back[2].updated, CacheRow::Updated::NotListed);

        rows[0].updated = CacheRow::Updated::NoIndex;
        QVERIFY(!cacheIndexBytes(rows, bytes));
    }

    void managerCommands()
    {
        makePrefix("win64", section("Software\\Wow6432Node\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                                    "\"Location\"=\"C:\\\\Program Files (x86)\\\\Rover\\\\npRover.dll\""));
        const QString cache = prefix() + u"/drive_c/Program Files (x86)/Rover/Flatland"_s;
        makeBlockset(cache + u"/www.Host.com/Sets/castle.bset"_s,
                     "<style name=\"Castle\" version=\"2.1\" author=\"Ann\"/>",
                     {u"a.block"_s, u"B.BLOCK"_s, u"t.gif"_s, u"u.JPG"_s, u"s.wav"_s, u"readme.txt"_s});
        writeBytes(cache + u"/broken.bset"_s, "not a zip");
        const QByteArray index = "<CACHE>\r\n\t<BLOCKSET HREF=\"http://www.host.com/sets/castle.bset\" SIZE=\"1\" "
                                 "UPDATED=\"1600000000\" NAME=\"Index\" SYNOPSIS=\"Towers\"/>\r\n</CACHE>\r\n";
        writeBytes(cache + u"/cache.txt"_s, index);

        RoverMachine machine;
        HiveRegistry settingsHive(m_dir.path() + u"/settings.reg"_s);
        RegistryWrapper settings(settingsHive);
        QVERIFY(settings.loadSettings());
        ScriptedPrompts prompts;
        CacheManager manager(machine, prompts, settings);
        manager.load();
        QCOMPARE(manager.rows().size(), 2);
        const CacheRow &broken = manager.rows().at(0);
        QCOMPARE(
            (QStringList{CacheManager::cellText(broken, CacheManager::Blocks), broken.lastUpdatedText(), broken.name}),
            (QStringList{u"?"_s, u"---"_s, u"?"_s}));
        const CacheRow &castle = manager.rows().at(1);
        QCOMPARE(castle.path, u"www.Host.com\\Sets"_s);
        QCOMPARE((QList<int>{castle.blocks, castle.textures, castle.sounds}), (QList<int>{2, 2, 1}));
        QCOMPARE((QStringList{castle.name, castle.synopsis, castle.version, castle.author}),
                 (QStringList{u"Castle"_s, u"Towers"_s, u"2.1"_s, u"Ann"_s}));
        QCOMPARE(manager.blocksetsText(), u"2 Blocksets"_s);

        // Sorting by size puts the small broken file first, descending last.
        manager.sort(CacheManager::Size, false);
        QCOMPARE(manager.rows().at(1).fileName, u"broken.bset"_s);

        // A read-only folder: the write fails with the message, the old index stays whole.
        QFile::setPermissions(cache, QFile::ReadOwner | QFile::ExeOwner);
        const bool folderLocked = !QFile(cache + u"/probe"_s).open(QIODevice::WriteOnly);
        if (folderLocked) {
            QVERIFY(!manager.forceDownload(0));
            QCOMPARE(prompts.messageTexts(), QStringList{u"Couldn't write cache file to disk"_s});
            QCOMPARE(readBytes(cache + u"/cache.txt"_s), index);
            QCOMPARE(manager.rows().at(0).updated, CacheRow::Updated::Date);
        }
        QFile::setPermissions(cache, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        prompts.messages.clear();

        // Removal asks first; with showWarnings off it does not.
        prompts.answers = {PromptAnswer::No};
        QVERIFY(!manager.remove(1));
        QCOMPARE(prompts.messageTexts(), QStringList{u"Are you sure to remove broken.bset?"_s});
        QVERIFY(settings.setBoolSetting(u"showWarnings"_s, false));
        QVERIFY(manager.remove(1));
        QVERIFY(!QFile::exists(cache + u"/broken.bset"_s));
        QCOMPARE(manager.rows().size(), 1);
        const QByteArray written = readBytes(cache + u"/cache.txt"_s);
        QVERIFY(roverAccepts(written));
        QVERIFY(written.contains("UPDATED=\"1600000000\" NAME=\"Castle\" SYNOPSIS=\"Towers\" VERSION=\"2.1\"/>"));
        QVERIFY(prompts.unexpected.isEmpty());
    }

    void sizePanel_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("exactly 1 MB") << qint64(1048576) << u"1024 KB"_s;
        QTest::newRow("one byte more") << qint64(1048577) << u"1 MB"_s;
        QTest::newRow("1.5 MB") << qint64(1572864) << u"1.5 MB"_s;
        QTest::newRow("small") << qint64(1536) << u"2 KB"_s;
    }
    void sizePanel()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(CacheManager::sizeInUnits(bytes), text);
    }
};

QTEST_GUILESS_MAIN(TestCacheCore)
#include "test_cache_core.moc"
