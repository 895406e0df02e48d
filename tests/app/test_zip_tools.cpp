#include "DocumentFixture.h"
#include "support/DataRows.h"

using namespace Qt::StringLiterals;

// The same small blockset as each zip tool wrote it (tests/data/zip-tools): a
// valid archive opens with every item, one Cubrix cannot decode is refused with
// the entry and the reason.
class TestZipTools : public QObject {
    Q_OBJECT

private slots:
    void open_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("reason"); // "" = opens
        for (const char *tool : {"bsdtar", "zip-fz", "zip-fd", "7z-deflate", "7z-store"})
            addRow(tool, QString::fromLatin1(tool), QString());
        addRow("7z-aes", u"7z-aes"_s, u"cannot read \"Mini.style\": encrypted"_s);
        addRow("7z-zipcrypto", u"7z-zipcrypto"_s, u"cannot read \"Mini.style\": encrypted"_s);
        addRow("7z-deflate64", u"7z-deflate64"_s,
               u"cannot read \"Mini.style\": compression method Deflate64 is not supported"_s);
    }

    void open()
    {
        QFETCH(QString, tool);
        QFETCH(QString, reason);
        DocumentEnv env;
        const QString copy = env.setPath(u"Mini.bset"_s);
        QVERIFY(QFile::copy(QStringLiteral(CUBRIX_TEST_DATA "/zip-tools/") + tool + u"/Mini.bset"_s, copy));
        env.open(copy);
        if (!reason.isEmpty()) {
            QVERIFY(!env.document.blocksetOpen());
            verifyMessage(env.prompts, 0, u"Failed to open Blockset File."_s, u"File Error"_s, PromptButtons::Ok,
                          PromptIcon::Critical);
            QCOMPARE(env.prompts.messages.first().detail, reason);
            QVERIFY(QDir(env.working(u"blocks"_s)).isEmpty());
            return;
        }
        QVERIFY(env.document.blocksetOpen());
        QVERIFY(env.prompts.messages.isEmpty());
        QStringList items;
        for (const BlockRow &row : env.document.blocks())
            items << row.file + u' ' + row.symbol + row.doubleSymbol;
        for (const ItemRow &row : env.document.textures() + env.document.sounds())
            items << row.file;
        QCOMPARE(items, QStringList({u"door.block b.b"_s, u"wall.block a.a"_s, u"torch.gif"_s, u"tick.wav"_s}));
    }
};

QTEST_GUILESS_MAIN(TestZipTools)
#include "test_zip_tools.moc"
