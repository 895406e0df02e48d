// The three value controls of the settings page: what their text properties
// accept and refuse, the typing rules of their boxes, the up-down buttons and the
// Change event. Not covered here: how the page reports the changes (see
// test_settings_pages).
#include "formats/ui/UpDown.h"
#include "formats/ui/ValueBox.h"
#include "formats/ui/usrColor.h"
#include "formats/ui/usrPercentage.h"
#include "formats/ui/usrPosition.h"

#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace {

// One of the three controls, made by name, with uniform access for the tables.
struct AnyControl {
    std::unique_ptr<QWidget> widget;
    const char *property = nullptr;

    QString text() const { return widget->property(property).toString(); }
    void setText(const QString &value) { widget->setProperty(property, value); }
    QLineEdit *box(const QString &name) const { return widget->findChild<QLineEdit *>(name); }
};

AnyControl makeControl(const QString &kind)
{
    AnyControl control;
    if (kind == "color") {
        control.widget = std::make_unique<usrColor>();
        control.property = "RGB";
    } else if (kind == "percentage") {
        control.widget = std::make_unique<usrPercentage>();
        control.property = "Percentage";
    } else {
        control.widget = std::make_unique<usrPosition>();
        control.property = "Position";
    }
    return control;
}

QSignalSpy changeSpy(const AnyControl &control)
{
    return QSignalSpy(control.widget.get(), SIGNAL(Change()));
}

} // namespace

class TestValueControls : public QObject {
    Q_OBJECT

private slots:
    void settingTextProperty_data();
    void settingTextProperty();
    void typingIntoBox_data();
    void typingIntoBox();
    void extraDigitIsRemovedWhereItWasTyped();
    void pastedLongTextIsCutToThreeCharacters();
    void textPropertyNeedsEveryBox_data();
    void textPropertyNeedsEveryBox();
    void loneMinusInTiltIsDroppedOnLeaving();
    void upDownButtonsStepWithinBounds_data();
    void upDownButtonsStepWithinBounds();
    void arrowKeysStepTheBox();
    void componentPropertiesClampToBounds();
    void clearEmptiesEveryBox_data();
    void clearEmptiesEveryBox();
    void boxesAreSizedForThreeDigits();
};

void TestValueControls::settingTextProperty_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("after");

    // Colour: "(r,g,b)", each 0..255, blanks only around the whole.
    QTest::newRow("colour") << "color" << "" << "(10,20,30)" << "(10,20,30)";
    QTest::newRow("colour with blanks around") << "color" << "" << "  (10,20,30) " << "(10,20,30)";
    QTest::newRow("colour bounds") << "color" << "(1,2,3)" << "(0,255,0)" << "(0,255,0)";
    QTest::newRow("colour replaces colour") << "color" << "(1,2,3)" << "(4,5,6)" << "(4,5,6)";
    QTest::newRow("colour two parts") << "color" << "(1,2,3)" << "(10,20)" << "(1,2,3)";
    QTest::newRow("colour four parts") << "color" << "(1,2,3)" << "(10,20,30,40)" << "(1,2,3)";
    QTest::newRow("colour over 255") << "color" << "(1,2,3)" << "(10,20,300)" << "(1,2,3)";
    QTest::newRow("colour negative") << "color" << "(1,2,3)" << "(-1,20,30)" << "(1,2,3)";
    QTest::newRow("colour without parentheses") << "color" << "(1,2,3)" << "10,20,30" << "(1,2,3)";
    QTest::newRow("colour missing close") << "color" << "(1,2,3)" << "(10,20,30" << "(1,2,3)";
    QTest::newRow("colour letters") << "color" << "(1,2,3)" << "(a,b,c)" << "(1,2,3)";
    QTest::newRow("colour fraction") << "color" << "(1,2,3)" << "(1.5,2,3)" << "(1,2,3)";
    QTest::newRow("colour empty parts") << "color" << "(1,2,3)" << "(,,)" << "(1,2,3)";
    QTest::newRow("colour parentheses only") << "color" << "(1,2,3)" << "()" << "(1,2,3)";
    QTest::newRow("colour empty text") << "color" << "(1,2,3)" << "" << "(1,2,3)";
    QTest::newRow("colour refused on empty control") << "color" << "" << "(10,20)" << "";

    // Percentage: 0..100 and "%", at least three characters.
    QTest::newRow("percentage 100") << "percentage" << "" << "100%" << "100%";
    QTest::newRow("percentage 0 written 00") << "percentage" << "50%" << "00%" << "0%";
    QTest::newRow("percentage with blanks around") << "percentage" << "" << " 80% " << "80%";
    QTest::newRow("percentage leading zero") << "percentage" << "" << "05%" << "5%";
    QTest::newRow("percentage two characters") << "percentage" << "50%" << "5%" << "50%";
    QTest::newRow("percentage 101") << "percentage" << "50%" << "101%" << "50%";
    QTest::newRow("percentage negative") << "percentage" << "50%" << "-10%" << "50%";
    QTest::newRow("percentage without sign") << "percentage" << "50%" << "80" << "50%";
    QTest::newRow("percentage sign in front") << "percentage" << "50%" << "%80" << "50%";
    QTest::newRow("percentage letters") << "percentage" << "50%" << "abc%" << "50%";
    QTest::newRow("percentage empty text") << "percentage" << "50%" << "" << "50%";

    // Position: "(turn,tilt)", turn 0..360, tilt -90..90.
    QTest::newRow("position") << "position" << "" << "(45,-10)" << "(45,-10)";
    QTest::newRow("position with blanks around") << "position" << "" << " (45,10)  " << "(45,10)";
    QTest::newRow("position lower bounds") << "position" << "(1,1)" << "(0,-90)" << "(0,-90)";
    QTest::newRow("position upper bounds") << "position" << "(1,1)" << "(360,90)" << "(360,90)";
    QTest::newRow("position turn over 360") << "position" << "(1,1)" << "(361,0)" << "(1,1)";
    QTest::newRow("position turn negative") << "position" << "(1,1)" << "(-1,0)" << "(1,1)";
    QTest::newRow("position tilt under -90") << "position" << "(1,1)" << "(0,-91)" << "(1,1)";
    QTest::newRow("position tilt over 90") << "position" << "(1,1)" << "(0,91)" << "(1,1)";
    QTest::newRow("position one part") << "position" << "(1,1)" << "(45)" << "(1,1)";
    QTest::newRow("position three parts") << "position" << "(1,1)" << "(1,2,3)" << "(1,1)";
    QTest::newRow("position without parentheses") << "position" << "(1,1)" << "45,10" << "(1,1)";
    QTest::newRow("position minus alone") << "position" << "(1,1)" << "(45,-)" << "(1,1)";
    QTest::newRow("position empty text") << "position" << "(1,1)" << "" << "(1,1)";
}

void TestValueControls::settingTextProperty()
{
    QFETCH(QString, kind);
    QFETCH(QString, before);
    QFETCH(QString, value);
    QFETCH(QString, after);

    AnyControl control = makeControl(kind);
    control.setText(before);
    QCOMPARE(control.text(), before);

    QSignalSpy changes = changeSpy(control);
    control.setText(value);
    QCOMPARE(control.text(), after);
    // A refused value changes nothing, so nothing is raised; a taken one is reported.
    if (after == before)
        QCOMPARE(changes.count(), 0);
    else
        QVERIFY(changes.count() > 0);
}

void TestValueControls::typingIntoBox_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("changes");

    QTest::newRow("colour in range") << "color" << "txtR" << "12" << "12" << 2;
    QTest::newRow("colour 256 becomes 255") << "color" << "txtR" << "256" << "255" << 3;
    QTest::newRow("colour 999 becomes 255") << "color" << "txtG" << "999" << "255" << 3;
    // The fourth digit is taken back at once; the box is still reported as changed.
    QTest::newRow("colour fourth digit undone") << "color" << "txtB" << "1234" << "123" << 4;
    QTest::newRow("colour letters refused") << "color" << "txtR" << "1a2" << "12" << 2;
    QTest::newRow("colour only letters") << "color" << "txtR" << "abc" << "" << 0;
    QTest::newRow("colour minus refused") << "color" << "txtR" << "-5" << "5" << 1;
    QTest::newRow("percentage 101 becomes 100") << "percentage" << "txtB" << "101" << "100" << 3;
    QTest::newRow("percentage fourth digit undone") << "percentage" << "txtB" << "1000" << "100" << 4;
    QTest::newRow("percentage sign refused") << "percentage" << "txtB" << "50%" << "50" << 2;
    QTest::newRow("turn 361 becomes 360") << "position" << "txtTurn" << "361" << "360" << 3;
    QTest::newRow("turn 400 becomes 360") << "position" << "txtTurn" << "400" << "360" << 3;
    QTest::newRow("turn minus refused") << "position" << "txtTurn" << "-10" << "10" << 2;
    QTest::newRow("tilt negative") << "position" << "txtTilt" << "-45" << "-45" << 3;
    QTest::newRow("tilt -95 becomes -90") << "position" << "txtTilt" << "-95" << "-90" << 3;
    QTest::newRow("tilt 95 becomes 90") << "position" << "txtTilt" << "95" << "90" << 2;
    QTest::newRow("tilt fourth character undone") << "position" << "txtTilt" << "-900" << "-90" << 4;
    QTest::newRow("tilt minus alone") << "position" << "txtTilt" << "-" << "-" << 1;
    QTest::newRow("tilt second minus refused") << "position" << "txtTilt" << "--5" << "-5" << 2;
    QTest::newRow("tilt minus after digit refused") << "position" << "txtTilt" << "5-" << "5" << 1;
    QTest::newRow("tilt letters refused") << "position" << "txtTilt" << "x-y1" << "-1" << 2;
}

void TestValueControls::typingIntoBox()
{
    QFETCH(QString, kind);
    QFETCH(QString, box);
    QFETCH(QString, keys);
    QFETCH(QString, text);
    QFETCH(int, changes);

    AnyControl control = makeControl(kind);
    QLineEdit *edit = control.box(box);
    QVERIFY(edit);
    QSignalSpy spy = changeSpy(control);
    QTest::keyClicks(edit, keys);
    QCOMPARE(edit->text(), text);
    QCOMPARE(spy.count(), changes);
}

void TestValueControls::extraDigitIsRemovedWhereItWasTyped()
{
    usrColor color;
    auto *red = color.findChild<QLineEdit *>("txtR");
    red->setText("123");
    red->setCursorPosition(1);
    QTest::keyClick(red, Qt::Key_9);
    QCOMPARE(red->text(), "123");
    QCOMPARE(red->cursorPosition(), 1);
    // Typing on after the refused digit goes on from the same place.
    QTest::keyClick(red, Qt::Key_Backspace);
    QTest::keyClick(red, Qt::Key_2);
    QCOMPARE(red->text(), "223");
}

void TestValueControls::pastedLongTextIsCutToThreeCharacters()
{
    usrPosition position;
    auto *turn = position.findChild<QLineEdit *>("txtTurn");
    turn->setText("12");
    turn->setCursorPosition(0);
    turn->insert("98765");
    QCOMPARE(turn->text().size(), 3);
    QVERIFY(turn->text().toInt() <= 360);
    QCOMPARE(position.findChild<QLineEdit *>("txtTilt")->text(), "");
}

void TestValueControls::textPropertyNeedsEveryBox_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("boxes");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("value");

    QTest::newRow("colour complete") << "color" << QStringList{"txtR", "txtG", "txtB"}
                                     << QStringList{"1", "22", "255"} << "(1,22,255)";
    QTest::newRow("colour leading zeros kept") << "color" << QStringList{"txtR", "txtG", "txtB"}
                                               << QStringList{"007", "0", "0"} << "(007,0,0)";
    QTest::newRow("colour green empty") << "color" << QStringList{"txtR", "txtG", "txtB"}
                                        << QStringList{"1", "", "3"} << "";
    QTest::newRow("percentage") << "percentage" << QStringList{"txtB"} << QStringList{"40"} << "40%";
    QTest::newRow("percentage empty") << "percentage" << QStringList{"txtB"} << QStringList{""} << "";
    QTest::newRow("position complete") << "position" << QStringList{"txtTurn", "txtTilt"}
                                       << QStringList{"90", "-5"} << "(90,-5)";
    QTest::newRow("position tilt empty") << "position" << QStringList{"txtTurn", "txtTilt"}
                                         << QStringList{"90", ""} << "";
    QTest::newRow("position turn empty") << "position" << QStringList{"txtTurn", "txtTilt"}
                                         << QStringList{"", "5"} << "";
    QTest::newRow("position tilt minus only") << "position" << QStringList{"txtTurn", "txtTilt"}
                                              << QStringList{"90", "-"} << "";
}

void TestValueControls::textPropertyNeedsEveryBox()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, boxes);
    QFETCH(QStringList, texts);
    QFETCH(QString, value);

    AnyControl control = makeControl(kind);
    for (qsizetype i = 0; i < boxes.size(); ++i) {
        QLineEdit *edit = control.box(boxes[i]);
        QVERIFY(edit);
        edit->clear();
        QTest::keyClicks(edit, texts[i]);
        QCOMPARE(edit->text(), texts[i]);
    }
    QCOMPARE(control.text(), value);
}

void TestValueControls::loneMinusInTiltIsDroppedOnLeaving()
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

    auto *turn = position->findChild<QLineEdit *>("txtTurn");
    auto *tilt = position->findChild<QLineEdit *>("txtTilt");
    QTest::keyClicks(turn, "10");
    tilt->setFocus();
    QVERIFY(tilt->hasFocus());
    QSignalSpy changes(position, &usrPosition::Change);
    QTest::keyClicks(tilt, "-");
    QCOMPARE(tilt->text(), "-");
    QCOMPARE(position->position(), "");
    QCOMPARE(changes.count(), 1);

    other->setFocus();
    QVERIFY(!tilt->hasFocus());
    QCOMPARE(tilt->text(), "");
    QCOMPARE(position->position(), "");
    QCOMPARE(changes.count(), 2);

    // A tilt that became a number stays when the box is left.
    tilt->setFocus();
    QTest::keyClicks(tilt, "-5");
    other->setFocus();
    QCOMPARE(tilt->text(), "-5");
    QCOMPARE(position->position(), "(10,-5)");
}

void TestValueControls::upDownButtonsStepWithinBounds_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("upDown");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("start");
    QTest::addColumn<bool>("up");
    QTest::addColumn<QString>("text");

    QTest::newRow("red up from empty") << "color" << "udR" << "txtR" << "" << true << "1";
    QTest::newRow("green up") << "color" << "udG" << "txtG" << "41" << true << "42";
    QTest::newRow("blue up at top") << "color" << "udB" << "txtB" << "255" << true << "255";
    QTest::newRow("red down at bottom") << "color" << "udR" << "txtR" << "0" << false << "0";
    QTest::newRow("percentage up at top") << "percentage" << "udB" << "txtB" << "100" << true << "100";
    QTest::newRow("percentage down") << "percentage" << "udB" << "txtB" << "50" << false << "49";
    QTest::newRow("turn up at top") << "position" << "udTurn" << "txtTurn" << "360" << true << "360";
    QTest::newRow("turn down from empty") << "position" << "udTurn" << "txtTurn" << "" << false << "0";
    QTest::newRow("tilt down from empty") << "position" << "udTilt" << "txtTilt" << "" << false << "-1";
    QTest::newRow("tilt down at bottom") << "position" << "udTilt" << "txtTilt" << "-90" << false << "-90";
    QTest::newRow("tilt up from minus") << "position" << "udTilt" << "txtTilt" << "-" << true << "1";
}

void TestValueControls::upDownButtonsStepWithinBounds()
{
    QFETCH(QString, kind);
    QFETCH(QString, upDown);
    QFETCH(QString, box);
    QFETCH(QString, start);
    QFETCH(bool, up);
    QFETCH(QString, text);

    AnyControl control = makeControl(kind);
    control.widget->show();
    QLineEdit *edit = control.box(box);
    auto *arrows = control.widget->findChild<UpDown *>(upDown);
    QVERIFY(edit);
    QVERIFY(arrows);
    edit->setText(start);
    QSignalSpy changes = changeSpy(control);
    QToolButton *button = up ? arrows->upButton() : arrows->downButton();
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(edit->text(), text);
    QCOMPARE(changes.count(), edit->text() == start ? 0 : 1);
    // The up-down's value is the number in its box.
    QCOMPARE(arrows->value(), text.toInt());
}

void TestValueControls::arrowKeysStepTheBox()
{
    usrPosition position;
    auto *turn = position.findChild<QLineEdit *>("txtTurn");
    turn->setText("358");
    QTest::keyClick(turn, Qt::Key_Up);
    QTest::keyClick(turn, Qt::Key_Up);
    QTest::keyClick(turn, Qt::Key_Up);
    QCOMPARE(turn->text(), "360");
    QTest::keyClick(turn, Qt::Key_PageDown);
    QCOMPARE(turn->text(), "350");
    auto *tilt = position.findChild<QLineEdit *>("txtTilt");
    tilt->setText("-85");
    QTest::keyClick(tilt, Qt::Key_PageDown);
    QCOMPARE(tilt->text(), "-90");
}

void TestValueControls::componentPropertiesClampToBounds()
{
    usrColor color;
    color.setRed(300);
    color.setGreen(-4);
    color.setBlue(128);
    QCOMPARE(color.rgb(), "(255,0,128)");
    QCOMPARE(color.property("Red").toInt(), 255);
    QCOMPARE(color.property("Blue").toInt(), 128);

    usrPosition position;
    position.setProperty("Turn", 400);
    position.setProperty("Tilt", -100);
    QCOMPARE(position.position(), "(360,-90)");
    QCOMPARE(position.turn(), 360);
    QCOMPARE(position.tilt(), -90);
}

void TestValueControls::clearEmptiesEveryBox_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("value");
    QTest::newRow("colour") << "color" << "(1,2,3)";
    QTest::newRow("percentage") << "percentage" << "50%";
    QTest::newRow("position") << "position" << "(4,-5)";
}

void TestValueControls::clearEmptiesEveryBox()
{
    QFETCH(QString, kind);
    QFETCH(QString, value);

    AnyControl control = makeControl(kind);
    control.setText(value);
    QCOMPARE(control.text(), value);
    QSignalSpy changes = changeSpy(control);
    QVERIFY(QMetaObject::invokeMethod(control.widget.get(), "clear"));
    QCOMPARE(control.text(), "");
    for (QLineEdit *edit : control.widget->findChildren<QLineEdit *>())
        QCOMPARE(edit->text(), "");
    QVERIFY(changes.count() > 0);
}

void TestValueControls::boxesAreSizedForThreeDigits()
{
    // Wide enough to show "-90" and "255" whole, yet much narrower than a text field.
    usrPosition position;
    position.show();
    QLineEdit plain;
    for (auto *edit : position.findChildren<QLineEdit *>()) {
        const int needed = edit->fontMetrics().horizontalAdvance("-90");
        QVERIFY2(edit->width() > needed, qPrintable(QString::number(edit->width())));
        QVERIFY(edit->width() < plain.sizeHint().width() / 2);
    }
}

QTEST_MAIN(TestValueControls)
#include "test_value_controls.moc"
