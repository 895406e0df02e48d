#include "app/ui/RecentMenu.h"

#include "app/RecentFiles.h"
#include "common/Prompts.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

using namespace Qt::StringLiterals;

RecentMenu::RecentMenu(QMenu *menu, RecentFiles &recent, Prompts &prompts)
    : QObject(menu),
      m_menu(menu),
      m_recent(recent),
      m_prompts(prompts)
{
    m_menu->setToolTipsVisible(true);
    connect(m_menu, &QMenu::aboutToShow, this, &RecentMenu::fill);
}

void RecentMenu::fill()
{
    m_menu->clear();
    const QStringList paths = m_recent.paths();
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString &path = paths.at(i);
        // "&1" .. "&9", then "1&0": each entry has its own accelerator.
        const QString number = i < 9 ? u"&"_s + QString::number(i + 1) : u"1&0"_s;
        QString name = QFileInfo(path).fileName();
        QAction *action = m_menu->addAction(number + u' ' + name.replace(u'&', u"&&"_s));
        action->setToolTip(QDir::toNativeSeparators(path));
        connect(action, &QAction::triggered, this, [this, path] { choose(path); });
    }
    if (!paths.isEmpty())
        m_menu->addSeparator();
    QAction *clear = m_menu->addAction(u"&Clear Recent"_s);
    clear->setObjectName(u"mnuClearRecent"_s);
    clear->setEnabled(!paths.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { m_recent.clear(); });
    m_menu->menuAction()->setEnabled(true);
}

void RecentMenu::choose(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        m_prompts.message(QDir::toNativeSeparators(path) + u" is no longer there; it leaves the list."_s,
                          u"Open Recent"_s, PromptButtons::Ok, PromptIcon::Exclamation);
        m_recent.remove(path);
        return;
    }
    emit openRequested(path);
}
