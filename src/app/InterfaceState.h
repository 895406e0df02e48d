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

// What the rules read from the document, as plain values.
struct InterfaceFacts {
    bool blocksetOpen = false;
    int tab = 0; // a BlocksetDocument::Tab
    int blocks = 0;
    int textures = 0;
    int sounds = 0;
    bool changed = false;
    bool readOnly = false; // opened read-only: Save is off, Save As writes a copy
    QString fileName;
    QString versionText;
    bool updateFileSetting = false; // the user setting that governs the update group
};

InterfaceFacts interfaceFacts(const BlocksetDocument &document, bool updateFileSetting);
InterfaceState computeInterfaceState(const InterfaceFacts &facts);
