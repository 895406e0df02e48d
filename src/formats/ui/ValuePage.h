#pragma once

#include "formats/BlocksetModel.h"

#include <QWidget>

class QLineEdit;

// A page of style value controls (the settings and version pages): reports what
// the user types, and stays quiet while the page shows the document's values.
class ValuePage : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    // The control that takes the focus when the page is opened.
    virtual QWidget *firstControl() const = 0;

signals:
    // The user changed a value; `value` is the control's text after the change.
    void styleValueEdited(StyleField field, const QString &value);

protected:
    // A one-line field named `name` that reports its typed text as `field`.
    QLineEdit *makeTextField(const QString &name, StyleField field);
    void reportEdit(StyleField field, const QString &value);

    // Set while values are being shown, so that no edit is reported.
    bool m_showing = false;
};
