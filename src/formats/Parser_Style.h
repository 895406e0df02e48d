#pragma once

#include "formats/BlocksetModel.h"

#include <QByteArray>
#include <QList>

class Parser;

struct StyleReadResult {
    bool strictPrefixConsistent = true;
    bool syncDoubleConsistent = true;
    QString commonPrefix;
};

// Reads the whole style from the parser's buffer into `style` and the matching
// block rows. The result says whether the block symbols agree on strict prefix
// and double symbols; the caller derives the symbol settings from it.
StyleReadResult readStyle(Parser &parser, StyleValues &style, QList<BlockRow> &rows);

struct StyleHeader {
    QString version;
    QString name;
    QString synopsis;
    QString author;
    QString copyright;
};
// Reads only the style element's five attributes.
StyleHeader readStyleHeader(Parser &parser);

// The style file's bytes (Windows-1252, CR LF) as written on save.
QByteArray writeStyle(const StyleValues &style, const QList<BlockRow> &rows);
