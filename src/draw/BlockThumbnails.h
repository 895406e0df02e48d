#pragma once

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QThreadPool>

// Small pictures of the blocks of an unpacked blockset (the editor's working
// folder), drawn on other threads and kept. A picture is drawn again when its
// block file or a texture the block names has been added, replaced or removed
// since it was drawn (the files' sizes and times tell). Asking never waits:
// pictureReady brings each picture when it is done.
class BlockThumbnails : public QObject {
    Q_OBJECT

public:
    explicit BlockThumbnails(QSize size = QSize(64, 64), QObject *parent = nullptr);
    ~BlockThumbnails() override; // waits for the drawings that run

    // The blockset's folder; forgets every picture.
    void setFolder(const QString &folder);
    // Starts drawing every picture of these block files (names in blocks/)
    // that is missing or out of date; returns at once.
    void request(const QStringList &blockFiles);
    // The last picture drawn of the block; null when there is none (yet).
    QImage picture(const QString &blockFile) const { return m_pictures.value(blockFile).picture; }
    // Why the block has no picture: Rover's first error in it; "" when it has one.
    QString problem(const QString &blockFile) const { return m_pictures.value(blockFile).problem; }

signals:
    // A picture is done; a null picture with the problem when the block cannot be drawn.
    void pictureReady(const QString &blockFile, const QImage &picture, const QString &problem);

private:
    // Size and time of each file a picture was drawn from, by path; a file that
    // was not there has none.
    using Stamps = QHash<QString, QString>;
    struct Drawn {
        QImage picture;
        QString problem;
        QStringList textureEntries;
        Stamps stamps;
    };
    void start(const QString &blockFile);
    void finished(int generation, const QString &blockFile, const Drawn &drawn);

    QSize m_size;
    QString m_folder;
    int m_generation = 0;
    QHash<QString, Drawn> m_pictures;
    QSet<QString> m_running;
    QSet<QString> m_askedAgain; // asked for while being drawn
    QThreadPool m_pool;
};
