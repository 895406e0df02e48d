#pragma once

#include <QList>
#include <QString>

// The in-memory form of an open blockset's items and style values. The editor's
// windows render these; the file readers and writers fill and read them.

// One row of the block list; columns in the order of the list.
struct BlockRow {
    QString file;         // BlockList_FileName: the block file's name
    QString name;         // BlockList_BlockName
    QString symbol;       // BlockList_SymbolS: one character or empty
    QString doubleSymbol; // BlockList_Double: two characters or empty
    QString type;         // BlockList_Type
    QString bsp;          // BlockList_BSP: "yes", "empty", "no", "n/a"
    QString sizeText;     // BlockList_Size
    QString source;       // BlockList_Source
    qint64 size = 0;      // byte length of the file

    bool operator==(const BlockRow &) const = default;
};

// One row of the texture or sound list.
struct ItemRow {
    QString file;
    QString sizeText;
    QString source;
    qint64 size = 0;

    bool operator==(const ItemRow &) const = default;
};

// The style's values as texts; an empty text means "not set".
struct StyleValues {
    QString version;
    QString name;
    QString synopsis;
    QString author;
    QString copyright;
    QString placeholderTexture;
    QString skyTexture;
    QString skyColor;
    QString skyBrightness;
    QString groundTexture;
    QString groundColor;
    QString orbTexture;
    QString orbColor;
    QString orbBrightness;
    QString orbPosition;
    QString orbHref;
    QString orbTarget;
    QString orbText;

    bool operator==(const StyleValues &) const = default;
};

// Names one value of StyleValues, for the controls that edit it.
enum class StyleField {
    Version,
    Name,
    Synopsis,
    Author,
    Copyright,
    PlaceholderTexture,
    SkyTexture,
    SkyColor,
    SkyBrightness,
    GroundTexture,
    GroundColor,
    OrbTexture,
    OrbColor,
    OrbBrightness,
    OrbPosition,
    OrbHref,
    OrbTarget,
    OrbText,
};

inline QString &styleValue(StyleValues &style, StyleField field)
{
    switch (field) {
    case StyleField::Version: return style.version;
    case StyleField::Name: return style.name;
    case StyleField::Synopsis: return style.synopsis;
    case StyleField::Author: return style.author;
    case StyleField::Copyright: return style.copyright;
    case StyleField::PlaceholderTexture: return style.placeholderTexture;
    case StyleField::SkyTexture: return style.skyTexture;
    case StyleField::SkyColor: return style.skyColor;
    case StyleField::SkyBrightness: return style.skyBrightness;
    case StyleField::GroundTexture: return style.groundTexture;
    case StyleField::GroundColor: return style.groundColor;
    case StyleField::OrbTexture: return style.orbTexture;
    case StyleField::OrbColor: return style.orbColor;
    case StyleField::OrbBrightness: return style.orbBrightness;
    case StyleField::OrbPosition: return style.orbPosition;
    case StyleField::OrbHref: return style.orbHref;
    case StyleField::OrbTarget: return style.orbTarget;
    case StyleField::OrbText: return style.orbText;
    }
    return style.version;
}

inline const QString &styleValue(const StyleValues &style, StyleField field)
{
    return styleValue(const_cast<StyleValues &>(style), field);
}

// State of the "Symbol Synchronization" controls of the settings page, plus the
// blockset's own symbol-mode flags (switched on by New, Remap All and Sync Double).
struct SymbolSettings {
    // The controls as the settings page shows them.
    bool strictPrefixBoxChecked = false; // cbxStrictPrefix checked
    bool strictPrefixBoxEnabled = false; // cbxStrictPrefix enabled
    bool syncDoubleBoxChecked = false;   // cbxSyncDouble checked
    bool syncDoubleBoxEnabled = false;   // cbxSyncDouble enabled
    bool prefixListEnabled = false;      // lstStrictPrefix enabled (window background), else button face
    int prefixIndex = 0;                 // selected entry of lstStrictPrefix (prefix alphabet position)
    // The blockset's own modes, independent of what the boxes show.
    bool blocksetStrictPrefix = false;
    bool blocksetSyncDouble = false;

    bool operator==(const SymbolSettings &) const = default;
};

// The editable content of an open blockset: its three item lists, its style values
// and its symbol settings. The document owns one; the item and symbol operations
// take it by reference, so they run without the document or a window.
struct BlocksetContent {
    QList<BlockRow> blocks;
    QList<ItemRow> textures;
    QList<ItemRow> sounds;
    StyleValues style;
    SymbolSettings symbols;

    bool operator==(const BlocksetContent &) const = default;
};
