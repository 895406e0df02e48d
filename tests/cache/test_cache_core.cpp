// Rover lookups in fake Wine prefixes and the manager's commands on a cache.

#include "cache/CacheLocation.h"
#include "cache/CacheManager.h"
#include "common/CommonFunctions.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "storage/ArchiveWriter.h"
#include "support/DataRows.h"
#include "support/ScriptedPrompts.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <cstring>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// A hive section line for `key` (single backslashes) holding `value` of `name`.
QByteArray section(QByteArray key, const QByteArray &values)
{
    key.replace("\\", "\\\\");
    return "\n[" + key + "] 1\n#time=1\n" + values + "\n";
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
        addColumns<QByteArray, QByteArray, bool, QString, QString>("arch", "sections", "pluginFile", "ie", "netscape");

        const QByteArray ie32 = section("Software\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                                        "\"Location\"=\"C:\\\\Program Files\\\\Plugin\\\\NPROVER.DLL\"");
        const QByteArray ie64 =
            section("Software\\Wow6432Node\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                    "\"Location\"=\"C:\\\\Program Files (x86)\\\\Rover\\\\npRover.dll\"");
        const QByteArray ns = section("Software\\Netscape\\Netscape Navigator", "\"CurrentVersion\"=\"4.7 (en)\"")
                              + section("Software\\Netscape\\Netscape Navigator\\4.7 (en)\\Main",
                                        "\"Plugins Directory\"=\"C:\\\\Program Files\\\\Netscape\\\\Plugins\"");
        const QString nsFolder = u"c:\\program files\\netscape\\plugins\\flatland"_s;
        addRow("32-bit IE", QByteArray("win32"), ie32, false, u"c:\\program files\\plugin\\flatland"_s, QString());
        addRow("64-bit view first", QByteArray("win64"), (ie32 + ie64), false,
               u"c:\\program files (x86)\\rover\\flatland"_s, QString());
        addRow("netscape with plug-in", QByteArray("win32"), ns, true, QString(), nsFolder);
        addRow("netscape, plug-in missing", QByteArray("win32"), ns, false, QString(), QString());
        addRow("both", QByteArray("win64"), (ns + ie64), true, u"c:\\program files (x86)\\rover\\flatland"_s, nsFolder);
        addRow("nothing", QByteArray("win64"), QByteArray(), true, QString(), QString());
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

    void managerCommands()
    {
        makePrefix("win64", section("Software\\Wow6432Node\\Microsoft\\Internet Explorer\\Plugins\\Extension\\.3dml",
                                    "\"Location\"=\"C:\\\\Program Files (x86)\\\\Rover\\\\npRover.dll\""));
        const QString plugin = prefix() + u"/drive_c/Program Files (x86)/Rover/npRover.dll"_s;
        writeBytes(plugin, "dll");
        const QString cache = prefix() + u"/drive_c/Program Files (x86)/Rover/Flatland"_s;
        makeBlockset(cache + u"/www.Host.com/Sets/castle.bset"_s,
                     "<style name=\"Castle\" version=\"2.1\" author=\"Ann\"/>",
                     {u"a.block"_s, u"B.BLOCK"_s, u"t.gif"_s, u"u.JPG"_s, u"s.wav"_s, u"readme.txt"_s});
        writeBytes(cache + u"/broken.bset"_s, "not a zip");
        const QByteArray castle = "\t<BLOCKSET HREF=\"http://www.host.com/sets/castle.bset\" SIZE=\"1\" "
                                  "UPDATED=\"1600000000\" NAME=\"Index\" SYNOPSIS=\"Towers\"/>\r\n";
        const QByteArray broken = "\t<BLOCKSET HREF='http://broken.bset' SIZE='9' UPDATED='1600000000'/>\r\n";
        const QByteArray index = "<CACHE>\r\n" + castle + broken + "</CACHE>\r\n";
        writeBytes(cache + u"/cache.txt"_s, index);

        RoverMachine machine;
        HiveRegistry settingsHive(m_dir.path() + u"/settings.reg"_s);
        RegistryWrapper settings(settingsHive);
        QVERIFY(settings.loadSettings());
        ScriptedPrompts prompts;
        CacheManager manager(machine, prompts, settings);
        manager.load();
        QCOMPARE(manager.rows().size(), 2);
        const CacheRow &castleRow = manager.rows().at(1);
        QCOMPARE(castleRow.path, u"www.Host.com\\Sets"_s);
        QCOMPARE((QList<int>{castleRow.blocks, castleRow.textures, castleRow.sounds}), (QList<int>{2, 2, 1}));
        QCOMPARE((QStringList{castleRow.name, castleRow.synopsis, castleRow.version, castleRow.author}),
                 (QStringList{u"Castle"_s, u"Towers"_s, u"2.1"_s, u"Ann"_s}));
        QCOMPARE(CacheManager::cellText(manager.rows().at(0), CacheManager::Blocks), u"?"_s);

        // Sorting by size puts the small broken file first, descending last.
        manager.sort(CacheManager::Size, false);
        QCOMPARE(manager.rows().at(1).fileName, u"broken.bset"_s);

        // A read-only index is not replaced, and then the file stays.
        QFile::setPermissions(cache + u"/cache.txt"_s, QFile::ReadOwner);
        prompts.answers = {PromptAnswer::Yes};
        QVERIFY(!manager.remove(1));
        QCOMPARE(prompts.messages.size(), 2);
        QVERIFY(
            prompts.messages[1].text.endsWith(u"cache.txt: the file is read-only\nThe blockset stays in the cache."_s));
        QVERIFY(QFile::exists(cache + u"/broken.bset"_s));
        QCOMPARE(readBytes(cache + u"/cache.txt"_s), index);
        QFile::setPermissions(cache + u"/cache.txt"_s, QFile::ReadOwner | QFile::WriteOwner);
        prompts.messages.clear();

#ifdef Q_OS_UNIX
        // A process with the plug-in loaded: Rover runs, nothing is changed.
        QProcess browser;
        browser.start(QCoreApplication::applicationFilePath(), {u"--map"_s, plugin});
        QVERIFY(browser.waitForReadyRead(10000));
        manager.fill();
        const QString running = u"Rover is running ("_s + QFileInfo(QCoreApplication::applicationFilePath()).fileName()
                                + u"): changes to its cache would be undone. Close the browser first."_s;
        QCOMPARE(manager.processText(), running);
        QVERIFY(!manager.forceDownload(0));
        QCOMPARE(prompts.messageTexts(), QStringList{running});
        browser.closeWriteChannel();
        QVERIFY(browser.waitForFinished(10000));
        manager.checkRover();
        QCOMPARE(manager.processText(), QString());
        prompts.messages.clear();
#endif

        // Removal with showWarnings off: the index loses that element only.
        QVERIFY(settings.setBoolSetting(u"showWarnings"_s, false));
        QVERIFY(manager.remove(0));
        QVERIFY(!QFile::exists(cache + u"/broken.bset"_s));
        QCOMPARE(manager.rows().size(), 1);
        QCOMPARE(readBytes(cache + u"/cache.txt"_s), "<CACHE>\r\n" + castle + "</CACHE>\r\n");
        QVERIFY(manager.forceDownload(0));
        QCOMPARE(manager.rows().at(0).lastUpdatedText(), u"<force download>"_s);
        QVERIFY(readBytes(cache + u"/cache.txt"_s).contains("UPDATED=\"0\" NAME=\"Index\""));
        QVERIFY(prompts.messages.isEmpty());
        QVERIFY(prompts.unexpected.isEmpty());

        // A large cache is read on several threads: each row still gets its own file's columns.
        QDir().mkpath(cache + u"/many"_s);
        for (int i = 0; i < 80; ++i) {
            QStringList blocks;
            for (int b = 0; b <= i % 4; ++b)
                blocks.append(u"b%1.block"_s.arg(b));
            makeBlockset(cache + u"/many/s%1.bset"_s.arg(i), "<style name=\"S" + QByteArray::number(i) + "\"/>",
                         blocks);
        }
        manager.fill();
        QCOMPARE(manager.rows().size(), 81);
        for (const CacheRow &row : manager.rows().first(80))
            QCOMPARE(
                (QList<qint64>{row.blocks, row.size}),
                (QList<qint64>{row.name.mid(1).toInt() % 4 + 1, QFileInfo(cache + u"/many/"_s + row.fileName).size()}));
    }

    void sizePanel_data()
    {
        addColumns<qint64, QString>("bytes", "text");
        addRow("exactly 1 MB", qint64(1048576), u"1024 KB"_s);
        addRow("one byte more", qint64(1048577), u"1 MB"_s);
        addRow("1.5 MB", qint64(1572864), u"1.5 MB"_s);
        addRow("small", qint64(1536), u"2 KB"_s);
    }
    void sizePanel()
    {
        QFETCH(qint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(CacheManager::sizeInUnits(bytes), text);
    }
};

// Started as "--map FILE", the program stands in for a browser with Rover's
// plug-in loaded: it maps the file, says so, and waits for its input to close.
int main(int argc, char *argv[])
{
#ifdef Q_OS_UNIX
    if (argc == 3 && std::strcmp(argv[1], "--map") == 0) {
        const int fd = ::open(argv[2], O_RDONLY);
        struct stat info {};
        if (fd < 0 || fstat(fd, &info) != 0
            || mmap(nullptr, size_t(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0) == MAP_FAILED)
            return 1;
        std::puts("mapped");
        std::fflush(stdout);
        while (std::getchar() != EOF) {
        }
        return 0;
    }
#endif
    QCoreApplication app(argc, argv);
    TestCacheCore test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_cache_core.moc"
