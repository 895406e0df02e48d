// Undo and redo of the document's edits: each kind of edit taken back gives the
// opened blockset again, file for file and byte for byte, and redone gives the
// edit's result; a long random run of edits, undos and redos agrees with a model.

#include "DocumentFixture.h"
#include "items/AddItems.h"
#include "items/RemoveItems.h"
#include "items/RenameItem.h"
#include "support/DataRows.h"
#include "symbols/RemapSymbols.h"

#include <QRandomGenerator>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

struct State {
    BlocksetContent content;
    QString comment;
    FileMap files; // blocks/, textures/ and sounds/ of the working folder
    bool operator==(const State &) const = default;
};

State stateOf(DocumentEnv &env)
{
    FileMap files = filesBelow(env.folder.workingFolder());
    files.removeIf([](const auto &entry) { return !entry.key().contains(u'/'); }); // the style is written at save
    return {env.document.content(), env.document.updateComment(), files};
}

using Edit = std::function<void(DocumentEnv &)>;

} // namespace

Q_DECLARE_METATYPE(Edit)

class TestUndo : public QObject {
    Q_OBJECT

    QString source(DocumentEnv &env, const QString &name, const QByteArray &bytes)
    {
        const QString path = env.dir.filePath(name);
        writeFile(path, bytes);
        return path;
    }

private slots:
    void undoRedoEachEdit_data()
    {
        addColumns<Edit, QString>("edit", "name");
        addRow("remove two blocks", Edit([](DocumentEnv &env) {
                   ListSelection selection{{0, 2}, 2};
                   removeItems(env.document, ItemKind::Block, selection);
               }),
               "Remove Block");
        addRow("rename a texture by case",
               Edit([](DocumentEnv &env) { renameItem(env.document, ItemKind::Texture, 0, u"Brick.gif"_s); }),
               "Rename Texture");
        addRow("add a sound", Edit([this](DocumentEnv &env) {
                   addSoundFile(env.document, source(env, u"rain.wav"_s, QByteArray(300, 'r')));
               }),
               "Add Sound");
        addRow("remap all symbols", Edit([](DocumentEnv &env) { remapAllSymbols(env.document, 3); }), "Remap Symbols");
        addRow("style value",
               Edit([](DocumentEnv &env) { env.document.editStyleValue(StyleField::Synopsis, u"Moss"_s); }),
               "Edit Settings");
        addRow("update comment", Edit([](DocumentEnv &env) { env.document.editUpdateComment(u"New gate"_s); }),
               "Edit Update Comment");
    }

    void undoRedoEachEdit()
    {
        QFETCH(Edit, edit);
        QFETCH(QString, name);
        DocumentEnv env;
        env.setOption("showWarnings", false);
        const QString castle = env.addSet(u"Castle.bset"_s, castleFiles());
        env.open(castle);
        const State opened = stateOf(env);
        QVERIFY(!opened.files.isEmpty() && !env.document.canUndo());

        if (name.startsWith(u"Edit"_s))
            edit(env);
        else
            env.document.edit(name, [&] { edit(env); });
        const State done = stateOf(env);
        QVERIFY(done != opened);
        QCOMPARE(env.document.undoName(), name);

        env.document.undo();
        QCOMPARE(stateOf(env), opened);
        QVERIFY(!env.document.isChanged() && !env.document.canUndo());
        QCOMPARE(env.document.redoName(), name);
        // The files put back are the archive's own bytes.
        const FileMap archive = readBset(castle);
        for (auto it = opened.files.cbegin(); it != opened.files.cend(); ++it)
            QCOMPARE(it.value(), archive.value(it.key()));

        env.document.redo();
        QCOMPARE(stateOf(env), done);
        QVERIFY(env.document.isChanged());

        // Saved, the state after the edit is the clean one; undone, it is changed again.
        QVERIFY(env.document.saveBlockset());
        env.document.undo();
        QVERIFY(env.document.isChanged());
        env.document.redo();
        QVERIFY(!env.document.isChanged());
    }

    // Typing into one field is one step; opening another blockset forgets them all.
    void typingIsOneStep()
    {
        DocumentEnv env;
        env.open(env.addSet(u"Castle.bset"_s, castleFiles()));
        for (const QString &text : {u"M"_s, u"Mo"_s, u"Mos"_s})
            env.document.editStyleValue(StyleField::Synopsis, text);
        env.document.editStyleValue(StyleField::Author, u"B"_s);
        env.document.undo();
        QCOMPARE(env.document.content().style.synopsis, u"Mos"_s);
        env.document.undo();
        QCOMPARE(env.document.content().style.synopsis, u"Stone walls"_s);
        QVERIFY(!env.document.canUndo());
        env.open(env.addSet(u"Other.bset"_s, castleFiles(u"Other.style"_s)));
        QVERIFY(!env.document.canRedo() && !QFileInfo::exists(env.folder.workingFolder() + u".undo/1"_s));
    }

    // 200 random edits, undos and redos against a list of the states they pass through.
    void randomRunMatchesModel()
    {
        DocumentEnv env;
        env.setOption("showWarnings", false);
        env.open(env.addSet(u"Castle.bset"_s, castleFiles()));
        QList<State> states{stateOf(env)};
        qsizetype at = 0;
        QRandomGenerator random(2026);
        for (int step = 0; step < 200; ++step) {
            const int pick = int(random.bounded(7));
            const int textures = int(env.document.content().textures.size());
            if (pick == 0 || pick == 1) {
                pick == 0 ? env.document.undo() : env.document.redo();
                at = qBound(qsizetype(0), at + (pick == 0 ? -1 : 1), states.size() - 1);
                QCOMPARE(stateOf(env), states.at(at));
                continue;
            }
            env.document.edit(u"Random"_s, [&] {
                if (pick == 2)
                    addTextureFile(env.document, source(env, u"t%1.gif"_s.arg(step), QByteArray(step + 1, 'x')));
                else if (pick == 3 && textures > 0)
                    renameItem(env.document, ItemKind::Texture, int(random.bounded(textures)), u"r%1.gif"_s.arg(step));
                else if (pick == 4 && textures > 0) {
                    ListSelection selection{{int(random.bounded(textures))}, 0};
                    removeItems(env.document, ItemKind::Texture, selection);
                } else if (pick == 5)
                    env.document.editUpdateComment(u"c%1"_s.arg(step));
                else
                    env.document.editStyleValue(StyleField(random.bounded(3)), u"v%1"_s.arg(step));
            });
            const State now = stateOf(env);
            if (now != states.at(at)) {
                states.resize(at + 1);
                states.append(now);
                ++at;
            }
            QCOMPARE(env.document.canUndo(), at > 0);
        }
        while (env.document.canUndo())
            env.document.undo();
        QCOMPARE(stateOf(env), states.first());
        QVERIFY(!env.document.isChanged());
    }
};

QTEST_GUILESS_MAIN(TestUndo)
#include "test_undo.moc"
