#pragma once

#include "formats/BlocksetModel.h"
#include "formats/ui/AttributeValueValidator.h"

#include <QLineEdit>
#include <QString>

// Shows `text` in a field only when it differs: rewriting an equal text would
// move the cursor of a field being typed in.
inline void setTextIfDifferent(QLineEdit *field, const QString &text)
{
    if (field->text() != text)
        field->setText(text);
}

// A text field of `page` named `name` whose user edits the page reports as
// styleValueEdited(field, text); while `showing` is set the page is filling its
// fields itself, and those texts are not edits.
template <class Page>
QLineEdit *makeTextField(Page *page, const QString &name, StyleField field, const bool &showing)
{
    auto *edit = new QLineEdit(page);
    edit->setObjectName(name);
    edit->setValidator(new AttributeValueValidator(edit)); // a quote would end the value in the file
    QObject::connect(edit, &QLineEdit::textChanged, page, [page, field, &showing](const QString &text) {
        if (!showing)
            emit page->styleValueEdited(field, text);
    });
    return edit;
}
