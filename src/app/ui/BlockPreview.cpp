#include "app/ui/BlockPreview.h"

#include "app/ui/BlockView.h"
#include "rover/RoverBlockBsp.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QString typeName(RoverBlock::Type type)
{
    switch (type) {
    case RoverBlock::Structural: return u"Structural block"_s;
    case RoverBlock::MultifacetedSprite: return u"Multifaceted sprite"_s;
    case RoverBlock::AngledSprite: return u"Angled sprite"_s;
    case RoverBlock::RevolvingSprite: return u"Revolving sprite"_s;
    case RoverBlock::FacingSprite: return u"Facing sprite"_s;
    case RoverBlock::PlayerSprite: return u"Player sprite"_s;
    }
    return QString();
}

// What Rover draws of the block, in one line.
QString factsOf(const BlockScene &scene)
{
    const RoverBlock &block = scene.block();
    QString facts = typeName(block.type);
    if (block.isSprite())
        return facts;
    const qsizetype polygons = block.polygons.size();
    facts += u", %1 polygon%2"_s.arg(polygons).arg(polygons == 1 ? QString() : u"s"_s);
    if (block.bspRoot == 0)
        return facts + (block.movable || polygons < 2 ? u", no BSP tree"_s : u", no BSP tree: drawn in file order"_s);
    const qsizetype reached = roverBspTree(block).reached.size();
    if (reached == polygons)
        return facts + u", all in the BSP tree"_s;
    return facts + u", %1 in the BSP tree (the others are not drawn)"_s.arg(reached);
}

} // namespace

BlockPreview::BlockPreview(QWidget *parent) : QWidget(parent)
{
    setObjectName(u"BlockPreview"_s);

    m_title = new QLabel(this);
    m_title->setObjectName(u"BlockPreviewTitle"_s);
    m_title->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    auto *close = new QToolButton(this);
    close->setObjectName(u"BlockPreviewClose"_s);
    close->setAutoRaise(true);
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setToolTip(u"Close the preview"_s);
    connect(close, &QToolButton::clicked, this, &BlockPreview::closeRequested);

    m_view = new BlockView(this);
    m_view->setObjectName(u"BlockView"_s);
    m_view->setToolTip(u"Drag to turn the block, use the wheel to zoom"_s);
    m_problem = new QLabel(this);
    m_problem->setObjectName(u"BlockPreviewProblem"_s);
    m_problem->setWordWrap(true);
    m_problem->setAlignment(Qt::AlignCenter);
    m_problem->setMargin(16);
    m_problem->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_pages = new QStackedWidget(this);
    m_pages->addWidget(m_view);
    m_pages->addWidget(m_problem);
    m_pages->setFrameShape(QFrame::StyledPanel);

    m_facts = new QLabel(this);
    m_facts->setObjectName(u"BlockPreviewFacts"_s);
    m_facts->setWordWrap(true);

    auto *rover = new QRadioButton(u"As Rover draws"_s, this);
    rover->setObjectName(u"optRoverOrder"_s);
    rover->setToolTip(u"Rover's own order: its BSP tree near to far, else the file's order"_s);
    rover->setChecked(true);
    auto *depth = new QRadioButton(u"Depth buffer"_s, this);
    depth->setObjectName(u"optDepthOrder"_s);
    depth->setToolTip(u"As Rover draws with hardware acceleration"_s);
    m_orders = new QButtonGroup(this);
    m_orders->addButton(rover, int(DrawOrder::Rover));
    m_orders->addButton(depth, int(DrawOrder::Depth));
    connect(m_orders, &QButtonGroup::idClicked, this, [this](int id) { m_view->setOrder(DrawOrder(id)); });
    auto *reset = new QPushButton(u"Reset View"_s, this);
    reset->setObjectName(u"btnResetView"_s);
    connect(reset, &QPushButton::clicked, m_view, &BlockView::resetCamera);

    auto *top = new QHBoxLayout;
    top->addWidget(m_title, 1);
    top->addWidget(close);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(rover);
    bottom->addWidget(depth);
    bottom->addStretch(1);
    bottom->addWidget(reset);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_facts);
    layout->addLayout(bottom);
    showNothing();
}

void BlockPreview::showBlock(const QString &file, const BlockScene &scene)
{
    const QString name = scene.block().name;
    m_title->setText(name.isEmpty() || !scene.isDrawable() ? file : name + u"  ("_s + file + u')');
    if (!scene.isDrawable()) {
        m_problem->setText(u"Rover cannot load this block:\n"_s + scene.problem());
        m_pages->setCurrentWidget(m_problem);
        m_facts->clear();
        m_view->setScene(BlockScene());
        return;
    }
    m_view->setScene(scene);
    m_pages->setCurrentWidget(m_view);
    m_facts->setText(factsOf(scene));
}

void BlockPreview::showNothing()
{
    m_title->setText(u"Block Preview"_s);
    m_problem->setText(u"No block selected."_s);
    m_pages->setCurrentWidget(m_problem);
    m_facts->clear();
    m_view->setScene(BlockScene());
}
