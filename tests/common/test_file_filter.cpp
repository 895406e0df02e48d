// FileFilter: the program's compact filter texts and Windows-style pattern
// matching. What QFileDialog makes of the entries is checked on a real dialog in
// tests/common/ui/test_gui_prompts.cpp.
#include "common/FileFilter.h"
#include "support/DataRows.h"

#include <QTest>

using Entries = QList<FileFilterEntry>;

class TestFileFilter : public QObject {
    Q_OBJECT

private slots:
    void parse_data()
    {
        addColumns<QString, Entries>("filter", "entries");
        QTest::newRow("images")
            << "All supported Images (*.gif;*.jpg),*.gif;*.jpg,GIF images (*.gif),*.gif,All files (*.*),*.*"
            << Entries{{"All supported Images (*.gif;*.jpg)", {"*.gif", "*.jpg"}},
                       {"GIF images (*.gif)", {"*.gif"}},
                       {"All files (*.*)", {"*.*"}}};
        QTest::newRow("empty") << "" << Entries{};
        QTest::newRow("trailing label dropped") << "A,*.a,B" << Entries{{"A", {"*.a"}}};
        QTest::newRow("empty field ends the list") << "A,*.a,,*.b,C,*.c" << Entries{{"A", {"*.a"}}};
        QTest::newRow("blanks and empty patterns") << "A, *.a ;;*.b;" << Entries{{"A", {"*.a", "*.b"}}};
    }
    void parse()
    {
        QFETCH(QString, filter);
        QTEST(FileFilter::parse(filter), "entries");
    }

    void matches_data()
    {
        addColumns<QString, QString, bool>("pattern", "name", "match");
        addRow("extension ignores case", "*.bset", "CASTLE.BSET", true);
        addRow("other extension", "*.bset", "castle.bset.txt", false);
        addRow("star dot star, no dot", "*.*", "readme", true);
        addRow("name dot star, bare name", "readme.*", "readme", true);
        addRow("name dot star, longer name", "readme.*", "readmes", false);
        addRow("question mark", "?.gif", "a.gif", true);
        addRow("question mark needs one", "?.gif", ".gif", false);
        addRow("two stars, wrong order", "*a*b", "bxa", false);
        addRow("backtracking", "*ab", "aab", true);
        addRow("bracket is no set", "[a].gif", "[a].gif", true);
        addRow("accented letters ignore case", "\xc3\x89t\xc3\xa9.wav", "\xc3\xa9T\xc3\x89.WAV", true);
        addRow("empty pattern", "", "a", false);
    }
    void matches()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QTEST(FileFilter::matches(pattern, name), "match");
    }
    void longNamesStayFast()
    {
        // Star-heavy patterns against long names must not explode.
        QVERIFY(!FileFilter::matches("*a*a*a*a*a*b", QString(20000, 'a')));
    }
};

QTEST_GUILESS_MAIN(TestFileFilter)
#include "test_file_filter.moc"
