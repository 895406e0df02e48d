#pragma once

#include <QString>

#include <optional>

// One blockset file of Rover's cache as the manager lists it.
struct CacheRow {
    enum class Updated { NoIndex, NotListed, ForceDownload, Date };

    QString fileName; // "castle.bset"
    QString path;     // folder relative to the cache folder, "\" separated ("www.host.com\sets")
    qint64 size = 0;  // bytes
    QString version = QStringLiteral("?");
    QString name = QStringLiteral("?");
    QString synopsis = QStringLiteral("?");
    QString author = QStringLiteral("?");
    QString copyright = QStringLiteral("?");
    int blocks = 0;
    int textures = 0;
    int sounds = 0;
    bool readable = true; // false: the archive could not be opened (counts unknown)

    Updated updated = Updated::NoIndex;
    qint32 updatedTime = 0; // seconds since 1/1/1970 local time, for Updated::Date

    // The Last Updated column: "?", "---", "<force download>" or the date in the
    // locale's short date-and-time form.
    QString lastUpdatedText() const;
    // "http://" + Path with "/" + "/" + File Name.
    QString url() const;
    // <blockset href="URL"/>
    QString tag() const;
};

// The size as the Size column shows it: the byte count with the locale's grouping.
QString sizeText(qint64 bytes);
