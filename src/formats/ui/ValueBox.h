#pragma once

#include <QLineEdit>

// One numeric component box of a value control (red, green, blue, brightness,
// turn or tilt). It enforces the typing rules of the value controls:
// - only digits can be typed, and a leading "-" when the lower bound is negative;
// - a text longer than the longer of the two bounds' texts ("255", "-90") loses
//   the character just typed;
// - a number outside the bounds is replaced by the nearer bound;
// - a lone "-" is accepted while typing and emptied when the box loses the focus.
// After every change that stands (not the intermediate ones the rules undo) the
// box emits settledChange(). Up and Down (Page Up and Page Down by ten) step the number.
class ValueBox : public QLineEdit {
    Q_OBJECT

public:
    ValueBox(int minimum, int maximum, QWidget *parent = nullptr);

    int minimum() const { return m_minimum; }
    int maximum() const { return m_maximum; }
    int maxTextLength() const { return m_maxTextLength; }

    // False for "", "-" and any other text that is not a number.
    bool hasNumber() const;
    // The number shown, clamped to the bounds; 0 (or the lower bound when 0 is out
    // of range) when the box holds no number.
    int number() const;
    // Shows `value` clamped to the bounds.
    void setNumber(int value);
    // Adds `steps` to the shown number (an empty box counts as the starting number
    // above) and shows the result clamped to the bounds.
    void stepBy(int steps);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void settledChange();

protected:
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void applyTypingRules(const QString &text);
    int clamp(int value) const;

    int m_minimum;
    int m_maximum;
    int m_maxTextLength;
};
