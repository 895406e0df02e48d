// What only the main window itself shows: the keyboard shortcuts reaching
// their commands.
// Leaves out: what the commands do (test_interface_state_gui, test_unload).

#include "MainWindowFixture.h"

#include <QApplication>
#include <QSignalSpy>

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
};

QTEST_MAIN(TestMainWindowLayout)
#include "moc_MainWindowFixture.cpp"
#include "test_main_window_layout.moc"
