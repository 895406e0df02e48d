#pragma once

#include <QWidget>

class UpDown;
class ValueBox;

// The position value control: a turn box (0 to 360) and a tilt box (-90 to 90),
// each with its up-down. Its text property Position is the style file's form,
// "(turn,tilt)".
class usrPosition : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString Position READ position WRITE setPosition NOTIFY Change)
    Q_PROPERTY(int Turn READ turn WRITE setTurn NOTIFY Change)
    Q_PROPERTY(int Tilt READ tilt WRITE setTilt NOTIFY Change)

public:
    explicit usrPosition(QWidget *parent = nullptr);

    // "(" turn "," tilt ")" as the boxes show them, or "" while a box is empty or
    // the tilt box holds only the "-" being typed.
    QString position() const;
    // Takes a text such as "(45,-10)" (blanks around it allowed); any other text
    // is ignored and the control keeps its value and stays silent.
    void setPosition(const QString &value);

    // One component; an empty box reads as 0. Setting clamps to the bounds.
    int turn() const;
    int tilt() const;
    void setTurn(int value);
    void setTilt(int value);

    ValueBox *turnBox() const { return m_txtTurn; }
    ValueBox *tiltBox() const { return m_txtTilt; }

public slots:
    // Empties both boxes.
    void clear();

signals:
    // Raised after every change of one of the boxes.
    void Change();

private:
    ValueBox *m_txtTurn;
    ValueBox *m_txtTilt;
    UpDown *m_udTurn;
    UpDown *m_udTilt;
};
