#include "symbols/SymbolScheme.h"

using namespace Qt::StringLiterals;

// Symbols are handed out by position in this string, so its order is part of
// every blockset ever written: never reorder it. "&", ".", quote, "<", ">" and
// the blank are left out because they cannot stand in a 3DML map.
const QString &symbolAlphabet()
{
    static const QString alphabet =
        u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz1234567890!@#$%^*()-_=+[]{}\\|;:',/?`~"_s;
    return alphabet;
}

// The characters a double symbol may start with: "." and the symbol alphabet.
const QString &prefixAlphabet()
{
    static const QString alphabet = u'.' + symbolAlphabet();
    return alphabet;
}

int blockLimit()
{
    return int(symbolAlphabet().size());
}

bool isValidDoubleSymbol(const QString &text)
{
    if (text.isEmpty())
        return true;
    if (text.size() != 2)
        return false;
    return prefixAlphabet().contains(text[0]) && symbolAlphabet().contains(text[1]);
}

bool isDoubleSymbolUsed(const QList<BlockRow> &blocks, const QString &text, int editedRow)
{
    if (text.isEmpty())
        return false;
    for (qsizetype i = 0; i < blocks.size(); ++i) {
        if (i != editedRow && blocks[i].doubleSymbol == text)
            return true;
    }
    return false;
}

void refreshSymbolSettings(SymbolSettings &symbols, bool strictPrefixConsistent, bool syncDoubleConsistent,
                           const QString &commonPrefix, bool strictPrefixSetting, bool syncDoubleSetting)
{
    if (!strictPrefixConsistent) {
        // Some block has no double symbol, or the doubles do not share a prefix.
        symbols.prefixListEnabled = false;
        symbols.strictPrefixBoxChecked = false;
        symbols.strictPrefixBoxEnabled = false;
        symbols.syncDoubleBoxChecked = false;
        symbols.syncDoubleBoxEnabled = false;
        return;
    }

    // Select the prefix list entry equal to the common prefix; without one the
    // selection stays where it was.
    const QString &prefixes = prefixAlphabet();
    for (qsizetype i = 0; i < prefixes.size(); ++i) {
        if (QStringView(prefixes).sliced(i, 1) == commonPrefix) {
            symbols.prefixIndex = int(i);
            break;
        }
    }
    symbols.strictPrefixBoxEnabled = true;

    if (!strictPrefixSetting) {
        // The user wants blocksets to open with strict prefix off.
        symbols.strictPrefixBoxChecked = false;
        symbols.prefixListEnabled = false;
        symbols.syncDoubleBoxChecked = false;
        symbols.syncDoubleBoxEnabled = false;
        return;
    }

    symbols.strictPrefixBoxChecked = true;
    symbols.prefixListEnabled = true;
    if (!syncDoubleConsistent) {
        symbols.syncDoubleBoxEnabled = false;
        symbols.syncDoubleBoxChecked = false;
    } else {
        symbols.syncDoubleBoxEnabled = true;
        symbols.syncDoubleBoxChecked = syncDoubleSetting;
    }
}
