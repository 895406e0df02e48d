#include "app/ui/VersionTab.h"

#include "app/ui/FieldText.h"
#include "formats/ui/AttributeValueValidator.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

VersionTab::VersionTab(QWidget *parent) : QWidget(parent)
{
    setObjectName(u"VersionTab"_s);

    grpBlockset = new QGroupBox(tr("Blockset Information"), this);
    grpBlockset->setObjectName(u"grpBlockset"_s);
    fldVersion = makeTextField(this, u"fldVersion"_s, StyleField::Version, m_showing);
    fldBlocksetName = makeTextField(this, u"fldBlocksetName"_s, StyleField::Name, m_showing);
    fldSynopsis = makeTextField(this, u"fldSynopsis"_s, StyleField::Synopsis, m_showing);
    fldAuthor = makeTextField(this, u"fldAuthor"_s, StyleField::Author, m_showing);
    fldCopyright = makeTextField(this, u"fldCopyright"_s, StyleField::Copyright, m_showing);

    grpUpdate = new QGroupBox(tr("Update Information"), this);
    grpUpdate->setObjectName(u"grpUpdate"_s);
    lblUpdate = new QLabel(tr("The following comment will be stored along with the blockset in a seperate .txt file "
                              "with the same name. This file is used by Rover to check for updates of the blockset."),
                           this);
    lblUpdate->setObjectName(u"lblUpdate"_s);
    lblUpdate->setWordWrap(true);
    fldUpdate = new QPlainTextEdit(this);
    fldUpdate->setObjectName(u"fldUpdate"_s);
    // The comment is plain text; a tab would be lost when the file is read back,
    // so Tab moves on to the next control as in every other field.
    fldUpdate->setTabChangesFocus(true);
    lblUpdateComment = new QLabel(tr("C&omment:"), this);
    lblUpdateComment->setObjectName(u"lblUpdateComment"_s);
    lblUpdateComment->setBuddy(fldUpdate);
    connect(fldUpdate, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_showing)
            emit updateCommentEdited(fldUpdate->toPlainText());
    });

    buildLayout();
}

void VersionTab::buildLayout()
{
    auto *form = new QFormLayout(grpBlockset);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    const std::pair<QLineEdit *, std::pair<const char *, QString>> rows[] = {
        {fldVersion, {"lblVersion", tr("Ve&rsion:")}},       {fldBlocksetName, {"lblBlocksetName", tr("Na&me:")}},
        {fldSynopsis, {"lblSynopsis", tr("S&ynopsis:")}},    {fldAuthor, {"lblAuthor", tr("&Author:")}},
        {fldCopyright, {"lblCopyright", tr("&Copyright:")}},
    };
    for (const auto &[field, label] : rows) {
        auto *caption = new QLabel(label.second, this);
        caption->setObjectName(QLatin1String(label.first));
        caption->setBuddy(field);
        form->addRow(caption, field);
    }
    // A version is short ("1.2", "2004-03 beta"); the other fields take the width.
    fldVersion->setMaximumWidth(fldVersion->fontMetrics().horizontalAdvance(u'0') * 16);

    auto *update = new QVBoxLayout(grpUpdate);
    update->addWidget(lblUpdate);
    update->addSpacing(4);
    update->addWidget(lblUpdateComment);
    update->addWidget(fldUpdate, 1);

    auto *page = new QVBoxLayout(this);
    page->addWidget(grpBlockset);
    page->addWidget(grpUpdate, 1);
}

void VersionTab::showValues(const StyleValues &style, const QString &updateComment)
{
    const QScopedValueRollback guard(m_showing, true);
    setTextIfDifferent(fldVersion, style.version);
    setTextIfDifferent(fldBlocksetName, style.name);
    setTextIfDifferent(fldSynopsis, style.synopsis);
    setTextIfDifferent(fldAuthor, style.author);
    setTextIfDifferent(fldCopyright, style.copyright);
    if (fldUpdate->toPlainText() != updateComment)
        fldUpdate->setPlainText(updateComment);
}

void VersionTab::setUpdateEnabled(bool enabled)
{
    grpUpdate->setEnabled(enabled);
    lblUpdate->setEnabled(enabled);
    lblUpdateComment->setEnabled(enabled);
    fldUpdate->setEnabled(enabled);
}

void VersionTab::resetValues()
{
    const QScopedValueRollback guard(m_showing, true);
    fldVersion->clear();
    fldBlocksetName->clear();
    fldSynopsis->clear();
    fldAuthor->clear();
    fldCopyright->clear();
    fldUpdate->clear();
}

QWidget *VersionTab::firstField() const
{
    return fldVersion;
}
