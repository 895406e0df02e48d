#include "items/RemoveItems.h"
#include "items/RenameItem.h"
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
        QTest::addColumn<int>("kind");
        QTest::addColumn<QList<int>>("selected");
        QTest::addColumn<int>("current");
        QTest::addColumn<QString>("question"); // "" = none asked (showWarnings off)
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QStringList>("remaining");
        QTest::addColumn<int>("newCurrent");
        const QStringList all{u"a.wav"_s, u"b.wav"_s, u"c.wav"_s, u"d.wav"_s};
        QTest::newRow("one block") << int(ItemKind::Block) << QList<int>{1} << 1 << u"Are you sure to remove 1 block?"_s
                                   << true << QStringList{u"a.wav"_s, u"c.wav"_s, u"d.wav"_s} << 1;
        QTest::newRow("two textures, current first of them")
            << int(ItemKind::Texture) << QList<int>{3, 0} << 0 << u"Are you sure to remove 2 textures?"_s << true
            << QStringList{u"b.wav"_s, u"c.wav"_s} << 0;
        QTest::newRow("last rows, current moves up")
            << int(ItemKind::Sound) << QList<int>{2, 3} << 3 << u"Are you sure to remove 2 sounds?"_s << true
            << QStringList{u"a.wav"_s, u"b.wav"_s} << 1;
        QTest::newRow("current kept behind removed row")
            << int(ItemKind::Sound) << QList<int>{0} << 2 << QString() << true
            << QStringList{u"b.wav"_s, u"c.wav"_s, u"d.wav"_s} << 1;
        QTest::newRow("all") << int(ItemKind::Sound) << QList<int>{0, 1, 2, 3} << 0
                             << u"Are you sure to remove 4 sounds?"_s << true << QStringList() << -1;
        QTest::newRow("no") << int(ItemKind::Block) << QList<int>{0} << 0 << u"Are you sure to remove 1 block?"_s
                            << false << all << 0;
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
        QTest::addColumn<QString>("newName");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("message");  // the refusal, or "" when only the question was asked
        QTest::addColumn<QString>("fileName"); // the row's and the file's name afterwards
        QTest::newRow("renamed") << u"stone.block"_s << true << QString() << u"stone.block"_s;
        QTest::newRow("case only") << u"Wall.block"_s << true << QString() << u"Wall.block"_s;
        QTest::newRow("answered no") << u"stone.block"_s << false << QString() << u"wall.block"_s;
        QTest::newRow("other extension") << u"wall.txt"_s << true
                                         << u"You are not allowed to change the file extension!"_s << u"wall.block"_s;
        QTest::newRow("empty base name") << u".block"_s << true << u"The file name must not be empty!"_s
                                         << u"wall.block"_s;
        QTest::newRow("name of another row")
            << u"DOOR.block"_s << true << u"There is already a \"door.block\" in the blockset!"_s << u"wall.block"_s;
        QTest::newRow("not a file name")
            << u"a:b.block"_s << true
            << u"\"a:b.block\" cannot be used as a file name: Windows does not allow \":\" in a file name!"_s
            << u"wall.block"_s;
        QTest::newRow("leading blank") << u" wall2.block"_s << true
                                       << u"\" wall2.block\" cannot be used as a file name: it starts or ends with a "
                                          "blank, which Rover drops, so it would never find the file!"_s
                                       << u"wall.block"_s;
        QTest::newRow("beyond Windows-1252")
            << u"\u0416.block"_s << true
            << u"\"\u0416.block\" cannot be used as a file name: Windows-1252, the code page of the style file, has no \"\u0416\"!"_s
            << u"wall.block"_s;
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
