#pragma once

#include "formats/BlocksetModel.h"

#include <QString>

class Prompts;
class SymbolPrompt;
class RegistryWrapper;

// What an item or symbol operation needs from the open blockset besides its
// content: the user, the settings, the folder its items live in and the two
// effects an operation has on the document (the changed flag, the status panel).
// The document implements it for the editor and cubrix-cli; tests give their own.
class OperationHost {
public:
    virtual ~OperationHost() = default;

    virtual BlocksetContent &content() = 0;
    virtual Prompts &prompts() = 0;
    virtual SymbolPrompt &symbolPrompt() = 0;
    virtual RegistryWrapper &settings() = 0;
    // The working folder holding the blocks/, textures/ and sounds/ folders.
    virtual QString workingFolder() const = 0;
    // Sets blocksetChanged.
    virtual void setBlocksetChanged() = 0;
    // Writes a text into the status panel stbProcess.
    virtual void showProcess(const QString &text) = 0;
    // Busy (hourglass) pointer on or off while a long operation runs.
    virtual void setBusy(bool busy) { Q_UNUSED(busy); }
};
