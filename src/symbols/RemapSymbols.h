#pragma once

class OperationHost;
class RemapDialog;

// The bulk symbol rewrites of the Remap Symbols dialog. `prefixIndex` is the
// chosen entry of the dialog's prefix list (a position in the prefix alphabet).

// Remap All: the i-th block gets the i-th symbol of the alphabet and the prefix
// followed by it; blocks past the alphabet's length lose both symbols and are
// reported. Returns false when the user said No (nothing changed).
bool remapAllSymbols(OperationHost &host, int prefixIndex);

// Sync Double: every block with a single symbol gets the prefix followed by it as
// its double symbol; blocks without one keep theirs and are reported. Returns
// false when the user said No (nothing changed).
bool syncDoubleSymbols(OperationHost &host, int prefixIndex);

// The Remap Symbols command: shows the dialog and runs the method of the tab on
// which OK was pressed. Returns true when a method ran.
bool remapSymbolsCommand(OperationHost &host, RemapDialog &dialog);
