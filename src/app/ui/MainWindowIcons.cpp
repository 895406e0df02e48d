#include "app/ui/MainWindowIcons.h"

#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {

// Drawn icons for the commands that have no fitting standard icon.
enum class Glyph { Add, Remove, Edit, Tree, SaveAs, Close, Cache };

// Paints `glyph` in a design square of 32 x 32 units; the caller scales the
// painter to the size wanted, so the icon is sharp at any size and screen scale.
void paintGlyph(QPainter &p, Glyph glyph, const QIcon &base)
{
    p.setRenderHint(QPainter::Antialiasing);
    const auto pen = [](const QColor &color, qreal width) {
        return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    };
    switch (glyph) {
    case Glyph::Add:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0x2e, 0x8b, 0x3e));
        p.drawEllipse(QRectF(3, 3, 26, 26));
        p.setPen(pen(Qt::white, 4));
        p.drawLine(QPointF(16, 9), QPointF(16, 23));
        p.drawLine(QPointF(9, 16), QPointF(23, 16));
        break;
    case Glyph::Remove:
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0xc0, 0x39, 0x2b));
        p.drawEllipse(QRectF(3, 3, 26, 26));
        p.setPen(pen(Qt::white, 4));
        p.drawLine(QPointF(9, 16), QPointF(23, 16));
        break;
    case Glyph::Edit: {
        // A pencil lying from the lower left to the upper right.
        p.translate(16, 16);
        p.rotate(-45);
        p.setPen(pen(QColor(0x40, 0x40, 0x40), 1.2));
        p.setBrush(QColor(0xf2, 0xb1, 0x34));
        p.drawRect(QRectF(-8, -4, 17, 8));
        p.setBrush(QColor(0xe8, 0x8f, 0x9a));
        p.drawRect(QRectF(9, -4, 4, 8));
        QPainterPath tip;
        tip.moveTo(-8, -4);
        tip.lineTo(-14, 0);
        tip.lineTo(-8, 4);
        tip.closeSubpath();
        p.setBrush(QColor(0xf3, 0xdd, 0xb5));
        p.drawPath(tip);
        break;
    }
    case Glyph::Tree: {
        // A small binary tree: the BSP trees of the blocks.
        p.setPen(pen(QColor(0x3a, 0x5f, 0x8f), 2));
        p.drawLine(QPointF(16, 7), QPointF(8, 17));
        p.drawLine(QPointF(16, 7), QPointF(24, 17));
        p.drawLine(QPointF(8, 17), QPointF(4, 26));
        p.drawLine(QPointF(8, 17), QPointF(12, 26));
        p.setPen(pen(QColor(0x25, 0x40, 0x66), 1));
        p.setBrush(QColor(0x6f, 0x9c, 0xd6));
        for (const QPointF &node : {QPointF(16, 7), QPointF(8, 17), QPointF(24, 17), QPointF(4, 26), QPointF(12, 26)})
            p.drawEllipse(node, 3.5, 3.5);
        break;
    }
    case Glyph::Close: {
        // A page with a red cross: the blockset is put away.
        QPainterPath page;
        page.moveTo(7, 3);
        page.lineTo(20, 3);
        page.lineTo(26, 9);
        page.lineTo(26, 29);
        page.lineTo(7, 29);
        page.closeSubpath();
        p.setPen(pen(QColor(0x70, 0x70, 0x70), 1.2));
        p.setBrush(QColor(0xfb, 0xfb, 0xfb));
        p.drawPath(page);
        p.drawLine(QPointF(20, 3), QPointF(20, 9));
        p.drawLine(QPointF(20, 9), QPointF(26, 9));
        p.setPen(pen(QColor(0xc0, 0x39, 0x2b), 3.5));
        p.drawLine(QPointF(11, 13), QPointF(22, 24));
        p.drawLine(QPointF(22, 13), QPointF(11, 24));
        break;
    }
    case Glyph::Cache: {
        // Three stacked cubes: the blocksets Rover keeps in its cache.
        const auto cube = [&p, &pen](qreal x, qreal y, const QColor &color) {
            const qreal s = 9;
            const qreal d = 4;
            p.setPen(pen(color.darker(170), 1));
            p.setBrush(color);
            p.drawRect(QRectF(x, y + d, s, s));
            QPainterPath top;
            top.moveTo(x, y + d);
            top.lineTo(x + d, y);
            top.lineTo(x + s + d, y);
            top.lineTo(x + s, y + d);
            top.closeSubpath();
            p.setBrush(color.lighter(130));
            p.drawPath(top);
            QPainterPath side;
            side.moveTo(x + s, y + d);
            side.lineTo(x + s + d, y);
            side.lineTo(x + s + d, y + s);
            side.lineTo(x + s, y + s + d);
            side.closeSubpath();
            p.setBrush(color.darker(125));
            p.drawPath(side);
        };
        cube(3, 16, QColor(0xd9, 0x8c, 0x2b));
        cube(16, 16, QColor(0x4f, 0x86, 0xc6));
        cube(9.5, 4, QColor(0x5d, 0xa8, 0x5a));
        break;
    }
    case Glyph::SaveAs:
        base.paint(&p, QRect(0, 0, 24, 24));
        p.translate(23, 23);
        p.rotate(-45);
        p.setPen(pen(QColor(0x40, 0x40, 0x40), 1));
        p.setBrush(QColor(0xf2, 0xb1, 0x34));
        p.drawRect(QRectF(-5, -2.5, 11, 5));
        p.setBrush(QColor(0xf3, 0xdd, 0xb5));
        QPainterPath tip;
        tip.moveTo(-5, -2.5);
        tip.lineTo(-9, 0);
        tip.lineTo(-5, 2.5);
        tip.closeSubpath();
        p.drawPath(tip);
        break;
    }
}

// An icon engine that paints its glyph afresh for every size asked for.
class GlyphEngine : public QIconEngine {
public:
    GlyphEngine(Glyph glyph, const QIcon &base) : m_glyph(glyph), m_base(base) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        painter->save();
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 32.0, rect.height() / 32.0);
        if (mode == QIcon::Disabled)
            painter->setOpacity(0.4);
        paintGlyph(*painter, m_glyph, m_base);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new GlyphEngine(m_glyph, m_base); }

private:
    Glyph m_glyph;
    QIcon m_base;
};

QIcon drawnIcon(Glyph glyph, const QIcon &base = QIcon())
{
    return QIcon(new GlyphEngine(glyph, base));
}

// The desktop theme's icon of a standard name, else `fallback`.
QIcon themed(const char *name, const QIcon &fallback)
{
    return QIcon::fromTheme(QString::fromLatin1(name), fallback);
}

} // namespace

QIcon commandIcon(const QString &button, QStyle *style)
{
    // Standard names of the freedesktop icon theme first; the style's or a drawn
    // icon where the theme has none (or there is no theme, as on Windows).
    if (button == u"btnNew"_s)
        return themed("document-new", style->standardIcon(QStyle::SP_FileIcon));
    if (button == u"btnOpen"_s)
        return themed("document-open", style->standardIcon(QStyle::SP_DialogOpenButton));
    if (button == u"btnClose"_s)
        return themed("document-close", drawnIcon(Glyph::Close));
    if (button == u"btnSave"_s)
        return themed("document-save", style->standardIcon(QStyle::SP_DialogSaveButton));
    if (button == u"btnSaveAs"_s)
        return themed("document-save-as", drawnIcon(Glyph::SaveAs, style->standardIcon(QStyle::SP_DialogSaveButton)));
    if (button == u"btnAddItem"_s)
        return themed("list-add", drawnIcon(Glyph::Add));
    if (button == u"btnRemoveItem"_s)
        return themed("list-remove", drawnIcon(Glyph::Remove));
    if (button == u"btnReplaceItem"_s)
        return themed("view-refresh", style->standardIcon(QStyle::SP_BrowserReload));
    if (button == u"btnEditItem"_s)
        return themed("document-edit", drawnIcon(Glyph::Edit));
    if (button == u"btnPreviewItem"_s)
        return themed("media-playback-start", style->standardIcon(QStyle::SP_MediaPlay));
    if (button == u"btnAddBSP"_s)
        return drawnIcon(Glyph::Tree);
    if (button == u"btnManager"_s)
        return drawnIcon(Glyph::Cache);
    return QIcon();
}

QIcon programIcon()
{
    return themed("com.quillmoor.Cubrix", drawnIcon(Glyph::Cache));
}
