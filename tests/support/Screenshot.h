#pragma once

#include <QDir>
#include <QWidget>

// Saves a picture of `widget` as <name>.png into the folder $CUBRIX_SCREENSHOTS
// names, for a look by eye; does nothing when it is unset. False when the
// picture could not be saved.
inline bool saveScreenshot(QWidget &widget, QString name)
{
    const QString folder = qEnvironmentVariable("CUBRIX_SCREENSHOTS");
    return folder.isEmpty()
           || (QDir().mkpath(folder)
               && widget.grab().save(folder + u'/' + name.replace(u' ', u'-') + QStringLiteral(".png")));
}
