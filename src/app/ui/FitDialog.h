#pragma once

#include "shrink/FitPlan.h"

#include <QDialog>
#include <QTemporaryDir>

#include <functional>

class QLabel;
class QPushButton;
class QSoundEffect;
class QTreeWidget;

// Tools ▸ Fit Blockset: the lossy steps Fit proposes, each with the bytes it
// saves and switchable, with the size they give; a step's picture before and
// after it, or its sound to play. Nothing changes unless the author presses OK.
class FitDialog : public QDialog {
    Q_OBJECT

public:
    // `itemBytes` gives an item's bytes before its first step.
    FitDialog(FitPlan &plan, std::function<QByteArray(const QString &)> itemBytes, QWidget *parent = nullptr);

private:
    void fill();
    void stepChanged(int index, bool chosen);
    void showPreview();
    QByteArray before(const FitStep &step) const;
    void play(const QByteArray &bytes);

    FitPlan &m_plan;
    std::function<QByteArray(const QString &)> m_itemBytes;
    QTreeWidget *m_steps = nullptr;
    QLabel *m_size = nullptr;
    QLabel *m_before = nullptr;
    QLabel *m_after = nullptr;
    QPushButton *m_playBefore = nullptr;
    QPushButton *m_playAfter = nullptr;
    QSoundEffect *m_sound = nullptr;
    QTemporaryDir m_soundFolder;
    int m_soundCount = 0;
    bool m_filling = false;
};
