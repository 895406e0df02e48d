// The manager window's enabling, sorting and clipboard, and its list after a
// change that Rover made on disk while the window was open.

#include "cache/CacheLocation.h"
#include "cache/ui/frmManager.h"
#include "common/CommonFunctions.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "support/DataRows.h"
#include "support/Screenshot.h"
#include "support/ScriptedPrompts.h"
#include "support/TestFiles.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

class TestFrmManager : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    // A fake Wine prefix with Rover registered for Internet Explorer and its cache
    // folder, whose host path is returned.
    QString makePrefix(const QString &prefix)
    {
        const QString cache = prefix + u"/drive_c/Rover/flatland"_s;
        QDir().mkpath(cache + u"/www.host.com/a"_s);
        QDir().mkpath(prefix + u"/dosdevices"_s);
        QFile::link(u"../drive_c"_s, prefix + u"/dosdevices/c:"_s);
        writeBytes(prefix + u"/system.reg"_s,
                   "WINE REGISTRY Version 2\n\n[Software\\\\Microsoft\\\\Internet Explorer\\\\"
                   "Plugins\\\\Extension\\\\.3dml] 1\n\"Location\"=\"C:\\\\Rover\\\\npRover.dll\"\n");
        qputenv("WINEPREFIX", prefix.toLocal8Bit());
        return cache;
    }

private slots:
    void enablingAndSorting_data()
    {
        QTest::addColumn<int>("files");
        addRow("no Rover", -1);
        addRow("empty cache", 0);
        addRow("three blocksets", 3);
    }
    void enablingAndSorting()
    {
        QFETCH(int, files);
        const QString prefix = m_dir.path() + u"/p"_s + QString::number(files + 1);
        const QString cache = makePrefix(prefix) + u"/www.host.com/a"_s;
        if (files < 0)
            QFile::remove(prefix + u"/system.reg"_s);
        for (int i = 0; i < files; ++i) // sizes 30, 20, 10 in name order
            writeBytes(cache + u"/set"_s + QString::number(i) + u".bset"_s, QByteArray(30 - 10 * i, 'x'));

        RoverMachine machine;
        HiveRegistry hive(m_dir.path() + u"/settings.reg"_s);
        RegistryWrapper settings(hive);
        ScriptedPrompts prompts;
        frmManager window(machine, prompts, settings);
        window.show();
        auto *list = window.findChild<QTreeWidget *>(u"BlocksetList"_s);
        QCOMPARE(list->topLevelItemCount(), qMax(files, 0));
        for (const QString &name : {u"btnOpen"_s, u"mnuRemove"_s, u"btnCopyURL"_s, u"mnuForceDownload"_s})
            QCOMPARE(window.findChild<QAction *>(name)->isEnabled(), files > 0);
        QCOMPARE(window.findChild<QAction *>(u"btnRefresh"_s)->isEnabled(), files >= 0);
        QCOMPARE(window.findChild<QAction *>(u"mnuIE"_s)->isChecked(), files >= 0);
        QCOMPARE(window.findChild<QAction *>(u"mnuNS"_s)->isEnabled(), false);
        if (files < 0) {
            QCOMPARE(window.findChild<QLabel *>(u"stbProcess"_s)->text(),
                     u"Flatland Rover is not installed. No blockset cache found."_s);
            return;
        }
        if (files == 0)
            return;
        QVERIFY(saveScreenshot(window, u"frmManager"_s));

        // A click on Size sorts by the byte count, a second click reverses it.
        const int size = 3;
        list->header()->sectionClicked(size);
        QCOMPARE(list->topLevelItem(0)->text(0), u"set2.bset"_s);
        list->header()->sectionClicked(size);
        QCOMPARE(list->topLevelItem(0)->text(0), u"set0.bset"_s);

        list->topLevelItem(1)->setSelected(true);
        QCOMPARE(window.findChild<QLabel *>(u"stbSize"_s)->text(), u"Selected: 0 KB"_s);
        window.findChild<QAction *>(u"btnCopyTag"_s)->trigger();
        QCOMPARE(QApplication::clipboard()->text(), u"<blockset href=\"http://www.host.com/a/set1.bset\"/>"_s);
        window.findChild<QAction *>(u"mnuCopyURL"_s)->trigger();
        QCOMPARE(QApplication::clipboard()->text(), u"http://www.host.com/a/set1.bset"_s);
    }

    void removeKeepsWhatRoverWroteMeanwhile()
    {
        const QString cache = makePrefix(m_dir.path() + u"/outside"_s);
        for (const QString &name : {u"a"_s, u"b"_s})
            writeBytes(cache + u"/www.host.com/a/"_s + name + u".bset"_s, "x");
        const auto element = [](const char *name, const char *updated) {
            return "\t<BLOCKSET HREF=\"http://www.host.com/a/" + QByteArray(name) + ".bset\" SIZE=\"1\" UPDATED=\""
                   + updated + "\"/>\r\n";
        };
        writeBytes(cache + u"/cache.txt"_s,
                   "<CACHE>\r\n" + element("a", "1600000000") + element("b", "1600000000") + "</CACHE>\r\n");

        RoverMachine machine;
        HiveRegistry hive(m_dir.path() + u"/outside.reg"_s);
        RegistryWrapper settings(hive);
        QVERIFY(settings.loadSettings());
        QVERIFY(settings.setBoolSetting(u"showWarnings"_s, false));
        ScriptedPrompts prompts;
        frmManager window(machine, prompts, settings);
        window.show();
        auto *list = window.findChild<QTreeWidget *>(u"BlocksetList"_s);
        QCOMPARE(list->topLevelItemCount(), 2);
        const int updated = 4;
        QVERIFY(list->columnWidth(updated)
                >= list->fontMetrics().horizontalAdvance(list->topLevelItem(0)->text(updated)));

        // Rover downloads c.bset and checks b.bset while the list is shown.
        writeBytes(cache + u"/www.host.com/a/c.bset"_s, "x");
        writeBytes(cache + u"/cache.txt"_s, "<CACHE>\r\n" + element("a", "1600000000") + element("b", "1700000000")
                                                + element("c", "1700000000") + "</CACHE>\r\n");
        list->topLevelItem(0)->setSelected(true);
        window.findChild<QAction *>(u"btnRemove"_s)->trigger();
        QCOMPARE(readBytes(cache + u"/cache.txt"_s),
                 "<CACHE>\r\n" + element("b", "1700000000") + element("c", "1700000000") + "</CACHE>\r\n");
        QCOMPARE(list->topLevelItemCount(), 2);
        QCOMPARE(list->topLevelItem(0)->text(0), u"b.bset"_s);
        QCOMPARE(list->topLevelItem(0)->text(updated),
                 QLocale().toString(unixTimeToDate(1700000000), QLocale::ShortFormat));
        QVERIFY(prompts.messages.isEmpty());
    }
};

QTEST_MAIN(TestFrmManager)
#include "test_frm_manager.moc"
