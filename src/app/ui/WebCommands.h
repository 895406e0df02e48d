#pragma once

#include <QHash>
#include <QObject>

class BlocksetDocument;
class BlocksetSizeMonitor;
class CheckPanel;
class DocumentPresenter;
class QAction;
class QMainWindow;
class SizePanel;

// What the editor window shows and does about the blockset Rover takes from
// the web: the saved size in the status bar (stbSize), the lists' Packed
// column and the mark on textures and sounds Rover cannot use, View ▸
// Blockset Size, Tools ▸ Shrink Blockset, Tools ▸ Fit Blockset for the Web and
// Tools ▸ Check Blockset with its panel below the lists (refreshed after each
// save).
class WebCommands : public QObject {
    Q_OBJECT

public:
    WebCommands(BlocksetDocument &document, DocumentPresenter &presenter, const QHash<QString, QAction *> &actions,
                QMainWindow *window);

    BlocksetSizeMonitor &monitor() { return *m_monitor; }
    CheckPanel *checkPanel() const { return m_checkPanel; }

    void showSize();
    void shrink();
    void fit();
    void check();

private:
    void showPackedColumns();
    void enableCommands();
    void documentStateChanged();
    void selectFile(const QString &file);
    void runCheck();

    BlocksetDocument &m_document;
    DocumentPresenter &m_presenter;
    QMainWindow *m_window;
    BlocksetSizeMonitor *m_monitor = nullptr;
    SizePanel *m_sizePanel = nullptr;
    CheckPanel *m_checkPanel = nullptr;
    QHash<QString, QAction *> m_actions;
    int m_packedColumn[3] = {-1, -1, -1};
};
