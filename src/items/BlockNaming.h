#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class OperationHost;

// The block name rules of adding and replacing a block file: every block of a
// blockset has a name of letters, digits and underscores that no other block has.

// Every character other than 0-9, A-Z, a-z and "_" becomes "_" (letters with
// accents too); the length stays.
QString checkBlockname(const QString &name);

// `name`, or the first of "1_name", "2_name", ... that no block row other than
// `row` has as its block name.
QString uniqueBlockName(OperationHost &host, int row, const QString &name);

// Gives the block row `row`, whose file text is `text` (Windows-1252 bytes, the
// row's name already read from it), its final name: the file's base name under
// syncBlock, then cleaned and made unique; says so under showWarnings when the
// name had to change. Returns the text to write for the row's file, with the
// block tag's name attribute rewritten when the name changed and every other
// byte as it was, or nullopt when the name could not be written into the text.
std::optional<QByteArray> settleBlockName(OperationHost &host, int row, const QByteArray &text);
