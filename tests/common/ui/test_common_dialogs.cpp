// The common dialogs offscreen. GuiPrompts: message boxes and Qt's own
// (non-native) file dialogs, driven while they run. frmOptions: loading, the
// strict-prefix / sync-double coupling, OK, Cancel and the keyboard.
// Leaves out: the platform's native dialogs, which offscreen tests cannot
// drive, and the options dialog's modality, which the main window decides.
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "common/ui/GuiPrompts.h"
#include "common/ui/frmOptions.h"
#include "support/DataRows.h"
#include "support/TestFiles.h"

#include <QApplication>
#include <QCheckBox>
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

const QString kKey = QStringLiteral("SOFTWARE\\Quillmoor\\Cubrix");

// The seven boxes in their order on screen, with their settings and captions.
const struct {
    const char *objectName, *setting;
} kBoxes[] = {
    {"cbxShowWarnings", "showWarnings"}, {"cbxSyncBlockset", "syncBlockset"}, {"cbxSyncBlock", "syncBlock"},
    {"cbxStrictPrefix", "strictPrefix"}, {"cbxSyncDouble", "syncDouble"},     {"cbxSkipEdit", "skipEdit"},
    {"cbxUpdateFile", "updateFile"},
};
enum { ShowWarnings, SyncBlockset, SyncBlock, StrictPrefix, SyncDouble, SkipEdit, UpdateFile };
const QString kDefaults = "xxxxx.x"; // first start, in box order

// The dialog on a store, shown.
struct Shown {
    HiveRegistry hive;
    RegistryWrapper settings{hive};
    frmOptions dialog{settings};
    explicit Shown(const QString &path) : hive(path) { dialog.show(); }
    QCheckBox *box(int i) const { return dialog.findChild<QCheckBox *>(kBoxes[i].objectName); }
    // Clicks a box on its indicator, as a user would.
    void click(int i) const { QTest::mouseClick(box(i), Qt::LeftButton, {}, QPoint(8, box(i)->height() / 2)); }
    void press(const char *button) const { QTest::mouseClick(dialog.findChild<QPushButton *>(button), Qt::LeftButton); }
    QString checked() const
    {
        QString text;
        for (int i = 0; i < 7; ++i)
            text += box(i)->isChecked() ? 'x' : '.';
        return text;
    }
};

} // namespace

class TestCommonDialogs : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return QDir::toNativeSeparators(m_dir.filePath(name)); }
    QString hivePath() const { return m_dir.filePath(QStringLiteral("registry.reg")); }

    // A settings key holding the flags in box order: 'x' on (-1), '1' on (1), '.' off, ' ' missing.
    void store(const QString &flags)
    {
        QFile::remove(hivePath());
        HiveRegistry hive(hivePath());
        QVERIFY(hive.regCreateKey(RegRoot::LocalMachine, kKey, "Application Data"));
        for (int i = 0; i < 7; ++i) {
            const quint32 dword = flags[i] == 'x' ? 0xFFFFFFFFu : flags[i] == '1' ? 1u : 0u;
            if (flags[i] != ' ')
                QVERIFY(hive.regSetValue(RegRoot::LocalMachine, kKey, kBoxes[i].setting, RegValue::fromDword(dword)));
        }
    }

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
        // press: a StandardButton to click, or -1 for Esc.
        addColumns<PromptButtons, PromptIcon, QMessageBox::StandardButtons, QMessageBox::Icon, int, PromptAnswer>(
            "buttons", "icon", "shown", "shownIcon", "press", "answer");
        const QMessageBox::StandardButtons ok = QMessageBox::Ok, yesNo = QMessageBox::Yes | QMessageBox::No;
        const int esc = -1;
        addRow("warning OK", PromptButtons::Ok, PromptIcon::Exclamation, ok, QMessageBox::Warning, int(QMessageBox::Ok),
               PromptAnswer::Ok);
        addRow("error, Esc is OK", PromptButtons::Ok, PromptIcon::Critical, ok, QMessageBox::Critical, esc,
               PromptAnswer::Ok);
        addRow("Yes", PromptButtons::YesNo, PromptIcon::Question, yesNo, QMessageBox::Question, int(QMessageBox::Yes),
               PromptAnswer::Yes);
        addRow("Esc is Cancel", PromptButtons::YesNoCancel, PromptIcon::None, yesNo | QMessageBox::Cancel,
               QMessageBox::NoIcon, esc, PromptAnswer::Cancel);
    }
    void message()
    {
        QFETCH(PromptButtons, buttons);
        QFETCH(PromptIcon, icon);
        QFETCH(QMessageBox::StandardButtons, shown);
        QFETCH(QMessageBox::Icon, shownIcon);
        QFETCH(int, press);
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
        QTEST(prompts.message(text, "Add Block", buttons, icon), "answer");
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
        // Saving adds the default extension, given with or without its dot.
        for (const char *ext : {"bset", ".bset"}) {
            chooseInNextDialog("tower", [](QFileDialog *d) { QCOMPARE(d->acceptMode(), QFileDialog::AcceptSave); });
            QCOMPARE(prompts.saveFile("Save Blockset As", "Blocksets (*.bset),*.bset", ext, m_dir.path()),
                     path("tower.bset"));
        }
    }

    // Each click (or space bar) turns both boxes the same way, whatever the sync box
    // showed: here strict prefix on and sync double stored off.
    void strictPrefixCouplesSyncDouble()
    {
        store("...x...");
        Shown s(hivePath());
        QVERIFY(QTest::qWaitForWindowExposed(&s.dialog));
        QCheckBox *strict = s.box(StrictPrefix);
        for (int n = 0; n < 3; ++n) {
            const bool on = !strict->isChecked();
            n < 2 ? s.click(StrictPrefix) : QTest::keyClick(strict, Qt::Key_Space);
            QCOMPARE(strict->isChecked(), on);
            QCOMPARE(s.box(SyncDouble)->isChecked(), on);
            QCOMPARE(s.box(SyncDouble)->isEnabled(), on);
        }
    }

    // The boxes show the stored flags (sync double disabled without a strict
    // prefix); OK writes the seven flags (on as -1), every other way out
    // writes nothing.
    void loadAndClose_data()
    {
        // written: in box order; "" = nothing.
        addColumns<QString, QString, QList<int>, QString, QString>("flags", "loaded", "clicks", "how", "written");
        const QList<int> none, all{0, 1, 2, 3, 4, 5, 6};
        addRow("changed boxes", kDefaults, kDefaults, QList<int>{ShowWarnings, SkipEdit, SyncDouble}, "cmdOK",
               ".xxx.xx");
        addRow("one means on", "1.1111.", "x.xxxx.", none, "cmdOK", "x.xxxx.");
        addRow("unchecked strict prefix stores sync double off", kDefaults, kDefaults, QList<int>{StrictPrefix},
               "cmdOK", "xxx...x");
        addRow("strict prefix without sync double", "...x...", "...x...", none, "cmdOK", "...x...");
        addRow("disabled sync double kept as stored", "....x..", "....x..", none, "cmdOK", "....x..");
        addRow("missing values written", "       ", ".......", QList<int>{UpdateFile}, "cmdOK", "......x");
        addRow("Cancel button", kDefaults, kDefaults, all, "cmdCancel", "");
        addRow("Esc key", kDefaults, kDefaults, all, "esc", "");
    }
    void loadAndClose()
    {
        QFETCH(QString, flags);
        QFETCH(QString, loaded);
        QFETCH(QList<int>, clicks);
        QFETCH(QString, how);
        QFETCH(QString, written);
        store(flags);
        const QByteArray before = readBytes(hivePath());
        Shown s(hivePath());
        QVERIFY(QTest::qWaitForWindowExposed(&s.dialog));
        QCOMPARE(s.checked(), loaded);
        for (int i = 0; i < 7; ++i)
            QCOMPARE(s.box(i)->isEnabled(), i != SyncDouble || loaded[StrictPrefix] == 'x');
        for (int i : clicks)
            s.click(i);
        if (how.startsWith("cmd"))
            s.press(qPrintable(how));
        else
            how == "esc" ? QTest::keyClick(&s.dialog, Qt::Key_Escape) : void(s.dialog.close());
        QVERIFY(!s.dialog.isVisible());
        QCOMPARE(s.dialog.result(), int(written.isEmpty() ? QDialog::Rejected : QDialog::Accepted));
        if (written.isEmpty()) {
            QCOMPARE(readBytes(hivePath()), before);
        } else {
            QCOMPARE(Shown(hivePath()).checked(), written);
            // On is stored as -1, as the Windows registry holds it.
            QCOMPARE(readBytes(hivePath()).count("=dword:ffffffff"), written.count(u'x'));
        }
    }
};

QTEST_MAIN(TestCommonDialogs)
#include "test_common_dialogs.moc"
