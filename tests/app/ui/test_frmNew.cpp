// The New Blockset dialog: its starting state from the user settings, the
// coupling of the strict-prefix box with the list and the sync box, the results
// OK hands back, that it cannot be cancelled, and that the editor's New command
// shows it (through the real prompts) and takes its values.
// Leaves out: the new-blockset command's own rules (document tests).

#include "MainWindowFixture.h"

#include "app/ui/frmNew.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

class TestFrmNew : public QObject {
    Q_OBJECT

private slots:
    void settingsClicksAndResults_data()
    {
        // strictResult, syncResult: intNewStrictPrefix and intNewSyncDouble after OK.
        addColumns<bool, bool, int, bool, int, int>("strictSetting", "syncSetting", "strictClicks", "syncClick",
                                                    "strictResult", "syncResult");
        addRow("both on, clicked off and on", true, true, 2, false, 1, 1);
        addRow("strict off, sync on, clicked on and off", false, true, 2, false, 0, 0);
        addRow("sync cleared", true, true, 0, true, 1, 0);
    }

    void settingsClicksAndResults()
    {
        QFETCH(bool, strictSetting);
        QFETCH(bool, syncSetting);
        QFETCH(int, strictClicks);
        QFETCH(bool, syncClick);
        QFETCH(int, strictResult);
        QFETCH(int, syncResult);
        frmNew dialog(strictSetting, syncSetting);
        dialog.show();
        auto *strict = dialog.findChild<QCheckBox *>("cbxNewStrictPrefix");
        auto *sync = dialog.findChild<QCheckBox *>("cbxNewSyncDouble");
        auto *list = dialog.findChild<QComboBox *>("lstNewStrictPrefix");
        QVERIFY(strict && sync && list);

        // It starts as the settings say, and each click on the strict-prefix box
        // couples the list and the sync box to it: sync double can never stay chosen
        // without strict prefix, and comes back as its setting says.
        for (int click = 0; click <= strictClicks; ++click) {
            if (click > 0)
                strict->click();
            const bool on = strict->isChecked();
            QCOMPARE(on, strictSetting != (click % 2 == 1));
            QCOMPARE(list->isEnabled(), on);
            QCOMPARE(sync->isEnabled(), on);
            QCOMPARE(sync->isChecked(), on && syncSetting);
        }
        if (syncClick)
            sync->click();
        QTest::keyClicks(dialog.findChild<QLineEdit *>("fldNewName"), "Harbour");
        QTest::keyClicks(dialog.findChild<QLineEdit *>("fldNewVersion"), "2.1");
        if (list->isEnabled())
            list->setCurrentIndex(3); // "C"

        dialog.findChild<QPushButton *>("OKButton")->click();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.intNewStrictPrefix, strictResult);
        QCOMPARE(dialog.intNewSyncDouble, syncResult);
        const NewBlocksetChoice choice = dialog.choice();
        QCOMPARE(choice.name + ' ' + choice.version, QString("Harbour 2.1"));
        QCOMPARE(choice.strictPrefix, strictResult == 1);
        QCOMPARE(choice.syncDouble, syncResult == 1);
        QCOMPARE(choice.prefixIndex, strictResult == 1 ? 3 : 0);
    }

    void cannotBeCancelled()
    {
        frmNew dialog(true, true);
        QCOMPARE(dialog.findChildren<QPushButton *>().size(), 1); // OK is the only button
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());
        dialog.close(); // the title bar's close does not end it either
        QVERIFY(dialog.isVisible());
        dialog.findChild<QPushButton *>("OKButton")->click();
        QVERIFY(!dialog.isVisible());
    }

    void newCommandShowsDialog()
    {
        // The editor on its real prompts: New shows frmNew, and its values reach the window.
        MainWindowFixture fixture; // for its Temp folder and settings hive
        frmMain::Options options;
        options.registryPath = fixture.dir.filePath("registry.reg");
        fixture.window = std::make_unique<frmMain>(options);
        frmMain &window = *fixture.window;
        window.settings().setBoolSetting("syncBlockset", true);
        window.settings().setBoolSetting("strictPrefix", true);
        window.settings().setBoolSetting("syncDouble", false);
        QVERIFY(fixture.show());

        QString shown = "no New Blockset dialog";
        QTimer::singleShot(0, this, [&] {
            auto *dialog = qobject_cast<frmNew *>(QApplication::activeModalWidget());
            if (!dialog) {
                if (QWidget *other = QApplication::activeModalWidget())
                    other->close();
                return;
            }
            // The dialog starts from the syncDouble setting.
            const bool sync = dialog->findChild<QCheckBox *>("cbxNewSyncDouble")->isChecked();
            shown = dialog->windowTitle() + (sync ? ", sync double" : "");
            QTest::keyClicks(dialog->findChild<QLineEdit *>("fldNewName"), "Harbour");
            QTest::keyClicks(dialog->findChild<QLineEdit *>("fldNewVersion"), "0.3");
            dialog->findChild<QComboBox *>("lstNewStrictPrefix")->setCurrentIndex(2);
            dialog->findChild<QPushButton *>("OKButton")->click();
        });
        fixture.action("btnNew")->trigger();

        QCOMPARE(shown, QString("New Blockset"));
        QVERIFY(window.document().blocksetUntitled());
        QCOMPARE(fixture.caption() + ", " + fixture.shownText("fldBlocksetName"), QString("Cubrix - Harbour, Harbour"));
        QCOMPARE(fixture.shownText("lstStrictPrefix"), prefixAlphabet().mid(2, 1));
    }
};

QTEST_MAIN(TestFrmNew)
#include "test_frmNew.moc"
