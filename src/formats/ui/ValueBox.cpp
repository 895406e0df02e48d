#include "ValueBox.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QRegularExpressionValidator>

#include <algorithm>

using namespace Qt::StringLiterals;

ValueBox::ValueBox(int minimum, int maximum, QWidget *parent)
    : QLineEdit(parent),
      m_minimum(std::min(minimum, maximum)),
      m_maximum(std::max(minimum, maximum)),
      m_maxTextLength(int(std::max(QString::number(m_minimum).size(), QString::number(m_maximum).size())))
{
    // Characters that can never form a number are refused at the keyboard; the
    // length and range rules below work on what is left.
    const QString pattern = m_minimum < 0 ? u"-?[0-9]*"_s : u"[0-9]*"_s;
    setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), this));
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QLineEdit::textChanged, this, &ValueBox::applyTypingRules);
}

bool ValueBox::hasNumber() const
{
    bool ok = false;
    text().toInt(&ok);
    return ok;
}

int ValueBox::clamp(int value) const
{
    return std::clamp(value, m_minimum, m_maximum);
}

int ValueBox::number() const
{
    bool ok = false;
    const int value = text().toInt(&ok);
    return clamp(ok ? value : 0);
}

void ValueBox::setNumber(int value)
{
    setText(QString::number(clamp(value)));
}

void ValueBox::stepBy(int steps)
{
    // Widen before adding so that a large step cannot overflow.
    const qint64 target = qint64(number()) + steps;
    setNumber(int(std::clamp<qint64>(target, m_minimum, m_maximum)));
}

void ValueBox::applyTypingRules(const QString &text)
{
    if (text.size() > m_maxTextLength) {
        // Undo the character just typed: the one left of the cursor. The shorter
        // text arrives here again and settles there.
        if (hasSelectedText())
            deselect();
        if (cursorPosition() > 0)
            backspace();
        else
            setText(text.left(m_maxTextLength));
        return;
    }
    bool ok = false;
    const int value = text.toInt(&ok);
    if (ok && value != clamp(value)) {
        setNumber(value);
        return;
    }
    emit settledChange();
}

void ValueBox::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A minus sign alone is a number being typed, not a value; leaving drops it.
    if (text() == u"-"_s)
        clear();
}

void ValueBox::keyPressEvent(QKeyEvent *event)
{
    if (!isReadOnly()) {
        switch (event->key()) {
        case Qt::Key_Up: stepBy(1); return;
        case Qt::Key_Down: stepBy(-1); return;
        case Qt::Key_PageUp: stepBy(10); return;
        case Qt::Key_PageDown: stepBy(-10); return;
        default: break;
        }
    }
    QLineEdit::keyPressEvent(event);
}

QSize ValueBox::sizeHint() const
{
    // A plain line edit asks room for 17 characters; this box needs the widest
    // text it can hold plus a digit of air, and the same frame and margins.
    QSize size = QLineEdit::sizeHint();
    const QFontMetrics metrics = fontMetrics();
    const int wide = metrics.horizontalAdvance(u'x') * 17;
    const QString widest = QString(u'-') + QString(m_maxTextLength, u'0');
    size.setWidth(size.width() - wide + metrics.horizontalAdvance(widest));
    return size;
}

QSize ValueBox::minimumSizeHint() const
{
    return sizeHint();
}
