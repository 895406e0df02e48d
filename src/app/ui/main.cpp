// Main_Sub: the program's entry. It decides which window the user sees first.

#include "app/ui/MainSub.h"
#include "app/ui/frmMain.h"
#include "common/ProgramVersion.h"

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

} // namespace

int main(int argc, char *argv[])
{
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

    // The cache manager window and the lookup of Rover's plug-in registrations come
    // with the Rover cache work; until then no plug-in folder is known, so "/c"
    // starts the editor, as it does on a machine where Rover is not registered.
    const StartChoice start = chooseStart(arguments, QDir::currentPath(), [] { return false; });

    frmMain window;
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
