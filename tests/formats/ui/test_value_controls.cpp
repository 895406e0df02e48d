// The three value controls of the settings page: the typing rules of their
// boxes, the up-down buttons and the Change event. Not covered here: how the page reports the changes (see
// test_settings_pages).
#include "formats/ui/UpDown.h"
#include "formats/ui/usrColor.h"
#include "formats/ui/usrPosition.h"
#include "support/DataRows.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace {

// The colour or the position control, made by kind ("color", "position"), with
// uniform access for the tables.
struct AnyControl {
    std::unique_ptr<QWidget> widget;
    const char *property = nullptr;
    QString sample; // a value the control takes

    explicit AnyControl(const QString &kind)
    {
        if (kind == "color")
            widget = std::make_unique<usrColor>(), property = "RGB", sample = "(1,2,3)";
        else
            widget = std::make_unique<usrPosition>(), property = "Position", sample = "(4,-5)";
    }
    QString text() const { return widget->property(property).toString(); }
    void setText(const QString &value) { widget->setProperty(property, value); }
    QLineEdit *box(const QString &name) const { return widget->findChild<QLineEdit *>(name); }
    std::unique_ptr<QSignalSpy> changes() const { return std::make_unique<QSignalSpy>(widget.get(), SIGNAL(Change())); }
};

} // namespace

class TestValueControls : public QObject {
    Q_OBJECT

private slots:
    // Keys typed over the whole text of one box of a control that holds
    // its sample value: the box's text, the Change count and the control's value.
    void typingIntoBox_data()
    {
        addColumns<QString, QString, QString, QString, int, QString>("kind", "box", "keys", "text", "changes", "value");
        addRow("colour 256 becomes 255", "color", "txtR", "256", "255", 3, "(255,2,3)");
        // The fourth digit is taken back at once; the box is still reported as changed.
        addRow("colour fourth digit undone", "color", "txtB", "1234", "123", 4, "(1,2,123)");
        addRow("colour letters and minus refused", "color", "txtG", "1a-2", "12", 2, "(1,12,3)");
        addRow("colour box emptied", "color", "txtG", "\b", "", 1, "");
        addRow("turn 361 becomes 360", "position", "txtTurn", "361", "360", 3, "(360,-5)");
        addRow("tilt -95 becomes -90", "position", "txtTilt", "-95", "-90", 3, "(4,-90)");
        addRow("tilt fourth character undone", "position", "txtTilt", "-900", "-90", 4, "(4,-90)");
        addRow("tilt minus alone", "position", "txtTilt", "-", "-", 1, "");
        addRow("tilt second minus refused", "position", "txtTilt", "--5", "-5", 2, "(4,-5)");
    }

    void typingIntoBox()
    {
        QFETCH(QString, kind);
        QFETCH(QString, box);
        QFETCH(QString, keys);
        AnyControl control(kind);
        control.setText(control.sample);
        QLineEdit *edit = control.box(box);
        QVERIFY(edit);
        edit->selectAll();
        const auto changes = control.changes();
        QTest::keyClicks(edit, keys);
        QTEST(edit->text(), "text");
        QTEST(int(changes->count()), "changes");
        QTEST(control.text(), "value");
    }

    void loneMinusInTiltIsDroppedOnLeaving()
    {
        QWidget window;
        auto *position = new usrPosition(&window);
        auto *other = new QLineEdit(&window);
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(position);
        layout->addWidget(other);
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));

        auto *tilt = position->findChild<QLineEdit *>("txtTilt");
        QTest::keyClicks(position->findChild<QLineEdit *>("txtTurn"), "10");
        tilt->setFocus();
        QVERIFY(tilt->hasFocus());
        QSignalSpy changes(position, &usrPosition::Change);
        QTest::keyClicks(tilt, "-");
        QCOMPARE(tilt->text(), "-");
        QCOMPARE(position->position(), "");
        QCOMPARE(changes.count(), 1);

        other->setFocus();
        QCOMPARE(tilt->text(), "");
        QCOMPARE(position->position(), "");
        QCOMPARE(changes.count(), 2);

        // A tilt that became a number stays when the box is left.
        tilt->setFocus();
        QTest::keyClicks(tilt, "-5");
        other->setFocus();
        QCOMPARE(position->position(), "(10,-5)");
    }

    void upDownButtonsStepWithinBounds_data()
    {
        // box: its up-down is named "ud" + the rest of the name.
        addColumns<QString, QString, QString, bool, QString>("kind", "box", "start", "up", "text");
        addRow("red up from empty", "color", "txtR", "", true, "1");
        addRow("blue up at top", "color", "txtB", "255", true, "255");
        addRow("tilt down from empty", "position", "txtTilt", "", false, "-1");
        addRow("tilt up from minus", "position", "txtTilt", "-", true, "1");
    }

    void upDownButtonsStepWithinBounds()
    {
        QFETCH(QString, kind);
        QFETCH(QString, box);
        QFETCH(QString, start);
        QFETCH(bool, up);
        QFETCH(QString, text);
        AnyControl control(kind);
        control.widget->show();
        QLineEdit *edit = control.box(box);
        auto *arrows = control.widget->findChild<UpDown *>("ud" + box.mid(3));
        QVERIFY(edit && arrows);
        edit->setText(start);
        const auto changes = control.changes();
        QTest::mouseClick(up ? arrows->upButton() : arrows->downButton(), Qt::LeftButton);
        QCOMPARE(edit->text(), text);
        QCOMPARE(changes->count(), text == start ? 0 : 1);
        QCOMPARE(arrows->value(), text.toInt());
    }
};

QTEST_MAIN(TestValueControls)
#include "test_value_controls.moc"
