// The Settings and Version pages: which edit signal each control raises and
// with what value, the texture boxes' focus rule, showing values and symbol
// states without raising anything, captions and the layout at the main
// window's size. Not covered here: what the main window does with the signals
// (see the main window's tests).
#include "app/ui/SettingsTab.h"
#include "app/ui/VersionTab.h"
#include "symbols/SymbolScheme.h"

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
#include <QTest>
#include <QVBoxLayout>

namespace {

const QStringList kTextures{"brick.gif", "clouds.jpg", "cobblestone_wall.jpg", "grass.gif", "sun.gif"};

StyleValues sampleStyle()
{
    return {"1.2",           "Castle",      "Stone walls and gates",
            "A. Builder",    "free to use", "brick.gif",
            "clouds.jpg",    "(0,0,255)",   "80%",
            "grass.gif",     "(0,128,0)",   "sun.gif",
            "(255,255,255)", "100%",        "(45,30)",
            "index.3dml",    "_self",       "Home"};
}

// Every control of a style value, in StyleField order.
const char *const kControls[] = {
    "fldVersion",    "fldBlocksetName", "fldSynopsis", "fldAuthor",        "fldCopyright", "lstPlaceholderTexture",
    "lstSkyTexture", "rgbSky",          "prcSky",      "lstGroundTexture", "rgbGround",    "lstOrbTexture",
    "rgbOrb",        "prcOrb",          "posOrb",      "fldOrbHREF",       "fldOrbTarget", "fldOrbText"};

// What a control shows, whatever its kind.
[[maybe_unused]] QString shownText(const QWidget *control)
{
    if (auto *edit = qobject_cast<const QLineEdit *>(control))
        return edit->text();
    if (auto *box = qobject_cast<const QComboBox *>(control))
        return box->currentText();
    for (const char *property : {"RGB", "Percentage", "Position"})
        if (control->property(property).isValid())
            return control->property(property).toString();
    return "no text property";
}

// Both pages, shown in an active window with a button that can take the focus away.
struct Host {
    QWidget window;
    SettingsTab *settings = new SettingsTab;
    VersionTab *version = new VersionTab;
    QPushButton *elsewhere = new QPushButton("Elsewhere");

    Host()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(settings);
        layout->addWidget(version);
        layout->addWidget(elsewhere);
        elsewhere->setFocusPolicy(Qt::StrongFocus);
        settings->fillPrefixList(prefixAlphabet());
        settings->showValues(sampleStyle(), kTextures);
        version->showValues(sampleStyle(), "comment");
        window.show();
        QApplication::setActiveWindow(&window);
    }
    QWidget *control(StyleField field) const { return window.findChild<QWidget *>(kControls[int(field)]); }
    void leave() const { elsewhere->setFocus(Qt::TabFocusReason); }
};

} // namespace

class TestSettingsPages : public QObject {
    Q_OBJECT

private slots:
    void editsReportFieldAndValue_data()
    {
        QTest::addColumn<StyleField>("field");
        QTest::addColumn<QString>("box"); // inside a value control
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("count");
        // Boxes start from sampleStyle(); the typed keys replace the whole text.
        QTest::newRow("orb link") << StyleField::OrbHref << ""
                                  << "a.3dml"
                                  << "a.3dml" << 6;
        QTest::newRow("sky colour") << StyleField::SkyColor << "txtB"
                                    << "77"
                                    << "(0,0,77)" << 2;
        QTest::newRow("sky brightness") << StyleField::SkyBrightness << "txtB"
                                        << "5"
                                        << "5%" << 1;
        QTest::newRow("ground colour clamped") << StyleField::GroundColor << "txtG"
                                               << "300"
                                               << "(0,255,0)" << 3;
        QTest::newRow("orb brightness") << StyleField::OrbBrightness << "txtB"
                                        << "60"
                                        << "60%" << 2;
        QTest::newRow("orb turn") << StyleField::OrbPosition << "txtTurn"
                                  << "90"
                                  << "(90,30)" << 2;
        QTest::newRow("orb tilt minus only") << StyleField::OrbPosition << "txtTilt"
                                             << "-"
                                             << "" << 1;
        QTest::newRow("version") << StyleField::Version << ""
                                 << "2.0"
                                 << "2.0" << 3;
        QTest::newRow("synopsis") << StyleField::Synopsis << ""
                                  << "Walls"
                                  << "Walls" << 5;
        // A '"' would end the attribute value early in the style file.
        QTest::newRow("orb link quote refused") << StyleField::OrbHref << ""
                                                << "a\"b"
                                                << "ab" << 2;
        QTest::newRow("synopsis quote refused") << StyleField::Synopsis << ""
                                                << "\"W\""
                                                << "W" << 1;
    }

    void editsReportFieldAndValue()
    {
        QFETCH(StyleField, field);
        QFETCH(QString, box);
        QFETCH(QString, keys);
        QFETCH(QString, value);
        Host host;
        QSignalSpy settingsEdits(host.settings, &SettingsTab::styleValueEdited);
        QSignalSpy versionEdits(host.version, &VersionTab::styleValueEdited);
        QSignalSpy &edits = field <= StyleField::Copyright ? versionEdits : settingsEdits;

        QWidget *target = host.control(field);
        auto *edit = box.isEmpty() ? qobject_cast<QLineEdit *>(target) : target->findChild<QLineEdit *>(box);
        QVERIFY(edit);
        edit->selectAll();
        QTest::keyClicks(edit, keys);
        QTEST(int(edits.count()), "count");
        QCOMPARE(settingsEdits.count() + versionEdits.count(), edits.count());
        for (const QList<QVariant> &signal : std::as_const(edits))
            QCOMPARE(signal.at(0).value<StyleField>(), field);
        QCOMPARE(edits.last().at(1).toString(), value);
    }

    // A texture box reports once, when the focus leaves it with another text
    // than it had when the focus came.
    void textureBoxesReportWhenLeftChanged()
    {
        Host host;
        QVERIFY(QTest::qWaitForWindowActive(&host.window));
        SettingsTab *page = host.settings;
        QSignalSpy edits(page, &SettingsTab::styleValueEdited);
        const auto edit = [](StyleField field, const QString &value) {
            return QString::number(int(field)) + u' ' + value;
        };
        const auto last = [&] { return edit(edits.last().at(0).value<StyleField>(), edits.last().at(1).toString()); };
        const auto type = [](QComboBox *box, const QString &text) {
            box->setFocus(Qt::TabFocusReason);
            box->lineEdit()->selectAll();
            QTest::keyClicks(box, text);
        };

        // Visiting without a change reports nothing.
        page->findChild<QComboBox *>("lstPlaceholderTexture")->setFocus(Qt::TabFocusReason);
        QVERIFY(page->findChild<QComboBox *>("lstPlaceholderTexture")->hasFocus());
        host.leave();
        QCOMPARE(edits.count(), 0);
        // From one changed box straight into another: the first is reported, and
        // the second starts from its own text (the remembered text is shared).
        type(page->findChild<QComboBox *>("lstSkyTexture"), "night.jpg");
        QCOMPARE(edits.count(), 0);
        page->findChild<QComboBox *>("lstGroundTexture")->setFocus(Qt::TabFocusReason);
        QCOMPARE(edits.count(), 1);
        QCOMPARE(last(), edit(StyleField::SkyTexture, "night.jpg"));

        // The drop-down list taking the focus does not end the visit.
        page->findChild<QComboBox *>("lstOrbTexture")->setFocus(Qt::TabFocusReason);
        page->findChild<QComboBox *>("lstOrbTexture")->showPopup();
        page->findChild<QComboBox *>("lstOrbTexture")->setCurrentIndex(2);
        page->findChild<QComboBox *>("lstOrbTexture")->hidePopup();
        QCOMPARE(edits.count(), 1);
        host.leave();
        QCOMPARE(edits.count(), 2);
        QCOMPARE(last(), edit(StyleField::OrbTexture, kTextures.at(2)));

        // A toolbar command commits a pending edit, which leaving then does not repeat.
        page->commitTextureEdit();
        type(page->findChild<QComboBox *>("lstGroundTexture"), "stone.gif");
        page->commitTextureEdit();
        QCOMPARE(edits.count(), 3);
        QCOMPARE(last(), edit(StyleField::GroundTexture, "stone.gif"));
        type(page->findChild<QComboBox *>("lstPlaceholderTexture"), "wall.gif");
        QCOMPARE(edits.count(), 3);
        host.leave();
        QCOMPARE(edits.count(), 4);
        QCOMPARE(last(), edit(StyleField::PlaceholderTexture, "wall.gif"));

        // Values shown while the user sits in a texture box (a blockset opened
        // from the keyboard) are not taken for the user's edit.
        page->findChild<QComboBox *>("lstSkyTexture")->setFocus(Qt::TabFocusReason);
        page->resetValues();
        StyleValues other = sampleStyle();
        other.skyTexture = "dusk.jpg";
        page->showValues(other, kTextures);
        host.leave();
        QCOMPARE(edits.count(), 4);
    }

    void showSymbols_data()
    {
        for (const char *column : {"strictChecked", "strictEnabled", "syncChecked", "syncEnabled", "listEnabled"})
            QTest::addColumn<bool>(column);
        QTest::addColumn<int>("prefixIndex");
        QTest::newRow("inconsistent symbols") << false << false << false << false << false << 0;
        QTest::newRow("strict prefix setting off") << false << true << false << false << false << 0;
        QTest::newRow("strict on, sync off") << true << true << false << true << true << 5;
        QTest::newRow("strict on, sync impossible") << true << true << false << false << true << 1;
        QTest::newRow("strict and sync on") << true << true << true << true << true << 89;
    }

    void showSymbols()
    {
        QFETCH(bool, strictChecked);
        QFETCH(bool, strictEnabled);
        QFETCH(bool, syncChecked);
        QFETCH(bool, syncEnabled);
        QFETCH(bool, listEnabled);
        QFETCH(int, prefixIndex);
        SettingsTab page;
        page.fillPrefixList(prefixAlphabet());
        // Start from the opposite of every state so that each one has to be set.
        page.showSymbols({!strictChecked, !strictEnabled, !syncChecked, !syncEnabled, !listEnabled,
                          prefixIndex == 0 ? 3 : 0, false, false});
        const SymbolSettings symbols{strictChecked, strictEnabled, syncChecked,   syncEnabled,
                                     listEnabled,   prefixIndex,   strictChecked, false};
        QSignalSpy edits(&page, &SettingsTab::symbolControlsEdited);
        page.showSymbols(symbols);

        QCOMPARE(edits.count(), 0);
        QCOMPARE(page.findChild<QCheckBox *>("cbxStrictPrefix")->isChecked(), strictChecked);
        QCOMPARE(page.findChild<QCheckBox *>("cbxStrictPrefix")->isEnabled(), strictEnabled);
        QCOMPARE(page.findChild<QCheckBox *>("cbxSyncDouble")->isChecked(), syncChecked);
        QCOMPARE(page.findChild<QCheckBox *>("cbxSyncDouble")->isEnabled(), syncEnabled);
        QCOMPARE(page.findChild<QComboBox *>("lstStrictPrefix")->isEnabled(), listEnabled);
        QCOMPARE(page.findChild<QComboBox *>("lstStrictPrefix")->currentText(), prefixAlphabet().at(prefixIndex));
        // An enabled list has the window background, a disabled one the button face.
        const QColor expected = QApplication::palette().color(listEnabled ? QPalette::Base : QPalette::Button);
        QCOMPARE(page.findChild<QComboBox *>("lstStrictPrefix")->palette().color(QPalette::Disabled, QPalette::Base),
                 expected);
        QCOMPARE(page.findChild<QComboBox *>("lstStrictPrefix")->palette().color(QPalette::Active, QPalette::Button),
                 expected);
        QCOMPARE(page.shownSymbols(), symbols);
    }

    void userSymbolEditsAreReported()
    {
        SettingsTab page;
        page.fillPrefixList(prefixAlphabet());
        page.fillPrefixList(prefixAlphabet()); // a second fill does not double the list
        QCOMPARE(page.findChild<QComboBox *>("lstStrictPrefix")->count(), 90);
        page.showSymbols({true, true, false, true, true, 0, false, false});
        QSignalSpy edits(&page, &SettingsTab::symbolControlsEdited);
        QSignalSpy clicks(&page, &SettingsTab::strictPrefixClicked);
        QSignalSpy chosen(&page, &SettingsTab::prefixListChosen);
        page.findChild<QCheckBox *>("cbxSyncDouble")->click();
        QCOMPARE(edits.count(), 1);
        QVERIFY(page.shownSymbols().syncDoubleBoxChecked);
        // The prefix list and the strict prefix box report the user's action, not an edit.
        QTest::keyClick(page.findChild<QComboBox *>("lstStrictPrefix"), Qt::Key_Down);
        QCOMPARE(chosen.count(), 1);
        QCOMPARE(chosen.last().at(0).toInt(), 1);
        page.findChild<QCheckBox *>("cbxStrictPrefix")->click();
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(clicks.last().at(0).toBool(), false);
        QCOMPARE(edits.count(), 1);
    }

    void altKeysAndTabOrder()
    {
        Host host;
        // Every caption has an Alt key that reaches its control, inside the control's group.
        const QList<QLabel *> labels = host.window.findChildren<QLabel *>(QRegularExpression("^lbl"));
        QVERIFY(labels.size() >= 19);
        for (QLabel *label : labels) {
            if (label->objectName() == "lblUpdate")
                continue; // the explanation above the comment box
            QVERIFY2(label->buddy() && label->text().contains(u'&'), qPrintable(label->objectName()));
            QVERIFY2(label->parentWidget()->isAncestorOf(label->buddy()), qPrintable(label->objectName()));
        }
        // The Tab key follows the reading order, through the value controls' boxes.
        QVERIFY(QTest::qWaitForWindowActive(&host.window));
        host.settings->findChild<QComboBox *>("lstPlaceholderTexture")->setFocus(Qt::TabFocusReason);
        QStringList order;
        for (int i = 0; i < 20; ++i) {
            QWidget *focus = QApplication::focusWidget();
            QVERIFY(focus);
            order << focus->parentWidget()->objectName() + u'.' + focus->objectName();
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        QCOMPARE(order, (QStringList{"grpPlaceholder.lstPlaceholderTexture",
                                     "grpSky.lstSkyTexture",
                                     "rgbSky.txtR",
                                     "rgbSky.txtG",
                                     "rgbSky.txtB",
                                     "prcSky.txtB",
                                     "grpGround.lstGroundTexture",
                                     "rgbGround.txtR",
                                     "rgbGround.txtG",
                                     "rgbGround.txtB",
                                     "grpOrb.lstOrbTexture",
                                     "rgbOrb.txtR",
                                     "rgbOrb.txtG",
                                     "rgbOrb.txtB",
                                     "prcOrb.txtB",
                                     "posOrb.txtTurn",
                                     "posOrb.txtTilt",
                                     "grpOrb.fldOrbHREF",
                                     "grpOrb.fldOrbTarget",
                                     "grpOrb.fldOrbText"}));
    }
};

QTEST_MAIN(TestSettingsPages)
#include "test_settings_pages.moc"
