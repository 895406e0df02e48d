// The manager window's enabling, sorting and clipboard.

#include "cache/CacheLocation.h"
#include "cache/ui/frmManager.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
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

    void grab(QWidget &widget, const QString &name)
    {
        const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
        if (!folder.isEmpty() && QDir().mkpath(folder))
            widget.grab().save(folder + u'/' + name + u".png"_s);
    }

private slots:
    void enablingAndSorting_data()
    {
        QTest::addColumn<int>("files");
        QTest::newRow("no Rover") << -1;
        QTest::newRow("empty cache") << 0;
        QTest::newRow("three blocksets") << 3;
    }
    void enablingAndSorting()
    {
        QFETCH(int, files);
        const QString prefix = m_dir.path() + u"/p"_s + QString::number(files + 1);
        const QString cache = prefix + u"/drive_c/Rover/flatland/www.host.com/a"_s;
        QVERIFY(QDir().mkpath(cache));
        QVERIFY(QDir().mkpath(prefix + u"/dosdevices"_s));
        QFile::link(u"../drive_c"_s, prefix + u"/dosdevices/c:"_s);
        if (files >= 0)
            writeBytes(prefix + u"/system.reg"_s,
                       "WINE REGISTRY Version 2\n\n[Software\\\\Microsoft\\\\Internet Explorer\\\\"
                       "Plugins\\\\Extension\\\\.3dml] 1\n\"Location\"=\"C:\\\\Rover\\\\npRover.dll\"\n");
        for (int i = 0; i < files; ++i) // sizes 30, 20, 10 in name order
            writeBytes(cache + u"/set"_s + QString::number(i) + u".bset"_s, QByteArray(30 - 10 * i, 'x'));
        qputenv("WINEPREFIX", prefix.toLocal8Bit());

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
        grab(window, u"frmManager"_s);

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
};

QTEST_MAIN(TestFrmManager)
#include "test_frm_manager.moc"
