#include "usrColor.h"

#include "UpDown.h"
#include "ValueBox.h"
#include "formats/ValueFormats.h"

#include <QFrame>
#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace {

ValueBox *makeBox(const QString &name, const QString &tip, QWidget *parent)
{
    auto *box = new ValueBox(0, 255, parent);
    box->setObjectName(name);
    box->setToolTip(tip);
    box->setAccessibleName(tip);
    return box;
}

UpDown *makeUpDown(const QString &name, ValueBox *buddy, QWidget *parent)
{
    auto *upDown = new UpDown(buddy, parent);
    upDown->setObjectName(name);
    return upDown;
}

} // namespace

usrColor::usrColor(QWidget *parent)
    : QWidget(parent),
      m_txtR(makeBox(u"txtR"_s, tr("Red (0 to 255)"), this)),
      m_txtG(makeBox(u"txtG"_s, tr("Green (0 to 255)"), this)),
      m_txtB(makeBox(u"txtB"_s, tr("Blue (0 to 255)"), this)),
      m_udR(makeUpDown(u"udR"_s, m_txtR, this)),
      m_udG(makeUpDown(u"udG"_s, m_txtG, this)),
      m_udB(makeUpDown(u"udB"_s, m_txtB, this)),
      m_swatch(new QFrame(this))
{
    m_swatch->setObjectName(u"swatch"_s);
    m_swatch->setFrameShape(QFrame::Box);
    m_swatch->setFrameShadow(QFrame::Plain);
    const int side = m_txtR->sizeHint().height();
    m_swatch->setFixedSize(side, side);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    const std::pair<ValueBox *, UpDown *> parts[] = {{m_txtR, m_udR}, {m_txtG, m_udG}, {m_txtB, m_udB}};
    for (const auto &[box, upDown] : parts) {
        layout->addWidget(box);
        layout->addWidget(upDown);
        layout->addSpacing(4);
        connect(box, &ValueBox::settledChange, this, [this] {
            updateSwatch();
            emit Change();
        });
    }
    layout->addSpacing(2);
    layout->addWidget(m_swatch);
    setFocusProxy(m_txtR);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateSwatch();
}

QString usrColor::rgb() const
{
    if (m_txtR->text().isEmpty() || m_txtG->text().isEmpty() || m_txtB->text().isEmpty())
        return {};
    return u'(' + m_txtR->text() + u',' + m_txtG->text() + u',' + m_txtB->text() + u')';
}

void usrColor::setRGB(const QString &value)
{
    const auto color = parseColor(value);
    if (!color)
        return;
    m_udR->setValue((*color)[0]);
    m_udG->setValue((*color)[1]);
    m_udB->setValue((*color)[2]);
}

int usrColor::red() const
{
    return m_udR->value();
}
int usrColor::green() const
{
    return m_udG->value();
}
int usrColor::blue() const
{
    return m_udB->value();
}
void usrColor::setRed(int value)
{
    m_udR->setValue(value);
}
void usrColor::setGreen(int value)
{
    m_udG->setValue(value);
}
void usrColor::setBlue(int value)
{
    m_udB->setValue(value);
}

void usrColor::clear()
{
    m_txtR->clear();
    m_txtG->clear();
    m_txtB->clear();
}

void usrColor::updateSwatch()
{
    // The swatch is filled only while the three boxes make a colour.
    const bool complete = m_txtR->hasNumber() && m_txtG->hasNumber() && m_txtB->hasNumber();
    m_swatch->setAutoFillBackground(complete);
    QPalette palette;
    if (complete)
        palette.setColor(QPalette::Window, QColor(red(), green(), blue()));
    m_swatch->setPalette(palette);
    m_swatch->setToolTip(complete ? rgb() : tr("No colour set"));
}
