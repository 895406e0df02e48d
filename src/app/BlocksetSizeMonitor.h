#pragma once

#include "app/BlocksetSize.h"
#include "items/ItemKind.h"
#include "items/MediaVerdict.h"
#include "storage/PackedEntry.h"
#include "storage/PlatformFile.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <QTimer>

class BlocksetDocument;

// Keeps the size of the open blockset as its next save will write it, and
// Rover's verdict on each texture and sound, current after every change
// without holding up the window: a file whose packed form is not known yet
// (a new or replaced item) is read and packed on a worker thread exactly as
// the save packs it, and the save then writes those bytes. Until a worker is
// done, the file's own size stands in for its packed size.
class BlocksetSizeMonitor : public QObject {
    Q_OBJECT

public:
    explicit BlocksetSizeMonitor(BlocksetDocument &document, QObject *parent = nullptr);
    ~BlocksetSizeMonitor() override;

    const SavedSize &size() const { return m_size; }
    // The packed bytes of a list's file, -1 while unknown.
    qint64 packedSize(ItemKind kind, const QString &file) const;
    // Rover's verdict on a list's file (usable while unknown).
    MediaVerdict verdict(ItemKind kind, const QString &file) const;

    // Works the size out now (it follows the document's changes by itself).
    void refresh();
    // Waits for the workers, takes in what they found and works the size out:
    // for a caller that needs the final figures at once.
    void settle();

signals:
    void sizeChanged();

private:
    struct Work {
        QString path;
        PlatformFile::FileStamp stamp;
        bool pack = false;
        bool judge = false;
    };
    struct Done {
        Work work;
        PackedEntry entry;
        MediaVerdict verdict;
    };
    struct Judged {
        PlatformFile::FileStamp stamp;
        MediaVerdict verdict;
    };
    void start(const Work &work);
    void collect(const Done &done);
    static QString pathOf(ItemKind kind, const QString &file);

    BlocksetDocument &m_document;
    QThreadPool m_pool;
    QTimer m_refreshLater;
    SavedSize m_size;
    QHash<QString, qint64> m_packed; // path -> packed bytes, as last worked out
    QHash<QString, Judged> m_verdicts;
    QSet<QString> m_running; // paths a worker reads now
};
