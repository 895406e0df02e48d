#pragma once

#include "shrink/ShrinkBlockset.h"

#include <QByteArray>
#include <QString>

class BlocksetDocument;

// Shrink on the blockset a document has open, as the window's command and
// cubrix-cli shrink run it.

// The style file the next save of `document` writes: its name and bytes.
QString savedStyleName(const BlocksetDocument &document);
QByteArray savedStyle(const BlocksetDocument &document);

ShrinkPlan planDocumentShrink(BlocksetDocument &document);
// One edit of the document: the plan applied, the rows of rewritten files
// showing their new sizes, the blockset marked changed when anything changed.
Result applyDocumentShrink(BlocksetDocument &document, const ShrinkPlan &plan);
// Sets the size of the list row of every file written below `folder`.
void refreshItemSizes(BlocksetDocument &document, const QStringList &paths);

// The result as lines: one per changed item ("textures/sky.jpg  12,345 -> 9,876  JPEG ..."), then the total.
QString shrinkReportText(const QList<ShrinkItem> &items);
