#pragma once

#include <QLineEdit>
#include <QString>

// Shows `text` in a field only when it differs: rewriting an equal text would
// move the cursor of a field being typed in.
inline void setTextIfDifferent(QLineEdit *field, const QString &text)
{
    if (field->text() != text)
        field->setText(text);
}
