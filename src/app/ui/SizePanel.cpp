#include "app/ui/SizePanel.h"

#include "app/BlocksetSizeMonitor.h"

using namespace Qt::StringLiterals;

SizePanel::SizePanel(const BlocksetSizeMonitor &monitor, QWidget *parent) : QLabel(parent), m_monitor(monitor)
{
    setObjectName(u"stbSize"_s);
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setContentsMargins(4, 0, 4, 0);
    setMinimumWidth(140);
    setAlignment(Qt::AlignCenter);
    connect(&monitor, &BlocksetSizeMonitor::sizeChanged, this, &SizePanel::showSize);
}

void SizePanel::showSize()
{
    const SavedSize &size = m_monitor.size();
    if (size.entries.isEmpty()) {
        clear();
        setToolTip(QString());
        setStyleSheet(QString());
        return;
    }
    // While new items are being packed, their own size stands in: "about".
    setText((size.complete ? QString() : u"~"_s) + BlocksetSize::shareOfLimit(size.total));
    setToolTip(BlocksetSize::ruleText(size.total));
    setStyleSheet(BlocksetSize::fitsWeb(size.total) ? QString() : u"QLabel { color: #b00000; font-weight: bold; }"_s);
}
