#include "formats/ui/ValuePage.h"

#include <QLineEdit>

QLineEdit *ValuePage::makeTextField(const QString &name, StyleField field)
{
    auto *edit = new QLineEdit(this);
    edit->setObjectName(name);
    connect(edit, &QLineEdit::textChanged, this, [this, field](const QString &text) { reportEdit(field, text); });
    return edit;
}

void ValuePage::reportEdit(StyleField field, const QString &value)
{
    if (!m_showing)
        emit styleValueEdited(field, value);
}
