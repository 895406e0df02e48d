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
// block rows, then refreshes the symbol settings from the result and the user
// settings strictPrefix / syncDouble.
StyleReadResult readStyle(Parser &parser, StyleValues &style, QList<BlockRow> &rows, SymbolSettings &symbols,
                          bool strictPrefixSetting, bool syncDoubleSetting);

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
