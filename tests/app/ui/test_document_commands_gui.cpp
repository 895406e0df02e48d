// Whole document commands run from the real window's toolbar buttons and menu
// entries: Open, from the command and from the command line, and the start
// decision for a command line (chooseStart). The questions and refusals of the
// commands, and Save on an untitled blockset, are the document's own tests.
// Leaves out: the document's own rules in detail (tests/app), the enabled states
// per tab (test_interface_state_gui) and closing the window (test_unload).

#include "MainWindowFixture.h"

#include "app/ui/MainSub.h"

#include <QFileInfo>

namespace {

// Writes an update file beside the archive, as a save would.
void writeUpdateFile(const QString &archive, const QByteArray &comment)
{
    const QFileInfo info(archive);
    writeFile(info.absolutePath() + '/' + info.completeBaseName() + ".txt",
              "<version id=\"1.0\" size=\"1\">\r\n" + comment + "\r\n</version>\r\n");
}

} // namespace

class TestDocumentCommandsGui : public MainWindowTest {
    Q_OBJECT

private slots:
    void startChoice_data()
    {
        // file: relative to the start folder, "" for none; lookups: times Rover's registration was asked for.
        addColumns<QStringList, bool, bool, QString, int>("arguments", "roverKnown", "manager", "file", "lookups");
        addRow("/c without Rover", QStringList{"/c"}, false, false, "", 1);
        addRow("/c with Rover", QStringList{"/c"}, true, true, "", 1);
        addRow("nothing", QStringList{}, true, false, "", 0);
        addRow("relative file", QStringList{"Castle.bset"}, true, false, "Castle.bset", 0);
        addRow("two files", QStringList{"Castle.bset", "Tower.bset"}, true, false, "", 0);
        addRow("switch and file", QStringList{"/c", "Castle.bset"}, true, false, "", 0);
        addRow("capital switch", QStringList{"/C"}, true, false, "", 0);
    }

    void startChoice()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, roverKnown);
        QFETCH(QString, file);
        const QString start = fixture->dir.filePath("worlds");
        int asked = 0;
        const StartChoice choice = chooseStart(arguments, start, [&] {
            ++asked;
            return roverKnown;
        });
        QTEST(choice.cacheManager, "manager");
        QCOMPARE(choice.file, file.isEmpty() ? QString() : start + '/' + file);
        QTEST(asked, "lookups");
        // An absolute name stays as it is, whatever the start folder.
        if (!file.isEmpty()) {
            const QString absolute = fixture->dir.filePath("elsewhere/" + file);
            QCOMPARE(chooseStart({absolute}, start, nullptr).file, absolute);
        }
    }

    void open_data()
    {
        QTest::addColumn<QString>("how"); // a command, or the command line
        addRow("toolbar", "btnOpen");
        addRow("menu", "mnuOpen");
        addRow("command line", "");
    }

    void open()
    {
        QFETCH(QString, how);
        const QString tower =
            fixture->makeBlockset({.name = "Tower", .blocks = 3, .textures = 2, .sounds = 1, .version = "2.1"});
        writeUpdateFile(tower, "Higher walls");
        fixture->window->settings().setStringSetting("pathBlockset", "/nowhere");
        if (how.isEmpty()) {
            // `cubrix Tower.bset` started in the archive's folder: the window gets the full path.
            fixture->window->openBlocksetFile(chooseStart({"Tower.bset"}, fixture->dir.path(), nullptr).file);
        } else {
            fixture->prompts.fileAnswers << tower;
            fixture->action(how)->trigger();
            QCOMPARE(fixture->prompts.fileRequests.size(), 1);
            const ScriptedPrompts::FileRequest &asked = fixture->prompts.fileRequests.first();
            QCOMPARE(QStringList({asked.kind, asked.title, asked.filter, asked.folder}).join(" | "),
                     "open | Open Blockset | Blocksets (*.bset),*.bset | /nowhere");
        }
        QCOMPARE(fixture->caption(), QString("Cubrix - Tower.bset"));
        QCOMPARE(QList<int>({fixture->rows("BlockList"), fixture->rows("TextureList"), fixture->rows("SoundList")}),
                 QList<int>({3, 2, 1}));
        QCOMPARE(fixture->panel("stbVersion"), QString("2.1"));
        QCOMPARE(fixture->shownText("fldBlocksetName") + ", " + fixture->shownText("fldUpdate"),
                 QString("Tower, Higher walls"));
        QVERIFY(!fixture->enabled("btnSave"));
        QVERIFY(fixture->prompts.messages.isEmpty());
        // The folder of a file chosen in the dialog is where the next Open dialog
        // starts; a file handed in from outside leaves it alone.
        QCOMPARE(fixture->window->settings().getStringSetting("pathBlockset"),
                 how.isEmpty() ? QString("/nowhere") : QDir::toNativeSeparators(fixture->dir.path()));
    }
};

QTEST_MAIN(TestDocumentCommandsGui)
#include "moc_MainWindowFixture.cpp"
#include "test_document_commands_gui.moc"
