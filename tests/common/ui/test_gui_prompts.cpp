// GuiPrompts offscreen: message boxes and Qt's own (non-native) file dialogs,
// driven while they run. Leaves out: the platform's native dialogs, which
// offscreen tests cannot drive.
#include "common/ui/GuiPrompts.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileSystemModel>
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
    auto *waited = new int(0);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, waited, act] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal && (*waited += 10) < 5000)
            return;
        poll->stop();
        poll->deleteLater();
        delete waited;
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

void touch(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

} // namespace

class TestGuiPrompts : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        QVERIFY(m_dir.isValid());
        for (const char *name : {"wall.gif", "sky.jpg", "bell.wav", "castle.bset", "readme", "b.block", "a.block"})
            touch(m_dir.filePath(name));
    }

    void message_data()
    {
        QTest::addColumn<PromptButtons>("buttons");
        QTest::addColumn<PromptIcon>("icon");
        QTest::addColumn<QMessageBox::StandardButtons>("shown");
        QTest::addColumn<QMessageBox::Icon>("shownIcon");
        QTest::addColumn<int>("press"); // a StandardButton to click, or -1 for Esc
        QTest::addColumn<PromptAnswer>("answer");
        QTest::newRow("warning OK") << PromptButtons::Ok << PromptIcon::Exclamation
                                    << QMessageBox::StandardButtons(QMessageBox::Ok) << QMessageBox::Warning
                                    << int(QMessageBox::Ok) << PromptAnswer::Ok;
        QTest::newRow("confirmation Yes") << PromptButtons::YesNo << PromptIcon::Question
                                          << (QMessageBox::Yes | QMessageBox::No) << QMessageBox::Question
                                          << int(QMessageBox::Yes) << PromptAnswer::Yes;
        QTest::newRow("confirmation No") << PromptButtons::YesNo << PromptIcon::Question
                                         << (QMessageBox::Yes | QMessageBox::No) << QMessageBox::Question
                                         << int(QMessageBox::No) << PromptAnswer::No;
        QTest::newRow("confirmation Esc is No") << PromptButtons::YesNo << PromptIcon::Question
                                                << (QMessageBox::Yes | QMessageBox::No) << QMessageBox::Question
                                                << -1 << PromptAnswer::No;
        QTest::newRow("save question Cancel")
            << PromptButtons::YesNoCancel << PromptIcon::Exclamation
            << (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel) << QMessageBox::Warning
            << int(QMessageBox::Cancel) << PromptAnswer::Cancel;
        QTest::newRow("save question Esc is Cancel")
            << PromptButtons::YesNoCancel << PromptIcon::Question
            << (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel) << QMessageBox::Question << -1
            << PromptAnswer::Cancel;
        QTest::newRow("file error") << PromptButtons::Ok << PromptIcon::Critical
                                    << QMessageBox::StandardButtons(QMessageBox::Ok) << QMessageBox::Critical << -1
                                    << PromptAnswer::Ok;
        QTest::newRow("information") << PromptButtons::Ok << PromptIcon::Information
                                     << QMessageBox::StandardButtons(QMessageBox::Ok) << QMessageBox::Information
                                     << int(QMessageBox::Ok) << PromptAnswer::Ok;
        QTest::newRow("no icon") << PromptButtons::Ok << PromptIcon::None
                                 << QMessageBox::StandardButtons(QMessageBox::Ok) << QMessageBox::NoIcon
                                 << int(QMessageBox::Ok) << PromptAnswer::Ok;
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
        GuiPrompts prompts;
        prompts.setParentWidget(&owner);
        // A name from a file is shown as it is, not read as markup.
        const QString text = "Block \"<b>tower</b>\" already exists.";
        QString seenText, seenTitle;
        QMessageBox::StandardButtons seenButtons;
        QMessageBox::Icon seenIcon = QMessageBox::NoIcon;
        QWidget *seenParent = nullptr;
        QMessageBox::StandardButton seenDefault = QMessageBox::NoButton;
        onNextModal([&](QWidget *w) {
            auto *box = qobject_cast<QMessageBox *>(w);
            if (!box)
                return;
            seenText = box->text();
            seenTitle = box->windowTitle();
            seenButtons = box->standardButtons();
            seenIcon = box->icon();
            seenParent = box->parentWidget();
            seenDefault = box->standardButton(box->defaultButton());
            QCOMPARE(box->textFormat(), Qt::PlainText);
            if (press < 0)
                QTest::keyClick(box, Qt::Key_Escape);
            else
                QTest::mouseClick(box->button(QMessageBox::StandardButton(press)), Qt::LeftButton);
        });
        QCOMPARE(prompts.message(text, "Add Block", buttons, icon), answer);
        QCOMPARE(seenText, text);
        QCOMPARE(seenTitle, QString("Add Block"));
        QCOMPARE(seenButtons, shown);
        QCOMPARE(seenIcon, shownIcon);
        QCOMPARE(seenParent, &owner);
        QCOMPARE(seenDefault, buttons == PromptButtons::Ok ? QMessageBox::Ok : QMessageBox::Yes);
    }

    void fileDialogSetUp_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("labels");        // as the type box shows them
        QTest::addColumn<QStringList>("firstPatterns"); // what the dialog filters by at first
        QTest::newRow("blocksets") << "Blocksets (*.bset),*.bset" << QStringList{"Blocksets (*.bset)"}
                                   << QStringList{"*.bset"};
        QTest::newRow("images")
            << "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,JPG images (*.jpg),*.jpg,"
               "All files (*.*),*.*"
            << QStringList{"All supported Images (*.gif;*.jpg)", "GIF images (*.gif)", "JPG images (*.jpg)",
                           "All files (*.*)"}
            << QStringList{"*.gif", "*.jpg"};
        QTest::newRow("all files") << "All files (*.*),*.*" << QStringList{"All files (*.*)"} << QStringList{"*"};
        QTest::newRow("no filter") << "" << QStringList{"All files (*.*)"} << QStringList{"*"};
    }
    void fileDialogSetUp()
    {
        QFETCH(QString, filter);
        QFETCH(QStringList, labels);
        QFETCH(QStringList, firstPatterns);
        QFileDialog dialog;
        GuiPrompts::prepareFileDialog(dialog, "Add Textures", filter, m_dir.path());
        QCOMPARE(dialog.windowTitle(), QString("Add Textures"));
        QCOMPARE(QDir(dialog.directory()).canonicalPath(), QDir(m_dir.path()).canonicalPath());
        // The first entry is selected; the dialog names it by its label.
        QCOMPARE(dialog.selectedNameFilter(), labels.first());

        auto *types = dialog.findChild<QComboBox *>("fileTypeCombo");
        QVERIFY(types);
        QStringList shown;
        for (int i = 0; i < types->count(); ++i)
            shown << types->itemText(i);
        QCOMPARE(shown, labels);
        QCOMPARE(types->currentIndex(), 0);

        auto *model = dialog.findChild<QFileSystemModel *>();
        QVERIFY(model);
        QCOMPARE(model->nameFilters(), firstPatterns);
    }

    void emptyFolderMeansCurrentDirectory()
    {
        const QString old = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QFileDialog dialog;
        GuiPrompts::prepareFileDialog(dialog, QString(), "Blocksets (*.bset),*.bset", QString());
        QVERIFY(QDir::setCurrent(old));
        QCOMPARE(QDir(dialog.directory()).canonicalPath(), QDir(m_dir.path()).canonicalPath());
        QCOMPARE(dialog.windowTitle(), QString("Open File"));
    }

    void openFileReturnsTheChosenFile()
    {
        GuiPrompts prompts;
        QFileDialog::FileMode mode = QFileDialog::AnyFile;
        onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            mode = dialog->fileMode();
            dialog->selectFile("castle.bset");
            static_cast<QDialog *>(dialog)->accept(); // QFileDialog::accept, which checks the choice
        });
        const QString path = prompts.openFile("Open Blockset", "Blocksets (*.bset),*.bset", m_dir.path());
        QCOMPARE(mode, QFileDialog::ExistingFile);
        QCOMPARE(QFileInfo(path).canonicalFilePath(), QFileInfo(m_dir.filePath("castle.bset")).canonicalFilePath());
        QVERIFY(QFileInfo(path).isAbsolute());
    }

    void cancelledDialogsGiveNothing()
    {
        GuiPrompts prompts;
        onNextModal([](QWidget *w) { qobject_cast<QDialog *>(w)->reject(); });
        QCOMPARE(prompts.openFile("Open", "Blocksets (*.bset),*.bset", m_dir.path()), QString());
        onNextModal([](QWidget *w) { QTest::keyClick(w, Qt::Key_Escape); });
        QCOMPARE(prompts.openFiles("Add Blocks", "Block files (*.block),*.block", m_dir.path()), QStringList());
        onNextModal([](QWidget *w) { qobject_cast<QDialog *>(w)->reject(); });
        QCOMPARE(prompts.saveFile("Save As", "Blocksets (*.bset),*.bset", "bset", m_dir.path()), QString());
    }

    void openFilesKeepsTheDialogsOrder()
    {
        GuiPrompts prompts;
        QFileDialog::FileMode mode = QFileDialog::AnyFile;
        onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            mode = dialog->fileMode();
            auto *edit = dialog->findChild<QLineEdit *>("fileNameEdit");
            QVERIFY(edit);
            edit->setText("\"b.block\" \"a.block\"");
            static_cast<QDialog *>(dialog)->accept(); // QFileDialog::accept, which checks the choice
        });
        const QStringList paths = prompts.openFiles("Add Blocks", "Block files (*.block),*.block", m_dir.path());
        QCOMPARE(mode, QFileDialog::ExistingFiles);
        QCOMPARE(paths.size(), 2);
        QCOMPARE(QFileInfo(paths[0]).fileName(), QString("b.block"));
        QCOMPARE(QFileInfo(paths[1]).fileName(), QString("a.block"));
        QCOMPARE(QFileInfo(paths[0]).absolutePath(), QFileInfo(m_dir.filePath("a.block")).absolutePath());
    }

    void saveFileAddsTheDefaultExtension_data()
    {
        QTest::addColumn<QString>("defaultExt");
        QTest::newRow("plain") << "bset";
        QTest::newRow("with dot") << ".bset";
    }
    void saveFileAddsTheDefaultExtension()
    {
        QFETCH(QString, defaultExt);
        GuiPrompts prompts;
        onNextModal([](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
            dialog->selectFile("tower");
            static_cast<QDialog *>(dialog)->accept(); // QFileDialog::accept, which checks the choice
        });
        const QString path = prompts.saveFile("Save Blockset As", "Blocksets (*.bset),*.bset", defaultExt, m_dir.path());
        QCOMPARE(QFileInfo(path).fileName(), QString("tower.bset"));
    }

    void saveFileAsksBeforeReplacing_data()
    {
        QTest::addColumn<bool>("replace");
        QTest::newRow("replace") << true;
        QTest::newRow("keep") << false;
    }
    void saveFileAsksBeforeReplacing()
    {
        QFETCH(bool, replace);
        GuiPrompts prompts;
        bool asked = false;
        onNextModal([&](QWidget *w) {
            auto *dialog = qobject_cast<QFileDialog *>(w);
            QVERIFY(dialog);
            // The overwrite question runs inside accept(): answer it first.
            onNextModal([&, dialog](QWidget *question) {
                auto *box = qobject_cast<QMessageBox *>(question);
                asked = box != nullptr;
                if (box)
                    QTest::mouseClick(box->button(replace ? QMessageBox::Yes : QMessageBox::No), Qt::LeftButton);
                if (!replace)
                    QTimer::singleShot(0, dialog, &QDialog::reject);
            });
            dialog->selectFile("castle.bset");
            static_cast<QDialog *>(dialog)->accept(); // QFileDialog::accept, which checks the choice
        });
        const QString path = prompts.saveFile("Save Blockset As", "Blocksets (*.bset),*.bset", "bset", m_dir.path());
        QVERIFY(asked);
        QCOMPARE(path.isEmpty(), !replace);
        if (replace)
            QCOMPARE(QFileInfo(path).fileName(), QString("castle.bset"));
    }

    void newBlocksetUsesTheMainWindowsDialog()
    {
        GuiPrompts prompts;
        // Without a dialog: the settings, sync double only with a strict prefix.
        NewBlocksetChoice plain = prompts.newBlockset(true, true);
        QVERIFY(plain.strictPrefix && plain.syncDouble);
        plain = prompts.newBlockset(false, true);
        QVERIFY(!plain.strictPrefix && !plain.syncDouble);

        QList<QPair<bool, bool>> calls;
        prompts.newBlocksetDialog = [&](bool strict, bool sync) {
            calls.append({strict, sync});
            NewBlocksetChoice choice;
            choice.name = "Towers";
            choice.version = "1.0";
            choice.prefixIndex = 3;
            return choice;
        };
        const NewBlocksetChoice choice = prompts.newBlockset(false, true);
        QCOMPARE(calls, (QList<QPair<bool, bool>>{{false, true}}));
        QCOMPARE(choice.name, QString("Towers"));
        QCOMPARE(choice.prefixIndex, 3);
    }

    void ownerFallsBackToTheActiveWindow()
    {
        QWidget window;
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        GuiPrompts prompts;
        QCOMPARE(prompts.parentWidget(), nullptr);
        QWidget *seenParent = nullptr;
        onNextModal([&](QWidget *w) {
            seenParent = w->parentWidget();
            QTest::keyClick(w, Qt::Key_Escape);
        });
        prompts.message("x", "y", PromptButtons::Ok, PromptIcon::None);
        QCOMPARE(seenParent, &window);

        // A parent that goes away is not used after it is gone.
        auto *gone = new QWidget;
        prompts.setParentWidget(gone);
        delete gone;
        QCOMPARE(prompts.parentWidget(), nullptr);
    }
};

QTEST_MAIN(TestGuiPrompts)
#include "test_gui_prompts.moc"
