// FileFilter: the program's compact filter texts and Windows-style pattern
// matching. What QFileDialog makes of the entries is checked on a real dialog in
// tests/common/ui/test_gui_prompts.cpp.
#include "common/FileFilter.h"

#include <QTest>

using Entries = QList<FileFilterEntry>;

class TestFileFilter : public QObject {
    Q_OBJECT

private slots:
    void parse_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<Entries>("entries");
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
        QFETCH(Entries, entries);
        QCOMPARE(FileFilter::parse(filter), entries);
    }

    void matches_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("match");
        QTest::newRow("extension ignores case") << "*.bset"
                                                << "CASTLE.BSET" << true;
        QTest::newRow("other extension") << "*.bset"
                                         << "castle.bset.txt" << false;
        QTest::newRow("star dot star, no dot") << "*.*"
                                               << "readme" << true;
        QTest::newRow("name dot star, bare name") << "readme.*"
                                                  << "readme" << true;
        QTest::newRow("name dot star, longer name") << "readme.*"
                                                    << "readmes" << false;
        QTest::newRow("question mark") << "?.gif"
                                       << "a.gif" << true;
        QTest::newRow("question mark needs one") << "?.gif"
                                                 << ".gif" << false;
        QTest::newRow("two stars, wrong order") << "*a*b"
                                                << "bxa" << false;
        QTest::newRow("backtracking") << "*ab"
                                      << "aab" << true;
        QTest::newRow("bracket is no set") << "[a].gif"
                                           << "[a].gif" << true;
        QTest::newRow("accented letters ignore case")
            << QString::fromUtf8("\xc3\x89t\xc3\xa9.wav") << QString::fromUtf8("\xc3\xa9T\xc3\x89.WAV") << true;
        QTest::newRow("empty pattern") << ""
                                       << "a" << false;
    }
    void matches()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QFETCH(bool, match);
        QCOMPARE(FileFilter::matches(pattern, name), match);
    }

    void longNamesStayFast()
    {
        // Star-heavy patterns against long names must not explode.
        QVERIFY(!FileFilter::matches("*a*a*a*a*a*b", QString(20000, 'a')));
    }
};

QTEST_GUILESS_MAIN(TestFileFilter)
#include "test_file_filter.moc"
