#pragma once

#include <QWidget>

class QToolButton;
class ValueBox;

// A pair of arrow buttons attached to one ValueBox (its buddy), like the up-down
// control of a spin box. Its value is the buddy's number; setting the value or
// clicking an arrow writes the new number into the buddy's text, so the buddy's
// typing rules and change signal run as for typed text. The buttons take no
// focus: clicking them leaves the focus where it was.
class UpDown : public QWidget {
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE setValue)

public:
    explicit UpDown(ValueBox *buddy, QWidget *parent = nullptr);

    ValueBox *buddy() const { return m_buddy; }
    int minimum() const;
    int maximum() const;
    int value() const;
    void setValue(int value);

    QToolButton *upButton() const { return m_up; }
    QToolButton *downButton() const { return m_down; }

    QSize sizeHint() const override;

private:
    ValueBox *m_buddy;
    QToolButton *m_up;
    QToolButton *m_down;
};
