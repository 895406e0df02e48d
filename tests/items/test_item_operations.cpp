#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "support/DataRows.h"
#include "support/FakeHost.h"
#include "support/TestFiles.h"

#include <QtTest>

using namespace Qt::StringLiterals;

// Removing and renaming items on real files in a working folder.
class TestItemOperations : public QObject {
    Q_OBJECT

    // Rows and files "<name>" in `kind`'s list; file contents are the names.
    static void addItems(FakeHost &host, ItemKind kind, const QStringList &names)
    {
        for (const QString &name : names) {
            writeBytes(itemFolder(host, kind) + u'/' + name, name.toUtf8());
            if (kind == ItemKind::Block)
                host.blockset.blocks.append(BlockRow{name, name, u"A"_s, u".A"_s});
            else
                (kind == ItemKind::Texture ? host.blockset.textures : host.blockset.sounds).append(ItemRow{name});
        }
    }

    static QStringList filesOnDisk(FakeHost &host, ItemKind kind)
    {
        return QDir(itemFolder(host, kind)).entryList(QDir::Files, QDir::Name);
    }

private slots:
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
        addItems(host, list, {u"a.wav"_s, u"b.wav"_s, u"c.wav"_s, u"d.wav"_s});
        host.settings().setBoolSetting(u"showWarnings"_s, !question.isEmpty());
        host.scripted.answers = {yes ? PromptAnswer::Yes : PromptAnswer::No};
        QFETCH(int, current);
        ListSelection selection{selected, current};

        QCOMPARE(removeItems(host, list, selection), yes);
        QCOMPARE(host.scripted.messageTexts(), question.isEmpty() ? QStringList() : QStringList{question});
        QCOMPARE(itemFileNames(host, list), remaining);
        QCOMPARE(filesOnDisk(host, list), remaining);
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
        addRow("not a file name", "a:b.block", true, "\"a:b.block\" cannot be used as a file name!", "wall.block");
        addRow("beyond Windows-1252", "\u0416.block", true, "\"\u0416.block\" cannot be used as a file name!",
               "wall.block");
    }

    void rename()
    {
        QFETCH(QString, newName);
        QFETCH(bool, yes);
        QFETCH(QString, message);
        QFETCH(QString, fileName);
        FakeHost host;
        addItems(host, ItemKind::Block, {u"door.block"_s, u"wall.block"_s});
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

QTEST_GUILESS_MAIN(TestItemOperations)
#include "test_item_operations.moc"
