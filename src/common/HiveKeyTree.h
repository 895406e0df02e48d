#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

// The keys of a hive as a tree of names (compared ignoring case), so that a key
// that exists only as the parent of another one (Wine writes no section for it)
// exists too. Node 0 is the root.
class HiveKeyTree {
public:
    // Where a value was read last: its section and item in the file.
    struct ValueRef {
        int section = -1;
        int item = -1;
    };
    struct Node {
        QString name; // as first written
        int parent = -1;
        QHash<QString, int> children;    // folded name -> node
        int section = -1;                // first section of this key, -1 when only implied
        QHash<QString, ValueRef> values; // folded value name -> where it was read last
        QString keyClass;
    };

    HiveKeyTree() { clear(); }
    void clear();

    // The child `name` of `parent`; made when missing and `create` is set, else -1.
    int child(int parent, const QString &name, bool create);
    // The node at the end of `names`, or -1.
    int find(const QStringList &names) const;
    // The key's path as a section header writes it ("A\\\\B", escaped).
    QByteArray pathText(int node) const;

    Node &operator[](int node) { return m_nodes[size_t(node)]; }
    const Node &operator[](int node) const { return m_nodes[size_t(node)]; }

private:
    std::vector<Node> m_nodes;
};
