// Every toolbar command and the program itself have an icon that draws at a
// high-density size: a missing or unlinked SVG leaves a blank toolbar button.
#include "app/ui/MainWindowIcons.h"

#include <QApplication>
#include <QtTest>

class TestIcons : public QObject {
    Q_OBJECT
private slots:
    void iconsDrawSharp_data()
    {
        QTest::addColumn<QString>("button");
        for (const char *button :
             {"btnNew", "btnOpen", "btnClose", "btnSave", "btnSaveAs", "btnAddItem", "btnRemoveItem", "btnReplaceItem",
              "btnEditItem", "btnPreviewItem", "btnAddBSP", "btnManager", ""})
            QTest::newRow(*button ? button : "program") << QString::fromLatin1(button);
    }
    void iconsDrawSharp()
    {
        QFETCH(QString, button);
        const QIcon icon = button.isEmpty() ? programIcon() : commandIcon(button);
        // A missing or unreadable SVG gives no picture, a bitmap icon one of its own smaller size.
        QCOMPARE(icon.pixmap(QSize(64, 64)).size(), QSize(64, 64));
    }
};

QTEST_MAIN(TestIcons)
#include "test_icons.moc"
