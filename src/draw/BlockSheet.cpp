#include "draw/BlockSheet.h"

#include "draw/BlockPicture.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int picture = 160;    // each block's picture is square
constexpr int cellWidth = 184;  // the picture with room around it
constexpr int cellHeight = 224; // and two lines of text under it
constexpr int margin = 16;
constexpr int titleHeight = 40;
constexpr int widestGrid = 8; // columns at most

const QColor paper(250, 250, 248);
const QColor cellColour(255, 255, 255);
const QColor lineColour(214, 214, 210);
const QColor ink(32, 32, 32);
const QColor faintInk(112, 112, 112);
const QColor errorInk(176, 32, 32);

void drawCell(QPainter &painter, const QRect &cell, const SheetBlock &block)
{
    painter.fillRect(cell, cellColour);
    painter.setPen(lineColour);
    painter.drawRect(cell.adjusted(0, 0, -1, -1));
    const QRect area(cell.left() + (cell.width() - picture) / 2, cell.top() + 8, picture, picture);
    if (block.scene.isDrawable()) {
        Lighting lighting;
        lighting.enabled = true;
        painter.drawImage(area.topLeft(),
                          drawBlockPicture(block.scene, Camera(), area.size(), DrawOrder::Rover, lighting));
    } else {
        QFont small = painter.font();
        small.setPixelSize(11);
        painter.setFont(small);
        painter.setPen(errorInk);
        painter.drawText(area.adjusted(6, 6, -6, -6), Qt::AlignCenter | Qt::TextWordWrap,
                         u"Rover cannot load this block:\n"_s + block.scene.problem());
    }
    QFont label = painter.font();
    label.setPixelSize(13);
    label.setBold(true);
    painter.setFont(label);
    painter.setPen(ink);
    const QRect first(cell.left() + 6, area.bottom() + 8, cell.width() - 12, 20);
    const QString caption = block.symbol + u"  "_s + block.name;
    painter.drawText(first, Qt::AlignHCenter | Qt::AlignVCenter,
                     QFontMetrics(label).elidedText(caption, Qt::ElideRight, first.width()));
    QFont fileFont = label;
    fileFont.setBold(false);
    fileFont.setPixelSize(11);
    painter.setFont(fileFont);
    painter.setPen(faintInk);
    const QRect second = first.translated(0, 20);
    painter.drawText(second, Qt::AlignHCenter | Qt::AlignVCenter,
                     QFontMetrics(fileFont).elidedText(block.file, Qt::ElideMiddle, second.width()));
}

} // namespace

QImage drawBlockSheet(const QString &title, const QList<SheetBlock> &blocks)
{
    const int count = int(std::max<qsizetype>(1, blocks.size()));
    const int columns = std::min(widestGrid, int(std::ceil(std::sqrt(double(count)))));
    const int rows = (count + columns - 1) / columns;
    QImage sheet(2 * margin + columns * cellWidth, 2 * margin + titleHeight + rows * cellHeight,
                 QImage::Format_ARGB32_Premultiplied);
    sheet.fill(paper);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    QFont heading = painter.font();
    heading.setPixelSize(18);
    heading.setBold(true);
    painter.setFont(heading);
    painter.setPen(ink);
    const QRect titleArea(margin, margin, sheet.width() - 2 * margin, titleHeight - 8);
    painter.drawText(titleArea, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(heading).elidedText(title, Qt::ElideRight, titleArea.width()));
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        const int column = int(i) % columns, row = int(i) / columns;
        drawCell(
            painter,
            QRect(margin + column * cellWidth, margin + titleHeight + row * cellHeight, cellWidth - 8, cellHeight - 8),
            blocks[i]);
    }
    return sheet;
}
