#include "app/ui/CheckPanel.h"

#include "app/BlocksetCheck.h"

#include <QApplication>
#include <QHeaderView>
#include <QStyle>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

CheckPanel::CheckPanel(QWidget *parent) : QDockWidget(u"Check Blockset"_s, parent)
{
    setObjectName(u"CheckPanel"_s);
    setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
    m_findings = new QTreeWidget(this);
    m_findings->setObjectName(u"CheckFindings"_s);
    m_findings->setRootIsDecorated(false);
    m_findings->setAlternatingRowColors(true);
    m_findings->setHeaderLabels({u"Severity"_s, u"File"_s, u"Line"_s, u"Text"_s});
    m_findings->setColumnWidth(0, 90);
    m_findings->setColumnWidth(1, 160);
    m_findings->setColumnWidth(2, 50);
    m_findings->setWordWrap(true);
    setWidget(m_findings);
    connect(m_findings, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem *item) { emit fileActivated(item->text(1)); });
}

void CheckPanel::clearFindings()
{
    m_findings->clear();
}

void CheckPanel::showCheck(const BlocksetCheck &check)
{
    m_findings->clear();
    QStyle *style = QApplication::style();
    for (const BlocksetCheck::Finding &finding : check.findings) {
        const bool error = finding.severity == RoverFinding::Error;
        auto *item = new QTreeWidgetItem(m_findings,
                                         {error ? u"Error"_s : u"Warning"_s, finding.file,
                                          finding.line > 0 ? QString::number(finding.line) : QString(), finding.text});
        item->setIcon(0, style->standardIcon(error ? QStyle::SP_MessageBoxCritical : QStyle::SP_MessageBoxWarning));
        item->setToolTip(3, finding.text);
    }
    if (check.findings.isEmpty()) {
        auto *item =
            new QTreeWidgetItem(m_findings, {QString(), QString(), QString(),
                                             check.roverLoadsBlockset ? u"Rover loads this blockset."_s
                                                                      : u"Rover does not load this blockset."_s});
        item->setFlags(Qt::ItemIsEnabled);
    }
}
