#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

// Where the tags that a BSP tree changes stand in a structural block file, as
// byte offsets into the file. The file is walked the way Rover's block reader
// walks it (comments, quoted text between tags, unknown tags skipped with their
// content, only the first VERTICES and PARTS count), so the POLYGON tags found
// are the ones Rover reads, in its order.
struct BlockFileLayout {
    struct Range {
        qsizetype begin = -1;
        qsizetype end = -1; // just past the tag's '>'
        bool isValid() const { return begin >= 0; }
    };
    QByteArray vertexTagName; // the last VERTEX tag's name as written
    Range lastVertex;         // invalid when the list is empty
    Range verticesEnd;        // the </VERTICES> tag
    QList<Range> polygons;    // every POLYGON tag Rover reads
    QList<QByteArray> polygonTagNames;
    Range partsEnd;     // the </PARTS> tag
    Range bspTree;      // the BSP_TREE tag that counts; invalid when none
    QByteArray lineEnd; // the file's first line end, CR LF when it has none

    // The blanks from the start of the line of `offset` up to it, or nothing
    // when something else stands before it on that line.
    static QByteArray indentOf(QByteArrayView bytes, qsizetype offset);
};

// Nothing when the file is no structural block Rover would read that far.
// Linear in the file.
std::optional<BlockFileLayout> blockFileLayout(QByteArrayView bytes);
