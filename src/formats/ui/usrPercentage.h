#pragma once

#include <QWidget>

class UpDown;
class ValueBox;

// The percentage value control: one box (0 to 100) with its up-down and a "%"
// sign after it. Its text property Percentage is the style file's form, "80%".
class usrPercentage : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString Percentage READ percentage WRITE setPercentage NOTIFY Change)

public:
    explicit usrPercentage(QWidget *parent = nullptr);

    // The box's text followed by "%", or "" while the box is empty.
    QString percentage() const;
    // Takes a text such as "80%" (blanks around it allowed; at least three
    // characters, so "5%" is refused while "05%" is taken); any other text is
    // ignored and the control keeps its value and stays silent.
    void setPercentage(const QString &value);

    ValueBox *box() const { return m_txtB; }

public slots:
    // Empties the box.
    void clear();

signals:
    // Raised after every change of the box.
    void Change();

private:
    ValueBox *m_txtB;
    UpDown *m_udB;
};
