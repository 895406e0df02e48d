#pragma once

#include <QWidget>

class QFrame;
class UpDown;
class ValueBox;

// The colour value control: three boxes for red, green and blue (0 to 255), each
// with its up-down, and a swatch that shows the colour once all three are given.
// Its text property RGB is a colour in the style file's form, "(r,g,b)".
class usrColor : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString RGB READ rgb WRITE setRGB NOTIFY Change)
    Q_PROPERTY(int Red READ red WRITE setRed NOTIFY Change)
    Q_PROPERTY(int Green READ green WRITE setGreen NOTIFY Change)
    Q_PROPERTY(int Blue READ blue WRITE setBlue NOTIFY Change)

public:
    explicit usrColor(QWidget *parent = nullptr);

    // "(" red "," green "," blue ")" as the boxes show them, or "" while a box is empty.
    QString rgb() const;
    // Takes a colour text such as "(0,128,255)" (blanks around it allowed); any
    // other text is ignored and the control keeps its value and stays silent.
    void setRGB(const QString &value);

    // One component; an empty box reads as 0. Setting clamps to 0..255.
    int red() const;
    int green() const;
    int blue() const;
    void setRed(int value);
    void setGreen(int value);
    void setBlue(int value);

    ValueBox *redBox() const { return m_txtR; }
    ValueBox *greenBox() const { return m_txtG; }
    ValueBox *blueBox() const { return m_txtB; }

public slots:
    // Empties the three boxes.
    void clear();

signals:
    // Raised after every change of one of the boxes.
    void Change();

private:
    void updateSwatch();

    ValueBox *m_txtR;
    ValueBox *m_txtG;
    ValueBox *m_txtB;
    UpDown *m_udR;
    UpDown *m_udG;
    UpDown *m_udB;
    QFrame *m_swatch;
};
