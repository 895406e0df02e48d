// Edits on the Settings and Version pages of the real window, typed as a user
// types them: a text field and a value box mark the blockset changed (caption
// "*", Save usable) and hand their value to the document; the version also goes
// to stbVersion; the update comment marks only the update file, and a Save then
// writes that file alone. Which control reports what is the pages' own test.
// Leaves out: the value controls' own typing rules in isolation (formats tests)
// and saving and reopening whole blocksets (test_document_commands_gui).

#include "MainWindowFixture.h"

class TestSettingsEditsGui : public MainWindowTest {
    Q_OBJECT

private slots:
    // A brightness the style file writes with a leading zero: the control must show
    // what the document took from it, or a later save writes something the user never saw.
    void openedValueMatchesTheDocument()
    {
        QVERIFY(fixture->openBlockset({.blocks = 1, .values = {{StyleField::OrbBrightness, "07%"}}}));
        QCOMPARE(fixture->document().style().orbBrightness, QString("7%"));
        QCOMPARE(fixture->shownText("prcOrb"), QString("7%"));
        QVERIFY(!fixture->document().isChanged());
    }

    void editMarksBlockset_data()
    {
        // control: where the keys go; its value control is the part before "/".
        addColumns<QString, QString, StyleField, QString>("control", "keys", "field", "expected");
        // The version goes to stbVersion too; typed away entirely, "No Version" stands there.
        addRow("version emptied", "fldVersion", "\b\b\b", StyleField::Version, "");
        addRow("sky colour", "rgbSky/txtG", "5", StyleField::SkyColor, "(10,205,30)");
    }

    void editMarksBlockset()
    {
        QFETCH(QString, control);
        QFETCH(QString, keys);
        QFETCH(StyleField, field);
        QFETCH(QString, expected);
        openStyledBlockset();
        QVERIFY2(fixture->typeInto(control, keys), qPrintable(control));
        verifyMarked(true);
        QVERIFY(!fixture->document().updateChanged());
        // The control shows the edited value and the document holds the same text.
        QCOMPARE(fixture->shownText(control.section('/', 0, 0)), expected);
        QCOMPARE(styleValue(fixture->document().style(), field), expected);
        if (field == StyleField::Version)
            QCOMPARE(fixture->panel("stbVersion"), expected.isEmpty() ? QString("No Version") : expected);
    }

    // A comment typed over two lines marks only the update file, yet the caption
    // and Save show it; Save writes the update file alone, with the comment's
    // line break as CR LF.
    void updateCommentSaveWritesOnlyUpdateFile()
    {
        openStyledBlockset();
        const QByteArray before = readBytes(fixture->document().blocksetPath());
        fixture->typeInto("fldUpdate", "one\ntwo");
        QVERIFY(fixture->document().updateChanged() && !fixture->document().blocksetChanged());
        QCOMPARE(fixture->caption(), QString("Cubrix - Styled.bset*"));
        QVERIFY(fixture->enabled("btnSave") && fixture->enabled("mnuSave"));

        fixture->action("btnSave")->trigger();
        QCOMPARE(readBytes(fixture->document().blocksetPath()), before);
        QVERIFY(readBytes(fixture->dir.filePath("Styled.txt")).contains("\">\r\none\r\ntwo\r\n</version>"));
        verifyMarked(false);
        QVERIFY(!fixture->document().updateChanged());
    }

private:
    // An open, unchanged blockset whose style sets every value control: showing
    // them must not count as an edit.
    void openStyledBlockset()
    {
        QVERIFY(fixture->openBlockset({.name = "Styled",
                                       .blocks = 2,
                                       .textures = 3,
                                       .values = {{StyleField::SkyTexture, "texture0.jpg"},
                                                  {StyleField::SkyColor, "(10,20,30)"},
                                                  {StyleField::SkyBrightness, "50%"},
                                                  {StyleField::GroundColor, "(1,2,3)"},
                                                  {StyleField::OrbColor, "(200,201,202)"},
                                                  {StyleField::OrbBrightness, "10%"},
                                                  {StyleField::OrbPosition, "(90,-4)"},
                                                  {StyleField::OrbHref, "index.3dml"}}}));
        verifyMarked(false);
    }

    // The caption, Save and the flag of the document show whether the style was edited.
    void verifyMarked(bool marked)
    {
        QCOMPARE(fixture->caption(), QString(marked ? "Cubrix - Styled.bset*" : "Cubrix - Styled.bset"));
        QCOMPARE(fixture->enabled("btnSave"), marked);
        QCOMPARE(fixture->enabled("mnuSave"), marked);
        QCOMPARE(fixture->document().blocksetChanged(), marked);
    }
};

QTEST_MAIN(TestSettingsEditsGui)
#include "moc_MainWindowFixture.cpp"
#include "test_settings_edits_gui.moc"
