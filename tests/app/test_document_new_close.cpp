// New, close and the save questions of new, close and the window's unload,
// driven through scripted prompts.

#include "DocumentFixture.h"

#include <QtTest>

Q_DECLARE_METATYPE(PromptAnswer)

namespace {

const QString kCurrentChanged = QStringLiteral("The current blockset has been changed. Do you want to save it first?");
const QString kChanged = QStringLiteral("The blockset has been changed. Do you want to save it first?");
const QString kBothModes = QStringLiteral("Strict Prefix & Sync Double Mode activated.");

NewBlocksetChoice choice(const QString &name, const QString &version, bool strictPrefix = true,
                         bool syncDouble = true, int prefixIndex = 0)
{
    NewBlocksetChoice c;
    c.name = name;
    c.version = version;
    c.strictPrefix = strictPrefix;
    c.syncDouble = syncDouble;
    c.prefixIndex = prefixIndex;
    return c;
}

void verifyMessage(const ScriptedPrompts &prompts, int index, const QString &text, const QString &title,
                   PromptButtons buttons, PromptIcon icon)
{
    QVERIFY2(prompts.messages.size() > index, qPrintable(prompts.messageTexts().join(u'\n')));
    const ScriptedPrompts::Message &m = prompts.messages[index];
    QCOMPARE(m.text, text);
    QCOMPARE(m.title, title);
    QCOMPARE(m.buttons, buttons);
    QCOMPARE(m.icon, icon);
}

} // namespace

class TestDocumentNewClose : public QObject {
    Q_OBJECT

private slots:
    void newFromDialog_data();
    void newFromDialog();
    void newSymbolChoice_data();
    void newSymbolChoice();
    void untitledSaveAsksForName_data();
    void untitledSaveAsksForName();
    void newSaveQuestion_data();
    void newSaveQuestion();
    void untitledYesRunsSaveAs_data();
    void untitledYesRunsSaveAs();
    void close_data();
    void close();
    void closeKeepsUpdateChangedUntilNextOpen();
    void unloadQuestion_data();
    void unloadQuestion();
};

void TestDocumentNewClose::newFromDialog_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("syncBlockset");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("versionText");

    QTest::newRow("name and version") << "Castle" << "1.0" << true << "Castle" << "1.0";
    QTest::newRow("name not synchronised") << "Castle" << "1.0" << false << "Untitled" << "1.0";
    QTest::newRow("nothing entered") << "" << "" << true << "Untitled" << "No Version";
    QTest::newRow("name only") << "Keep" << "" << true << "Keep" << "No Version";
}

void TestDocumentNewClose::newFromDialog()
{
    QFETCH(QString, name);
    QFETCH(QString, version);
    QFETCH(bool, syncBlockset);
    QFETCH(QString, fileName);
    QFETCH(QString, versionText);

    DocumentEnv env;
    env.setOption("syncBlockset", syncBlockset);
    env.open(env.addSet(QStringLiteral("Castle.bset"), castleFiles()));
    QVERIFY(env.document.blocksetOpen());
    env.document.setTab(BlocksetDocument::SettingsTab);
    env.prompts.newAnswers = {choice(name, version)};
    env.view.clear();

    env.document.newBlockset();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY(env.prompts.messages.isEmpty()); // the open blockset was unchanged
    QCOMPARE(env.view.processTexts.first(), QStringLiteral("New Blockset..."));
    QCOMPARE(env.view.resets, 1);

    const BlocksetDocument &doc = env.document;
    QVERIFY(doc.blocksetOpen());
    QVERIFY(doc.blocksetUntitled());
    QVERIFY(!doc.blocksetChanged());
    QVERIFY(!doc.updateChanged());
    QCOMPARE(doc.blocksetPath(), QString());
    QCOMPARE(doc.blocksetFileName(), fileName);
    QCOMPARE(doc.versionText(), versionText);
    StyleValues expected;
    expected.name = name;
    expected.version = version;
    QCOMPARE(doc.style(), expected);
    QCOMPARE(doc.updateComment(), QString());
    QCOMPARE(doc.blockCount(), 0);
    QCOMPARE(doc.textureCount(), 0);
    QCOMPARE(doc.soundCount(), 0);
    QCOMPARE(doc.tab(), int(BlocksetDocument::BlocksTab));
    QVERIFY(filesBelow(env.folder.workingFolder()).isEmpty());
    QCOMPARE(doc.processText(), kBothModes);
    QVERIFY(doc.processMessageShown());

    const InterfaceState state = computeInterfaceState(doc, true);
    QCOMPARE(state.caption, QStringLiteral("Cubrix - ") + fileName);
    QCOMPARE(state.versionPanel, versionText);
}

void TestDocumentNewClose::newSymbolChoice_data()
{
    QTest::addColumn<bool>("strictPrefix");
    QTest::addColumn<bool>("syncDouble");
    QTest::addColumn<int>("prefixIndex");
    QTest::addColumn<QString>("text");

    QTest::newRow("strict prefix and sync double") << true << true << 0 << kBothModes;
    QTest::newRow("strict prefix only") << true << false << 5 << "Strict Prefix Mode activated.";
    QTest::newRow("neither") << false << false << 0 << "";
    QTest::newRow("last prefix") << true << true << 89 << kBothModes;
}

void TestDocumentNewClose::newSymbolChoice()
{
    QFETCH(bool, strictPrefix);
    QFETCH(bool, syncDouble);
    QFETCH(int, prefixIndex);
    QFETCH(QString, text);

    DocumentEnv env;
    env.prompts.newAnswers = {choice(QStringLiteral("Set"), QString(), strictPrefix, syncDouble, prefixIndex)};

    env.document.newBlockset();

    const SymbolSettings &symbols = env.document.symbols();
    QCOMPARE(symbols.strictPrefixChecked, strictPrefix);
    QCOMPARE(symbols.prefixListEnabled, strictPrefix);
    QCOMPARE(symbols.syncDoubleChecked, syncDouble);
    QCOMPARE(symbols.syncDoubleEnabled, strictPrefix);
    QCOMPARE(symbols.prefixIndex, prefixIndex);
    QVERIFY(symbols.strictPrefixMode);
    QVERIFY(symbols.syncDoubleMode);
    QCOMPARE(env.document.processText(), text);
    QCOMPARE(env.document.symbolModeText(), text);
}

void TestDocumentNewClose::untitledSaveAsksForName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("answer"); // file name chosen in the dialog, "" to cancel
    QTest::addColumn<QString>("savedName");

    QTest::newRow("named blockset") << "Castle" << "Castle.bset" << "Castle";
    QTest::newRow("unnamed blockset takes the file's name") << "" << "Fresh.bset" << "Fresh";
    QTest::newRow("dialog cancelled") << "Castle" << "" << "";
}

void TestDocumentNewClose::untitledSaveAsksForName()
{
    QFETCH(QString, name);
    QFETCH(QString, answer);
    QFETCH(QString, savedName);

    DocumentEnv env;
    env.prompts.newAnswers = {choice(name, QStringLiteral("0.1"))};
    env.document.newBlockset();
    const QString target = answer.isEmpty() ? QString() : env.setPath(answer);
    env.prompts.fileAnswers = {target};

    env.document.saveCommand();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY2(env.prompts.messages.isEmpty(), qPrintable(env.prompts.messageTexts().join(u'\n')));
    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QCOMPARE(env.prompts.fileRequests[0].title, QStringLiteral("Save Blockset As"));

    if (answer.isEmpty()) {
        QVERIFY(env.document.blocksetUntitled());
        QCOMPARE(env.document.blocksetPath(), QString());
        QCOMPARE(env.document.processText(), QString());
        QVERIFY(QDir(env.sets).entryList(QDir::Files).isEmpty());
        return;
    }

    QVERIFY(!env.document.blocksetUntitled());
    QVERIFY(!env.document.isChanged());
    QCOMPARE(env.document.blocksetPath(), target);
    QCOMPARE(env.document.processText(), QStringLiteral("Blockset and update file saved."));
    const FileMap packed = readBset(target);
    const QString styleName = savedName + QStringLiteral(".style");
    QCOMPARE(packed.keys(), QStringList({styleName}));
    QVERIFY(packed.value(styleName).startsWith(
        toCp1252(QStringLiteral("<style version=\"0.1\" name=\"%1\">\r\n").arg(savedName))));
    QVERIFY(QFile::exists(env.setPath(savedName + QStringLiteral(".txt"))));

    // A second Save goes straight to the archive.
    env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
    env.document.saveCommand();
    QCOMPARE(env.prompts.fileRequests.size(), 1);
    QVERIFY(readBset(target).value(styleName).contains("author=\"Me\""));
}

void TestDocumentNewClose::newSaveQuestion_data()
{
    QTest::addColumn<bool>("changed");
    QTest::addColumn<PromptAnswer>("answer");

    QTest::newRow("unchanged: no question") << false << PromptAnswer::Ok;
    QTest::newRow("cancel") << true << PromptAnswer::Cancel;
    QTest::newRow("no") << true << PromptAnswer::No;
    QTest::newRow("yes") << true << PromptAnswer::Yes;
}

void TestDocumentNewClose::newSaveQuestion()
{
    QFETCH(bool, changed);
    QFETCH(PromptAnswer, answer);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    if (changed) {
        env.document.editStyleValue(StyleField::OrbText, QStringLiteral("Away"));
        env.prompts.answers = {answer};
    }
    const QByteArray archive = readFile(castle);
    env.prompts.newAnswers = {choice(QStringLiteral("Next"), QString())};

    env.document.newBlockset();

    if (!changed) {
        QVERIFY(env.prompts.messages.isEmpty());
    } else {
        QCOMPARE(env.prompts.messages.size(), 1);
        verifyMessage(env.prompts, 0, kCurrentChanged, QStringLiteral("New Blockset"), PromptButtons::YesNoCancel,
                      PromptIcon::None);
    }

    if (answer == PromptAnswer::Cancel) {
        QCOMPARE(env.prompts.newAnswers.size(), 1); // the dialog was never shown
        QCOMPARE(env.document.blocksetPath(), castle);
        QCOMPARE(env.document.style().orbText, QStringLiteral("Away"));
        QVERIFY(env.document.blocksetChanged());
        QCOMPARE(env.document.blockCount(), 3);
        QVERIFY(QFile::exists(env.working(QStringLiteral("Castle.style"))));
        QCOMPARE(env.document.processText(), QString());
        QCOMPARE(readFile(castle), archive);
        return;
    }

    QVERIFY(env.prompts.newAnswers.isEmpty());
    QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Next"));
    QVERIFY(env.document.blocksetUntitled());
    QCOMPARE(env.document.blockCount(), 0);
    const bool saved = answer == PromptAnswer::Yes;
    QCOMPARE(readFile(castle) != archive, saved);
    QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("text=\"Away\""), saved);
}

// Yes for a blockset that has no file yet runs Save As; cancelling that dialog
// stops the command with the edits kept.
void TestDocumentNewClose::untitledYesRunsSaveAs_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("chooseFile");

    QTest::newRow("new, file chosen") << "new" << true;
    QTest::newRow("new, dialog cancelled") << "new" << false;
    QTest::newRow("close, file chosen") << "close" << true;
    QTest::newRow("close, dialog cancelled") << "close" << false;
    QTest::newRow("open, file chosen") << "open" << true;
    QTest::newRow("open, dialog cancelled") << "open" << false;
}

void TestDocumentNewClose::untitledYesRunsSaveAs()
{
    QFETCH(QString, command);
    QFETCH(bool, chooseFile);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.prompts.newAnswers = {choice(QStringLiteral("Draft"), QString())};
    env.document.newBlockset();
    env.document.editStyleValue(StyleField::Synopsis, QStringLiteral("unsaved work"));
    const QString target = env.setPath(QStringLiteral("Draft.bset"));
    env.prompts.answers = {PromptAnswer::Yes};
    env.prompts.fileAnswers = {chooseFile ? target : QString()};
    if (command == QLatin1String("new"))
        env.prompts.newAnswers = {choice(QStringLiteral("Second"), QString())};
    if (command == QLatin1String("open"))
        env.prompts.fileAnswers.append(castle);

    if (command == QLatin1String("new"))
        env.document.newBlockset();
    else if (command == QLatin1String("close"))
        env.document.closeBlockset();
    else
        env.document.openBlockset();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QVERIFY(env.prompts.messages.size() == 1);
    QCOMPARE(env.prompts.fileRequests[0].kind, QStringLiteral("save"));
    QCOMPARE(env.prompts.fileRequests[0].title, QStringLiteral("Save Blockset As"));

    if (!chooseFile) {
        QCOMPARE(env.prompts.fileRequests.size(), 1);
        QVERIFY(env.document.blocksetOpen());
        QVERIFY(env.document.blocksetUntitled());
        QVERIFY(env.document.blocksetChanged());
        QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Draft"));
        QCOMPARE(env.document.style().synopsis, QStringLiteral("unsaved work"));
        QCOMPARE(env.document.processText(), QString());
        QVERIFY(!QFile::exists(target));
        return;
    }

    QVERIFY(readBset(target).value(QStringLiteral("Draft.style")).contains("synopsis=\"unsaved work\""));
    if (command == QLatin1String("new")) {
        QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Second"));
        QVERIFY(env.document.blocksetUntitled());
    } else if (command == QLatin1String("close")) {
        QVERIFY(!env.document.blocksetOpen());
    } else {
        QCOMPARE(env.document.blocksetPath(), castle);
        QCOMPARE(env.document.blockCount(), 3);
    }
}

void TestDocumentNewClose::close_data()
{
    QTest::addColumn<QString>("edit"); // "none", "style", "update"
    QTest::addColumn<PromptAnswer>("answer");

    QTest::newRow("unchanged") << "none" << PromptAnswer::Ok;
    QTest::newRow("changed, cancel") << "style" << PromptAnswer::Cancel;
    QTest::newRow("changed, no") << "style" << PromptAnswer::No;
    QTest::newRow("changed, yes") << "style" << PromptAnswer::Yes;
    QTest::newRow("update comment, cancel") << "update" << PromptAnswer::Cancel;
    QTest::newRow("update comment, no") << "update" << PromptAnswer::No;
    QTest::newRow("update comment, yes") << "update" << PromptAnswer::Yes;
}

void TestDocumentNewClose::close()
{
    QFETCH(QString, edit);
    QFETCH(PromptAnswer, answer);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    QVERIFY(env.document.processMessageShown());
    if (edit == QLatin1String("style"))
        env.document.editStyleValue(StyleField::Name, QStringLiteral("Renamed"));
    else if (edit == QLatin1String("update"))
        env.document.editUpdateComment(QStringLiteral("Closing remark"));
    if (edit != QLatin1String("none"))
        env.prompts.answers = {answer};
    const QByteArray archive = readFile(castle);
    const FileMap unpacked = filesBelow(env.folder.workingFolder());
    env.document.setTab(BlocksetDocument::SoundsTab);
    env.view.clear();

    env.document.closeBlockset();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QCOMPARE(env.view.processTexts.first(), QStringLiteral("Close Blockset..."));
    if (edit == QLatin1String("none")) {
        QVERIFY(env.prompts.messages.isEmpty());
    } else {
        QCOMPARE(env.prompts.messages.size(), 1);
        verifyMessage(env.prompts, 0, kChanged, QStringLiteral("Close Blockset"), PromptButtons::YesNoCancel,
                      PromptIcon::None);
    }
    QCOMPARE(env.document.processText(), QString());
    QVERIFY(!env.document.processMessageShown());

    if (answer == PromptAnswer::Cancel) {
        QVERIFY(env.document.blocksetOpen());
        QVERIFY(env.document.isChanged());
        QCOMPARE(env.document.blocksetFileName(), QStringLiteral("Castle.bset"));
        QCOMPARE(env.document.versionText(), QStringLiteral("1.2"));
        QCOMPARE(env.document.tab(), int(BlocksetDocument::SoundsTab));
        QCOMPARE(env.document.blockCount(), 3);
        QCOMPARE(filesBelow(env.folder.workingFolder()), unpacked);
        QCOMPARE(readFile(castle), archive);
        QVERIFY(!QFile::exists(env.setPath(QStringLiteral("Castle.txt"))));
        return;
    }

    QVERIFY(!env.document.blocksetOpen());
    QVERIFY(!env.document.blocksetChanged());
    QCOMPARE(env.document.blocksetFileName(), QString());
    QCOMPARE(env.document.versionText(), QString());
    QCOMPARE(env.document.tab(), int(BlocksetDocument::BlocksTab));
    QCOMPARE(env.document.blockCount(), 0);
    QCOMPARE(env.document.style(), StyleValues());
    QVERIFY(filesBelow(env.folder.workingFolder()).isEmpty());
    // An unsaved edit of the update comment stays flagged after close.
    QCOMPARE(env.document.updateChanged(), edit == QLatin1String("update") && answer == PromptAnswer::No);

    const bool saved = answer == PromptAnswer::Yes;
    QCOMPARE(QFile::exists(env.setPath(QStringLiteral("Castle.txt"))), saved);
    if (edit == QLatin1String("style"))
        QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("name=\"Renamed\""), saved);
    else
        QCOMPARE(readFile(castle), archive);

    const InterfaceState state = computeInterfaceState(env.document, true);
    QCOMPARE(state.caption, QStringLiteral("Cubrix"));
    QCOMPARE(state.blocksPanel, QString());
    QCOMPARE(state.versionPanel, QString());
}

void TestDocumentNewClose::closeKeepsUpdateChangedUntilNextOpen()
{
    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    env.open(castle);
    env.document.editUpdateComment(QStringLiteral("dropped"));
    env.prompts.answers = {PromptAnswer::No};
    env.document.closeBlockset();
    QVERIFY(env.document.updateChanged());

    // Nothing is open, so opening asks nothing, and the open clears the flag.
    env.open(castle);
    QCOMPARE(env.prompts.messages.size(), 1);
    QVERIFY(env.document.blocksetOpen());
    QVERIFY(!env.document.updateChanged());
    QCOMPARE(env.document.updateComment(), QString());
}

void TestDocumentNewClose::unloadQuestion_data()
{
    QTest::addColumn<QString>("state"); // "none", "unchanged", "style", "update", "untitled"
    QTest::addColumn<PromptAnswer>("answer");
    QTest::addColumn<bool>("asked");

    QTest::newRow("no blockset") << "none" << PromptAnswer::Ok << false;
    QTest::newRow("unchanged") << "unchanged" << PromptAnswer::Ok << false;
    QTest::newRow("untitled, unchanged") << "untitled-clean" << PromptAnswer::Ok << false;
    QTest::newRow("changed, no") << "style" << PromptAnswer::No << true;
    QTest::newRow("changed, yes") << "style" << PromptAnswer::Yes << true;
    QTest::newRow("update comment only, yes") << "update" << PromptAnswer::Yes << true;
    QTest::newRow("untitled, yes") << "untitled" << PromptAnswer::Yes << true;
    QTest::newRow("untitled, no") << "untitled" << PromptAnswer::No << true;
}

void TestDocumentNewClose::unloadQuestion()
{
    QFETCH(QString, state);
    QFETCH(PromptAnswer, answer);
    QFETCH(bool, asked);

    DocumentEnv env;
    const QString castle = env.addSet(QStringLiteral("Castle.bset"), castleFiles());
    const QString draft = env.setPath(QStringLiteral("Draft.bset"));
    if (state.startsWith(QLatin1String("untitled"))) {
        env.prompts.newAnswers = {choice(QStringLiteral("Draft"), QString())};
        env.document.newBlockset();
        if (state == QLatin1String("untitled"))
            env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
    } else if (state != QLatin1String("none")) {
        env.open(castle);
        if (state == QLatin1String("style"))
            env.document.editStyleValue(StyleField::Author, QStringLiteral("Me"));
        else if (state == QLatin1String("update"))
            env.document.editUpdateComment(QStringLiteral("last words"));
    }
    const QByteArray archive = readFile(castle);
    if (asked)
        env.prompts.answers = {answer};
    if (state == QLatin1String("untitled") && answer == PromptAnswer::Yes)
        env.prompts.fileAnswers = {draft};

    env.document.askSaveOnUnload();

    QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    QCOMPARE(env.prompts.messages.size(), asked ? 1 : 0);
    if (asked)
        verifyMessage(env.prompts, 0, kChanged, QStringLiteral("Blockset Changed"), PromptButtons::YesNo,
                      PromptIcon::Question);
    const bool saved = asked && answer == PromptAnswer::Yes;
    QCOMPARE(env.document.isChanged(), asked && !saved);
    if (state == QLatin1String("untitled")) {
        QCOMPARE(env.prompts.fileRequests.size(), saved ? 1 : 0);
        QCOMPARE(QFile::exists(draft), saved);
        if (saved)
            QVERIFY(readBset(draft).value(QStringLiteral("Draft.style")).contains("author=\"Me\""));
    } else if (state == QLatin1String("style")) {
        QCOMPARE(readBset(castle).value(QStringLiteral("Castle.style")).contains("author=\"Me\""), saved);
    } else if (state == QLatin1String("update")) {
        QCOMPARE(readFile(castle), archive);
        QCOMPARE(QFile::exists(env.setPath(QStringLiteral("Castle.txt"))), saved);
    }
}

QTEST_GUILESS_MAIN(TestDocumentNewClose)
#include "test_document_new_close.moc"
