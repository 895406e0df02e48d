#include "UpDown.h"

#include "ValueBox.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton *makeArrow(Qt::ArrowType arrow, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setArrowType(arrow);
    button->setAutoRepeat(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    return button;
}

} // namespace

UpDown::UpDown(ValueBox *buddy, QWidget *parent)
    : QWidget(parent),
      m_buddy(buddy),
      m_up(makeArrow(Qt::UpArrow, this)),
      m_down(makeArrow(Qt::DownArrow, this))
{
    m_up->setObjectName(QStringLiteral("up"));
    m_down->setObjectName(QStringLiteral("down"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_up);
    layout->addWidget(m_down);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    connect(m_up, &QToolButton::clicked, this, [this] { m_buddy->stepBy(1); });
    connect(m_down, &QToolButton::clicked, this, [this] { m_buddy->stepBy(-1); });
}

int UpDown::minimum() const
{
    return m_buddy->minimum();
}

int UpDown::maximum() const
{
    return m_buddy->maximum();
}

int UpDown::value() const
{
    return m_buddy->number();
}

void UpDown::setValue(int value)
{
    m_buddy->setNumber(value);
}

QSize UpDown::sizeHint() const
{
    // As tall as the buddy box, so that the two stand flush side by side.
    const int height = m_buddy->sizeHint().height();
    return {qMax(14, height * 2 / 3), height};
}
