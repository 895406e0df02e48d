#pragma once

#include "common/HiveKeyTree.h"
#include "common/Registry.h"

#include <QByteArray>
#include <QList>
#include <QString>

// A hive file of Wine's text format ("WINE REGISTRY Version 2") kept in memory
// as the lines it was read from: a key's section is its header line followed by
// items; an item is one line, or for a value one or more lines (hex data may
// continue over several lines with a trailing "\"). Only a value the program
// sets is written anew; every other line goes back to the file byte for byte, in
// its place.
class HiveFile {
public:
    struct Item {
        QList<QByteArray> lines;
        bool isValue = false;
        quint32 type = 0;
        bool decoded = false; // text / dword hold the data (REG_SZ, REG_DWORD)
        QString text;
        quint32 dword = 0;
    };
    struct Section {
        QByteArray header;
        QList<Item> items;
    };

    void clear();
    // An empty registry as Wine starts one.
    void startEmpty();
    // False when `data` is no hive of this format.
    bool parse(const QByteArray &data);
    QByteArray serialize() const;

    // Appends a section for the key `node` (with its class, when given); Wine
    // separates sections by a blank line. Returns the section's index.
    int addSection(int node, const QString &keyClass);
    // Sets the REG_SZ or REG_DWORD value `name` of the key `node`: in place when it
    // was there, else after the last value of the key's first section.
    void setValue(int node, const QString &name, const RegValue &value);

    HiveKeyTree keys;
    QList<QByteArray> headerLines;
    QList<Section> sections;

private:
    bool parseValue(const QList<QByteArray> &lines, qsizetype &index, qsizetype pos, Item &item, QString &name);
    QByteArray valueLine(const QString &name, const RegValue &value) const;
    QByteArray eol() const;

    bool crlf = false;
    bool finalNewline = true;
};
