#pragma once

#include "rover/RoverFinding.h"
#include "rover/RoverValues.h"

#include <QByteArray>
#include <QList>

// The strict tag reader Rover reads styles and its cache index with: quoted
// values close on their own line, every attribute is name="value", comments
// may span lines. Its first error stops reading (Rover rejects the file).
class RoverReader {
public:
    struct Attribute {
        QByteArray name;  // lower case
        QByteArray value; // trimmed of blanks
    };
    struct Tag {
        QByteArray name;          // lower case
        bool end = false;         // </name>
        bool selfClosing = false; // .../>
        int line = 0;
        QList<Attribute> attributes;
    };

    explicit RoverReader(QByteArrayView bytes);

    // The next tag; false at the end of the text or on the first error.
    bool next(Tag &tag);
    // Skips an unexpected tag's whole content up to its own end tag.
    bool skipContent(const Tag &tag);
    bool failed() const { return m_failed; }
    int line() const { return m_line; }
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
    bool readString(char quote, QByteArray *out);
    void skipSpace();

    QByteArray m_text;
    qsizetype m_pos = 0;
    int m_line = 1;
    bool m_failed = false;
    RoverFindings m_findings;
};

// "Unexpected end of file" and friends, shared by the three file kinds.
QString roverText(const char *text);
