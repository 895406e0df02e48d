// Edits on the Settings and Version pages of the real window, typed as a user
// types them: every text field and every value box marks the blockset changed
// (caption "*", Save usable) and hands its value to the document; the version
// also goes to stbVersion; the update comment marks only the update file, and
// a Save then writes that file alone; a texture box counts an edit once, when
// the focus leaves it with a different text.
// Leaves out: the value controls' own typing rules in isolation (formats tests)
// and saving and reopening whole blocksets (test_document_commands_gui).

#include "MainWindowFixture.h"

#include "formats/ui/SettingsTab.h"

#include <QApplication>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>

Q_DECLARE_METATYPE(StyleField)

namespace {

constexpr int kSettingsTab = 3;
constexpr int kVersionTab = 4;

} // namespace

class TestSettingsEditsGui : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        fixture = std::make_unique<MainWindowFixture>();
        fixture->open();
    }
    void cleanup()
    {
        QVERIFY2(fixture->prompts.unexpected.isEmpty(), qPrintable(fixture->prompts.unexpected.join("; ")));
        fixture.reset();
    }

    void openedValuesMatchTheDocument_data();
    void openedValuesMatchTheDocument();
    void editMarksBlockset_data();
    void editMarksBlockset();
    void versionGoesToStatusBar();
    void updateCommentMarksOnlyUpdateFile();
    void updateCommentSaveWritesOnlyUpdateFile_data();
    void updateCommentSaveWritesOnlyUpdateFile();
    void textureBoxCountsChangeOnLeaving_data();
    void textureBoxCountsChangeOnLeaving();

private:
    // An open, unchanged blockset whose style sets every value control.
    void openStyledBlockset()
    {
        BlocksetRecipe recipe;
        recipe.name = "Styled";
        recipe.blocks = 2;
        recipe.textures = 3;
        recipe.values = {{StyleField::SkyTexture, "texture0.jpg"},
                         {StyleField::SkyColor, "(10,20,30)"},
                         {StyleField::SkyBrightness, "50%"},
                         {StyleField::GroundColor, "(1,2,3)"},
                         {StyleField::OrbColor, "(200,201,202)"},
                         {StyleField::OrbBrightness, "10%"},
                         {StyleField::OrbPosition, "(90,-4)"},
                         {StyleField::OrbHref, "index.3dml"}};
        QVERIFY(fixture->openBlockset(recipe));
        QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset"));
        QVERIFY(!fixture->window->document().isChanged());
        QVERIFY(!fixture->enabled("btnSave"));
        QVERIFY(!fixture->enabled("mnuSave"));
    }

    void showWindow()
    {
        fixture->window->show();
        fixture->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(fixture->window.get()));
    }

    std::unique_ptr<MainWindowFixture> fixture;
};

void TestSettingsEditsGui::openedValuesMatchTheDocument_data()
{
    // A value as the style file writes it; the value control must show what the
    // document took from it, or a later save writes something the user never saw.
    QTest::addColumn<QString>("control");
    QTest::addColumn<StyleField>("field");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("shown");
    QTest::newRow("colour with blanks") << "rgbSky" << StyleField::SkyColor << " (10,20,30) " << "(10,20,30)";
    QTest::newRow("full brightness") << "prcSky" << StyleField::SkyBrightness << "100%" << "100%";
    QTest::newRow("brightness with a leading zero") << "prcOrb" << StyleField::OrbBrightness << "07%" << "7%";
    QTest::newRow("lowest tilt") << "posOrb" << StyleField::OrbPosition << "(0,-90)" << "(0,-90)";
    QTest::newRow("colour out of range") << "rgbGround" << StyleField::GroundColor << "(1,2,256)" << "";
}

void TestSettingsEditsGui::openedValuesMatchTheDocument()
{
    QFETCH(QString, control);
    QFETCH(StyleField, field);
    QFETCH(QString, written);
    QFETCH(QString, shown);
    BlocksetRecipe recipe;
    recipe.name = "Written";
    recipe.blocks = 1;
    recipe.values = {{field, written}};
    QVERIFY(fixture->openBlockset(recipe));
    QCOMPARE(styleValue(fixture->window->document().style(), field), shown);
    QCOMPARE(fixture->shownText(control), shown);
    QVERIFY(!fixture->window->document().isChanged());
}

void TestSettingsEditsGui::editMarksBlockset_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("control"); // where the keys go
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("value");   // control whose value the document gets
    QTest::addColumn<StyleField>("field");
    QTest::addColumn<QString>("expected");

    QTest::newRow("version") << kVersionTab << "fldVersion" << "b" << "fldVersion" << StyleField::Version << "1.0b";
    QTest::newRow("name") << kVersionTab << "fldBlocksetName" << "2" << "fldBlocksetName" << StyleField::Name
                          << "Styled2";
    QTest::newRow("synopsis") << kVersionTab << "fldSynopsis" << "Walls" << "fldSynopsis" << StyleField::Synopsis
                              << "Walls";
    QTest::newRow("author") << kVersionTab << "fldAuthor" << "Me" << "fldAuthor" << StyleField::Author << "Me";
    QTest::newRow("copyright") << kVersionTab << "fldCopyright" << QString::fromUtf8("\xc2\xa9 Me") << "fldCopyright"
                               << StyleField::Copyright << QString::fromUtf8("\xc2\xa9 Me");
    QTest::newRow("orb link") << kSettingsTab << "fldOrbHREF" << "#top" << "fldOrbHREF" << StyleField::OrbHref
                              << "index.3dml#top";
    QTest::newRow("orb target") << kSettingsTab << "fldOrbTarget" << "_top" << "fldOrbTarget"
                                << StyleField::OrbTarget << "_top";
    QTest::newRow("orb text") << kSettingsTab << "fldOrbText" << "Home" << "fldOrbText" << StyleField::OrbText
                              << "Home";
    QTest::newRow("sky red") << kSettingsTab << "rgbSky/txtR" << "0" << "rgbSky" << StyleField::SkyColor
                             << "(100,20,30)";
    QTest::newRow("sky green") << kSettingsTab << "rgbSky/txtG" << "5" << "rgbSky" << StyleField::SkyColor
                               << "(10,205,30)";
    // 300 is more than a colour holds: the box shows 255, and so does the style.
    QTest::newRow("sky blue above 255") << kSettingsTab << "rgbSky/txtB" << "0" << "rgbSky" << StyleField::SkyColor
                                        << "(10,20,255)";
    QTest::newRow("sky brightness above 100") << kSettingsTab << "prcSky/txtB" << "0" << "prcSky"
                                              << StyleField::SkyBrightness << "100%";
    QTest::newRow("ground blue") << kSettingsTab << "rgbGround/txtB" << "3" << "rgbGround"
                                 << StyleField::GroundColor << "(1,2,33)";
    // A colour box typed empty leaves the colour unset.
    QTest::newRow("orb red emptied") << kSettingsTab << "rgbOrb/txtR" << "\b\b\b" << "rgbOrb"
                                     << StyleField::OrbColor << "";
    QTest::newRow("orb brightness") << kSettingsTab << "prcOrb/txtB" << "\b" << "prcOrb" << StyleField::OrbBrightness
                                    << "1%";
    QTest::newRow("orb turn above 360") << kSettingsTab << "posOrb/txtTurn" << "9" << "posOrb"
                                        << StyleField::OrbPosition << "(360,-4)";
    QTest::newRow("orb tilt") << kSettingsTab << "posOrb/txtTilt" << "5" << "posOrb" << StyleField::OrbPosition
                              << "(90,-45)";
}

void TestSettingsEditsGui::editMarksBlockset()
{
    QFETCH(int, tab);
    QFETCH(QString, control);
    QFETCH(QString, keys);
    QFETCH(QString, value);
    QFETCH(StyleField, field);
    QFETCH(QString, expected);
    openStyledBlockset();

    QWidget *typedInto = fixture->typeInto(tab, control, keys);
    QVERIFY2(typedInto, qPrintable(control));

    const BlocksetDocument &document = fixture->window->document();
    QVERIFY(document.blocksetChanged());
    QVERIFY(!document.updateChanged());
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset*"));
    QVERIFY(fixture->enabled("btnSave"));
    QVERIFY(fixture->enabled("mnuSave"));
    // The control shows the edited value and the document holds the same text.
    QCOMPARE(fixture->shownText(value), expected);
    QCOMPARE(styleValue(document.style(), field), expected);
    QVERIFY(fixture->prompts.messages.isEmpty());
}

void TestSettingsEditsGui::versionGoesToStatusBar()
{
    openStyledBlockset();
    QCOMPARE(fixture->panel("stbVersion"), QString("1.0"));
    fixture->typeInto(kVersionTab, "fldVersion", ".1");
    QCOMPARE(fixture->panel("stbVersion"), QString("1.0.1"));
    QCOMPARE(fixture->window->document().versionText(), QString("1.0.1"));

    // A version typed away entirely leaves "No Version" in the panel.
    auto *field = qobject_cast<QLineEdit *>(fixture->control("fldVersion"));
    QVERIFY(field);
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QCOMPARE(field->text(), QString());
    QCOMPARE(fixture->panel("stbVersion"), QString("No Version"));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset*"));
}

void TestSettingsEditsGui::updateCommentMarksOnlyUpdateFile()
{
    openStyledBlockset();
    fixture->typeInto(kVersionTab, "fldUpdate", "New gate");
    const BlocksetDocument &document = fixture->window->document();
    QVERIFY(document.updateChanged());
    QVERIFY(!document.blocksetChanged());
    QCOMPARE(document.updateComment(), QString("New gate"));
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset*"));
    QVERIFY(fixture->enabled("btnSave"));
    QVERIFY(fixture->enabled("mnuSave"));
    QCOMPARE(fixture->panel("stbVersion"), QString("1.0"));
}

void TestSettingsEditsGui::updateCommentSaveWritesOnlyUpdateFile_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QByteArray>("written"); // the comment's bytes in the file
    QTest::newRow("one line") << "Two towers" << QByteArray("Two towers");
    QTest::newRow("two lines") << "one\ntwo" << QByteArray("one\r\ntwo");
    QTest::newRow("euro sign") << QString::fromUtf8("5 \xe2\x82\xac") << QByteArray("5 \x80");
}

void TestSettingsEditsGui::updateCommentSaveWritesOnlyUpdateFile()
{
    QFETCH(QString, keys);
    QFETCH(QByteArray, written);
    openStyledBlockset();
    const QString archive = fixture->window->document().blocksetPath();
    const QByteArray before = MainWindowFixture::readFile(archive);
    QVERIFY(!before.isEmpty());
    const QString updateFile = QFileInfo(archive).absolutePath() + "/Styled.txt";
    QVERIFY(!QFileInfo::exists(updateFile));

    fixture->typeInto(kVersionTab, "fldUpdate", keys);
    fixture->action("btnSave")->trigger();

    QCOMPARE(fixture->panel("stbProcess"), QString("Update file saved."));
    QCOMPARE(MainWindowFixture::readFile(archive), before);
    const QByteArray update = MainWindowFixture::readFile(updateFile);
    const QByteArray expected = "<version id=\"1.0\" size=\"" + QByteArray::number(before.size())
                                + "\">\r\n" + written + "\r\n</version>\r\n";
    QCOMPARE(update, expected);
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset"));
    QVERIFY(!fixture->enabled("btnSave"));
    QVERIFY(!fixture->window->document().isChanged());

    // The result text goes at the next refresh; the comment stays in its box.
    fixture->tabs()->setCurrentIndex(kSettingsTab);
    QCOMPARE(fixture->panel("stbProcess"), QString());
    QCOMPARE(fixture->shownText("fldUpdate"), keys);
}

void TestSettingsEditsGui::textureBoxCountsChangeOnLeaving_data()
{
    QTest::addColumn<QString>("keys");     // typed while the box has the focus; "<down>" picks the next entry
    QTest::addColumn<QString>("expected"); // the box's text after leaving it
    QTest::addColumn<bool>("marked");
    QTest::newRow("focused and left") << "" << "texture0.jpg" << false;
    QTest::newRow("typed and typed back") << "x\b" << "texture0.jpg" << false;
    QTest::newRow("picked from the list") << "<down>" << "texture1.jpg" << true;
    QTest::newRow("typed a new name") << "\b\b\bgif" << "texture0.gif" << true;
}

void TestSettingsEditsGui::textureBoxCountsChangeOnLeaving()
{
    QFETCH(QString, keys);
    QFETCH(QString, expected);
    QFETCH(bool, marked);
    showWindow();
    openStyledBlockset();
    fixture->tabs()->setCurrentIndex(kSettingsTab);
    auto *box = qobject_cast<QComboBox *>(fixture->control("lstSkyTexture"));
    QWidget *elsewhere = fixture->control("fldOrbText");
    QVERIFY(box && elsewhere);
    QCOMPARE(box->currentText(), QString("texture0.jpg"));
    QSignalSpy edits(fixture->window->findChild<SettingsTab *>(), &SettingsTab::styleValueEdited);

    box->setFocus();
    QVERIFY(box->hasFocus());
    if (keys == "<down>") {
        // The entry after the shown one, as the arrow key picks it.
        QTest::keyClick(box, Qt::Key_Down);
        if (box->currentText() == "texture0.jpg")
            QTest::keyClick(box, Qt::Key_Down);
    } else {
        fixture->typeInto(kSettingsTab, "lstSkyTexture", keys);
    }
    // Nothing counts while the box still has the focus.
    QVERIFY(!fixture->window->document().isChanged());
    QCOMPARE(fixture->window->windowTitle(), QString("Cubrix - Styled.bset"));

    elsewhere->setFocus();
    QVERIFY(!box->hasFocus());
    QCOMPARE(box->currentText(), expected);
    QCOMPARE(fixture->window->document().blocksetChanged(), marked);
    QCOMPARE(fixture->enabled("btnSave"), marked);
    QCOMPARE(fixture->window->windowTitle(), QString(marked ? "Cubrix - Styled.bset*" : "Cubrix - Styled.bset"));
    QCOMPARE(fixture->window->document().style().skyTexture, expected);
    QCOMPARE(edits.count(), marked ? 1 : 0);

    // Coming back and leaving again without a change counts nothing more.
    box->setFocus();
    elsewhere->setFocus();
    QCOMPARE(edits.count(), marked ? 1 : 0);
    QCOMPARE(fixture->window->document().blocksetChanged(), marked);
}

QTEST_MAIN(TestSettingsEditsGui)
#include "test_settings_edits_gui.moc"
