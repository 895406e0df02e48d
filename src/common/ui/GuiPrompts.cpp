#include "common/ui/GuiPrompts.h"

#include "common/FileFilter.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

QMessageBox::Icon boxIcon(PromptIcon icon)
{
    switch (icon) {
    case PromptIcon::None: return QMessageBox::NoIcon;
    case PromptIcon::Critical: return QMessageBox::Critical;
    case PromptIcon::Question: return QMessageBox::Question;
    case PromptIcon::Exclamation: return QMessageBox::Warning;
    case PromptIcon::Information: return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons boxButtons(PromptButtons buttons)
{
    switch (buttons) {
    case PromptButtons::Ok: return QMessageBox::Ok;
    case PromptButtons::YesNo: return QMessageBox::Yes | QMessageBox::No;
    case PromptButtons::YesNoCancel: return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

// What a box closed without a button means: the most careful answer it offers.
PromptAnswer closedAnswer(PromptButtons buttons)
{
    switch (buttons) {
    case PromptButtons::Ok: return PromptAnswer::Ok;
    case PromptButtons::YesNo: return PromptAnswer::No;
    case PromptButtons::YesNoCancel: return PromptAnswer::Cancel;
    }
    return PromptAnswer::Cancel;
}

QStringList nativePaths(const QStringList &paths)
{
    QStringList result;
    for (const QString &path : paths)
        result.append(QDir::toNativeSeparators(path));
    return result;
}

} // namespace

GuiPrompts::GuiPrompts(QWidget *parent) : m_parent(parent) {}

void GuiPrompts::setParentWidget(QWidget *parent)
{
    m_parent = parent;
}

QWidget *GuiPrompts::parentWidget() const
{
    return m_parent;
}

QWidget *GuiPrompts::owner() const
{
    if (m_parent)
        return m_parent;
    return QApplication::activeWindow();
}

PromptAnswer GuiPrompts::message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon)
{
    return message(text, title, QString(), buttons, icon);
}

PromptAnswer GuiPrompts::message(const QString &text, const QString &title, const QString &detail,
                                 PromptButtons buttons, PromptIcon icon)
{
    QMessageBox box(boxIcon(icon), title, text, boxButtons(buttons), owner());
    box.setDetailedText(detail); // plain text always; "" shows no Details button
    // Names in the texts come from files: never read them as markup.
    box.setTextFormat(Qt::PlainText);
    // The first button is the default, as in a Windows message box; Esc answers
    // Cancel, or No where there is no Cancel.
    box.setDefaultButton(buttons == PromptButtons::Ok ? QMessageBox::Ok : QMessageBox::Yes);
    if (buttons == PromptButtons::YesNo)
        box.setEscapeButton(QMessageBox::No);
    else if (buttons == PromptButtons::YesNoCancel)
        box.setEscapeButton(QMessageBox::Cancel);
    box.exec();
    switch (box.standardButton(box.clickedButton())) {
    case QMessageBox::Ok: return PromptAnswer::Ok;
    case QMessageBox::Yes: return PromptAnswer::Yes;
    case QMessageBox::No: return PromptAnswer::No;
    case QMessageBox::Cancel: return PromptAnswer::Cancel;
    default: return closedAnswer(buttons);
    }
}

int GuiPrompts::choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
                       PromptIcon icon)
{
    QMessageBox box(boxIcon(icon), title, text, QMessageBox::NoButton, owner());
    box.setDetailedText(detail);
    box.setTextFormat(Qt::PlainText);
    QList<QAbstractButton *> choices;
    for (const QString &caption : buttons)
        choices.append(box.addButton(caption, QMessageBox::AcceptRole));
    box.setEscapeButton(box.addButton(QMessageBox::Cancel));
    if (!choices.isEmpty())
        box.setDefaultButton(qobject_cast<QPushButton *>(choices.first()));
    box.exec();
    return int(choices.indexOf(box.clickedButton()));
}

void GuiPrompts::prepareFileDialog(QFileDialog &dialog, const QString &title, const QString &filter,
                                   const QString &folder)
{
    dialog.setWindowTitle(title.isEmpty() ? u"Open File"_s : title);
    QList<FileFilterEntry> entries = FileFilter::parse(filter);
    if (entries.isEmpty())
        entries = FileFilter::parse(u"All files (*.*),*.*"_s);
    // The labels are shown as written; see FileFilter::qtNameFilters.
    dialog.setOption(QFileDialog::HideNameFilterDetails, true);
    const QStringList nameFilters = FileFilter::qtNameFilters(entries);
    dialog.setNameFilters(nameFilters);
    dialog.selectNameFilter(nameFilters.first());
    dialog.setDirectory(folder.isEmpty() ? QDir::currentPath() : folder);
}

QStringList GuiPrompts::runFileDialog(QFileDialog &dialog)
{
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return nativePaths(dialog.selectedFiles());
}

QString GuiPrompts::openFile(const QString &title, const QString &filter, const QString &folder)
{
    QFileDialog dialog(owner());
    prepareFileDialog(dialog, title, filter, folder);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return runFileDialog(dialog).value(0);
}

QStringList GuiPrompts::openFiles(const QString &title, const QString &filter, const QString &folder)
{
    QFileDialog dialog(owner());
    prepareFileDialog(dialog, title, filter, folder);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    return runFileDialog(dialog);
}

QString GuiPrompts::saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                             const QString &folder)
{
    QFileDialog dialog(owner());
    prepareFileDialog(dialog, title, filter, folder);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    // Asking before an existing file is replaced is the dialog's default; said
    // here because the save commands rely on it.
    dialog.setOption(QFileDialog::DontConfirmOverwrite, false);
    QString suffix = defaultExt;
    while (suffix.startsWith(u'.'))
        suffix.remove(0, 1);
    dialog.setDefaultSuffix(suffix);
    return runFileDialog(dialog).value(0);
}

NewBlocksetChoice GuiPrompts::newBlockset(bool strictPrefixSetting, bool syncDoubleSetting)
{
    if (newBlocksetDialog)
        return newBlocksetDialog(strictPrefixSetting, syncDoubleSetting);
    // Without the dialog: the settings as they are (double symbols are only kept
    // in step under a strict prefix), no name, no version.
    NewBlocksetChoice choice;
    choice.strictPrefix = strictPrefixSetting;
    choice.syncDouble = strictPrefixSetting && syncDoubleSetting;
    return choice;
}
