#include "DocumentFixture.h"
#include "app/DroppedFiles.h"
#include "support/DataRows.h"

using namespace Qt::StringLiterals;

// The dispatcher of dropped files: which files it takes, and the order in which
// an open blockset receives them.
class TestDroppedFiles : public QObject {
    Q_OBJECT

private slots:
    void acceptedTypes_data()
    {
        addColumns<QString, bool>("path", "accepted");
        for (const char *known : {"bset", "block", "jpg", "gif", "wav"})
            addRow(known, u"/x/a."_s + QLatin1StringView(known), true);
        addRow("capital JPG", u"/x/photo.JPG"_s, true);
        addRow("png", u"/x/a.png"_s, false);
        addRow("dot in the folder only", u"/x.bset/file"_s, false);
    }

    void acceptedTypes()
    {
        QFETCH(QString, path);
        QTEST(isDroppableFile(path), "accepted");
    }

    void itemsGoToTheOpenBlocksetInKindOrder()
    {
        DocumentEnv env;
        const QString sound = env.setPath(u"drip.wav"_s);
        const QString texture = env.setPath(u"sky.gif"_s);
        const QString block = env.setPath(u"arch.block"_s);
        for (const QString &path : {sound, texture, block})
            writeFile(path, "<BLOCK NAME=\"wall\">");

        // Nothing is open: the user is told, nothing is added.
        QCOMPARE(dropFiles(env.document, {sound, texture}), DropOutcome::Nothing);
        QCOMPARE(env.prompts.messages.size(), 1);
        QCOMPARE(env.prompts.messages.first().title, u"Dropped Files"_s);

        env.open(env.addSet(u"Castle.bset"_s, castleFiles()));
        QVERIFY(env.document.blocksetOpen());
        const int blocks = env.document.blockCount();
        env.prompts.symbolAnswers << ScriptedPrompts::SymbolScript{};
        QCOMPARE(dropFiles(env.document, {sound, texture, block, env.setPath(u"photo.JPG"_s)}),
                 DropOutcome::AddedItems);
        QCOMPARE(env.document.blockCount(), blocks + 1);
        QCOMPARE(env.document.textures().last().file, u"sky.gif"_s);
        QCOMPARE(env.document.sounds().last().file, u"drip.wav"_s);
        QVERIFY(env.document.blocksetChanged());
        QVERIFY2(env.prompts.unexpected.isEmpty(), qPrintable(env.prompts.unexpected.join(u'\n')));
    }
};

QTEST_GUILESS_MAIN(TestDroppedFiles)
#include "test_dropped_files.moc"
