#include "usrPercentage.h"

#include "UpDown.h"
#include "ValueBox.h"
#include "formats/ValueFormats.h"

#include <QHBoxLayout>
#include <QLabel>

using namespace Qt::StringLiterals;

usrPercentage::usrPercentage(QWidget *parent)
    : QWidget(parent),
      m_txtB(new ValueBox(0, 100, this)),
      m_udB(new UpDown(m_txtB, this))
{
    m_txtB->setObjectName(u"txtB"_s);
    m_txtB->setToolTip(tr("Percentage (0 to 100)"));
    m_txtB->setAccessibleName(tr("Percentage"));
    m_udB->setObjectName(u"udB"_s);

    auto *sign = new QLabel(u"%"_s, this);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_txtB);
    layout->addWidget(m_udB);
    layout->addSpacing(4);
    layout->addWidget(sign);
    connect(m_txtB, &ValueBox::settledChange, this, &usrPercentage::Change);
    setFocusProxy(m_txtB);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QString usrPercentage::percentage() const
{
    if (m_txtB->text().isEmpty())
        return {};
    return m_txtB->text() + u'%';
}

void usrPercentage::setPercentage(const QString &value)
{
    const auto percent = parsePercentage(value);
    if (!percent)
        return;
    m_udB->setValue(*percent);
}

void usrPercentage::clear()
{
    m_txtB->clear();
}
