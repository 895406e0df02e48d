#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Rover's cache index "cache.txt" read as Rover reads it: <CACHE>, one
// <BLOCKSET .../> per cached blockset, </CACHE>; Windows-1252 text. Quoted values
// may hold "<" and ">", names ignore case, values are trimmed.
//
// Rover discards the whole index for one error. This reader goes on after a part
// Rover would reject (a broken element, a stray end tag, an unclosed string) at
// the next tag, so that every element Rover accepts is known, and it keeps where
// each part lies in the bytes, so that a change rewrites only what it must.
class CacheIndexFile {
public:
    // One element Rover accepts.
    struct Element {
        qsizetype from = 0; // its bytes in the file
        qsizetype to = 0;
        QString href;
        QString name; // "" when absent
        QString synopsis;
        QString version;           // "" when absent or not a version Rover reads
        qint32 updated = 0;        // seconds since 1/1/1970 local time; 0: download again
        qsizetype updatedFrom = 0; // the text between UPDATED's quotes
        qsizetype updatedTo = 0;
    };
    // A part Rover would reject.
    struct Rejected {
        qsizetype from = 0;
        qsizetype to = 0;
        int line = 0;
        QString reason; // Rover's message
    };

    explicit CacheIndexFile(QByteArray bytes);

    // False when Rover cannot use the file at all (empty, or no <CACHE> first):
    // Rover then builds a new index from the files it finds.
    bool usable() const { return m_problem.isEmpty(); }
    QString problem() const { return m_problem; }
    const QList<Element> &elements() const { return m_elements; }
    const QList<Rejected> &rejected() const { return m_rejected; }
    // Rover would also reject a file that ends before </CACHE>.
    bool endMissing() const { return m_endMissing; }
    const QByteArray &bytes() const { return m_bytes; }

    // The file with the elements at `dropped` (positions in elements()) and every
    // rejected part left out, UPDATED set to 0 in the elements at `forced`, and
    // </CACHE> added when it was missing; every other byte as it was.
    QByteArray rewritten(const QList<int> &dropped, const QList<int> &forced) const;

private:
    void read();

    QByteArray m_bytes;
    QString m_problem;
    QList<Element> m_elements;
    QList<Rejected> m_rejected;
    bool m_endMissing = false;
};
