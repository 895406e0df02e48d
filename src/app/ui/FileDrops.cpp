#include "app/ui/FileDrops.h"

#include "app/DroppedFiles.h"

#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <algorithm>

FileDrops::FileDrops(QWidget *target, std::function<void(const QStringList &)> dropped)
    : QObject(target),
      m_dropped(std::move(dropped))
{
    target->setAcceptDrops(true);
    target->installEventFilter(this);
}

QStringList FileDrops::localPaths(const QMimeData *mime)
{
    QStringList paths;
    if (!mime || !mime->hasUrls())
        return paths;
    for (const QUrl &url : mime->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

bool FileDrops::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDragMoveEvent *>(event);
        const QStringList paths = localPaths(drag->mimeData());
        if (std::any_of(paths.cbegin(), paths.cend(), [](const QString &path) { return isDroppableFile(path); }))
            drag->acceptProposedAction();
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const QStringList paths = localPaths(drop->mimeData());
        if (!paths.isEmpty()) {
            drop->acceptProposedAction();
            m_dropped(paths);
        }
        return true;
    }
    default: return QObject::eventFilter(watched, event);
    }
}
