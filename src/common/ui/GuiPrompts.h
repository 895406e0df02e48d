#pragma once

#include "common/Prompts.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QFileDialog;

// Prompts for the running program: message boxes with QMessageBox, file
// choices with QFileDialog. Every box and dialog is modal to the owner window:
// the one set with setParentWidget, else the application's active window.
class GuiPrompts : public Prompts {
public:
    explicit GuiPrompts(QWidget *parent = nullptr);

    void setParentWidget(QWidget *parent);
    QWidget *parentWidget() const;

    PromptAnswer message(const QString &text, const QString &title, const QString &detail, PromptButtons buttons,
                         PromptIcon icon) override;
    PromptAnswer message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon) override;
    int choose(const QString &text, const QString &title, const QString &detail, const QStringList &buttons,
               PromptIcon icon) override;
    QString openFile(const QString &title, const QString &filter, const QString &folder) override;
    QStringList openFiles(const QString &title, const QString &filter, const QString &folder) override;
    QString saveFile(const QString &title, const QString &filter, const QString &defaultExt,
                     const QString &folder) override;
    // Runs `newBlocksetDialog`; without one, the choice starts from the settings.
    NewBlocksetChoice newBlockset(bool strictPrefixSetting, bool syncDoubleSetting) override;

    // The New Blockset dialog, set by the main window.
    std::function<NewBlocksetChoice(bool strictPrefixSetting, bool syncDoubleSetting)> newBlocksetDialog;

private:
    // Sets up a dialog as the three file prompts do: title, filters with the
    // first one selected, start folder ("" = the current directory).
    static void prepareFileDialog(QFileDialog &dialog, const QString &title, const QString &filter,
                                  const QString &folder);
    QWidget *owner() const;
    QStringList runFileDialog(QFileDialog &dialog);

    QPointer<QWidget> m_parent;
};
