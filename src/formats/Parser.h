#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QLatin1StringView>
#include <QString>
#include <optional>

// The forgiving angle-bracket tokenizer shared by every reader. It knows comments,
// tags, a tag's first word and name="value" attributes; text between tags is
// dropped. A reader loads a whole file, normalises it once and takes tags off the
// front until none is left. Taking a tag never copies or rescans the rest of the
// buffer, so a whole read is linear in the file's size.
class Parser {
public:
    // Loads a whole file's bytes (Windows-1252) as the buffer.
    void setBuffer(QByteArray bytes);
    void setBufferText(const QString &text);
    void clear();

    // Deletes CR, LF and tab; closes up spaces before and after every "=".
    void normaliseBuffer();

    // Takes the next tag (or comment, reported with an empty text) off the front.
    // False when no complete tag is left; the buffer is then kept as it is.
    bool getNextTag(QString &tag);
    // The same, handing back a view into the buffer that stays valid until the
    // buffer is next changed.
    bool getNextTagView(QByteArrayView &tag);

    // What is left of the buffer.
    QByteArrayView rest() const;
    QString restText() const;
    // Drops everything in front of the first occurrence of `needle` (exact bytes).
    // False, and the buffer unchanged, when `needle` does not occur.
    bool skipTo(QByteArrayView needle);
    // Cuts the buffer just before the first occurrence of `needle`, if any.
    void cutAt(QByteArrayView needle);
    bool isEmpty() const;
    // Where the buffer now starts, and a way back to such a place (never forward).
    qsizetype position() const { return m_front; }
    void rewind(qsizetype position)
    {
        if (position >= 0 && position < m_front)
            m_front = position;
    }

private:
    QByteArray m_buffer;
    qsizetype m_front = 0; // the buffer is m_buffer[m_front..]
};

// The text without blanks (spaces only) at either end.
QString trimSpaces(const QString &text);

// Takes the first word (up to the first space) off `text`, lower-cased.
bool getNextWord(QString &text, QString &word);
// Takes the next name="value" pair off `text`: name lower-cased, value as written.
bool getNextAttribute(QString &text, QString &name, QString &value);

// The same two on views into the buffer, without allocating. The word and the
// name come back as written: compare them with nameEquals (the lower-cased
// name equals an ASCII name exactly when the bytes match it ignoring ASCII
// case) or lower-case them with lowerName.
bool getNextWordView(QByteArrayView &text, QByteArrayView &word);
bool getNextAttributeView(QByteArrayView &text, QByteArrayView &name, QByteArrayView &value);
bool nameEquals(QByteArrayView name, QLatin1StringView lowerName);
QString lowerName(QByteArrayView name);

// Replaces the value of `attributeName` in the first `<tagName` element of `text`.
// Returns the text unchanged when the tag, attribute or quotes are not found, and
// std::nullopt when a position lies beyond 32767 (the operation fails there).
std::optional<QString> setAttributeValue(const QString &text, const QString &tagName, const QString &attributeName,
                                         const QString &newValue);
