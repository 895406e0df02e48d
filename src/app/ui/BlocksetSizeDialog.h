#pragma once

#include <QDialog>

struct SavedSize;

// View ▸ Blockset Size: where the bytes of the saved blockset go, by kind
// (blocks, textures, sounds, style) and the ten largest items, each with its
// share of Rover's 307,200 bytes.
class BlocksetSizeDialog : public QDialog {
    Q_OBJECT

public:
    BlocksetSizeDialog(const SavedSize &size, QWidget *parent = nullptr);
};
