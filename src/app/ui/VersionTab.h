#pragma once

#include "formats/BlocksetModel.h"

#include <QWidget>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

// The "&Version" page of the main window: the blockset's information from the
// style file and the update comment written beside the archive for Rover.
class VersionTab : public QWidget {
    Q_OBJECT

public:
    explicit VersionTab(QWidget *parent = nullptr);

    // Shows the five information values of `style` and the update comment,
    // without emitting any edit signal.
    void showValues(const StyleValues &style, const QString &updateComment);
    // Enables or disables the update group with its explanation, label and box.
    void setUpdateEnabled(bool enabled);
    // Empties every field, without emitting edit signals.
    void resetValues();
    // The control that takes the focus when the page is chosen.
    QWidget *firstField() const;

signals:
    // The user changed one of the five information fields; `value` is its new text.
    void styleValueEdited(StyleField field, const QString &value);
    // The user changed the update comment.
    void updateCommentEdited(const QString &comment);

private:
    QGroupBox *grpBlockset;
    QLineEdit *fldVersion;
    QLineEdit *fldBlocksetName;
    QLineEdit *fldSynopsis;
    QLineEdit *fldAuthor;
    QLineEdit *fldCopyright;
    QGroupBox *grpUpdate;
    QLabel *lblUpdate;
    QLabel *lblUpdateComment;
    QPlainTextEdit *fldUpdate;
    void buildLayout();

    // Set while values are being shown, so that no edit is reported.
    bool m_showing = false;
};
