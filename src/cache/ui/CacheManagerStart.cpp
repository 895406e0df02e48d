#include "cache/ui/CacheManagerStart.h"

#include "app/ui/frmMain.h"
#include "cache/ui/frmManager.h"

void showCacheManager(frmMain &editor)
{
    auto *manager = new frmManager(editor.settings());
    manager->setAttribute(Qt::WA_DeleteOnClose);
    const auto bringUp = [&editor] {
        editor.show();
        editor.raise();
        editor.activateWindow();
    };
    QObject::connect(manager, &frmManager::editorRequested, &editor, bringUp);
    QObject::connect(manager, &frmManager::openRequested, &editor, [&editor, bringUp](const QString &path) {
        bringUp();
        editor.openBlocksetFile(path);
    });
    QObject::connect(&editor, &QObject::destroyed, manager, &QObject::deleteLater);
    manager->show();
}

void connectCacheManager(frmMain &editor)
{
    QObject::connect(&editor, &frmMain::cacheManagerRequested, &editor, [&editor] { showCacheManager(editor); });
}
