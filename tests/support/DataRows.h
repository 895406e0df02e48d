#pragma once

#include <QTest>

// Compact Qt Test tables: a _data function declares its columns in one call,
// addColumns<QString, int>("text", "count"), and adds each row in one call,
// addRow("tag", "abc", 3). A text literal fills a QString column; a value of
// another type than its column's fails the test run.

template <typename... Types, typename... Names>
void addColumns(Names... names)
{
    static_assert(sizeof...(Types) == sizeof...(Names), "one name per column type");
    (QTest::addColumn<Types>(names), ...);
}

template <typename... Values>
void addRow(const char *tag, Values... values)
{
    (QTest::newRow(tag) << ... << values);
}
