#pragma once

#include "rover/RoverFinding.h"

#include <QByteArray>
#include <QByteArrayView>

// The tokens of a block file as Rover's reader takes them, with Rover's own
// messages: tags, their name="value" attributes one at a time, end tags.
// Comments are skipped between any two tokens; text between tags is skipped,
// but a quote in it opens a string that must close on its line. The first
// error stops everything (failed()).
class RoverBlockTokens {
public:
    struct Markup {
        enum Kind { StartTag, EndTag, Text, EndOfFile, Failed };
        Kind kind = Failed;
        QByteArray name;    // lower case
        QByteArray written; // as in the file (Text: the word found)
        int line = 0;
    };
    struct Attribute {
        QByteArray name;  // lower case, `color` read as `colour`, `orient` as `orientation`
        QByteArray value; // trimmed of blanks
        int line = 0;
    };
    enum class Item { Attribute, Open, SelfClose, Failed };

    explicit RoverBlockTokens(QByteArrayView bytes);

    // The next start or end tag. Without textAllowed anything but a tag comes
    // back as Text: the file's first tag must come before any text.
    Markup next(bool textAllowed);
    // The next attribute of the tag being read, or how it closes: Open (`>`) or
    // SelfClose (`/>`).
    Item nextAttribute(Attribute &attribute);
    // Skips what follows an unexpected tag closed with `>`, up to its own end tag.
    bool skipContent(const QByteArray &name);

    bool failed() const { return m_failed; }
    int line() const { return m_line; }
    // The line Rover names for an end of file: the file's last line.
    int lastLine() const;

    void error(int line, const QString &text);
    void warning(int line, const QString &text);
    RoverFindings takeFindings() { return std::move(m_findings); }

private:
    bool fail(const QString &text);
    bool failAtEnd();
    bool atEnd() const { return m_pos >= m_text.size(); }
    bool startsWith(QByteArrayView s) const;
    bool skipSpace(); // blanks, line ends and comments; false on an open comment
    bool skipComment();
    bool readString(QByteArray *value);
    QByteArray readName();
    QByteArray tokenHere() const; // the token at the cursor, for messages
    Markup failedMarkup() const { return Markup{}; }

    QByteArray m_text;
    qsizetype m_pos = 0;
    int m_line = 1;
    bool m_failed = false;
    RoverFindings m_findings;
};
