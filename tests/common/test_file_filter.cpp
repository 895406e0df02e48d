// FileFilter: the program's compact filter texts, their QFileDialog form and
// Windows-style pattern matching. The dialog itself is exercised in
// tests/common/ui/test_gui_prompts.cpp.
#include "common/FileFilter.h"

#include <QRegularExpression>
#include <QTest>

using Entries = QList<FileFilterEntry>;

class TestFileFilter : public QObject {
    Q_OBJECT

private slots:
    void parse_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<Entries>("entries");
        QTest::newRow("blocksets") << "Blocksets (*.bset),*.bset" << Entries{{"Blocksets (*.bset)", {"*.bset"}}};
        QTest::newRow("blocks") << "Block files (*.block),*.block,All files (*.*),*.*"
                                << Entries{{"Block files (*.block)", {"*.block"}}, {"All files (*.*)", {"*.*"}}};
        QTest::newRow("images")
            << "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,JPG images (*.jpg),*.jpg,"
               "All files (*.*),*.*"
            << Entries{{"All supported Images (*.gif;*.jpg)", {"*.gif", "*.jpg"}},
                       {"GIF images (*.gif)", {"*.gif"}},
                       {"JPG images (*.jpg)", {"*.jpg"}},
                       {"All files (*.*)", {"*.*"}}};
        QTest::newRow("sounds") << "WAV files (*.wav),*.wav,All files (*.*),*.*"
                                << Entries{{"WAV files (*.wav)", {"*.wav"}}, {"All files (*.*)", {"*.*"}}};
        QTest::newRow("empty") << "" << Entries{};
        QTest::newRow("label without patterns") << "Blocksets (*.bset)" << Entries{};
        QTest::newRow("trailing label dropped") << "A,*.a,B" << Entries{{"A", {"*.a"}}};
        QTest::newRow("empty field ends the list") << "A,*.a,,*.b,C,*.c" << Entries{{"A", {"*.a"}}};
        QTest::newRow("empty pattern ends the list") << "A,,B,*.b" << Entries{};
        QTest::newRow("blanks around patterns") << "A, *.a ; *.b" << Entries{{"A", {"*.a", "*.b"}}};
        QTest::newRow("empty patterns between semicolons") << "A,*.a;;*.b;" << Entries{{"A", {"*.a", "*.b"}}};
        QTest::newRow("trailing comma") << "A,*.a," << Entries{{"A", {"*.a"}}};
    }
    void parse()
    {
        QFETCH(QString, filter);
        QFETCH(Entries, entries);
        const Entries parsed = FileFilter::parse(filter);
        QCOMPARE(parsed.size(), entries.size());
        for (qsizetype i = 0; i < parsed.size(); ++i) {
            QCOMPARE(parsed[i].label, entries[i].label);
            QCOMPARE(parsed[i].patterns, entries[i].patterns);
        }
    }

    // What QFileDialog makes of a name filter: the patterns from the last group
    // (split at blanks), and with HideNameFilterDetails the text before it.
    void qtReadsBackLabelAndPatterns_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::newRow("blocksets") << "Blocksets (*.bset),*.bset";
        QTest::newRow("images") << "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,"
                                   "JPG images (*.jpg),*.jpg,All files (*.*),*.*";
        QTest::newRow("blocks") << "Block files (*.block),*.block,All files (*.*),*.*";
        QTest::newRow("label without pattern group") << "Worlds,*.bset;*.zip";
    }
    void qtReadsBackLabelAndPatterns()
    {
        QFETCH(QString, filter);
        // The expression QFileDialog uses to split a name filter.
        const QRegularExpression qtFilter(
            QStringLiteral("^(.*)\\(([a-zA-Z0-9_.,*? +;#\\-\\[\\]@\\{\\}/!<>\\$%&=^~:\\|]*)\\)$"));
        const Entries entries = FileFilter::parse(filter);
        const QStringList names = FileFilter::qtNameFilters(entries);
        QCOMPARE(names.size(), entries.size());
        for (qsizetype i = 0; i < names.size(); ++i) {
            const QRegularExpressionMatch match = qtFilter.match(names[i]);
            QVERIFY2(match.hasMatch(), qPrintable(names[i]));
            QCOMPARE(match.captured(1).trimmed(), entries[i].label);
            const QStringList patterns = match.captured(2).split(' ', Qt::SkipEmptyParts);
            QCOMPARE(patterns.size(), entries[i].patterns.size());
            // Each pattern reaches the dialog alone ("*.*" as "*", which is what it means).
            for (qsizetype p = 0; p < patterns.size(); ++p)
                QCOMPARE(patterns[p], entries[i].patterns[p] == "*.*" ? QString("*") : entries[i].patterns[p]);
        }
    }

    void matches_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("match");
        QTest::newRow("extension") << "*.bset" << "castle.bset" << true;
        QTest::newRow("extension ignores case") << "*.bset" << "CASTLE.BSET" << true;
        QTest::newRow("other extension") << "*.bset" << "castle.bset.txt" << false;
        QTest::newRow("star dot star, dot") << "*.*" << "a.b" << true;
        QTest::newRow("star dot star, no dot") << "*.*" << "readme" << true;
        QTest::newRow("star") << "*" << "" << true;
        QTest::newRow("name dot star, bare name") << "readme.*" << "readme" << true;
        QTest::newRow("name dot star, longer name") << "readme.*" << "readmes" << false;
        QTest::newRow("star dot star, dot first") << "*.*" << ".hidden" << true;
        QTest::newRow("question mark") << "?.gif" << "a.gif" << true;
        QTest::newRow("question mark needs one") << "?.gif" << ".gif" << false;
        QTest::newRow("two stars") << "*a*b*" << "xxaxxbxx" << true;
        QTest::newRow("two stars, wrong order") << "*a*b" << "bxa" << false;
        QTest::newRow("backtracking") << "*ab" << "aab" << true;
        QTest::newRow("literal bracket") << "[a].gif" << "[a].gif" << true;
        QTest::newRow("bracket is no set") << "[ab].gif" << "a.gif" << false;
        QTest::newRow("accented letters ignore case") << QString::fromUtf8("\xc3\x89t\xc3\xa9.wav")
                                                      << QString::fromUtf8("\xc3\xa9T\xc3\x89.WAV") << true;
        QTest::newRow("exact") << "castle.bset" << "castle.bset" << true;
        QTest::newRow("prefix only") << "castle" << "castle.bset" << false;
        QTest::newRow("empty pattern") << "" << "a" << false;
    }
    void matches()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QFETCH(bool, match);
        QCOMPARE(FileFilter::matches(pattern, name), match);
    }

    void entryMatchesAnyPattern()
    {
        const Entries entries = FileFilter::parse("All supported Images (*.gif;*.jpg),*.gif;*.jpg");
        QVERIFY(FileFilter::matches(entries[0], "wall.GIF"));
        QVERIFY(FileFilter::matches(entries[0], "sky.jpg"));
        QVERIFY(!FileFilter::matches(entries[0], "bell.wav"));
    }

    void longNamesStayFast()
    {
        // Star-heavy patterns against long names must not explode.
        const QString name = QString(20000, 'a');
        QVERIFY(!FileFilter::matches("*a*a*a*a*a*b", name));
        QVERIFY(FileFilter::matches("*a*a*a*a*a*", name));
    }
};

QTEST_GUILESS_MAIN(TestFileFilter)
#include "test_file_filter.moc"
