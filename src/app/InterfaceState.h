#pragma once

#include <QHash>
#include <QString>

class BlocksetDocument;

// Which commands of the main window are usable, the caption and the status bar
// counts, computed from the document's state (checkInterface's rules).
struct InterfaceState {
    bool updateGroupEnabled = false;
    QHash<QString, bool> enabled; // object name of each command checkInterface governs
    QString caption;
    QString blocksPanel;
    QString texturesPanel;
    QString soundsPanel;
    QString versionPanel;
};

InterfaceState computeInterfaceState(const BlocksetDocument &document, bool updateFileSetting);
