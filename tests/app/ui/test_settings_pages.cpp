// The Settings and Version pages: which edit signal each control raises and
// with what value, the texture boxes' focus rule, showing values and symbol
// states without raising anything, captions and their Alt keys. Not covered
// here: what the main window does with the signals (the main window's tests).
#include "app/ui/SettingsTab.h"
#include "app/ui/VersionTab.h"
#include "support/DataRows.h"
#include "symbols/SymbolScheme.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
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
        // Boxes start from sampleStyle(); the typed keys replace the whole text of
        // `box` inside a value control, or of the field itself.
        addColumns<StyleField, QString, QString, QString, int>("field", "box", "keys", "value", "count");
        addRow("orb link", StyleField::OrbHref, "", "a.3dml", "a.3dml", 6);
        addRow("sky colour", StyleField::SkyColor, "txtB", "77", "(0,0,77)", 2);
        addRow("sky brightness", StyleField::SkyBrightness, "txtB", "5", "5%", 1);
        addRow("orb turn", StyleField::OrbPosition, "txtTurn", "90", "(90,30)", 2);
        addRow("version", StyleField::Version, "", "2.0", "2.0", 3);
        // A '"' would end the attribute value early in the style file.
        addRow("orb link quote refused", StyleField::OrbHref, "", "a\"b", "ab", 2);
    }

    void editsReportFieldAndValue()
    {
        QFETCH(StyleField, field);
        QFETCH(QString, box);
        QFETCH(QString, keys);
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
        QTEST(edits.last().at(1).toString(), "value");
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
        // boxes: strict prefix checked and enabled, sync double checked and
        // enabled, prefix list enabled; "x" on, "." off.
        addColumns<QString, int>("boxes", "prefixIndex");
        addRow("inconsistent symbols", ".....", 0);
        addRow("strict on, sync off", "xx.xx", 5);
        addRow("strict and sync on", "xxxxx", 89);
    }

    void showSymbols()
    {
        QFETCH(QString, boxes);
        QFETCH(int, prefixIndex);
        bool on[5];
        for (int i = 0; i < 5; ++i)
            on[i] = boxes[i] == u'x';
        SettingsTab page;
        page.fillPrefixList(prefixAlphabet());
        // Start from the opposite of every state so that each one has to be set.
        page.showSymbols({!on[0], !on[1], !on[2], !on[3], !on[4], prefixIndex == 0 ? 3 : 0, false, false});
        const SymbolSettings symbols{on[0], on[1], on[2], on[3], on[4], prefixIndex, on[0], false};
        QSignalSpy edits(&page, &SettingsTab::symbolControlsEdited);
        page.showSymbols(symbols);

        QCOMPARE(edits.count(), 0);
        const auto *strict = page.findChild<QCheckBox *>("cbxStrictPrefix");
        const auto *sync = page.findChild<QCheckBox *>("cbxSyncDouble");
        const auto *list = page.findChild<QComboBox *>("lstStrictPrefix");
        QString shown;
        for (bool state :
             {strict->isChecked(), strict->isEnabled(), sync->isChecked(), sync->isEnabled(), list->isEnabled()})
            shown += state ? u'x' : u'.';
        QCOMPARE(shown, boxes);
        QCOMPARE(list->currentText(), prefixAlphabet().at(prefixIndex));
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

    void altKeysReachTheirControls()
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
    }
};

QTEST_MAIN(TestSettingsPages)
#include "test_settings_pages.moc"
