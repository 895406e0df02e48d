#pragma once

#include <QByteArray>
#include <QRegularExpression>
#include <QString>

// Rover's standard cube: eight corners, one polygon per face, each face its own
// part, seen from outside with its vertices clockwise. The BSP tree chains the
// faces through their rear sides: the whole cube lies behind each face.
inline const QByteArray fullBlock =
    "<BLOCK NAME=\"full\" TYPE=\"structural\">\r\n"
    "<VERTICES>\r\n"
    "<VERTEX REF=\"1\" COORDS=\"(0,256,0)\"/>\r\n"
    "<VERTEX REF=\"2\" COORDS=\"(0,256,256)\"/>\r\n"
    "<VERTEX REF=\"3\" COORDS=\"(256,256,256)\"/>\r\n"
    "<VERTEX REF=\"4\" COORDS=\"(256,256,0)\"/>\r\n"
    "<VERTEX REF=\"5\" COORDS=\"(0,0,0)\"/>\r\n"
    "<VERTEX REF=\"6\" COORDS=\"(0,0,256)\"/>\r\n"
    "<VERTEX REF=\"7\" COORDS=\"(256,0,256)\"/>\r\n"
    "<VERTEX REF=\"8\" COORDS=\"(256,0,0)\"/>\r\n"
    "</VERTICES>\r\n"
    "<PARTS>\r\n"
    "<PART NAME=\"top\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"1\" VERTICES=\"1,2,3,4\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\" "
    "REAR=\"2\"/>\r\n"
    "</PART>\r\n"
    "<PART NAME=\"bottom\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"2\" VERTICES=\"5,8,7,6\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\" "
    "REAR=\"3\"/>\r\n"
    "</PART>\r\n"
    "<PART NAME=\"north\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"3\" VERTICES=\"2,6,7,3\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\" "
    "REAR=\"4\"/>\r\n"
    "</PART>\r\n"
    "<PART NAME=\"south\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"4\" VERTICES=\"4,8,5,1\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\" "
    "REAR=\"5\"/>\r\n"
    "</PART>\r\n"
    "<PART NAME=\"east\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"5\" VERTICES=\"3,7,8,4\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\" "
    "REAR=\"6\"/>\r\n"
    "</PART>\r\n"
    "<PART NAME=\"west\" TEXTURE=\"cement.gif\">\r\n"
    "<POLYGON REF=\"6\" VERTICES=\"1,5,6,2\" TEXCOORDS=\"(0,0),(0,1),(1,1),(1,0)\"/>\r\n"
    "</PART>\r\n"
    "</PARTS>\r\n"
    "<BSP_TREE ROOT=\"1\"/>\r\n"
    "</BLOCK>\r\n";

inline const QByteArray spriteBlock = "<BLOCK NAME=\"sprite\" TYPE=\"angled sprite\">\r\n"
                                      "<PART NAME=\"sprite\" TEXTURE=\"logo.gif\"/>\r\n"
                                      "</BLOCK>\r\n";

// Applies one change to a block file: every occurrence of `pattern` is
// replaced; a pattern starting with '~' is a regular expression.
inline QByteArray changedBlock(const QByteArray &block, const QString &pattern, const QString &replacement)
{
    QString text = QString::fromLatin1(block);
    if (pattern.startsWith(u'~'))
        text.replace(QRegularExpression(pattern.mid(1)), replacement);
    else if (!pattern.isEmpty())
        text.replace(pattern, replacement);
    return text.toLatin1();
}
