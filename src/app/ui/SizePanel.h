#pragma once

#include <QLabel>

class BlocksetSizeMonitor;

// The status bar's panel stbSize: the open blockset's size as it will be
// saved and its share of Rover's limit ("212 KB of 300 KB"), in the warning
// colour above the limit, Rover's rule in the tooltip.
class SizePanel : public QLabel {
    Q_OBJECT

public:
    SizePanel(const BlocksetSizeMonitor &monitor, QWidget *parent = nullptr);

private:
    void showSize();

    const BlocksetSizeMonitor &m_monitor;
};
