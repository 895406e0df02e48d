// Main_Sub: the program's entry. It decides which window the user sees first.

#include "app/ui/MainSub.h"
#include "app/ui/frmMain.h"
#include "cache/CacheLocation.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QStringList>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// With CUBRIX_SCREENSHOT set (scripts/run under Xvfb), the window is grabbed to
// that PNG once it is shown and any command-line file has been opened, and the
// program ends. A file whose opening stops at a message box is grabbed after a
// while all the same, so the run never hangs.
void scheduleScreenshot(QApplication &app, frmMain &window, const QString &path, int delayMs)
{
    QTimer::singleShot(delayMs, &app, [&app, &window, path] {
        static bool taken = false;
        if (taken)
            return;
        taken = true;
        window.grab().save(path, "PNG");
        app.quit();
    });
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"Cubrix"_s);
    QApplication::setOrganizationName(u"Quillmoor"_s);
    QApplication::setApplicationVersion(QString::number(CUBRIX_VERSION_MAJOR) + u'.'
                                        + QString::number(CUBRIX_VERSION_MINOR) + u' '
                                        + QStringLiteral(CUBRIX_RELEASE_COMMENT));

    const StartChoice start = chooseStart(app.arguments().mid(1), QDir::currentPath(), [] {
        RoverMachine machine;
        return !machine.cacheFolderIE().isEmpty() || !machine.cacheFolderNetscape().isEmpty();
    });

    frmMain window;
    if (start.cacheManager) {
        // Only the manager is shown; the editor appears when the manager asks for it.
        QApplication::setWindowIcon(window.windowIcon());
        window.showCacheManager();
        return app.exec();
    }
    QApplication::setWindowIcon(window.windowIcon()); // the dialogs carry it too
    window.show();

    const QString screenshot = qEnvironmentVariable("CUBRIX_SCREENSHOT");
    // A blockset named on the command line is opened once the window is shown.
    const QString file = start.file;
    QTimer::singleShot(0, &window, [&app, &window, file, screenshot] {
        if (!file.isEmpty())
            window.openBlocksetFile(file);
        if (!screenshot.isEmpty())
            scheduleScreenshot(app, window, screenshot, 500);
    });
    if (!screenshot.isEmpty())
        scheduleScreenshot(app, window, screenshot, 20000);

    return app.exec();
}
