#pragma once

// Shared set-up of the blockset document tests: settings in a hive file, a
// working folder under a temporary root, scripted prompts, a view that records
// what the document shows, and fixture archives written with the project's
// own Archive class.

#include "app/BlocksetDocument.h"
#include "app/DocumentView.h"
#include "app/InterfaceState.h"
#include "common/HiveRegistry.h"
#include "common/RegistryWrapper.h"
#include "storage/Cp1252.h"
#include "storage/WorkingFolder.h"
#include "support/BlocksetFiles.h"
#include "support/ScriptedPrompts.h"

#include <QtTest>

Q_DECLARE_METATYPE(PromptAnswer)

// Records what the document shows while a command runs.
class RecordingView : public DocumentView {
public:
    void processShown(const QString &text) override { processTexts.append(text); }
    void setBusy(bool busy) override { busyCalls.append(busy); }
    void checkInterface() override { ++checkInterfaceCalls; }
    void clear() { *this = RecordingView(); }

    QStringList processTexts;
    QList<bool> busyCalls;
    int checkInterfaceCalls = 0;
};

inline QString makeFolder(const QString &path)
{
    QDir().mkpath(path);
    return path;
}

// One editor's worth of document: settings with their defaults, a working
// folder below a private temporary root, scripted prompts and a recording view.
struct DocumentEnv {
    QTemporaryDir dir;
    HiveRegistry registry{dir.filePath(QStringLiteral("registry.reg"))};
    RegistryWrapper settings{registry};
    WorkingFolder folder{makeFolder(dir.filePath(QStringLiteral("temp")))};
    ScriptedPrompts prompts;
    RecordingView view;
    BlocksetDocument document{prompts, prompts, settings, folder};
    QString sets = makeFolder(dir.filePath(QStringLiteral("sets")));

    DocumentEnv()
    {
        settings.loadSettings();
        (void)folder.createWorkingFolders();
        document.setView(&view);
    }

    QString setPath(const QString &fileName) const { return sets + QLatin1Char('/') + fileName; }
    // Writes an archive into (a folder below) the blocksets folder and returns its path.
    QString addSet(const QString &fileName, const FileMap &files) const
    {
        const QString path = setPath(fileName);
        makeFolder(QFileInfo(path).path());
        if (!writeBset(path, files))
            qWarning("could not write fixture archive %s", qPrintable(path));
        return path;
    }
    QString working(const QString &relative) const { return folder.workingFolder() + QLatin1Char('/') + relative; }
    // Opens `path` as a file handed in by a caller (no dialog).
    void open(const QString &path) { (void)document.openBlockset(path); }
    void setOption(const char *name, bool on) { settings.setBoolSetting(QString::fromLatin1(name), on); }
    QString pathSetting() { return settings.getStringSetting(QStringLiteral("pathBlockset")); }
};

// Checks message `index` of what the prompts recorded.
inline void verifyMessage(const ScriptedPrompts &prompts, int index, const QString &text, const QString &title,
                          PromptButtons buttons, PromptIcon icon)
{
    QVERIFY2(prompts.unexpected.isEmpty(), qPrintable(prompts.unexpected.join(QLatin1Char('\n'))));
    QVERIFY2(prompts.messages.size() > index, qPrintable(prompts.messageTexts().join(QLatin1Char('\n'))));
    const ScriptedPrompts::Message &m = prompts.messages[index];
    QCOMPARE(m.text, text);
    QCOMPARE(m.title, title);
    QCOMPARE(m.buttons, buttons);
    QCOMPARE(m.icon, icon);
}
