#include "symbols/ui/SymbolDialog.h"

#include "symbols/SymbolScheme.h"
#include "symbols/ui/frmAddBlock.h"
#include "symbols/ui/frmEditSymbols.h"

#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

SymbolDialogAnswer SymbolDialog::ask(const SymbolDialogSetup &setup, Prompts &prompts, QWidget *parent)
{
    if (setup.kind == SymbolDialogSetup::EditSymbols) {
        frmEditSymbols dialog(setup, prompts, parent);
        dialog.exec();
        return dialog.answer();
    }
    frmAddBlock dialog(setup, parent);
    dialog.exec();
    return dialog.answer();
}

SymbolDialog::SymbolDialog(const SymbolDialogSetup &setup, QWidget *parent) : QDialog(parent), m_setup(setup)
{
    setModal(true);
    setWindowTitle(setup.caption);
    build();
    fill();
}

namespace {

QComboBox *makeList(const QString &name, QWidget *parent)
{
    auto *list = new QComboBox(parent);
    list->setObjectName(name);
    list->setMaxVisibleItems(20);
    list->setMinimumContentsLength(3);
    return list;
}

QLabel *makeLabel(const QString &name, const QString &text, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setBuddy(buddy);
    return label;
}

} // namespace

void SymbolDialog::build()
{
    grpSingle = new QGroupBox(u"Single"_s, this);
    grpSingle->setObjectName(u"grpSingle"_s);
    lstSingleChars = makeList(u"lstSingleChars"_s, grpSingle);
    lblSingle = makeLabel(u"lblSingle"_s, u"&Character:"_s, lstSingleChars, grpSingle);
    auto *singleForm = new QFormLayout(grpSingle);
    singleForm->addRow(lblSingle, lstSingleChars);

    grpDouble = new QGroupBox(u"Double"_s, this);
    grpDouble->setObjectName(u"grpDouble"_s);
    lstDoublePrefix = makeList(u"lstDoublePrefix"_s, grpDouble);
    lblPrefix = makeLabel(u"lblPrefix"_s, u"&Prefix:"_s, lstDoublePrefix, grpDouble);
    lstDoubleChars = makeList(u"lstDoubleChars"_s, grpDouble);
    lblDouble = makeLabel(u"lblDouble"_s, u"C&haracter:"_s, lstDoubleChars, grpDouble);
    fldDoubleChars = new QLineEdit(grpDouble);
    fldDoubleChars->setObjectName(u"fldDoubleChars"_s);
    fldDoubleChars->setMaxLength(2);
    // The symbol the lists make, shown where the text field stands in strict prefix mode.
    lblDoubleShown = new QLabel(grpDouble);
    lblDoubleShown->setObjectName(u"lblDoubleShown"_s);
    lblDoubleChars = makeLabel(u"lblDoubleChars"_s, u"&Symbol:"_s, fldDoubleChars, grpDouble);
    auto *symbolRow = new QHBoxLayout;
    symbolRow->addWidget(fldDoubleChars);
    symbolRow->addWidget(lblDoubleShown);
    auto *doubleForm = new QFormLayout(grpDouble);
    doubleForm->addRow(lblPrefix, lstDoublePrefix);
    doubleForm->addRow(lblDouble, lstDoubleChars);
    doubleForm->addRow(lblDoubleChars, symbolRow);

    btnOK = new QPushButton(u"OK"_s, this);
    btnOK->setObjectName(u"btnOK"_s);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(u"Cancel"_s, this);
    btnCancel->setObjectName(u"btnCancel"_s);
    connect(btnOK, &QPushButton::clicked, this, &SymbolDialog::okClicked);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *groups = new QHBoxLayout;
    groups->addWidget(grpSingle, 0, Qt::AlignTop);
    groups->addWidget(grpDouble, 1);
    m_buttons = new QHBoxLayout;
    m_buttons->addStretch(1);
    m_buttons->addWidget(btnOK);
    m_buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(groups);
    layout->addLayout(m_buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void SymbolDialog::addButton(QPushButton *button)
{
    m_buttons->insertWidget(0, button);
}

void SymbolDialog::fill()
{
    lstSingleChars->addItems(m_setup.singles);
    lstSingleChars->setCurrentIndex(m_setup.singleIndex);

    const bool strict = m_setup.strictPrefix;
    for (QWidget *widget :
         {static_cast<QWidget *>(lblPrefix), static_cast<QWidget *>(lstDoublePrefix), static_cast<QWidget *>(lblDouble),
          static_cast<QWidget *>(lstDoubleChars), static_cast<QWidget *>(lblDoubleShown)})
        widget->setVisible(strict);
    fldDoubleChars->setVisible(!strict);
    if (strict) {
        for (QChar c : prefixAlphabet())
            lstDoublePrefix->addItem(QString(c));
        lstDoublePrefix->setCurrentIndex(m_setup.prefixIndex);
        lstDoublePrefix->setEnabled(false); // the blockset's prefix, always
        lstDoubleChars->addItems(m_setup.doubleChars);
        lstDoubleChars->setCurrentIndex(m_setup.doubleIndex);
        lstDoubleChars->setEnabled(!m_setup.syncDouble);
        lblDoubleChars->setBuddy(lstDoubleChars);
        lblDoubleShown->setText(chosenDouble());
        connect(lstDoubleChars, &QComboBox::currentIndexChanged, this,
                [this] { lblDoubleShown->setText(chosenDouble()); });
    } else {
        fldDoubleChars->setText(m_setup.doubleText);
    }
    lstSingleChars->installEventFilter(this);
    connect(lstSingleChars, &QComboBox::currentIndexChanged, this, &SymbolDialog::singleChanged);
    lstSingleChars->setFocus();
}

bool SymbolDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == lstSingleChars && event->type() == QEvent::FocusIn)
        m_singleRemembered = lstSingleChars->currentIndex();
    return QDialog::eventFilter(watched, event);
}

void SymbolDialog::singleChanged(int index)
{
    if (!m_singleRemembered || !m_setup.syncDouble)
        return;
    lstDoubleChars->setCurrentIndex(index);
    m_singleRemembered = index;
}

QString SymbolDialog::chosenDouble() const
{
    return strictDoubleSymbol(m_setup, lstDoubleChars->currentIndex());
}

void SymbolDialog::okClicked()
{
    QString doubleSymbol;
    if (m_setup.strictPrefix) {
        doubleSymbol = chosenDouble();
    } else {
        doubleSymbol = fldDoubleChars->text();
        if (m_setup.acceptDouble && !m_setup.acceptDouble(doubleSymbol)) {
            fldDoubleChars->setFocus();
            fldDoubleChars->selectAll();
            return;
        }
    }
    m_answer = {true, lstSingleChars->currentText(), doubleSymbol};
    accept();
}
