#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QMimeData;
class QWidget;

// Files dragged onto the editor window: accepts a drag that carries at least one
// file the editor takes (see isDroppableFile), and hands the local paths of a
// drop to `dropped`.
class FileDrops : public QObject {
    Q_OBJECT

public:
    FileDrops(QWidget *target, std::function<void(const QStringList &)> dropped);

    static QStringList localPaths(const QMimeData *mime);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void(const QStringList &)> m_dropped;
};
