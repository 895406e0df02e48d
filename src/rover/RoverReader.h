#pragma once

#include "rover/RoverFinding.h"
#include "rover/RoverValues.h"

#include <QByteArray>
#include <QList>

// The strict tag reader Rover reads styles and its cache index with: quoted
// values close on their own line, every attribute is name="value", comments
// may span lines. Its first error stops reading (Rover rejects the file);
// a caller that wants to know what follows the error can resume.
// Offsets count bytes of the text as given to the constructor.
class RoverReader {
public:
    struct Attribute {
        QByteArray name;         // lower case
        QByteArray value;        // trimmed of blanks
        qsizetype valueFrom = 0; // the text between the quotes, untrimmed
        qsizetype valueTo = 0;
    };
    struct Tag {
        QByteArray name;          // lower case
        bool end = false;         // </name>
        bool selfClosing = false; // .../>
        int line = 0;
        QList<Attribute> attributes;
        qsizetype from = 0; // its "<" (after an error: where the broken part starts)
        qsizetype to = 0;   // just after its ">"
    };

    explicit RoverReader(QByteArrayView bytes);

    // The next tag; false at the end of the text or on the first error.
    bool next(Tag &tag);
    // Skips an unexpected tag's whole content up to its own end tag.
    bool skipContent(const Tag &tag);
    bool failed() const { return m_failed; }
    // After an error: goes on at the next "<" past the broken part, as a reader
    // that drops that part would. False when no tag follows.
    bool resume();
    int line() const { return m_line; }
    // Where reading stands.
    qsizetype offset() const { return sourceOffset(m_pos); }
    RoverFindings &findings() { return m_findings; }

    void error(int line, const QString &text);
    void warning(int line, const QString &text);

    struct Rule {
        const char *name;
        RoverType type;
        bool required;
    };
    // Checks a tag's attributes against the ones Rover reads; returns the
    // accepted values in rule order (empty where absent or refused).
    QList<QByteArray> attributes(const Tag &tag, const QList<Rule> &rules);

private:
    bool fail(const QString &text);
    // The quoted text at m_pos; `out` takes it trimmed, `from` and `to` where it lies.
    bool readString(char quote, QByteArray *out, qsizetype *from, qsizetype *to);
    void skipSpace();
    qsizetype sourceOffset(qsizetype pos) const;

    QByteArray m_text;
    // Where each line starts in m_text and in the text given: the two differ by
    // the CR of CR LF and the text a NUL cut off.
    QList<qsizetype> m_lineStarts;
    QList<qsizetype> m_sourceLineStarts;
    mutable qsizetype m_lineHint = 0;
    qsizetype m_pos = 0;
    qsizetype m_pieceStart = 0; // the tag, comment or string being read
    int m_line = 1;
    bool m_failed = false;
    RoverFindings m_findings;
};

// "Unexpected end of file" and friends, shared by the three file kinds.
QString roverText(const char *text);
