// The New Blockset dialog: its starting state from the user settings, the
// coupling of the strict-prefix box with the list and the sync box, the results
// OK hands back, that it cannot be cancelled, and that the editor's New command
// shows it (through the real prompts) and takes its values.
// Leaves out: the new-blockset command's own rules (document tests).

#include "MainWindowFixture.h"

#include "app/ui/frmNew.h"
#include "common/RegistryWrapper.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QTimer>

class TestFrmNew : public QObject {
    Q_OBJECT

private slots:
    void controls();
    void initialState_data();
    void initialState();
    void strictPrefixClickCoupling_data();
    void strictPrefixClickCoupling();
    void okStoresResults_data();
    void okStoresResults();
    void escapeDoesNotCancel();
    void centredOnActiveWindow();
    void newCommandShowsDialog();

private:
    static QColor listBackground(QComboBox *list) { return list->palette().color(QPalette::Base); }
};

void TestFrmNew::controls()
{
    frmNew dialog(true, true);
    QCOMPARE(dialog.windowTitle(), QString("New Blockset"));
    QVERIFY(dialog.findChild<QLineEdit *>("fldNewName"));
    QVERIFY(dialog.findChild<QLineEdit *>("fldNewVersion"));
    QCOMPARE(dialog.findChild<QCheckBox *>("cbxNewStrictPrefix")->text(),
             QString("Strict prefix for double character symbols:"));
    QCOMPARE(dialog.findChild<QCheckBox *>("cbxNewSyncDouble")->text(),
             QString("Synchronize double character symbols"));
    QCOMPARE(dialog.findChild<QPushButton *>("OKButton")->text(), QString("OK"));
    // OK is the only button.
    QCOMPARE(dialog.findChildren<QPushButton *>().size(), 1);

    QStringList labels;
    for (QLabel *label : dialog.findChildren<QLabel *>())
        labels << label->text().remove('&');
    QVERIFY(labels.contains("Name:"));
    QVERIFY(labels.contains("Version:"));

    auto *list = dialog.findChild<QComboBox *>("lstNewStrictPrefix");
    QVERIFY(list);
    QCOMPARE(list->count(), 90);
    QCOMPARE(list->itemText(0), QString("."));
    QCOMPARE(list->itemText(1), QString("A"));
    QCOMPARE(list->itemText(89), QString("~"));
    QCOMPARE(list->currentIndex(), 0);
    QVERIFY(dialog.findChild<QLineEdit *>("fldNewName")->text().isEmpty());
    QVERIFY(dialog.findChild<QLineEdit *>("fldNewVersion")->text().isEmpty());
}

void TestFrmNew::initialState_data()
{
    QTest::addColumn<bool>("strictSetting");
    QTest::addColumn<bool>("syncSetting");
    QTest::addColumn<bool>("strictChecked");
    QTest::addColumn<bool>("syncChecked");
    QTest::addColumn<bool>("syncEnabled");
    QTest::addColumn<bool>("listEnabled");
    QTest::newRow("both on") << true << true << true << true << true << true;
    QTest::newRow("strict only") << true << false << true << false << true << true;
    QTest::newRow("strict off, sync on") << false << true << false << false << false << false;
    QTest::newRow("both off") << false << false << false << false << false << false;
}

void TestFrmNew::initialState()
{
    QFETCH(bool, strictSetting);
    QFETCH(bool, syncSetting);
    QFETCH(bool, strictChecked);
    QFETCH(bool, syncChecked);
    QFETCH(bool, syncEnabled);
    QFETCH(bool, listEnabled);

    frmNew dialog(strictSetting, syncSetting);
    auto *strict = dialog.findChild<QCheckBox *>("cbxNewStrictPrefix");
    auto *sync = dialog.findChild<QCheckBox *>("cbxNewSyncDouble");
    auto *list = dialog.findChild<QComboBox *>("lstNewStrictPrefix");
    QCOMPARE(strict->isChecked(), strictChecked);
    QVERIFY(strict->isEnabled());
    QCOMPARE(sync->isChecked(), syncChecked);
    QCOMPARE(sync->isEnabled(), syncEnabled);
    QCOMPARE(list->isEnabled(), listEnabled);
    const QPalette app = QApplication::palette();
    QCOMPARE(listBackground(list), listEnabled ? app.color(QPalette::Base) : app.color(QPalette::Button));
}

void TestFrmNew::strictPrefixClickCoupling_data()
{
    QTest::addColumn<bool>("strictSetting");
    QTest::addColumn<bool>("syncSetting");
    QTest::newRow("settings on, on") << true << true;
    QTest::newRow("settings on, off") << true << false;
    QTest::newRow("settings off, on") << false << true;
    QTest::newRow("settings off, off") << false << false;
}

void TestFrmNew::strictPrefixClickCoupling()
{
    QFETCH(bool, strictSetting);
    QFETCH(bool, syncSetting);
    frmNew dialog(strictSetting, syncSetting);
    auto *strict = dialog.findChild<QCheckBox *>("cbxNewStrictPrefix");
    auto *sync = dialog.findChild<QCheckBox *>("cbxNewSyncDouble");
    auto *list = dialog.findChild<QComboBox *>("lstNewStrictPrefix");
    const QPalette app = QApplication::palette();

    for (int round = 0; round < 2; ++round) {
        strict->click();
        if (strict->isChecked()) {
            // Checked: list usable, sync offered and set from the setting.
            QVERIFY(list->isEnabled());
            QCOMPARE(listBackground(list), app.color(QPalette::Base));
            QVERIFY(sync->isEnabled());
            QCOMPARE(sync->isChecked(), syncSetting);
        } else {
            // Cleared: sync can never stay chosen without the strict prefix.
            QVERIFY(!list->isEnabled());
            QCOMPARE(listBackground(list), app.color(QPalette::Button));
            QVERIFY(!sync->isEnabled());
            QVERIFY(!sync->isChecked());
        }
    }
}

void TestFrmNew::okStoresResults_data()
{
    QTest::addColumn<bool>("strictSetting");
    QTest::addColumn<bool>("clickStrict");
    QTest::addColumn<bool>("clickSync");
    QTest::addColumn<int>("strictResult");
    QTest::addColumn<int>("syncResult");
    QTest::newRow("as set: both") << true << false << false << 1 << 1;
    QTest::newRow("sync cleared") << true << false << true << 1 << 0;
    QTest::newRow("strict cleared") << true << true << false << 0 << 0;
    QTest::newRow("off by setting") << false << false << false << 0 << 0;
    QTest::newRow("strict switched on") << false << true << false << 1 << 1;
}

void TestFrmNew::okStoresResults()
{
    QFETCH(bool, strictSetting);
    QFETCH(bool, clickStrict);
    QFETCH(bool, clickSync);
    QFETCH(int, strictResult);
    QFETCH(int, syncResult);

    frmNew dialog(strictSetting, true);
    dialog.show();
    QTest::keyClicks(dialog.findChild<QLineEdit *>("fldNewName"), "Harbour");
    QTest::keyClicks(dialog.findChild<QLineEdit *>("fldNewVersion"), "2.1");
    if (clickStrict)
        dialog.findChild<QCheckBox *>("cbxNewStrictPrefix")->click();
    if (clickSync)
        dialog.findChild<QCheckBox *>("cbxNewSyncDouble")->click();
    auto *list = dialog.findChild<QComboBox *>("lstNewStrictPrefix");
    if (list->isEnabled())
        list->setCurrentIndex(3); // "C"

    dialog.findChild<QPushButton *>("OKButton")->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.intNewStrictPrefix, strictResult);
    QCOMPARE(dialog.intNewSyncDouble, syncResult);
    const NewBlocksetChoice choice = dialog.choice();
    QCOMPARE(choice.name, QString("Harbour"));
    QCOMPARE(choice.version, QString("2.1"));
    QCOMPARE(choice.strictPrefix, strictResult == 1);
    QCOMPARE(choice.syncDouble, syncResult == 1);
    QCOMPARE(choice.prefixIndex, list->isEnabled() ? 3 : 0);
}

void TestFrmNew::escapeDoesNotCancel()
{
    frmNew dialog(true, true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(dialog.isVisible());
    dialog.close(); // the title bar's close does not end it either
    QVERIFY(dialog.isVisible());
    dialog.findChild<QPushButton *>("OKButton")->click();
    QVERIFY(!dialog.isVisible());
}

void TestFrmNew::centredOnActiveWindow()
{
    QWidget owner;
    owner.setGeometry(100, 120, 800, 600);
    owner.show();
    QVERIFY(QTest::qWaitForWindowExposed(&owner));
    QApplication::setActiveWindow(&owner);
    QCOMPARE(QApplication::activeWindow(), &owner);

    frmNew dialog(true, true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QPoint ownerCentre = owner.frameGeometry().center();
    const QPoint dialogCentre = dialog.frameGeometry().center();
    QVERIFY2((ownerCentre - dialogCentre).manhattanLength() <= 2,
             qPrintable(QString("owner centre %1,%2, dialog centre %3,%4")
                            .arg(ownerCentre.x())
                            .arg(ownerCentre.y())
                            .arg(dialogCentre.x())
                            .arg(dialogCentre.y())));
    dialog.findChild<QPushButton *>("OKButton")->click();
}

void TestFrmNew::newCommandShowsDialog()
{
    // The editor on its real prompts: New shows frmNew, and its values reach the document.
    QTemporaryDir dir;
    qputenv("Temp", dir.path().toLocal8Bit());
    frmMain::Options options;
    options.registryPath = dir.filePath("registry.reg");
    frmMain window(options);
    window.settings().setBoolSetting("syncBlockset", true);
    window.settings().setBoolSetting("strictPrefix", true);
    window.settings().setBoolSetting("syncDouble", false);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    bool shown = false;
    QString title;
    bool syncChecked = true;
    QTimer::singleShot(0, this, [&] {
        auto *dialog = qobject_cast<frmNew *>(QApplication::activeModalWidget());
        if (!dialog) {
            if (QWidget *other = QApplication::activeModalWidget())
                other->close();
            return;
        }
        shown = true;
        title = dialog->windowTitle();
        syncChecked = dialog->findChild<QCheckBox *>("cbxNewSyncDouble")->isChecked();
        QTest::keyClicks(dialog->findChild<QLineEdit *>("fldNewName"), "Harbour");
        QTest::keyClicks(dialog->findChild<QLineEdit *>("fldNewVersion"), "0.3");
        dialog->findChild<QComboBox *>("lstNewStrictPrefix")->setCurrentIndex(2);
        dialog->findChild<QPushButton *>("OKButton")->click();
    });
    window.findChild<QAction *>("btnNew")->trigger();

    QVERIFY2(shown, "New showed the New Blockset dialog");
    QCOMPARE(title, QString("New Blockset"));
    QVERIFY2(!syncChecked, "the dialog started from the syncDouble setting");
    const BlocksetDocument &doc = window.document();
    QVERIFY(doc.blocksetOpen());
    QVERIFY(doc.blocksetUntitled());
    QCOMPARE(doc.style().name, QString("Harbour"));
    QCOMPARE(doc.versionText(), QString("0.3"));
    QCOMPARE(doc.symbols().prefixIndex, 2);
    QVERIFY(doc.symbols().strictPrefixChecked);
    QVERIFY(!doc.symbols().syncDoubleChecked);
    QCOMPARE(window.windowTitle(), QString("Cubrix - Harbour"));
    QCOMPARE(window.findChild<QLineEdit *>("fldBlocksetName")->text(), QString("Harbour"));
    QCOMPARE(window.findChild<QComboBox *>("lstStrictPrefix")->currentIndex(), 2);
    QCOMPARE(window.findChild<QLabel *>("stbProcess")->text(), QString("Strict Prefix Mode activated."));
    QCOMPARE(window.findChild<QLabel *>("stbVersion")->text(), QString("0.3"));
}

QTEST_MAIN(TestFrmNew)
#include "test_frmNew.moc"
