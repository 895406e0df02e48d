// The Settings and Version pages: which edit signal each control raises and
// with what value, the texture boxes' focus rule, showing values and symbol
// states without raising anything, captions, mnemonics and the layout at the
// main window's size. Not covered here: what the main window does with the
// signals (see the main window's tests).
#include "formats/ui/SettingsTab.h"
#include "formats/ui/VersionTab.h"
#include "formats/ui/usrColor.h"
#include "formats/ui/usrPercentage.h"
#include "formats/ui/usrPosition.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace {

const QString kPrefixAlphabet =
    QStringLiteral(".ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz1234567890!@#$%^*()-_=+[]{}\\|;:',/?`~");

const QSize kPageSize(760, 520);

StyleValues sampleStyle()
{
    StyleValues style;
    style.version = "1.2";
    style.name = "Castle";
    style.synopsis = "Stone walls and gates";
    style.author = "A. Builder";
    style.copyright = "free to use";
    style.placeholderTexture = "brick.gif";
    style.skyTexture = "clouds.jpg";
    style.skyColor = "(0,0,255)";
    style.skyBrightness = "80%";
    style.groundTexture = "grass.gif";
    style.groundColor = "(0,128,0)";
    style.orbTexture = "sun.gif";
    style.orbColor = "(255,255,255)";
    style.orbBrightness = "100%";
    style.orbPosition = "(45,30)";
    style.orbHref = "index.3dml";
    style.orbTarget = "_self";
    style.orbText = "Home";
    return style;
}

const QStringList kTextures{"brick.gif", "clouds.jpg", "cobblestone_wall.jpg", "grass.gif", "sun.gif"};

// A shown, active window holding a page and a button that can take the focus away.
template <typename Page>
struct Host {
    QWidget window;
    Page *page = new Page;
    QPushButton *elsewhere = new QPushButton("Elsewhere");

    Host()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(page);
        layout->addWidget(elsewhere);
        elsewhere->setFocusPolicy(Qt::StrongFocus);
        window.resize(kPageSize.width(), kPageSize.height() + 40);
        window.show();
        QApplication::setActiveWindow(&window);
    }
};

QString plainCaption(const QString &text)
{
    QString caption = text;
    return caption.remove(u'&');
}

void saveScreenshot(QWidget *page, const QString &name)
{
    const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QDir().mkpath(folder);
    QVERIFY(page->grab().save(QDir(folder).filePath(name)));
}

} // namespace

class TestSettingsPages : public QObject {
    Q_OBJECT

private slots:
    void editsReportFieldAndValue_data();
    void editsReportFieldAndValue();
    void textureBoxReportsWhenLeftChanged_data();
    void textureBoxReportsWhenLeftChanged();
    void movingBetweenTextureBoxes();
    void dropDownListDoesNotEndTheVisit();
    void pendingTextureEditCanBeCommitted();
    void updateCommentReportsOnlyTheComment();
    void showValuesShowsEverythingSilently();
    void showValuesKeepsTheCursorOfAnUnchangedField();
    void showValuesClearsARefusedValue();
    void showValuesWhileTextureBoxHasFocus();
    void showSymbols_data();
    void showSymbols();
    void userSymbolEditsAreReported();
    void prefixListHoldsOneEntryPerCharacter();
    void resetValuesEmptiesSilently();
    void updateGroupCanBeDisabled();
    void captionsAndBuddies_data();
    void captionsAndBuddies();
    void mnemonicMovesTheFocus();
    void tabKeyFollowsReadingOrder();
    void pagesFitTheMainWindow();
};

void TestSettingsPages::editsReportFieldAndValue_data()
{
    QTest::addColumn<bool>("settings");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<StyleField>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("count");

    // Boxes start from sampleStyle(); the typed keys replace the whole text.
    QTest::newRow("orb link") << true << "fldOrbHREF" << "" << "a.3dml" << StyleField::OrbHref << "a.3dml" << 6;
    QTest::newRow("orb target") << true << "fldOrbTarget" << "" << "_top" << StyleField::OrbTarget << "_top" << 4;
    QTest::newRow("orb text") << true << "fldOrbText" << "" << "Go" << StyleField::OrbText << "Go" << 2;
    QTest::newRow("sky colour") << true << "rgbSky" << "txtB" << "77" << StyleField::SkyColor << "(0,0,77)" << 2;
    QTest::newRow("sky brightness") << true << "prcSky" << "txtB" << "5" << StyleField::SkyBrightness << "5%" << 1;
    QTest::newRow("ground colour clamped") << true << "rgbGround" << "txtG" << "300" << StyleField::GroundColor
                                           << "(0,255,0)" << 3;
    QTest::newRow("orb colour") << true << "rgbOrb" << "txtR" << "1" << StyleField::OrbColor << "(1,255,255)" << 1;
    QTest::newRow("orb brightness") << true << "prcOrb" << "txtB" << "60" << StyleField::OrbBrightness << "60%" << 2;
    QTest::newRow("orb turn") << true << "posOrb" << "txtTurn" << "90" << StyleField::OrbPosition << "(90,30)" << 2;
    QTest::newRow("orb tilt minus only") << true << "posOrb" << "txtTilt" << "-" << StyleField::OrbPosition << "" << 1;
    QTest::newRow("version") << false << "fldVersion" << "" << "2.0" << StyleField::Version << "2.0" << 3;
    QTest::newRow("name") << false << "fldBlocksetName" << "" << "Keep" << StyleField::Name << "Keep" << 4;
    QTest::newRow("synopsis") << false << "fldSynopsis" << "" << "Walls" << StyleField::Synopsis << "Walls" << 5;
    QTest::newRow("author") << false << "fldAuthor" << "" << "Me" << StyleField::Author << "Me" << 2;
    QTest::newRow("copyright") << false << "fldCopyright" << "" << "(c)" << StyleField::Copyright << "(c)" << 3;
}

void TestSettingsPages::editsReportFieldAndValue()
{
    QFETCH(bool, settings);
    QFETCH(QString, control);
    QFETCH(QString, box);
    QFETCH(QString, keys);
    QFETCH(StyleField, field);
    QFETCH(QString, value);
    QFETCH(int, count);

    SettingsTab settingsTab;
    VersionTab versionTab;
    settingsTab.showValues(sampleStyle(), kTextures);
    versionTab.showValues(sampleStyle(), "comment");
    QWidget *page = settings ? static_cast<QWidget *>(&settingsTab) : &versionTab;
    QSignalSpy edits(page, SIGNAL(styleValueEdited(StyleField,QString)));
    QSignalSpy otherEdits(settings ? static_cast<QWidget *>(&versionTab) : &settingsTab,
                          SIGNAL(styleValueEdited(StyleField,QString)));

    auto *target = page->findChild<QWidget *>(control);
    QVERIFY(target);
    auto *edit = box.isEmpty() ? qobject_cast<QLineEdit *>(target) : target->findChild<QLineEdit *>(box);
    QVERIFY(edit);
    edit->selectAll();
    QTest::keyClicks(edit, keys);

    QCOMPARE(edits.count(), count);
    for (const QList<QVariant> &edit : std::as_const(edits))
        QCOMPARE(edit.at(0).value<StyleField>(), field);
    QCOMPARE(edits.last().at(1).toString(), value);
    QCOMPARE(otherEdits.count(), 0);
}

void TestSettingsPages::textureBoxReportsWhenLeftChanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<StyleField>("field");
    QTest::newRow("placeholder") << "lstPlaceholderTexture" << StyleField::PlaceholderTexture;
    QTest::newRow("sky") << "lstSkyTexture" << StyleField::SkyTexture;
    QTest::newRow("ground") << "lstGroundTexture" << StyleField::GroundTexture;
    QTest::newRow("orb") << "lstOrbTexture" << StyleField::OrbTexture;
}

void TestSettingsPages::textureBoxReportsWhenLeftChanged()
{
    QFETCH(QString, name);
    QFETCH(StyleField, field);

    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->showValues(sampleStyle(), kTextures);
    auto *box = host.page->findChild<QComboBox *>(name);
    QVERIFY(box);
    QVERIFY(box->isEditable());
    QCOMPARE(box->count(), kTextures.size());
    QSignalSpy edits(host.page, &SettingsTab::styleValueEdited);

    // Visiting without a change reports nothing.
    box->setFocus(Qt::TabFocusReason);
    QVERIFY(box->hasFocus());
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 0);

    // A typed name is reported once, when the box is left.
    box->setFocus(Qt::TabFocusReason);
    box->lineEdit()->selectAll();
    QTest::keyClicks(box, "stone.gif");
    QCOMPARE(edits.count(), 0);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 1);
    QCOMPARE(edits.at(0).at(0).value<StyleField>(), field);
    QCOMPARE(edits.at(0).at(1).toString(), "stone.gif");

    // A name picked from the list with the keyboard, likewise.
    box->setFocus(Qt::TabFocusReason);
    box->setCurrentIndex(0);
    QTest::keyClick(box, Qt::Key_Down);
    QCOMPARE(box->currentText(), kTextures.at(1));
    QCOMPARE(edits.count(), 1);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 2);
    QCOMPARE(edits.at(1).at(1).toString(), kTextures.at(1));

    // Changed and changed back: nothing to report.
    box->setFocus(Qt::TabFocusReason);
    const QString before = box->currentText();
    box->lineEdit()->end(false);
    QTest::keyClicks(box, "x");
    QTest::keyClick(box, Qt::Key_Backspace);
    QCOMPARE(box->currentText(), before);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 2);
}

void TestSettingsPages::movingBetweenTextureBoxes()
{
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->showValues(sampleStyle(), kTextures);
    QSignalSpy edits(host.page, &SettingsTab::styleValueEdited);

    // From one changed box straight into another: the first is reported, and the
    // second starts from its own text.
    host.page->lstSkyTexture->setFocus(Qt::TabFocusReason);
    host.page->lstSkyTexture->lineEdit()->selectAll();
    QTest::keyClicks(host.page->lstSkyTexture, "night.jpg");
    host.page->lstGroundTexture->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 1);
    QCOMPARE(edits.at(0).at(0).value<StyleField>(), StyleField::SkyTexture);
    QCOMPARE(edits.at(0).at(1).toString(), "night.jpg");
    host.page->lstOrbTexture->setFocus(Qt::TabFocusReason);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 1);
}

void TestSettingsPages::dropDownListDoesNotEndTheVisit()
{
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->showValues(sampleStyle(), kTextures);
    QSignalSpy edits(host.page, &SettingsTab::styleValueEdited);
    QComboBox *box = host.page->lstOrbTexture;

    box->setFocus(Qt::TabFocusReason);
    box->showPopup();
    box->setCurrentIndex(2);
    box->hidePopup();
    QCOMPARE(edits.count(), 0);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 1);
    QCOMPARE(edits.at(0).at(1).toString(), kTextures.at(2));
}

void TestSettingsPages::pendingTextureEditCanBeCommitted()
{
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->showValues(sampleStyle(), kTextures);
    QSignalSpy edits(host.page, &SettingsTab::styleValueEdited);

    host.page->commitTextureEdit();
    QCOMPARE(edits.count(), 0);
    host.page->lstPlaceholderTexture->setFocus(Qt::TabFocusReason);
    host.page->lstPlaceholderTexture->lineEdit()->selectAll();
    QTest::keyClicks(host.page->lstPlaceholderTexture, "wall.gif");
    host.page->commitTextureEdit();
    QCOMPARE(edits.count(), 1);
    QCOMPARE(edits.at(0).at(1).toString(), "wall.gif");
    // Already reported: leaving the box adds nothing.
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 1);
}

void TestSettingsPages::updateCommentReportsOnlyTheComment()
{
    VersionTab page;
    page.showValues(sampleStyle(), "old");
    QSignalSpy comments(&page, &VersionTab::updateCommentEdited);
    QSignalSpy edits(&page, &VersionTab::styleValueEdited);

    page.fldUpdate->selectAll();
    QTest::keyClicks(page.fldUpdate, "New gate");
    QCOMPARE(comments.count(), 8);
    QCOMPARE(comments.last().at(0).toString(), "New gate");
    QTest::keyClick(page.fldUpdate, Qt::Key_Return);
    QTest::keyClicks(page.fldUpdate, "Tower");
    QCOMPARE(comments.last().at(0).toString(), "New gate\nTower");
    QCOMPARE(edits.count(), 0);
}

void TestSettingsPages::showValuesShowsEverythingSilently()
{
    SettingsTab settings;
    VersionTab version;
    QSignalSpy settingsEdits(&settings, &SettingsTab::styleValueEdited);
    QSignalSpy symbolEdits(&settings, &SettingsTab::symbolControlsEdited);
    QSignalSpy versionEdits(&version, &VersionTab::styleValueEdited);
    QSignalSpy comments(&version, &VersionTab::updateCommentEdited);

    const StyleValues style = sampleStyle();
    settings.showValues(style, kTextures);
    version.showValues(style, "Added a tower.");

    QCOMPARE(settingsEdits.count(), 0);
    QCOMPARE(symbolEdits.count(), 0);
    QCOMPARE(versionEdits.count(), 0);
    QCOMPARE(comments.count(), 0);

    QCOMPARE(settings.lstPlaceholderTexture->currentText(), style.placeholderTexture);
    QCOMPARE(settings.lstSkyTexture->currentText(), style.skyTexture);
    QCOMPARE(settings.lstGroundTexture->currentText(), style.groundTexture);
    QCOMPARE(settings.lstOrbTexture->currentText(), style.orbTexture);
    QCOMPARE(settings.rgbSky->rgb(), style.skyColor);
    QCOMPARE(settings.prcSky->percentage(), style.skyBrightness);
    QCOMPARE(settings.rgbGround->rgb(), style.groundColor);
    QCOMPARE(settings.rgbOrb->rgb(), style.orbColor);
    QCOMPARE(settings.prcOrb->percentage(), style.orbBrightness);
    QCOMPARE(settings.posOrb->position(), style.orbPosition);
    QCOMPARE(settings.fldOrbHREF->text(), style.orbHref);
    QCOMPARE(settings.fldOrbTarget->text(), style.orbTarget);
    QCOMPARE(settings.fldOrbText->text(), style.orbText);
    QCOMPARE(version.fldVersion->text(), style.version);
    QCOMPARE(version.fldBlocksetName->text(), style.name);
    QCOMPARE(version.fldSynopsis->text(), style.synopsis);
    QCOMPARE(version.fldAuthor->text(), style.author);
    QCOMPARE(version.fldCopyright->text(), style.copyright);
    QCOMPARE(version.fldUpdate->toPlainText(), "Added a tower.");

    for (QComboBox *box : {settings.lstPlaceholderTexture, settings.lstSkyTexture, settings.lstGroundTexture,
                           settings.lstOrbTexture}) {
        QStringList items;
        for (int i = 0; i < box->count(); ++i)
            items << box->itemText(i);
        QCOMPARE(items, kTextures);
    }

    // A texture that the blockset does not hold is still shown as written, and a
    // new texture list keeps the names shown.
    StyleValues other = style;
    other.skyTexture = "missing.jpg";
    settings.showValues(other, {"a.gif"});
    QCOMPARE(settings.lstSkyTexture->currentText(), "missing.jpg");
    QCOMPARE(settings.lstGroundTexture->currentText(), style.groundTexture);
    QCOMPARE(settings.lstSkyTexture->count(), 1);
    QCOMPARE(settingsEdits.count(), 0);
}

void TestSettingsPages::showValuesKeepsTheCursorOfAnUnchangedField()
{
    SettingsTab settings;
    settings.showValues(sampleStyle(), kTextures);
    settings.fldOrbText->setCursorPosition(2);
    settings.showValues(sampleStyle(), kTextures);
    QCOMPARE(settings.fldOrbText->cursorPosition(), 2);
}

void TestSettingsPages::showValuesClearsARefusedValue()
{
    SettingsTab settings;
    settings.showValues(sampleStyle(), kTextures);
    StyleValues broken = sampleStyle();
    broken.skyColor = "(1,2)";
    broken.orbBrightness = "";
    broken.orbPosition = "(400,0)";
    settings.showValues(broken, kTextures);
    QCOMPARE(settings.rgbSky->rgb(), "");
    QCOMPARE(settings.prcOrb->percentage(), "");
    QCOMPARE(settings.posOrb->position(), "");
    QCOMPARE(settings.rgbGround->rgb(), sampleStyle().groundColor);
}

void TestSettingsPages::showValuesWhileTextureBoxHasFocus()
{
    // Values shown while the user sits in a texture box (a blockset opened from
    // the keyboard) are not taken for the user's edit when the box is left.
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->showValues(sampleStyle(), kTextures);
    QSignalSpy edits(host.page, &SettingsTab::styleValueEdited);
    host.page->lstSkyTexture->setFocus(Qt::TabFocusReason);
    host.page->resetValues();
    StyleValues other = sampleStyle();
    other.skyTexture = "dusk.jpg";
    host.page->showValues(other, kTextures);
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QCOMPARE(edits.count(), 0);
}

void TestSettingsPages::showSymbols_data()
{
    QTest::addColumn<bool>("strictChecked");
    QTest::addColumn<bool>("strictEnabled");
    QTest::addColumn<bool>("syncChecked");
    QTest::addColumn<bool>("syncEnabled");
    QTest::addColumn<bool>("listEnabled");
    QTest::addColumn<int>("prefixIndex");

    QTest::newRow("inconsistent symbols") << false << false << false << false << false << 0;
    QTest::newRow("strict prefix setting off") << false << true << false << false << false << 0;
    QTest::newRow("strict on, sync off") << true << true << false << true << true << 5;
    QTest::newRow("strict on, sync impossible") << true << true << false << false << true << 1;
    QTest::newRow("strict and sync on") << true << true << true << true << true << 89;
}

void TestSettingsPages::showSymbols()
{
    QFETCH(bool, strictChecked);
    QFETCH(bool, strictEnabled);
    QFETCH(bool, syncChecked);
    QFETCH(bool, syncEnabled);
    QFETCH(bool, listEnabled);
    QFETCH(int, prefixIndex);

    SettingsTab page;
    page.fillPrefixList(kPrefixAlphabet);
    // Start from the opposite of every state so that each one has to be set.
    SymbolSettings opposite;
    opposite.strictPrefixChecked = !strictChecked;
    opposite.strictPrefixEnabled = !strictEnabled;
    opposite.syncDoubleChecked = !syncChecked;
    opposite.syncDoubleEnabled = !syncEnabled;
    opposite.prefixListEnabled = !listEnabled;
    opposite.prefixIndex = prefixIndex == 0 ? 3 : 0;
    page.showSymbols(opposite);

    SymbolSettings symbols;
    symbols.strictPrefixChecked = strictChecked;
    symbols.strictPrefixEnabled = strictEnabled;
    symbols.syncDoubleChecked = syncChecked;
    symbols.syncDoubleEnabled = syncEnabled;
    symbols.prefixListEnabled = listEnabled;
    symbols.prefixIndex = prefixIndex;
    symbols.strictPrefixMode = strictChecked;
    QSignalSpy edits(&page, &SettingsTab::symbolControlsEdited);
    page.showSymbols(symbols);

    QCOMPARE(edits.count(), 0);
    QCOMPARE(page.cbxStrictPrefix->isChecked(), strictChecked);
    QCOMPARE(page.cbxStrictPrefix->isEnabled(), strictEnabled);
    QCOMPARE(page.cbxSyncDouble->isChecked(), syncChecked);
    QCOMPARE(page.cbxSyncDouble->isEnabled(), syncEnabled);
    QCOMPARE(page.lstStrictPrefix->isEnabled(), listEnabled);
    QCOMPARE(page.lstStrictPrefix->currentIndex(), prefixIndex);
    QCOMPARE(page.lstStrictPrefix->currentText(), kPrefixAlphabet.at(prefixIndex));
    // An enabled list has the window background, a disabled one the button face.
    const QPalette application = QApplication::palette();
    const QColor expected = application.color(listEnabled ? QPalette::Base : QPalette::Button);
    QCOMPARE(page.lstStrictPrefix->palette().color(QPalette::Disabled, QPalette::Base), expected);
    QCOMPARE(page.lstStrictPrefix->palette().color(QPalette::Active, QPalette::Button), expected);
    QCOMPARE(page.shownSymbols(), symbols);
}

void TestSettingsPages::userSymbolEditsAreReported()
{
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    SettingsTab *page = host.page;
    page->fillPrefixList(kPrefixAlphabet);
    SymbolSettings symbols;
    symbols.strictPrefixChecked = true;
    symbols.strictPrefixEnabled = true;
    symbols.syncDoubleEnabled = true;
    symbols.prefixListEnabled = true;
    page->showSymbols(symbols);
    QSignalSpy edits(page, &SettingsTab::symbolControlsEdited);

    QStyleOptionButton option;
    option.initFrom(page->cbxSyncDouble);
    const QRect indicator =
        page->cbxSyncDouble->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, page->cbxSyncDouble);
    QTest::mouseClick(page->cbxSyncDouble, Qt::LeftButton, {}, indicator.center());
    QCOMPARE(edits.count(), 1);
    QVERIFY(page->shownSymbols().syncDoubleChecked);

    page->lstStrictPrefix->setFocus(Qt::TabFocusReason);
    QTest::keyClick(page->lstStrictPrefix, Qt::Key_Down);
    QCOMPARE(edits.count(), 2);
    QCOMPARE(page->shownSymbols().prefixIndex, 1);

    page->cbxStrictPrefix->setFocus(Qt::TabFocusReason);
    QTest::keyClick(page->cbxStrictPrefix, Qt::Key_Space);
    QCOMPARE(edits.count(), 3);
    QVERIFY(!page->shownSymbols().strictPrefixChecked);
}

void TestSettingsPages::prefixListHoldsOneEntryPerCharacter()
{
    SettingsTab page;
    QSignalSpy edits(&page, &SettingsTab::symbolControlsEdited);
    page.fillPrefixList(kPrefixAlphabet);
    QCOMPARE(page.lstStrictPrefix->count(), 90);
    for (int i = 0; i < kPrefixAlphabet.size(); ++i)
        QCOMPARE(page.lstStrictPrefix->itemText(i), QString(kPrefixAlphabet.at(i)));
    // Filling again (a second load) does not double the list.
    page.fillPrefixList(kPrefixAlphabet);
    QCOMPARE(page.lstStrictPrefix->count(), 90);
    QCOMPARE(edits.count(), 0);
}

void TestSettingsPages::resetValuesEmptiesSilently()
{
    SettingsTab settings;
    VersionTab version;
    settings.showValues(sampleStyle(), kTextures);
    version.showValues(sampleStyle(), "comment");
    QSignalSpy settingsEdits(&settings, &SettingsTab::styleValueEdited);
    QSignalSpy versionEdits(&version, &VersionTab::styleValueEdited);
    QSignalSpy comments(&version, &VersionTab::updateCommentEdited);

    settings.resetValues();
    version.resetValues();

    QCOMPARE(settingsEdits.count(), 0);
    QCOMPARE(versionEdits.count(), 0);
    QCOMPARE(comments.count(), 0);
    for (QComboBox *box : settings.findChildren<QComboBox *>()) {
        if (box == settings.lstStrictPrefix)
            continue;
        QCOMPARE(box->currentText(), "");
        QCOMPARE(box->count(), 0);
    }
    for (QLineEdit *edit : settings.findChildren<QLineEdit *>())
        QVERIFY2(edit->text().isEmpty(), qPrintable(edit->objectName()));
    for (QLineEdit *edit : version.findChildren<QLineEdit *>())
        QVERIFY2(edit->text().isEmpty(), qPrintable(edit->objectName()));
    QCOMPARE(version.fldUpdate->toPlainText(), "");
}

void TestSettingsPages::updateGroupCanBeDisabled()
{
    VersionTab page;
    page.show();
    page.setUpdateEnabled(false);
    for (QWidget *widget : {static_cast<QWidget *>(page.grpUpdate), static_cast<QWidget *>(page.fldUpdate),
                            static_cast<QWidget *>(page.lblUpdate), static_cast<QWidget *>(page.lblUpdateComment)})
        QVERIFY2(!widget->isEnabled(), qPrintable(widget->objectName()));
    QVERIFY(page.grpBlockset->isEnabled());
    QVERIFY(page.fldVersion->isEnabled());
    page.setUpdateEnabled(true);
    QVERIFY(page.fldUpdate->isEnabled());
    QVERIFY(page.lblUpdateComment->isEnabled());
}

void TestSettingsPages::captionsAndBuddies_data()
{
    QTest::addColumn<bool>("settings");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("buddy");
    QTest::addColumn<QString>("group");

    QTest::newRow("placeholder texture") << true << "lblPlaceholderTexture" << "Texture:" << "lstPlaceholderTexture"
                                         << "Placeholder";
    QTest::newRow("sky texture") << true << "lblSkyTexture" << "Texture:" << "lstSkyTexture" << "Sky";
    QTest::newRow("sky colour") << true << "lblSkyColor" << "Color:" << "rgbSky" << "Sky";
    QTest::newRow("sky brightness") << true << "lblSkyBrightness" << "Brightness:" << "prcSky" << "Sky";
    QTest::newRow("ground texture") << true << "lblGroundTexture" << "Texture:" << "lstGroundTexture" << "Ground";
    QTest::newRow("ground colour") << true << "lblGroundColor" << "Color:" << "rgbGround" << "Ground";
    QTest::newRow("orb texture") << true << "lblOrbTexture" << "Texture:" << "lstOrbTexture" << "Orb";
    QTest::newRow("orb colour") << true << "lblOrbColor" << "Color:" << "rgbOrb" << "Orb";
    QTest::newRow("orb brightness") << true << "lblOrbBrightness" << "Brightness:" << "prcOrb" << "Orb";
    QTest::newRow("orb position") << true << "lblOrbPosition" << "Position:" << "posOrb" << "Orb";
    QTest::newRow("orb link") << true << "lblOrbHREF" << "Link URL:" << "fldOrbHREF" << "Orb";
    QTest::newRow("orb target") << true << "lblOrbTarget" << "Target:" << "fldOrbTarget" << "Orb";
    QTest::newRow("orb text") << true << "lblOrbText" << "Text:" << "fldOrbText" << "Orb";
    QTest::newRow("version") << false << "lblVersion" << "Version:" << "fldVersion" << "Blockset Information";
    QTest::newRow("name") << false << "lblBlocksetName" << "Name:" << "fldBlocksetName" << "Blockset Information";
    QTest::newRow("synopsis") << false << "lblSynopsis" << "Synopsis:" << "fldSynopsis" << "Blockset Information";
    QTest::newRow("author") << false << "lblAuthor" << "Author:" << "fldAuthor" << "Blockset Information";
    QTest::newRow("copyright") << false << "lblCopyright" << "Copyright:" << "fldCopyright" << "Blockset Information";
    QTest::newRow("comment") << false << "lblUpdateComment" << "Comment:" << "fldUpdate" << "Update Information";
}

void TestSettingsPages::captionsAndBuddies()
{
    QFETCH(bool, settings);
    QFETCH(QString, label);
    QFETCH(QString, caption);
    QFETCH(QString, buddy);
    QFETCH(QString, group);

    SettingsTab settingsTab;
    VersionTab versionTab;
    QWidget *page = settings ? static_cast<QWidget *>(&settingsTab) : &versionTab;
    auto *shown = page->findChild<QLabel *>(label);
    QVERIFY(shown);
    QCOMPARE(plainCaption(shown->text()), caption);
    QVERIFY(shown->text().contains(u'&'));
    QVERIFY(shown->buddy());
    QCOMPARE(shown->buddy()->objectName(), buddy);
    // The label and its control stand in the same group.
    QGroupBox *box = nullptr;
    for (QWidget *up = shown->buddy()->parentWidget(); up && !box; up = up->parentWidget())
        box = qobject_cast<QGroupBox *>(up);
    QVERIFY(box);
    QVERIFY(box->isAncestorOf(shown));
    QCOMPARE(box->title(), group);
}

void TestSettingsPages::mnemonicMovesTheFocus()
{
    Host<VersionTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.elsewhere->setFocus(Qt::TabFocusReason);
    QTest::keyClick(&host.window, Qt::Key_O, Qt::AltModifier);
    QVERIFY(host.page->fldUpdate->hasFocus());
    QTest::keyClick(&host.window, Qt::Key_A, Qt::AltModifier);
    QVERIFY(host.page->fldAuthor->hasFocus());
}

void TestSettingsPages::tabKeyFollowsReadingOrder()
{
    Host<SettingsTab> host;
    QVERIFY(QTest::qWaitForWindowActive(&host.window));
    host.page->lstPlaceholderTexture->setFocus(Qt::TabFocusReason);
    QStringList order;
    for (int i = 0; i < 20; ++i) {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus);
        order << focus->parentWidget()->objectName() + u'.' + focus->objectName();
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    const QStringList expected{
        "grpPlaceholder.lstPlaceholderTexture", "grpSky.lstSkyTexture", "rgbSky.txtR", "rgbSky.txtG",
        "rgbSky.txtB", "prcSky.txtB", "grpGround.lstGroundTexture", "rgbGround.txtR", "rgbGround.txtG",
        "rgbGround.txtB", "grpOrb.lstOrbTexture", "rgbOrb.txtR", "rgbOrb.txtG", "rgbOrb.txtB", "prcOrb.txtB",
        "posOrb.txtTurn", "posOrb.txtTilt", "grpOrb.fldOrbHREF", "grpOrb.fldOrbTarget", "grpOrb.fldOrbText"};
    QCOMPARE(order, expected);
}

void TestSettingsPages::pagesFitTheMainWindow()
{
    SettingsTab settings;
    VersionTab version;
    settings.fillPrefixList(kPrefixAlphabet);
    settings.showValues(sampleStyle(), kTextures);
    version.showValues(sampleStyle(), "Added two gates and a tower.");
    SymbolSettings symbols;
    symbols.strictPrefixChecked = true;
    symbols.strictPrefixEnabled = true;
    symbols.syncDoubleChecked = true;
    symbols.syncDoubleEnabled = true;
    symbols.prefixListEnabled = true;
    settings.showSymbols(symbols);

    for (QWidget *page : {static_cast<QWidget *>(&settings), static_cast<QWidget *>(&version)}) {
        const QSize minimum = page->minimumSizeHint();
        QVERIFY2(minimum.width() <= kPageSize.width() && minimum.height() <= kPageSize.height(),
                 qPrintable(QStringLiteral("%1: %2x%3").arg(page->objectName()).arg(minimum.width())
                                .arg(minimum.height())));
        page->resize(kPageSize);
        page->show();
        QVERIFY(QTest::qWaitForWindowExposed(page));
        // Nothing is cut: every label and check box gets the room it asks for.
        for (QWidget *child : page->findChildren<QWidget *>()) {
            if (!qobject_cast<QLabel *>(child) && !qobject_cast<QCheckBox *>(child))
                continue;
            if (qobject_cast<QLabel *>(child) && static_cast<QLabel *>(child)->wordWrap())
                continue;
            QVERIFY2(child->width() >= child->sizeHint().width(), qPrintable(child->objectName()));
        }
        // Every child lies inside the page.
        for (QWidget *child : page->findChildren<QWidget *>()) {
            if (!child->isVisible() || child->isWindow())
                continue;
            const QRect area(child->mapTo(page, QPoint(0, 0)), child->size());
            QVERIFY2(page->rect().contains(area), qPrintable(child->objectName()));
        }
    }
    // A texture file name fits into its box.
    const QString longName = "cobblestone_wall.jpg";
    settings.lstSkyTexture->setEditText(longName);
    QVERIFY(settings.lstSkyTexture->lineEdit()->width()
            > settings.lstSkyTexture->fontMetrics().horizontalAdvance(longName));
    // The link and text fields take the width the orb group has.
    QVERIFY(settings.fldOrbHREF->width() > settings.lstOrbTexture->width() / 2);

    saveScreenshot(&settings, "settings_page.png");
    saveScreenshot(&version, "version_page.png");

    // And as they look with nothing open: empty values, symbol controls and the
    // update group disabled.
    settings.resetValues();
    version.resetValues();
    settings.showSymbols(SymbolSettings());
    version.setUpdateEnabled(false);
    saveScreenshot(&settings, "settings_page_empty.png");
    saveScreenshot(&version, "version_page_empty.png");
}

QTEST_MAIN(TestSettingsPages)
#include "test_settings_pages.moc"
