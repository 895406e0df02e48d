#include "common/HiveKeyTree.h"

#include "common/HiveText.h"

void HiveKeyTree::clear()
{
    m_nodes.clear();
    m_nodes.emplace_back();
}

int HiveKeyTree::child(int parent, const QString &name, bool create)
{
    const QString folded = HiveText::foldName(name);
    const auto it = m_nodes[size_t(parent)].children.constFind(folded);
    if (it != m_nodes[size_t(parent)].children.constEnd())
        return it.value();
    if (!create)
        return -1;
    Node node;
    node.name = name;
    node.parent = parent;
    m_nodes.push_back(node);
    const int index = int(m_nodes.size()) - 1;
    m_nodes[size_t(parent)].children.insert(folded, index);
    return index;
}

int HiveKeyTree::find(const QStringList &names) const
{
    int node = 0;
    for (const QString &name : names) {
        const auto it = m_nodes[size_t(node)].children.constFind(HiveText::foldName(name));
        if (it == m_nodes[size_t(node)].children.constEnd())
            return -1;
        node = it.value();
    }
    return node;
}

QByteArray HiveKeyTree::pathText(int node) const
{
    QList<int> chain;
    for (int n = node; n > 0; n = m_nodes[size_t(n)].parent)
        chain.prepend(n);
    QByteArray text;
    for (int n : chain) {
        if (!text.isEmpty())
            text += "\\\\";
        text += HiveText::escape(m_nodes[size_t(n)].name, "[]");
    }
    return text;
}
