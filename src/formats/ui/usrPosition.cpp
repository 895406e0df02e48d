#include "usrPosition.h"

#include "UpDown.h"
#include "ValueBox.h"
#include "formats/ValueFormats.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

usrPosition::usrPosition(QWidget *parent)
    : QWidget(parent),
      m_txtTurn(new ValueBox(0, 360, this)),
      m_txtTilt(new ValueBox(-90, 90, this)),
      m_udTurn(new UpDown(m_txtTurn, this)),
      m_udTilt(new UpDown(m_txtTilt, this))
{
    m_txtTurn->setObjectName(u"txtTurn"_s);
    m_txtTurn->setToolTip(tr("Turn (0 to 360)"));
    m_txtTurn->setAccessibleName(tr("Turn"));
    m_txtTilt->setObjectName(u"txtTilt"_s);
    m_txtTilt->setToolTip(tr("Tilt (-90 to 90)"));
    m_txtTilt->setAccessibleName(tr("Tilt"));
    m_udTurn->setObjectName(u"udTurn"_s);
    m_udTilt->setObjectName(u"udTilt"_s);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_txtTurn);
    layout->addWidget(m_udTurn);
    layout->addSpacing(4);
    layout->addWidget(m_txtTilt);
    layout->addWidget(m_udTilt);
    connect(m_txtTurn, &ValueBox::settledChange, this, &usrPosition::Change);
    connect(m_txtTilt, &ValueBox::settledChange, this, &usrPosition::Change);
    setFocusProxy(m_txtTurn);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QString usrPosition::position() const
{
    const QString turnText = m_txtTurn->text();
    const QString tiltText = m_txtTilt->text();
    if (turnText.isEmpty() || tiltText.isEmpty() || tiltText == u"-"_s)
        return {};
    return u'(' + turnText + u',' + tiltText + u')';
}

void usrPosition::setPosition(const QString &value)
{
    const auto position = parsePosition(value);
    if (!position)
        return;
    m_udTurn->setValue((*position)[0]);
    m_udTilt->setValue((*position)[1]);
}

int usrPosition::turn() const
{
    return m_udTurn->value();
}
int usrPosition::tilt() const
{
    return m_udTilt->value();
}
void usrPosition::setTurn(int value)
{
    m_udTurn->setValue(value);
}
void usrPosition::setTilt(int value)
{
    m_udTilt->setValue(value);
}

void usrPosition::clear()
{
    m_txtTurn->clear();
    m_txtTilt->clear();
}
