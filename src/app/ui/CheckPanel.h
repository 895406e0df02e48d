#pragma once

#include <QDockWidget>

struct BlocksetCheck;
class QTreeWidget;

// Tools ▸ Check Blockset: every finding of `check` in a panel below the lists
// (severity, file, line, text). A double-click on a finding reports the file
// it names, so the window can select that item.
class CheckPanel : public QDockWidget {
    Q_OBJECT

public:
    explicit CheckPanel(QWidget *parent = nullptr);

    void showCheck(const BlocksetCheck &check);
    void clearFindings();
    QTreeWidget *findings() const { return m_findings; }

signals:
    void fileActivated(const QString &file);

private:
    QTreeWidget *m_findings = nullptr;
};
