// What only the main window itself shows: its state right after load, the
// keyboard shortcuts reaching their commands, and the about box.
// Leaves out: what the commands do (test_interface_state_gui, test_unload).

#include "MainWindowFixture.h"

#include "app/ui/frmAbout.h"
#include "app/ui/frmNew.h"

#include <QApplication>
#include <QSignalSpy>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QSysInfo>
#include <QTimer>

class TestMainWindowLayout : public MainWindowTest {
    Q_OBJECT

private slots:
    void shortcuts_data()
    {
        QTest::addColumn<QKeySequence>("keys");
        QTest::addColumn<QString>("command");
        QTest::newRow("new") << QKeySequence(QKeySequence::New) << "mnuNew";
        QTest::newRow("open") << QKeySequence(QKeySequence::Open) << "mnuOpen";
        QTest::newRow("close") << QKeySequence("Ctrl+W") << "mnuClose";
        QTest::newRow("save") << QKeySequence(QKeySequence::Save) << "mnuSave";
    }

    void shortcuts()
    {
        QFETCH(QKeySequence, keys);
        QFETCH(QString, command);
        QVERIFY(fixture->show());
        QApplication::setActiveWindow(fixture->window.get());
        QAction *action = fixture->action(command);
        QVERIFY(action);
        action->setEnabled(true); // reached by its keys whatever the state
        QSignalSpy triggered(action, &QAction::triggered);
        QTest::keySequence(fixture->window.get(), keys);
        QCOMPARE(triggered.count(), 1);
        fixture->prompts.unexpected.clear(); // what the command asks is not this test's matter
    }

    void loadState()
    {
        QCOMPARE(fixture->panel("stbProcess"), QString("Welcome to Cubrix 0.9 Beta 1!"));
        auto *prefixes = fixture->window->findChild<QComboBox *>("lstStrictPrefix");
        QVERIFY(prefixes);
        QCOMPARE(prefixes->count(), 90);
        QCOMPARE(prefixes->itemText(0) + prefixes->itemText(1) + prefixes->itemText(89), QString(".A~"));
    }

    void aboutBox()
    {
        QVERIFY(fixture->show());
        QStringList texts;
        QString systemInfo;
        QTimer::singleShot(0, this, [&] {
            QWidget *about = QApplication::activeModalWidget();
            for (QLabel *label : about ? about->findChildren<QLabel *>() : QList<QLabel *>())
                texts << label->text();
            QTimer::singleShot(0, this, [&] { // in the System Info window
                QWidget *info = QApplication::activeModalWidget();
                if (auto *text = info ? info->findChild<QPlainTextEdit *>("txtSystemInfo") : nullptr)
                    systemInfo = text->toPlainText();
                if (info)
                    info->close();
            });
            if (auto *button = about ? about->findChild<QPushButton *>("cmdSysInfo") : nullptr)
                button->click();
            if (about)
                about->close();
        });
        fixture->action("mnuAbout")->trigger();
        QVERIFY(texts.contains("Cubrix"));
        QVERIFY(texts.contains("Version 0.9 Beta 1"));
        const QStringList parts = {QSysInfo::prettyProductName(), QSysInfo::currentCpuArchitecture(), qVersion()};
        for (const QString &part : parts)
            QVERIFY2(systemInfo.contains(part), qPrintable("System Info... shows " + part));
    }

};

QTEST_MAIN(TestMainWindowLayout)
#include "test_main_window_layout.moc"
#include "moc_MainWindowFixture.cpp"
