// New, close and the save questions of new, close and the window's unload,
// driven through scripted prompts.

#include "DocumentFixture.h"

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
        QTest::addColumn<bool>("syncBlockset");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("versionText");
        QTest::addColumn<QString>("text");
        QTest::newRow("name and version, both symbol modes") << choice("Castle", "1.0") << true << "Castle"
                                                             << "1.0"
                                                             << "Strict Prefix & Sync Double Mode activated.";
        QTest::newRow("name not synchronised, strict prefix only, last prefix")
            << choice("Castle", "1.0", true, false, 89) << false << "Untitled"
            << "1.0"
            << "Strict Prefix Mode activated.";
        QTest::newRow("nothing entered, no symbol mode") << choice("", "", false, false) << true << "Untitled"
                                                         << "No Version"
                                                         << "";
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

    void saveQuestion_data()
    {
        QTest::addColumn<bool>("isNew");   // New, else Close
        QTest::addColumn<QString>("edit"); // "none", "style", "update"
        QTest::addColumn<PromptAnswer>("answer");
        QTest::newRow("close, changed, cancel") << false << "style" << PromptAnswer::Cancel;
        QTest::newRow("close, changed, yes") << false << "style" << PromptAnswer::Yes;
        QTest::newRow("close, update comment, no") << false << "update" << PromptAnswer::No;
        QTest::newRow("new, changed, cancel") << true << "style" << PromptAnswer::Cancel;
        QTest::newRow("new, update comment, yes") << true << "update" << PromptAnswer::Yes;
    }

    void saveQuestion()
    {
        QFETCH(bool, isNew);
        QFETCH(QString, edit);
        QFETCH(PromptAnswer, answer);
        DocumentEnv env;
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
        env.open(castle);
        if (edit == "style")
            env.document.editStyleValue(StyleField::Name, QStringLiteral("Renamed"));
        else if (edit == "update")
            env.document.editUpdateComment(QStringLiteral("Closing remark"));
        env.prompts.answers = {answer};
        env.prompts.newAnswers = {choice(QStringLiteral("Next"))};
        const QByteArray archive = readBytes(castle);
        env.document.setTab(BlocksetDocument::TabSounds);
        env.view.clear();

        isNew ? env.document.newBlockset() : env.document.closeBlockset();

        QCOMPARE(env.view.processTexts.first(), isNew ? "New Blockset..." : "Close Blockset...");
        QCOMPARE(env.prompts.messages.size(), edit == "none" ? 0 : 1);
        if (edit != "none")
            verifyMessage(env.prompts, 0, isNew ? kCurrentChanged : kChanged, isNew ? "New Blockset" : "Close Blockset",
                          PromptButtons::YesNoCancel, PromptIcon::None);
        const bool saved = answer == PromptAnswer::Yes;
        QCOMPARE(QFile::exists(env.setPath(QStringLiteral("Castle.txt"))), saved);
        QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("name=\"Renamed\""),
                 saved && edit == "style");
        if (answer == PromptAnswer::Cancel) {           // nothing changes, and the status panel is cleared
            QCOMPARE(env.prompts.newAnswers.size(), 1); // no New Blockset dialog
            QVERIFY(env.document.blocksetOpen() && env.document.isChanged());
            QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Castle.bset"));
            QCOMPARE(env.document.versionText(), QStringLiteral("1.2"));
            QCOMPARE(env.document.tab(), int(BlocksetDocument::TabSounds));
            QCOMPARE(filesBelow(env.folder.workingFolder()), castleFiles());
            QCOMPARE(readBytes(castle), archive);
            QCOMPARE(env.document.processText(), QString());
            return;
        }
        if (isNew) {
            QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Next"));
            QVERIFY(env.document.blocksetUntitled() && !env.document.updateChanged());
            return;
        }
        QVERIFY(!env.document.blocksetOpen() && !env.document.blocksetChanged());
        QCOMPARE(env.document.blocksetFileName() + env.document.versionText() + env.document.processText(), QString());
        QVERIFY(!env.document.processMessageShown());
        QCOMPARE(env.document.tab(), int(BlocksetDocument::TabBlocks));
        QCOMPARE(env.document.blockCount(), 0);
        QCOMPARE(env.document.style(), StyleValues());
        QVERIFY(filesBelow(env.folder.workingFolder()).isEmpty());
        const InterfaceState state = computeInterfaceState(interfaceFacts(env.document, true));
        QCOMPARE(state.caption + state.blocksPanel + state.versionPanel, QStringLiteral("Cubrix"));
        // An unsaved edit of the update comment stays flagged after close; the next open,
        // which asks nothing because nothing is open, clears it.
        QCOMPARE(env.document.updateChanged(), edit == "update");
        env.prompts.messages.clear();
        env.open(castle);
        QVERIFY(env.prompts.messages.isEmpty() && !env.document.updateChanged());
    }

    void unloadQuestion_data()
    {
        QTest::addColumn<QString>("state");       // "unchanged", "closed", "style", "update", "untitled"
        QTest::addColumn<PromptAnswer>("answer"); // Ok: no question expected
        QTest::newRow("unchanged") << "unchanged" << PromptAnswer::Ok;
        QTest::newRow("closed, update comment still flagged") << "closed" << PromptAnswer::Ok;
        QTest::newRow("changed, no") << "style" << PromptAnswer::No;
        QTest::newRow("update comment only, yes") << "update" << PromptAnswer::Yes;
        QTest::newRow("untitled, yes") << "untitled" << PromptAnswer::Yes;
        QTest::newRow("changed, cancel keeps the window") << "style" << PromptAnswer::Cancel;
    }

    // The unload question comes only for an open blockset that counts as changed.
    void unloadQuestion()
    {
        QFETCH(QString, state);
        QFETCH(PromptAnswer, answer);
        DocumentEnv env;
        const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
        const QString draft = env.setPath(QStringLiteral("Draft.bset"));
        if (state == "untitled") {
            env.prompts.newAnswers = {choice(QStringLiteral("Draft"), QStringLiteral("1.0"))};
            (void)env.document.newBlockset();
            env.prompts.fileAnswers = {draft};
        } else {
            env.open(castle);
        }
        if (state == "style" || state == "untitled")
            env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
        else if (state != "unchanged")
            env.document.editUpdateComment(QStringLiteral("last words"));
        if (state == "closed") {
            env.prompts.answers = {PromptAnswer::No};
            (void)env.document.closeBlockset();
            env.prompts.messages.clear();
        }
        const QByteArray archive = readBytes(castle);
        const bool asked = answer != PromptAnswer::Ok;
        env.prompts.answers = {answer};

        QCOMPARE(env.document.askSaveOnUnload(), answer != PromptAnswer::Cancel);

        QCOMPARE(env.prompts.messages.size(), asked ? 1 : 0);
        if (asked)
            verifyMessage(env.prompts, 0, kChanged, "Blockset Changed", PromptButtons::YesNoCancel, PromptIcon::None);
        const bool saved = answer == PromptAnswer::Yes;
        QCOMPARE(env.document.isChanged(), (asked && !saved) || state == "closed");
        if (state == "untitled")
            QVERIFY(readBset(draft).value(QStringLiteral("Draft.style")).contains("author=\"Me\""));
        else if (state == "style")
            QVERIFY(!readBset(castle).value(QStringLiteral("Castle.style")).contains("author=\"Me\""));
        else if (state == "update")
            QVERIFY(readBytes(castle) == archive && QFile::exists(env.setPath(QStringLiteral("Castle.txt"))));
    }
};

QTEST_GUILESS_MAIN(TestDocumentNewClose)
#include "test_document_new_close.moc"
