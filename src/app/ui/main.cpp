// Main_Sub: the program's entry. It decides which window the user sees first.

#include "app/BlocksetDocument.h"
#include "app/ui/MainSub.h"
#include "app/ui/frmMain.h"
#include "cache/CacheLocation.h"
#include "cache/RoverCacheGuard.h"
#include "cache/ui/CacheManagerStart.h"
#include "common/ProgramVersion.h"
#include "storage/PlatformFile.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QStringList>
#include <QTimer>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// "cubrix --screenshot FILE [blockset]": the window is grabbed to that PNG once
// it is shown and any command-line blockset has been opened, and the program
// ends (scripts/run uses it where there is no display). A file whose opening stops at a message box is grabbed after a
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

const char kHelp[] = "Usage: cubrix [FILE.bset]\n"
                     "       cubrix /c\n"
                     "       cubrix --screenshot PNG [FILE.bset]\n"
                     "       cubrix --help | --version\n"
                     "\n"
                     "The Cubrix blockset editor for 3DML worlds shown by the Rover browser plug-in.\n"
                     "\n"
                     "  FILE.bset          Opens that blockset once the window is shown.\n"
                     "  /c                 Shows only the Rover cache manager (the editor when Rover\n"
                     "                     is not installed).\n"
                     "  --screenshot PNG   Saves a grab of the main window to PNG once it is shown\n"
                     "                     (and FILE.bset opened), then quits.\n"
                     "  --help             Prints this help.\n"
                     "  --version          Prints the program's version.\n"
                     "\n"
                     "Settings are kept in the hive file named by CUBRIX_REGISTRY, else in\n"
                     "$XDG_CONFIG_HOME/cubrix/registry.reg. cubrix-cli runs the editor's commands\n"
                     "without a window; see cubrix-cli --help and the manual pages cubrix(1) and\n"
                     "cubrix-cli(1).\n";

} // namespace

int main(int argc, char *argv[])
{
    // Answered before any window system is needed, so they work without a display.
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--help" || argument == "-h") {
            std::fputs(kHelp, stdout);
            return 0;
        }
        if (argument == "--version") {
            std::printf("Cubrix %s\n", qPrintable(programVersion()));
            return 0;
        }
    }

    PlatformFile::readTimeZoneOnce();
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"Cubrix"_s);
    QApplication::setOrganizationName(u"Quillmoor"_s);
    QApplication::setApplicationVersion(programVersion());

    QStringList arguments = app.arguments().mid(1);
    QString screenshot;
    if (const qsizetype at = arguments.indexOf(u"--screenshot"_s); at >= 0) {
        if (at + 1 >= arguments.size()) {
            std::fputs("cubrix: --screenshot needs the name of the PNG file to write\n", stderr);
            return 2;
        }
        screenshot = arguments.at(at + 1);
        arguments.remove(at, 2);
    }

    const StartChoice start = chooseStart(arguments, QDir::currentPath(), [] {
        RoverMachine machine;
        return !machine.cacheFolderIE().isEmpty() || !machine.cacheFolderNetscape().isEmpty();
    });

    frmMain window;
    // Blocksets in Rover's cache open read-only, however they are opened.
    window.document().setReadOnlyRule(roverCacheReason);
    connectCacheManager(window);
    if (start.cacheManager) {
        // Only the manager is shown; the editor appears when the manager asks for it.
        QApplication::setWindowIcon(window.windowIcon());
        showCacheManager(window);
        return app.exec();
    }
    QApplication::setWindowIcon(window.windowIcon()); // the dialogs carry it too
    window.show();

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
