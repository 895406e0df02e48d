// New and close, and the save question of open, new, close and the window's
// unload, driven through scripted prompts.

#include "DocumentFixture.h"
#include "support/DataRows.h"

Q_DECLARE_METATYPE(NewBlocksetChoice)

namespace {

const QString kCurrentChanged = QStringLiteral("The current blockset has been changed. Do you want to save it first?");
const QString kChanged = QStringLiteral("The blockset has been changed. Do you want to save it first?");

NewBlocksetChoice choice(const QString &name, const QString &version = QString(), bool strictPrefix = true,
                         bool syncDouble = true, int prefixIndex = 0)
{
    return {name, version, strictPrefix, syncDouble, prefixIndex};
}

} // namespace

class TestDocumentNewClose : public QObject {
    Q_OBJECT

private slots:
    void newBlockset_data()
    {
        QTest::addColumn<NewBlocksetChoice>("answer"); // of the New Blockset dialog
        addColumns<bool, QString, QString, QString>("syncBlockset", "fileName", "versionText", "text");
        addRow("name and version, both symbol modes", choice("Castle", "1.0"), true, "Castle", "1.0",
               "Strict Prefix & Sync Double Mode activated.");
        addRow("name not synchronised, strict prefix only, last prefix", choice("Castle", "1.0", true, false, 89),
               false, "Untitled", "1.0", "Strict Prefix Mode activated.");
        addRow("nothing entered, no symbol mode", choice("", "", false, false), true, "Untitled", "No Version", "");
    }

    void newBlockset()
    {
        QFETCH(NewBlocksetChoice, answer);
        QFETCH(bool, syncBlockset);
        QFETCH(QString, fileName);
        QFETCH(QString, versionText);
        DocumentEnv env;
        env.setOption("syncBlockset", syncBlockset);
        env.open(env.addSet(QStringLiteral("Castle.bset"), castleFiles()));
        env.document.setTab(BlocksetDocument::TabSettings);
        env.prompts.newAnswers = {answer};
        env.view.clear();

        (void)env.document.newBlockset();

        QVERIFY2(env.prompts.messages.isEmpty(),
                 qPrintable(env.prompts.messageTexts().join(u'\n'))); // it was unchanged
        QCOMPARE(env.view.processTexts.first(), QStringLiteral("New Blockset..."));
        const BlocksetDocument &doc = env.document;
        QVERIFY(doc.blocksetOpen() && doc.blocksetUntitled() && !doc.isChanged());
        QCOMPARE(doc.blocksetPath(), QString());
        QCOMPARE(doc.blocksetFileName(), fileName);
        QCOMPARE(doc.versionText(), versionText);
        StyleValues expected;
        expected.name = answer.name;
        expected.version = answer.version;
        QCOMPARE(doc.style(), expected);
        QCOMPARE(doc.updateComment(), QString());
        QCOMPARE(doc.blockCount() + doc.textureCount() + doc.soundCount(), 0);
        QCOMPARE(doc.tab(), int(BlocksetDocument::TabBlocks));
        QVERIFY(filesBelow(env.folder.workingFolder()).isEmpty());
        QTEST(doc.processText(), "text");
        QVERIFY(doc.processMessageShown());
        const InterfaceState state = computeInterfaceState(interfaceFacts(doc, true));
        QCOMPARE(state.caption, QStringLiteral("Cubrix - ") + fileName);
        QCOMPARE(state.versionPanel, versionText);
        // The dialog's symbol choices; both symbol modes are on after new.
        const SymbolSettings &symbols = doc.symbols();
        QCOMPARE(QList<bool>({symbols.strictPrefixBoxChecked, symbols.prefixListEnabled, symbols.syncDoubleBoxChecked,
                              symbols.syncDoubleBoxEnabled}),
                 QList<bool>({answer.strictPrefix, answer.strictPrefix, answer.syncDouble, answer.strictPrefix}));
        QCOMPARE(symbols.prefixIndex, answer.prefixIndex);
        QVERIFY(symbols.blocksetStrictPrefix && symbols.blocksetSyncDouble);
    }

    // A new blockset with no name is "Untitled"; Save then asks for a file name,
    // and the blockset takes the file's name.
    void untitledSaveAsksForName()
    {
        DocumentEnv env;
        env.prompts.newAnswers = {choice(QString(), QStringLiteral("0.1"))};
        (void)env.document.newBlockset();
        const QString target = env.setPath(QStringLiteral("Fresh.bset"));
        env.prompts.fileAnswers = {target};

        (void)env.document.saveCommand();

        QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
        QCOMPARE(env.prompts.fileRequests.size(), 1);
        QCOMPARE(env.prompts.fileRequests[0].title, QStringLiteral("Save Blockset As"));
        QVERIFY(!env.document.blocksetUntitled() && !env.document.isChanged());
        QCOMPARE(env.document.blocksetPath(), target);
        QCOMPARE(env.document.processText(), QStringLiteral("Blockset and update file saved."));
        const FileMap packed = readBset(target);
        QCOMPARE(packed.keys(), QStringList({"Fresh.style"}));
        QVERIFY(packed.first().startsWith("<style version=\"0.1\" name=\"Fresh\">\r\n"));
        QVERIFY(QFile::exists(env.setPath(QStringLiteral("Fresh.txt"))));
        // A second Save goes straight to the archive.
        env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
        (void)env.document.saveCommand();
        QCOMPARE(env.prompts.fileRequests.size(), 1);
        QVERIFY(readBset(target).value(QStringLiteral("Fresh.style")).contains("author=\"Me\""));
    }

    // The save question of Open, New, Close and the window's unload: asked only for
    // a blockset that counts as changed; Cancel, or a Yes whose save fails, changes
    // nothing; Yes saves first; No goes on without saving.
    void saveQuestion_data()
    {
        // edit: "style", "update" (the comment), "none"; "untitled": a new blockset
        // with a style edit; "closed": closed with the comment edited, answered No.
        // answer Ok: no question expected.
        addColumns<QString, QString, PromptAnswer, bool>("command", "edit", "answer", "saveFails");
        addRow("open, changed, cancel", "open", "style", PromptAnswer::Cancel, false);
        addRow("open, changed, yes", "open", "style", PromptAnswer::Yes, false);
        addRow("open, yes, save fails", "open", "style", PromptAnswer::Yes, true);
        addRow("new, changed, cancel", "new", "style", PromptAnswer::Cancel, false);
        addRow("new, update comment, yes", "new", "update", PromptAnswer::Yes, false);
        addRow("close, changed, yes", "close", "style", PromptAnswer::Yes, false);
        addRow("close, update comment, no", "close", "update", PromptAnswer::No, false);
        addRow("unload, unchanged", "unload", "none", PromptAnswer::Ok, false);
        addRow("unload, closed, comment still flagged", "unload", "closed", PromptAnswer::Ok, false);
        addRow("unload, changed, no", "unload", "style", PromptAnswer::No, false);
        addRow("unload, untitled, yes", "unload", "untitled", PromptAnswer::Yes, false);
        addRow("unload, changed, cancel keeps the window", "unload", "style", PromptAnswer::Cancel, false);
    }

    void saveQuestion()
    {
        QFETCH(QString, command);
        QFETCH(QString, edit);
        QFETCH(PromptAnswer, answer);
        QFETCH(bool, saveFails);
        DocumentEnv env;
        const QString castle = env.addSet(QStringLiteral("own/Castle.bset"), castleFiles());
        const FileMap other{{QStringLiteral("Other.style"), styleFile(QStringLiteral("Other"))},
                            {QStringLiteral("sounds/a.wav"), QByteArray("wave")}};
        const QString otherPath = env.addSet(QStringLiteral("Other.bset"), other);
        const QString draft = env.setPath(QStringLiteral("Draft.bset"));
        if (edit == "untitled") {
            env.prompts.newAnswers = {choice(QStringLiteral("Draft"), QStringLiteral("1.0"))};
            (void)env.document.newBlockset();
        } else {
            env.open(castle);
        }
        if (edit == "style" || edit == "untitled")
            env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
        else if (edit != "none")
            env.document.editUpdateComment(QStringLiteral("last words"));
        if (edit == "closed") {
            env.prompts.answers = {PromptAnswer::No};
            (void)env.document.closeBlockset();
            env.prompts.messages.clear();
        }
        if (saveFails) {
            QVERIFY(QDir(env.setPath(QStringLiteral("own"))).removeRecursively());
            env.prompts.choices << 1; // the archive is gone from disk: Overwrite
        }
        const QByteArray archive = readBytes(castle);
        const QStringList working = filesBelow(env.folder.workingFolder()).keys();
        env.document.setTab(BlocksetDocument::TabSounds);
        env.prompts.answers = {answer};
        env.prompts.newAnswers = {choice(QStringLiteral("Next"))};
        env.prompts.fileAnswers = {command == "open" ? otherPath : draft};

        bool goesOn = true;
        if (command == "open")
            goesOn = env.document.openBlockset().ok();
        else if (command == "new")
            goesOn = env.document.newBlockset().ok();
        else if (command == "close")
            goesOn = env.document.closeBlockset().ok();
        else
            goesOn = env.document.askSaveOnUnload();

        const bool asked = answer != PromptAnswer::Ok;
        const bool stopped = answer == PromptAnswer::Cancel || saveFails;
        const QString text = command == "open" || command == "new" ? kCurrentChanged : kChanged;
        const QMap<QString, QString> titles{{"open", "Open Blockset"},
                                            {"new", "New Blockset"},
                                            {"close", "Close Blockset"},
                                            {"unload", "Blockset Changed"}};
        if (asked)
            verifyMessage(env.prompts, 0, text, titles[command], PromptButtons::YesNoCancel, PromptIcon::None);
        QCOMPARE(env.prompts.messageTexts(),
                 saveFails ? QStringList(
                     {text, "The blockset was changed on disk since you opened it.", "Unable to save blockset!"})
                 : asked ? QStringList({text})
                         : QStringList());
        QCOMPARE(goesOn, !stopped);
        const bool saved = answer == PromptAnswer::Yes && !saveFails;
        if (edit == "style")
            QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("author=\"Me\""), saved);
        QCOMPARE(QFile::exists(env.setPath(QStringLiteral("own/Castle.txt"))), saved && edit != "untitled");
        QCOMPARE(QFile::exists(draft), saved && edit == "untitled");
        if (stopped) {
            QVERIFY(env.document.blocksetOpen() && env.document.isChanged());
            QCOMPARE(env.document.blocksetPath(), castle);
            QCOMPARE(env.document.tab(), int(BlocksetDocument::TabSounds));
            QCOMPARE(filesBelow(env.folder.workingFolder()).keys(), working);
            QCOMPARE(readBytes(castle), archive);
            QCOMPARE(env.document.processText(), QString());
            return;
        }
        if (command == "open") { // the other blockset opens clean: nothing of the first one is left
            QCOMPARE(env.document.blocksetPath(), otherPath);
            QVERIFY(!env.document.isChanged());
            QCOMPARE(env.document.versionText() + env.document.updateComment(), QString());
            QCOMPARE(filesBelow(env.folder.workingFolder()), other);
        } else if (command == "new") {
            QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Next"));
            QVERIFY(env.document.blocksetUntitled() && !env.document.updateChanged());
        } else if (command == "close") {
            QVERIFY(!env.document.blocksetOpen() && !env.document.blocksetChanged());
            QCOMPARE(env.document.blocksetFileName() + env.document.versionText() + env.document.processText(),
                     QString());
            QCOMPARE(env.document.tab(), int(BlocksetDocument::TabBlocks));
            QCOMPARE(env.document.style(), StyleValues());
            QVERIFY(filesBelow(env.folder.workingFolder()).isEmpty());
            const InterfaceState state = computeInterfaceState(interfaceFacts(env.document, true));
            QCOMPARE(state.caption + state.blocksPanel + state.versionPanel, QStringLiteral("Cubrix"));
            // An unsaved comment stays flagged after close; the next open, which asks
            // nothing because nothing is open, clears it.
            QCOMPARE(env.document.updateChanged(), edit == "update");
            env.prompts.messages.clear();
            env.open(castle);
            QVERIFY(env.prompts.messages.isEmpty() && !env.document.updateChanged());
        } else {
            QCOMPARE(env.document.isChanged(), (asked && !saved) || edit == "closed");
        }
    }
};

QTEST_GUILESS_MAIN(TestDocumentNewClose)
#include "test_document_new_close.moc"
