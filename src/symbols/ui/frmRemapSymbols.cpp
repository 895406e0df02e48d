#include "symbols/ui/frmRemapSymbols.h"

#include "symbols/SymbolScheme.h"

#include <QComboBox>
#include <QFont>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmRemapSymbols::frmRemapSymbols(QWidget *parent) : QDialog(parent)
{
    setObjectName(u"frmRemapSymbols"_s);
    setWindowTitle(u"Remap Symbols"_s);
    setModal(true);

    tabMethod = new QTabWidget(this);
    tabMethod->setObjectName(u"tabMethod"_s);
    tabMethod->addTab(makeTab(u"RemapAll"_s, u"This will replace all symbols!"_s,
                              u"Single character symbols will be from A-Z, a-z etc. for up to 89 blocks. Double "
                              "character symbols will be synchronized to single character symbols using the "
                              "following..."_s,
                              lstStrictPrefixRemapAll, u"lblStrictPrefix"_s),
                      u"Remap All"_s);
    tabMethod->addTab(makeTab(u"SyncDouble"_s, u"This will replace all double symbols!"_s,
                              u"Double character symbols will be synchronized to single character symbols using "
                              "the following..."_s,
                              lstStrictPrefixSyncDouble, u"lblStrictPrefix2"_s),
                      u"Sync Double"_s);

    btnOK = new QPushButton(u"OK"_s, this);
    btnOK->setObjectName(u"btnOK"_s);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(u"Cancel"_s, this);
    btnCancel->setObjectName(u"btnCancel"_s);
    connect(btnOK, &QPushButton::clicked, this, &frmRemapSymbols::okClicked);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabMethod);
    layout->addLayout(buttons);
}

QWidget *frmRemapSymbols::makeTab(const QString &suffix, const QString &title, const QString &description,
                                  QComboBox *&list, const QString &labelName)
{
    auto *page = new QWidget(this);
    auto *lblTitle = new QLabel(title, page);
    lblTitle->setObjectName(u"lblTitle"_s + suffix);
    QFont bold = lblTitle->font();
    bold.setBold(true);
    lblTitle->setFont(bold);
    auto *lblDesc = new QLabel(description, page);
    lblDesc->setObjectName(u"lblDesc"_s + suffix);
    lblDesc->setWordWrap(true);
    lblDesc->setMinimumWidth(320);

    list = new QComboBox(page);
    list->setObjectName(u"lstStrictPrefix"_s + suffix);
    list->setMaxVisibleItems(20);
    const QString &prefixes = prefixAlphabet();
    for (QChar c : prefixes)
        list->addItem(QString(c));
    list->setCurrentIndex(0);
    auto *lblPrefix = new QLabel(u"Strict Prefix for Double Character Symbols:"_s, page);
    lblPrefix->setObjectName(labelName);
    lblPrefix->setBuddy(list);

    auto *prefixRow = new QHBoxLayout;
    prefixRow->addWidget(lblPrefix);
    prefixRow->addWidget(list);
    prefixRow->addStretch(1);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(lblTitle);
    layout->addWidget(lblDesc);
    layout->addLayout(prefixRow);
    layout->addStretch(1);
    return page;
}

RemapChoice frmRemapSymbols::choice() const
{
    RemapChoice choice;
    const bool syncDouble = tabMethod->currentIndex() == 1;
    choice.method = syncDouble ? RemapChoice::SyncDouble : RemapChoice::RemapAll;
    choice.prefixIndex = (syncDouble ? lstStrictPrefixSyncDouble : lstStrictPrefixRemapAll)->currentIndex();
    return choice;
}

bool frmRemapSymbols::run(const std::function<bool(const RemapChoice &)> &accept)
{
    m_accept = accept;
    const bool accepted = exec() == QDialog::Accepted;
    m_accept = nullptr;
    return accepted;
}

void frmRemapSymbols::okClicked()
{
    // A No to the method's question keeps the dialog open.
    if (!m_accept || m_accept(choice()))
        accept();
}
