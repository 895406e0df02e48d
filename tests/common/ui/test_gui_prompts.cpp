// GuiPrompts offscreen: message boxes and Qt's own (non-native) file dialogs,
// driven while they run. Leaves out: the platform's native dialogs, which
// offscreen tests cannot drive.
#include "common/ui/GuiPrompts.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// Runs `act` on the next modal window that opens (a box or dialog in its own
// event loop). A window that `act` left open is closed after five seconds, so a
// broken test fails instead of hanging; the guard dies with the window.
void onNextModal(std::function<void(QWidget *)> act)
{
    auto *poll = new QTimer;
    QObject::connect(poll, &QTimer::timeout, poll, [poll, act, deadline = QDeadlineTimer(5000)] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal && !deadline.hasExpired())
            return;
        poll->stop();
        poll->deleteLater();
        if (!modal)
            return;
        QTimer::singleShot(5000, modal, [modal] {
            if (auto *dialog = qobject_cast<QDialog *>(modal))
                dialog->reject();
        });
        act(modal);
    });
    poll->start(10);
}

// Chooses `name` in the next file dialog and presses its Open / Save button
// (QFileDialog::accept, which checks the choice); `check` looks at the dialog first.
void chooseInNextDialog(const QString &name, std::function<void(QFileDialog *)> check = {})
{
    onNextModal([name, check](QWidget *w) {
        auto *dialog = qobject_cast<QFileDialog *>(w);
        QVERIFY(dialog);
        if (check)
            check(dialog);
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(name);
        static_cast<QDialog *>(dialog)->accept();
    });
}

} // namespace

class TestGuiPrompts : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir::toNativeSeparators(m_dir.filePath(name)); }

private slots:
    void initTestCase()
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        for (const char *name : {"castle.bset", "b.block", "a.block", "c.block"}) {
            QFile file(m_dir.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }

    void message_data()
    {
        QTest::addColumn<PromptButtons>("buttons");
        QTest::addColumn<PromptIcon>("icon");
        QTest::addColumn<QMessageBox::StandardButtons>("shown");
        QTest::addColumn<QMessageBox::Icon>("shownIcon");
        QTest::addColumn<int>("press"); // a StandardButton to click, or -1 for Esc
        QTest::addColumn<PromptAnswer>("answer");
        const QMessageBox::StandardButtons ok = QMessageBox::Ok, yesNo = QMessageBox::Yes | QMessageBox::No,
                                           yesNoCancel = yesNo | QMessageBox::Cancel;
        const int esc = -1;
        QTest::newRow("warning OK") << PromptButtons::Ok << PromptIcon::Exclamation << ok << QMessageBox::Warning
                                    << int(QMessageBox::Ok) << PromptAnswer::Ok;
        QTest::newRow("error, Esc is OK")
            << PromptButtons::Ok << PromptIcon::Critical << ok << QMessageBox::Critical << esc << PromptAnswer::Ok;
        QTest::newRow("Yes") << PromptButtons::YesNo << PromptIcon::Question << yesNo << QMessageBox::Question
                             << int(QMessageBox::Yes) << PromptAnswer::Yes;
        QTest::newRow("Esc is Cancel") << PromptButtons::YesNoCancel << PromptIcon::None << yesNoCancel
                                       << QMessageBox::NoIcon << esc << PromptAnswer::Cancel;
    }
    void message()
    {
        QFETCH(PromptButtons, buttons);
        QFETCH(PromptIcon, icon);
        QFETCH(QMessageBox::StandardButtons, shown);
        QFETCH(QMessageBox::Icon, shownIcon);
        QFETCH(int, press);
        QFETCH(PromptAnswer, answer);
        QWidget owner;
        owner.show();
        GuiPrompts prompts(&owner);
        // A name from a file is shown as it is, not read as markup.
        const QString text = "Block \"<b>tower</b>\" already exists.";
        QMessageBox *seen = nullptr;
        onNextModal([&](QWidget *w) {
            seen = qobject_cast<QMessageBox *>(w);
            QVERIFY(seen);
            QCOMPARE(seen->text(), text);
            QCOMPARE(seen->textFormat(), Qt::PlainText);
            QCOMPARE(seen->windowTitle(), QString("Add Block"));
            QCOMPARE(seen->standardButtons(), shown);
            QCOMPARE(seen->icon(), shownIcon);
            QCOMPARE(seen->parentWidget(), &owner);
            QCOMPARE(seen->standardButton(seen->defaultButton()),
                     buttons == PromptButtons::Ok ? QMessageBox::Ok : QMessageBox::Yes);
            if (press < 0)
                QTest::keyClick(seen, Qt::Key_Escape);
            else
                QTest::mouseClick(seen->button(QMessageBox::StandardButton(press)), Qt::LeftButton);
        });
        QCOMPARE(prompts.message(text, "Add Block", buttons, icon), answer);
        QVERIFY(seen);
    }

    void chosenFilesAreFullPaths()
    {
        GuiPrompts prompts;
        chooseInNextDialog("castle.bset", [](QFileDialog *d) { QCOMPARE(d->fileMode(), QFileDialog::ExistingFile); });
        QCOMPARE(prompts.openFile("Open Blockset", "Blocksets (*.bset),*.bset", m_dir.path()), path("castle.bset"));
        // Several files: in the order the dialog gives them.
        chooseInNextDialog("\"b.block\" \"c.block\" \"a.block\"",
                           [](QFileDialog *d) { QCOMPARE(d->fileMode(), QFileDialog::ExistingFiles); });
        QCOMPARE(prompts.openFiles("Add Blocks", "Block files (*.block),*.block", m_dir.path()),
                 QStringList({path("b.block"), path("c.block"), path("a.block")}));
        chooseInNextDialog("a.block");
        QCOMPARE(prompts.openFiles("Add Blocks", "Block files (*.block),*.block", m_dir.path()),
                 QStringList{path("a.block")});
        // Saving adds the default extension, given with or without its dot.
        for (const QString ext : {"bset", ".bset"}) {
            chooseInNextDialog("tower", [](QFileDialog *d) { QCOMPARE(d->acceptMode(), QFileDialog::AcceptSave); });
            QCOMPARE(prompts.saveFile("Save Blockset As", "Blocksets (*.bset),*.bset", ext, m_dir.path()),
                     path("tower.bset"));
        }
    }
};

QTEST_MAIN(TestGuiPrompts)
#include "test_gui_prompts.moc"
