#pragma once

// Shared set-up of the main-window tests: a private Temp root and settings hive,
// a main window driven through scripted prompts, real .bset archives built with
// the project's own archive and style writer, and MainWindowTest, the base of
// the test classes, which gives every test function a fresh fixture and fails
// it on any prompt it did not expect. A test file that derives from
// MainWindowTest ends with #include "moc_MainWindowFixture.cpp".

#include "app/BlocksetDocument.h"
#include "app/ui/frmMain.h"
#include "common/RegistryWrapper.h"
#include "formats/Parser_Style.h"
#include "storage/WorkingFolder.h"
#include "support/BlocksetFiles.h"
#include "support/ScriptedPrompts.h"
#include "symbols/SymbolScheme.h"

#include <QAction>
#include <QBuffer>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QMap>
#include <QMimeData>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QUrl>

#include <memory>

// What makeBlockset packs; written with designated initializers, {.name = "Tower", .blocks = 2}.
struct BlocksetRecipe {
    QString name = "Sample";
    int blocks = 0, textures = 0, sounds = 0; // texture<i>.jpg is 16+i x 8 pixels
    QString version = "1.0";
    QMap<StyleField, QString> values = {}; // further values of the style file
};

class MainWindowFixture {
public:
    MainWindowFixture()
    {
        // The working folder lies below $Temp: keep it inside this test's folder.
        QDir().mkpath(dir.filePath("temp"));
        qputenv("Temp", dir.filePath("temp").toLocal8Bit());
    }

    // A fresh main window on the scripted prompts and the private settings hive.
    frmMain &open()
    {
        frmMain::Options options;
        options.prompts = &prompts;
        options.symbolPrompt = &prompts;
        options.registryPath = dir.filePath("registry.reg");
        window = std::make_unique<frmMain>(options);
        return *window;
    }

    // Builds <dir>/<name>.bset. Block i has the i-th symbol and "." before it as double.
    QString makeBlockset(const BlocksetRecipe &recipe)
    {
        FileMap files;
        QList<BlockRow> rows;
        for (int i = 0; i < recipe.blocks; ++i) {
            BlockRow row;
            row.file = QString("block%1.block").arg(i, 3, 10, QLatin1Char('0'));
            row.name = QString("Block %1").arg(i);
            row.symbol = symbolAlphabet().mid(i % blockLimit(), 1);
            row.doubleSymbol = '.' + row.symbol;
            files.insert("blocks/" + row.file,
                         "<BLOCK NAME=\"" + row.name.toLatin1()
                             + "\" TYPE=\"structural\">\r\n<VERTICES>\r\n</VERTICES>\r\n</BLOCK>\r\n");
            rows.append(row);
        }
        for (int i = 0; i < recipe.textures; ++i) {
            QImage image(16 + i, 8, QImage::Format_RGB32);
            image.fill(Qt::darkCyan);
            QBuffer jpeg(&files[QString("textures/texture%1.jpg").arg(i)]);
            image.save(&jpeg, "JPG");
        }
        for (int i = 0; i < recipe.sounds; ++i)
            files.insert(QString("sounds/sound%1.wav").arg(i), QByteArray(44 + i, '\0'));
        StyleValues style;
        style.name = recipe.name;
        style.version = recipe.version;
        for (auto it = recipe.values.cbegin(); it != recipe.values.cend(); ++it)
            styleValue(style, it.key()) = it.value();
        files.insert(recipe.name + ".style", writeStyle(style, rows));

        const QString path = dir.filePath(recipe.name + ".bset");
        if (!writeBset(path, files))
            qWarning("could not pack %s", qPrintable(path));
        return path;
    }

    // Opens a blockset as the command line does; true when it opened.
    bool openBlockset(const BlocksetRecipe &recipe)
    {
        window->openBlocksetFile(makeBlockset(recipe));
        return document().blocksetOpen();
    }
    bool show()
    {
        window->show();
        return QTest::qWaitForWindowExposed(window.get());
    }

    // Drags files over the window and drops them there; false when the window
    // refused the drag (the drop is then not made).
    bool drop(const QStringList &paths)
    {
        QMimeData mime;
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls.append(QUrl::fromLocalFile(path));
        mime.setUrls(urls);
        QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window.get(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window.get(), &dropped);
        return true;
    }

    BlocksetDocument &document() const { return window->document(); }
    QString caption() const { return window->windowTitle(); }
    QTabWidget *tabs() const { return window->findChild<QTabWidget *>("SSTab1"); }
    QAction *action(const QString &name) const { return window->findChild<QAction *>(name); }
    bool enabled(const QString &name) const { return action(name) && action(name)->isEnabled(); }
    QTreeWidget *list(const QString &name) const { return window->findChild<QTreeWidget *>(name); }
    int rows(const QString &name) const { return list(name) ? list(name)->topLevelItemCount() : -1; }
    QString panel(const QString &name) const
    {
        const QLabel *label = window->findChild<QLabel *>(name);
        return label ? label->text() : "<missing " + name + ">";
    }

    // A control by object name; "rgbSky/txtR" names a part of a value control.
    QWidget *control(const QString &path) const
    {
        QWidget *found = window.get();
        for (const QString &name : path.split('/'))
            found = found ? found->findChild<QWidget *>(name) : nullptr;
        return found;
    }

    // The value a control shows, in the style file's form for the value controls.
    QString shownText(const QString &path) const
    {
        QWidget *widget = control(path);
        for (const char *property : {"RGB", "Percentage", "Position", "text", "currentText", "plainText"})
            if (widget && widget->property(property).isValid())
                return widget->property(property).toString();
        return "<no text control " + path + ">";
    }

    // Shows the tab that holds the control at `path` and types `keys` into it as
    // the user would: "\b" is Backspace, "\n" Return, and a character outside
    // Latin-1 ("€") comes as a key press carrying just that text.
    QWidget *typeInto(const QString &path, const QString &keys)
    {
        QWidget *field = control(path);
        if (!field)
            return nullptr;
        for (int i = 0; i < tabs()->count(); ++i)
            if (tabs()->widget(i)->isAncestorOf(field))
                tabs()->setCurrentIndex(i);
        field->setFocus();
        for (const QChar key : keys) {
            if (key == '\b' || key == '\n')
                QTest::keyClick(field, key == '\b' ? Qt::Key_Backspace : Qt::Key_Return);
            else if (key.unicode() > 0xff)
                QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, QString(key), Qt::NoModifier);
            else
                QTest::keyClicks(field, QString(key));
        }
        return field;
    }

    // A shown message in one line, to compare with message(...).
    static QString message(const QString &text, const QString &title, PromptButtons buttons, PromptIcon icon)
    {
        return QString("%1 | %2 | buttons %3 | icon %4").arg(text, title).arg(int(buttons)).arg(int(icon));
    }
    QString message(int index) const
    {
        const ScriptedPrompts::Message m = prompts.messages.value(index, {"<no such message>", {}, {}, {}});
        return message(m.text, m.title, m.buttons, m.icon);
    }

    // The text of one file inside an archive.
    static QString fileIn(const QString &archivePath, const QString &name)
    {
        return QString::fromLatin1(readBset(archivePath).value(name, "<not in " + archivePath.toLatin1() + ">"));
    }

    QTemporaryDir dir;
    ScriptedPrompts prompts;
    std::unique_ptr<frmMain> window;
};

class MainWindowTest : public QObject {
    Q_OBJECT

protected:
    std::unique_ptr<MainWindowFixture> fixture;

private slots:
    void init()
    {
        fixture = std::make_unique<MainWindowFixture>();
        fixture->open();
    }
    void cleanup()
    {
        QVERIFY2(fixture->prompts.unexpected.isEmpty(), qPrintable(fixture->prompts.unexpected.join("; ")));
        fixture.reset();
    }
};
