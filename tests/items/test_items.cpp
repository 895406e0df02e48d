#include "common/RegistryWrapper.h"
#include "formats/ValueFormats.h"
#include "items/AddItems.h"
#include "items/BlockNaming.h"
#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "items/ReplaceBlocks.h"
#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "support/TestFiles.h"
#include "symbols/SymbolScheme.h"

#include <QtTest>

using namespace Qt::StringLiterals;
using Script = ScriptedPrompts::SymbolScript;

// Adding, replacing, removing and renaming items on real files: a source folder
// outside the working folder, scripted dialogs, and the bytes that land in the
// working folder.
class TestItems : public QObject {
    Q_OBJECT

    static QString source(FakeHost &host, const QString &name, const QByteArray &bytes)
    {
        const QString path = host.sourceFolder() + u'/' + name;
        writeBytes(path, bytes);
        return path;
    }

    static QByteArray blockText(const QString &name)
    {
        return "<!-- kept -->\r\n<BLOCK NAME=\"" + name.toLatin1()
               + "\" TYPE=\"structural\">\r\n"
                 "<VERTICES>\r\n</VERTICES>\r\n</BLOCK>\r\n";
    }

    // Rows and files "<name>" in `kind`'s list; file contents are the names.
    static void presetItems(FakeHost &host, ItemKind kind, const QStringList &names)
    {
        for (const QString &name : names) {
            writeBytes(itemFolder(host, kind) + u'/' + name, name.toUtf8());
            if (kind == ItemKind::Block)
                host.blockset.blocks.append(BlockRow{name, name, u"A"_s, u".A"_s});
            else
                (kind == ItemKind::Texture ? host.blockset.textures : host.blockset.sounds).append(ItemRow{name});
        }
    }

private slots:
    void addBlocksCommand()
    {
        FakeHost host;
        host.blockset.blocks.append(BlockRow{u"A.block"_s, u"A"_s, u"A"_s});
        const QStringList chosen{
            source(host, u"b.block"_s, blockText(u"b"_s)), source(host, u"x.BLOCK"_s, blockText(u"x"_s)),
            host.sourceFolder() + u"/gone.block"_s,        source(host, u"a.block"_s, blockText(u"a"_s)),
            source(host, u"A.block"_s, blockText(u"A"_s)), source(host, u"B.block"_s, blockText(u"B"_s))};
        host.scripted.multiAnswers << chosen;
        host.scripted.answers << PromptAnswer::Ok;
        host.scripted.symbolAnswers << Script{Script::Cancel} << Script{} << Script{};

        QCOMPARE(addItems(host, ItemKind::Block), 2);
        QCOMPARE(host.scripted.fileRequests.first().title, u"Add Block"_s);
        // Sorted by character code: A, B, a, b, gone, x. A and a are the existing
        // A.block to Windows and Rover (told), B cancelled, the missing file named
        // with its reason; b and x.BLOCK (extensions ignore case) added.
        const QString taken = u"There is already a \"A.block\" in the blockset!"_s;
        QCOMPARE(host.scripted.messageTexts(),
                 QStringList({taken, taken, u"Unable to read \""_s + host.sourceFolder() + u"/gone.block\"!"_s}));
        QStringList captions;
        for (const SymbolDialogSetup &setup : std::as_const(host.scripted.symbolRequests))
            captions << setup.caption;
        QCOMPARE(captions, QStringList({u"Add symbols for B.block"_s, u"Add symbols for b.block"_s,
                                        u"Add symbols for x.BLOCK"_s}));
        QCOMPARE(itemFileNames(host, ItemKind::Block), QStringList({u"A.block"_s, u"b.block"_s, u"x.BLOCK"_s}));
        QCOMPARE(QDir(itemFolder(host, ItemKind::Block)).entryList(QDir::Files),
                 QStringList({u"b.block"_s, u"x.BLOCK"_s}));
        // Offered first: the free symbols after A.
        QCOMPARE(host.blockset.blocks[1].symbol, u"B"_s);
        QCOMPARE(host.blockset.blocks[2].symbol, u"C"_s);
        QCOMPARE(host.blockset.blocks[1].source, chosen[0]);
        QCOMPARE(host.processTexts, QStringList({u"Add Block..."_s, u"2 blocks added."_s}));
        QCOMPARE(host.settings().getStringSetting(u"pathBlocks"_s), host.sourceFolder());
        QVERIFY(host.changed);
        QVERIFY(host.scripted.unexpected.isEmpty());
    }

    void limitOfBlocks()
    {
        FakeHost host;
        for (int i = 1; i < blockLimit(); ++i)
            host.blockset.blocks.append(BlockRow{u"b%1.block"_s.arg(i), u"b%1"_s.arg(i)});
        host.scripted.multiAnswers << QStringList{source(host, u"x.block"_s, blockText(u"x"_s)),
                                                  source(host, u"y.block"_s, blockText(u"y"_s)),
                                                  source(host, u"z.block"_s, blockText(u"z"_s))};
        host.scripted.symbolAnswers << Script{};
        QCOMPARE(addItems(host, ItemKind::Block), 1);
        QCOMPARE(host.scripted.messageTexts(), QStringList{u"The maximum of 89 block has been reached."_s});
        QCOMPARE(host.processTexts.last(), u"1 block added."_s);
    }

    void blockName_data()
    {
        addColumns<bool, QString, QString, QStringList, QString, bool>("syncBlock", "file", "inner", "others", "name",
                                                                       "told");
        addRow("kept", false, "w.block", "wall", QStringList(), "wall", false);
        addRow("blank cleaned", false, "w.block", "my wall", QStringList(), "my_wall", true);
        addRow("unique, counter not stacked", false, "w.block", "my wall", QStringList{"my_wall", "1_my_wall"},
               "2_my_wall", true);
        addRow("accents replaced", false, "w.block", "caf\u00e9-1", QStringList(), "caf__1", true);
        addRow("syncBlock takes the file name", true, "stone.block", "rock", QStringList(), "stone", false);
        addRow("syncBlock, then cleaned", true, "big stone.block", "rock", QStringList(), "big_stone", true);
    }

    void blockName()
    {
        QFETCH(bool, syncBlock);
        QFETCH(QString, file);
        QFETCH(QString, inner);
        QFETCH(QStringList, others);
        QFETCH(QString, name);
        QFETCH(bool, told);
        FakeHost host;
        host.settings().setBoolSetting(u"syncBlock"_s, syncBlock);
        for (const QString &other : others)
            host.blockset.blocks.append(BlockRow{other + u".block"_s, other});
        const QByteArray original = blockText(inner);
        const QString path = source(host, file, original);
        host.scripted.symbolAnswers << Script{};

        QVERIFY(addBlockFile(host, path));
        QCOMPARE(host.blockset.blocks.last().name, name);
        QCOMPARE(host.scripted.messageTexts(),
                 told ? QStringList{u"The block name had to be changed to \""_s + name + u"\"!"_s} : QStringList());
        // The copy carries the new name and every other byte as it was; the source is untouched.
        const QByteArray copy = readBytes(itemFolder(host, ItemKind::Block) + u'/' + file);
        QCOMPARE(copy, blockText(name));
        QCOMPARE(readBytes(path), original);
        QCOMPARE(host.blockset.blocks.last().sizeText, itemSizeText(copy.size()));
    }

    void texturesAndSounds()
    {
        FakeHost host;
        host.blockset.textures.append(ItemRow{u"sky.gif"_s});
        const QStringList chosen{source(host, u"sky.gif"_s, "GIF89a"), source(host, u"photo.JPG"_s, "jpeg"),
                                 source(host, u"wall.jpg"_s, QByteArray(1234567, 'j')),
                                 source(host, u"a:b.gif"_s, "GIF")};
        host.scripted.multiAnswers << chosen;
        QCOMPARE(addItems(host, ItemKind::Texture), 2);
        QCOMPARE(host.scripted.messageTexts(),
                 QStringList(
                     {u"There is already a texture \"sky.gif\" in the blockset!"_s,
                      u"Rover cannot use the texture \"photo.JPG\": neither a GIF nor a JPEG image.\nIt is added, but "
                      "Rover draws the parts that use it untextured."_s,
                      u"Rover cannot use the texture \"wall.jpg\": neither a GIF nor a JPEG image.\nIt is added, but "
                      "Rover draws the parts that use it untextured."_s,
                      u"\"a:b.gif\" cannot be used as a file name: Windows does not allow \":\" in a file name!"_s}));
        QCOMPARE(host.blockset.textures.last().sizeText, u" 1,234,567"_s);
        QCOMPARE(host.processTexts.last(), u"2 textures added."_s);

        // A duplicate is refused also with showWarnings off; cancel shows no summary.
        host.settings().setBoolSetting(u"showWarnings"_s, false);
        const QString sound = source(host, u"a.wav"_s, "");
        QVERIFY(addSoundFile(host, sound));
        QVERIFY(!addSoundFile(host, sound));
        host.scripted.multiAnswers << QStringList();
        QCOMPARE(addItems(host, ItemKind::Sound), 0);
        QCOMPARE(host.processTexts.last(), QString());
        QCOMPARE(host.blockset.sounds.size(), 1);
        QCOMPARE(host.scripted.messages.size(), 5);
    }

    void failedCopyLeavesNothing()
    {
        FakeHost host;
        const QString folder = itemFolder(host, ItemKind::Texture);
        QVERIFY(QDir(folder).removeRecursively());
        writeBytes(folder, "not a folder");
        QVERIFY(!addTextureFile(host, source(host, u"a.gif"_s, "GIF89a")));
        QVERIFY(host.blockset.textures.isEmpty());
        QVERIFY(!host.changed);
        QCOMPARE(host.scripted.messageTexts(), QStringList{u"Unable to copy \"a.gif\" into the blockset!"_s});
        QCOMPARE(host.scripted.messages.first().icon, PromptIcon::Critical);
    }

    void replaceBlocks()
    {
        FakeHost host;
        host.settings().setBoolSetting(u"syncBlock"_s, false);
        const QString blocks = itemFolder(host, ItemKind::Block);
        writeBytes(blocks + u"/old.block"_s, blockText(u"old"_s));
        writeBytes(blocks + u"/kept.block"_s, blockText(u"kept"_s));
        writeBytes(blocks + u"/fresh.block"_s, blockText(u"fresh"_s));
        const QString refreshed = source(host, u"fresh.block"_s, blockText(u"kept"_s));
        host.blockset.blocks = {
            BlockRow{u"old.block"_s, u"old"_s, u"x"_s, u".x"_s, {}, {}, {}, host.sourceFolder() + u"/deleted.block"_s},
            BlockRow{u"kept.block"_s, u"kept"_s, u"y"_s, u".y"_s},
            BlockRow{u"fresh.block"_s, u"fresh"_s, u"z"_s, u".z"_s, {}, {}, {}, refreshed}};
        const QString picked = source(host, u"new.block"_s, blockText(u"new"_s));
        QVERIFY(QDir(host.sourceFolder()).mkdir(u"other"_s));
        host.scripted.fileAnswers << picked << source(host, u"other/fresh.block"_s, "");

        QCOMPARE(::replaceBlocks(host, {2, 0, 1}), 2);
        // The gone source was cleared and asked for; the second pick names another row's file.
        QCOMPARE(host.scripted.fileRequests[0].title, u"Replace old.block"_s);
        QCOMPARE(host.scripted.fileRequests[1].title, u"Replace kept.block"_s);
        QCOMPARE(host.scripted.messageTexts(), QStringList({u"There is already a \"fresh.block\" in the blockset!"_s,
                                                            u"The block name had to be changed to \"1_kept\"!"_s}));
        const BlockRow &replaced = host.blockset.blocks[0];
        QCOMPARE(QStringList({replaced.file, replaced.name, replaced.symbol, replaced.doubleSymbol, replaced.source}),
                 QStringList({u"new.block"_s, u"new"_s, u"x"_s, u".x"_s, picked}));
        // Refreshed from its source, whose inner name another row has: made unique.
        QCOMPARE(host.blockset.blocks[2].name, u"1_kept"_s);
        QCOMPARE(QDir(blocks).entryList(QDir::Files), QStringList({u"fresh.block"_s, u"kept.block"_s, u"new.block"_s}));
        QCOMPARE(host.processTexts.last(), u"2 blocks updated/replaced."_s);
    }

    void remove_data()
    {
        // question: "" = none asked (showWarnings off).
        addColumns<int, QList<int>, int, QString, bool, QStringList, int>("kind", "selected", "current", "question",
                                                                          "yes", "remaining", "newCurrent");
        const QStringList all{"a.wav", "b.wav", "c.wav", "d.wav"};
        addRow("one block", int(ItemKind::Block), QList<int>{1}, 1, "Are you sure to remove 1 block?", true,
               QStringList{"a.wav", "c.wav", "d.wav"}, 1);
        addRow("two textures, current first of them", int(ItemKind::Texture), QList<int>{3, 0}, 0,
               "Are you sure to remove 2 textures?", true, QStringList{"b.wav", "c.wav"}, 0);
        addRow("last rows, current moves up", int(ItemKind::Sound), QList<int>{2, 3}, 3,
               "Are you sure to remove 2 sounds?", true, QStringList{"a.wav", "b.wav"}, 1);
        addRow("current kept behind removed row", int(ItemKind::Sound), QList<int>{0}, 2, "", true,
               QStringList{"b.wav", "c.wav", "d.wav"}, 1);
        addRow("all", int(ItemKind::Sound), QList<int>{0, 1, 2, 3}, 0, "Are you sure to remove 4 sounds?", true,
               QStringList(), -1);
        addRow("no", int(ItemKind::Block), QList<int>{0}, 0, "Are you sure to remove 1 block?", false, all, 0);
    }

    void remove()
    {
        QFETCH(int, kind);
        QFETCH(QList<int>, selected);
        QFETCH(QString, question);
        QFETCH(bool, yes);
        QFETCH(QStringList, remaining);
        QFETCH(int, newCurrent);
        FakeHost host;
        const auto list = ItemKind(kind);
        presetItems(host, list, {u"a.wav"_s, u"b.wav"_s, u"c.wav"_s, u"d.wav"_s});
        host.settings().setBoolSetting(u"showWarnings"_s, !question.isEmpty());
        host.scripted.answers = {yes ? PromptAnswer::Yes : PromptAnswer::No};
        QFETCH(int, current);
        ListSelection selection{selected, current};

        QCOMPARE(removeItems(host, list, selection), yes);
        QCOMPARE(host.scripted.messageTexts(), question.isEmpty() ? QStringList() : QStringList{question});
        QCOMPARE(itemFileNames(host, list), remaining);
        QCOMPARE(QDir(itemFolder(host, list)).entryList(QDir::Files, QDir::Name), remaining);
        QCOMPARE(host.changed, yes);
        QCOMPARE(selection.current, newCurrent);
        if (yes)
            QCOMPARE(selection.selected, newCurrent < 0 ? QList<int>() : QList<int>{newCurrent});
    }

    void rename_data()
    {
        // message: the refusal, or "" when only the question was asked; fileName: the row's and the file's name
        // afterwards.
        addColumns<QString, bool, QString, QString>("newName", "yes", "message", "fileName");
        addRow("renamed", "stone.block", true, "", "stone.block");
        addRow("case only", "Wall.block", true, "", "Wall.block");
        addRow("answered no", "stone.block", false, "", "wall.block");
        addRow("other extension", "wall.txt", true, "You are not allowed to change the file extension!", "wall.block");
        addRow("empty base name", ".block", true, "The file name must not be empty!", "wall.block");
        addRow("name of another row", "DOOR.block", true, "There is already a \"door.block\" in the blockset!",
               "wall.block");
        addRow("not a file name", "a:b.block", true,
               "\"a:b.block\" cannot be used as a file name: Windows does not allow \":\" in a file name!",
               "wall.block");
        addRow(
            "leading blank", " wall2.block", true,
            "\" wall2.block\" cannot be used as a file name: it starts or ends with a blank, which Rover drops, so it "
            "would never find the file!",
            "wall.block");
        addRow("beyond Windows-1252", "\u0416.block", true,
               "\"\u0416.block\" cannot be used as a file name: Windows-1252, the code page of the style file, has no "
               "\"\u0416\"!",
               "wall.block");
    }

    void rename()
    {
        QFETCH(QString, newName);
        QFETCH(bool, yes);
        QFETCH(QString, message);
        QFETCH(QString, fileName);
        FakeHost host;
        presetItems(host, ItemKind::Block, {u"door.block"_s, u"wall.block"_s});
        host.scripted.answers = {yes ? PromptAnswer::Yes : PromptAnswer::No};

        QCOMPARE(renameItem(host, ItemKind::Block, 1, newName), fileName == newName);
        const QStringList asked =
            message.isEmpty() ? QStringList{u"Are you sure to rename this block?"_s} : QStringList{message};
        QCOMPARE(host.scripted.messageTexts(), asked);
        QCOMPARE(host.scripted.messages.first().title, u"Rename Block"_s);
        QCOMPARE(host.blockset.blocks[1].file, fileName);
        QCOMPARE(readBytes(itemFolder(host, ItemKind::Block) + u'/' + fileName), QByteArray("wall.block"));
        QCOMPARE(host.changed, fileName == newName);
    }

    void renameFailingOnDiskKeepsLabel()
    {
        FakeHost host;
        host.settings().setBoolSetting(u"showWarnings"_s, false);
        host.blockset.sounds.append(ItemRow{u"gone.wav"_s}); // its file is missing
        QVERIFY(!renameItem(host, ItemKind::Sound, 0, u"new.wav"_s));
        QCOMPARE(host.blockset.sounds[0].file, u"gone.wav"_s);
        QCOMPARE(host.scripted.messages.size(), 1);
        QCOMPARE(host.scripted.messages[0].title, u"File Error"_s);
        QVERIFY(!host.changed);
    }
};

QTEST_GUILESS_MAIN(TestItems)
#include "test_items.moc"
