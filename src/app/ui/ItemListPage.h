#pragma once

#include <QHash>
#include <QList>
#include <QPoint>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

class QIcon;
class QLabel;
class QScrollArea;
class QTreeWidget;
class QTreeWidgetItem;

// One item tab of the editor: a report-style list of blocks, textures or sounds
// (object names BlockList, TextureList, SoundList) and, for textures, the preview
// beside it. It shows the rows it is given, rewriting the list only when they
// changed so that a refresh keeps the selection, and tells which rows the user
// selected and which label the user edited.
class ItemListPage : public QWidget {
    Q_OBJECT

public:
    enum class Preview { None, Picture };

    ItemListPage(const QString &listName, const QStringList &columns, const QList<int> &widths,
                 Preview preview = Preview::None, QWidget *parent = nullptr);

    QTreeWidget *list() const { return m_list; }

    // Shows `rows` (the last cell of a row is its size, aligned right); rows equal
    // to the ones shown leave the list alone. The scroll position, the selection
    // and the current row stay where they were (clamped to the new rows); a list
    // that was empty gets its first row selected. Rows are given
    // in the document's order; a click on a column header sorts the list by
    // that column (again: the other way), and rows keep their document number.
    void showRows(const QList<QStringList> &rows);
    // Sorts the list by `column` (the header shows it), as a click on the header does.
    void sortBy(int column, Qt::SortOrder order);
    // Adds a column after the others; returns its number.
    int addColumn(const QString &title, int width);
    // The cells of a column the document's rows do not hold (the packed size),
    // in the document's order, aligned right; kept across showRows.
    void setColumnCells(int column, const QStringList &cells);
    // A warning mark on each row with a text (its tooltip); "" for none.
    void setRowWarnings(const QStringList &warnings);
    // Rewrites the list at the next showRows, e.g. after a refused label edit.
    void forgetShownRows()
    {
        m_shownRows.clear();
        m_shownValid = false;
    }

    // The selected rows in ascending order, the current row (-1: none) and the
    // file name of the current row, else of the first selected one.
    QList<int> selectedRows() const;
    int currentRow() const;
    QString selectedFile() const;
    // Makes `row` current and selects only it (nothing when out of range).
    void selectRow(int row);
    // Selects `rows` (the first becomes current) and scrolls it into view.
    void selectRows(const QList<int> &rows);

    // Lets the user edit file names (F2, or a click on the row that is already the
    // only selected one, unless a double-click follows); off at first.
    void setLabelsEditable(bool editable);
    // Starts editing the file name of the current row.
    void editCurrentLabel();

    // Rows dragged out of the list carry their files, found in the folder `folder` names.
    void setDragFolder(std::function<QString()> folder) { m_dragFolder = std::move(folder); }

    // Puts `panel` beside the list, the two in a splitter.
    void setSidePanel(QWidget *panel);
    // The icon before the file name of `row`, with a tool tip ("" for none).
    void setIcon(int row, const QIcon &icon, const QString &toolTip = QString());

    // The texture preview: shows the picture at `path` under the name `file`, or
    // "Cannot show this picture: REASON" when it cannot be decoded.
    bool showPicture(const QString &path, const QString &file);
    void clearPreview();

signals:
    // The user finished editing the file name of `row`, from `oldText` to `newText`.
    void labelEdited(int row, const QString &oldText, const QString &newText);
    // The list was written again (rows, icons and selection are new).
    void rowsShown();
    // Enter or a double-click on a row.
    void openRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void itemChanged(QTreeWidgetItem *item, int column);
    void fillRows(const QList<QStringList> &rows);
    void dragSelectedFiles();
    void applyExtras();
    void sortByColumn(int column);
    int rowOf(const QTreeWidgetItem *item) const;
    QTreeWidgetItem *itemOfRow(int row) const;

    QTreeWidget *m_list = nullptr;
    QLabel *m_picture = nullptr;
    QScrollArea *m_pictureArea = nullptr;
    QLabel *m_pictureName = nullptr;
    QLabel *m_pictureSize = nullptr;
    QList<QStringList> m_shownRows;
    bool m_shownValid = false;
    bool m_filling = false;
    bool m_editable = false;
    bool m_clickMayRename = false; // the press landed on the only selected row
    QTimer m_renameTimer;          // a click's rename waits for a double-click that cancels it
    std::function<QString()> m_dragFolder;
    QPoint m_pressPos; // where a press on a selected row began, for a drag out; null when none
    QHash<int, QStringList> m_columnCells;
    QStringList m_warnings;
    bool m_showsWarnings = false; // a list with pictures of its own keeps their icons
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};
