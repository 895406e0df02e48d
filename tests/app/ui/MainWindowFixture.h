#pragma once

// Shared set-up of the main-window tests: a private Temp root and settings hive,
// a main window driven through scripted prompts, and real .bset archives built
// with the project's own archive and style writer.

#include "app/Archive.h"
#include "app/BlocksetDocument.h"
#include "app/WorkingFolder.h"
#include "app/ui/frmMain.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser_Style.h"
#include "formats/ui/usrColor.h"
#include "formats/ui/usrPercentage.h"
#include "formats/ui/usrPosition.h"
#include "support/ScriptedPrompts.h"
#include "symbols/SymbolScheme.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

struct BlocksetRecipe {
    QString name = QStringLiteral("Sample");
    int blocks = 0;
    int textures = 0;
    int sounds = 0;
    bool withStyle = true;
    QString version = QStringLiteral("1.0");
    // Further style values the archive's style file carries (sky colour, orb text, ...).
    QMap<StyleField, QString> values;
};

class MainWindowFixture {
public:
    MainWindowFixture()
    {
        // The working folder lies below $Temp: keep it inside this test's folder.
        qputenv("Temp", QDir(dir.path()).filePath(QStringLiteral("temp")).toLocal8Bit());
        QDir().mkpath(QDir(dir.path()).filePath(QStringLiteral("temp")));
    }

    // A fresh main window on the scripted prompts and the private settings hive.
    frmMain &open()
    {
        frmMain::Options options;
        options.prompts = &prompts;
        options.registryPath = registryPath();
        window = std::make_unique<frmMain>(options);
        return *window;
    }

    QString registryPath() const { return QDir(dir.path()).filePath(QStringLiteral("registry.reg")); }

    // Builds <dir>/<name>.bset with the given numbers of items.
    QString makeBlockset(const BlocksetRecipe &recipe)
    {
        const QString stage = QDir(dir.path()).filePath(QStringLiteral("stage-") + recipe.name);
        QDir(stage).removeRecursively();
        for (const char *sub : {"blocks", "textures", "sounds"})
            QDir().mkpath(stage + QLatin1Char('/') + QLatin1String(sub));

        QList<BlockRow> rows;
        for (int i = 0; i < recipe.blocks; ++i) {
            BlockRow row;
            row.file = QStringLiteral("block%1.block").arg(i, 3, 10, QLatin1Char('0'));
            row.name = QStringLiteral("Block %1").arg(i);
            // Symbols by position, doubles with the common prefix ".": strict prefix holds.
            row.symbol = symbolAlphabet().mid(i % blockLimit(), 1);
            row.doubleSymbol = QLatin1Char('.') + row.symbol;
            writeFile(stage + QStringLiteral("/blocks/") + row.file,
                      QStringLiteral("<BLOCK NAME=\"%1\" TYPE=\"structural\">\r\n<VERTICES>\r\n</VERTICES>\r\n</BLOCK>\r\n")
                          .arg(row.name)
                          .toLatin1());
            rows.append(row);
        }
        for (int i = 0; i < recipe.textures; ++i) {
            QImage image(16 + i, 8, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            image.save(stage + QStringLiteral("/textures/texture%1.jpg").arg(i), "JPG");
        }
        for (int i = 0; i < recipe.sounds; ++i)
            writeFile(stage + QStringLiteral("/sounds/sound%1.wav").arg(i), QByteArray(44 + i, '\0'));
        if (recipe.withStyle) {
            StyleValues style;
            style.name = recipe.name;
            style.version = recipe.version;
            for (auto it = recipe.values.cbegin(); it != recipe.values.cend(); ++it)
                styleValue(style, it.key()) = it.value();
            writeFile(stage + QLatin1Char('/') + recipe.name + QStringLiteral(".style"), writeStyle(style, rows));
        }

        const QString path = QDir(dir.path()).filePath(recipe.name + QStringLiteral(".bset"));
        Archive archive;
        const bool packed = archive.newArchive(path) && archive.addFiles(stage, true) && archive.writeArchive();
        if (!packed)
            qWarning("could not pack %s: %s", qPrintable(path), qPrintable(archive.lastError()));
        archive.newArchive(QString());
        return path;
    }

    // Opens a blockset as the command line does and checks that it opened.
    bool openBlockset(const BlocksetRecipe &recipe)
    {
        window->openBlocksetFile(makeBlockset(recipe));
        return window->document().blocksetOpen();
    }

    QTabWidget *tabs() const { return window->findChild<QTabWidget *>(QStringLiteral("SSTab1")); }

    // A control by object name; "rgbSky/txtR" names a part of a value control.
    QWidget *control(const QString &path) const
    {
        QWidget *found = window.get();
        for (const QString &name : path.split(QLatin1Char('/'))) {
            found = found ? found->findChild<QWidget *>(name) : nullptr;
        }
        return found;
    }

    // The value a control shows, in the style file's form for the value controls.
    QString shownText(const QString &path) const
    {
        QWidget *widget = control(path);
        if (auto *line = qobject_cast<QLineEdit *>(widget))
            return line->text();
        if (auto *box = qobject_cast<QComboBox *>(widget))
            return box->currentText();
        if (auto *color = qobject_cast<usrColor *>(widget))
            return color->rgb();
        if (auto *percentage = qobject_cast<usrPercentage *>(widget))
            return percentage->percentage();
        if (auto *position = qobject_cast<usrPosition *>(widget))
            return position->position();
        if (auto *comment = qobject_cast<QPlainTextEdit *>(widget))
            return comment->toPlainText();
        return QStringLiteral("<no text control %1>").arg(path);
    }

    // Shows `tab` and types `keys` into the control at `path` as the user would.
    QWidget *typeInto(int tab, const QString &path, const QString &keys)
    {
        tabs()->setCurrentIndex(tab);
        QWidget *field = control(path);
        if (!field) {
            qWarning("no control named %s", qPrintable(path));
            return nullptr;
        }
        field->setFocus();
        // "\b" stands for the Backspace key and "\n" for Return; a character
        // outside Latin-1 ("€") comes as a key press carrying just that text.
        QString run;
        const auto flush = [&] {
            QTest::keyClicks(field, run);
            run.clear();
        };
        for (const QChar key : keys) {
            if (key == QLatin1Char('\b') || key == QLatin1Char('\n')) {
                flush();
                QTest::keyClick(field, key == QLatin1Char('\b') ? Qt::Key_Backspace : Qt::Key_Return);
            } else if (key.unicode() > 0xff) {
                flush();
                QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, QString(key), Qt::NoModifier);
            } else {
                run += key;
            }
        }
        flush();
        return field;
    }

    QAction *action(const QString &name) const { return window->findChild<QAction *>(name); }
    bool enabled(const QString &name) const
    {
        QAction *a = action(name);
        return a && a->isEnabled();
    }
    QString panel(const QString &name) const
    {
        const QLabel *label = window->findChild<QLabel *>(name);
        return label ? label->text() : QStringLiteral("<missing %1>").arg(name);
    }

    static void writeFile(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
    }

    static QByteArray readFile(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    ScriptedPrompts prompts;
    std::unique_ptr<frmMain> window;
};
