// The cache index read by Rover's rules, elements matched to files by address,
// and the rewrite that changes one element and keeps every other byte.

#include "cache/CacheAddress.h"
#include "cache/CacheIndex.h"
#include "cache/CacheIndexFile.h"
#include "rover/RoverCacheRules.h"
#include "support/DataRows.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The cached files every case has, as the walk finds them.
QList<CacheRow> cachedFiles()
{
    QList<CacheRow> rows(4);
    rows[0] = {u"Castle.bset"_s, u"a.example\\sets"_s};
    rows[1] = {u"Castle.bset"_s, u"b.example"_s};
    rows[2] = {u"Unique.bset"_s, u"h"_s};
    rows[3] = {u"s.bset"_s, u"x%20y"_s};
    return rows;
}

const QByteArray kHead = "<CACHE>\r\n";
const QByteArray kA = "\t<BLOCKSET HREF=\"http://a.example/sets/Castle.bset\" SIZE=\"9\" UPDATED=\"1600000000\"/>\r\n";
const QByteArray kB = "\t<blockset  href = 'http://B.EXAMPLE/castle.bset' size='9' updated=' 1700000000 '"
                      " NAME='Old Town' SYNOPSIS=\"Huts -> an <old> village\" VERSION=\"1.0\"/>\r\n";
const QByteArray kEnd = "</CACHE>\r\n";

} // namespace

class TestCacheIndex : public QObject {
    Q_OBJECT

private slots:
    void reading_data()
    {
        QTest::addColumn<QByteArray>("index");
        QTest::addColumn<QStringList>("elements"); // href|name|synopsis|updated
        addColumns<QList<int>, bool>("rejectedLines", "endMissing");

        const QString a = u"http://a.example/sets/Castle.bset|||1600000000"_s;
        const QString b = u"http://B.EXAMPLE/castle.bset|Old Town|Huts -> an <old> village|1700000000"_s;
        addRow("quotes of both kinds, < and > inside", kHead + kA + kB + kEnd, QStringList{a, b}, QList<int>{}, false);
        addRow("no href, next element still read", kHead + "\t<BLOCKSET SIZE=\"1\" UPDATED=\"5\"/>\r\n" + kB + kEnd,
               QStringList{b}, QList<int>{2}, false);
        QTest::newRow("unclosed string, a bare word, a size in words")
            << kHead + "\t<BLOCKSET HREF=\"http://h/x.bset SIZE=1/>\r\n" + kA
                   + "\t<BLOCKSET HREF=\"u\" big SIZE=\"2\"/>\r\n<BLOCKSET HREF=\"u\" SIZE=\"2 kb\" UPDATED=\"1\"/>\r\n"
                   + kB + kEnd
            << QStringList{a, b} << QList<int>{2, 4, 5} << false;
        addRow("stray end tag, open BLOCKSET, unknown tag without end",
               kHead + "</FOLDER>\r\n<BLOCKSET HREF=\"u\" SIZE=\"1\" UPDATED=\"1\">\r\n<NOTE>\r\n" + kA + kEnd,
               QStringList{a}, QList<int>{2, 3, 4}, false);
        addRow("unknown tag skipped with its content", kHead + "<NOTE a='1'>" + kA + "<NOTE/></NOTE>\r\n" + kB + kEnd,
               QStringList{b}, QList<int>{}, false);
        addRow("end missing, text after the end unread", kHead + kA, QStringList{a}, QList<int>{}, true);
        addRow("after </CACHE> nothing counts", kHead + kA + kEnd + "<BLOCKSET \"broken\r\n" + kB, QStringList{a},
               QList<int>{}, false);
    }
    void reading()
    {
        QFETCH(QByteArray, index);
        QFETCH(QStringList, elements);
        QFETCH(QList<int>, rejectedLines);
        const CacheIndexFile file(index);
        QVERIFY(file.usable());
        QStringList read;
        for (const CacheIndexFile::Element &e : file.elements())
            read.append(QStringList{e.href, e.name, e.synopsis, QString::number(e.updated)}.join(u'|'));
        QCOMPARE(read, elements);
        QList<int> lines;
        for (const CacheIndexFile::Rejected &part : file.rejected())
            lines.append(part.line);
        QCOMPARE(lines, rejectedLines);
        QTEST(file.endMissing(), "endMissing");
    }

    void lookup_data()
    {
        addColumns<QString, int>("href", "row");
        QTest::newRow("whole address, case ignored") << u"http://A.EXAMPLE/Sets/castle.bset"_s << 0;
        QTest::newRow("same name, other folder") << u"http://b.example/Castle.bset"_s << 1;
        QTest::newRow("folder not in the cache") << u"http://c.example/Castle.bset"_s << -1;
        QTest::newRow("port: by a unique name") << u"http://h:8080/Unique.bset"_s << 2;
        QTest::newRow("port: name not unique") << u"http://h:8080/Castle.bset"_s << -1;
        QTest::newRow("nothing decoded") << u"http://x%20y/s.bset"_s << 3;
        QTest::newRow("decoded is another folder") << u"http://x y/s.bset"_s << -1;
    }
    void lookup()
    {
        QFETCH(QString, href);
        QTEST(CacheRowLookup(cachedFiles()).find(href), "row");
    }

    void rewrite_data()
    {
        addColumns<QByteArray, QString, bool, QByteArray>("index", "file", "remove", "expected");
        QTest::addColumn<QList<int>>("counts"); // changed, rejected, missing

        QByteArray bForced = kB;
        bForced.replace("' 1700000000 '", "'0'");
        QByteArray aForced = kA;
        aForced.replace("1600000000", "0");
        const QByteArray gone = "\t<BLOCKSET HREF=\"http://gone.example/x.bset\" SIZE=\"1\" UPDATED=\"1\"/>\r\n";
        addRow("force: only UPDATED of that file", kHead + kA + kB + kEnd, u"b.example\\Castle.bset"_s, false,
               kHead + kA + bForced + kEnd, QList<int>{1, 0, 0});
        addRow("remove: only its line", kHead + kA + kB + kEnd, u"a.example\\sets\\Castle.bset"_s, true,
               kHead + kB + kEnd, QList<int>{1, 0, 0});
        addRow("rejected and gone left out, end added",
               kHead + "\t<BLOCKSET SIZE=\"1\" UPDATED=\"5\"/>\r\n" + gone + kA + "<x \"open\r\n" + kB,
               u"a.example\\sets\\Castle.bset"_s, false, kHead + aForced + kB + kEnd, QList<int>{1, 2, 1});
        addRow("two elements on a line, LF only",
               QByteArray("<cache>\n" + kA.trimmed() + " " + kB.trimmed() + "\n</cache>"),
               u"a.example\\sets\\Castle.bset"_s, true, QByteArray("<cache>\n " + kB.trimmed() + "\n</cache>"),
               QList<int>{1, 0, 0});
    }
    void rewrite()
    {
        QFETCH(QByteArray, index);
        QFETCH(QString, file);
        QFETCH(bool, remove);
        const CacheIndexFile before(index);
        const CacheIndexEdit edit = editCacheIndex(before, cachedFiles(), file.toCaseFolded(),
                                                   remove ? CacheIndexChange::Remove : CacheIndexChange::ForceDownload);
        QTEST(edit.bytes, "expected");
        QTEST((QList<int>{edit.changed, edit.rejected, edit.missing}), "counts");
        QVERIFY2(!hasRoverError(checkRoverCache(edit.bytes)), edit.bytes.constData());
    }
};

QTEST_GUILESS_MAIN(TestCacheIndex)
#include "test_cache_index.moc"
