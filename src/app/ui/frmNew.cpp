#include "app/ui/frmNew.h"

#include "symbols/SymbolScheme.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmNew::frmNew(bool strictPrefixSetting, bool syncDoubleSetting, QWidget *parent)
    : QDialog(parent),
      m_syncDoubleSetting(syncDoubleSetting),
      m_centreOn(QApplication::activeWindow())
{
    setObjectName(u"frmNew"_s);
    setWindowTitle(u"New Blockset"_s);
    setModal(true);
    // No close box: the dialog ends only through OK.
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);

    m_fldNewName = new QLineEdit(this);
    m_fldNewName->setObjectName(u"fldNewName"_s);
    m_fldNewVersion = new QLineEdit(this);
    m_fldNewVersion->setObjectName(u"fldNewVersion"_s);
    auto *lblNewName = new QLabel(u"&Name:"_s, this);
    lblNewName->setObjectName(u"lblNewName"_s);
    lblNewName->setBuddy(m_fldNewName);
    auto *lblNewVersion = new QLabel(u"&Version:"_s, this);
    lblNewVersion->setObjectName(u"lblNewVersion"_s);
    lblNewVersion->setBuddy(m_fldNewVersion);

    m_cbxNewStrictPrefix = new QCheckBox(u"Strict prefix for double character symbols:"_s, this);
    m_cbxNewStrictPrefix->setObjectName(u"cbxNewStrictPrefix"_s);
    m_lstNewStrictPrefix = new QComboBox(this);
    m_lstNewStrictPrefix->setObjectName(u"lstNewStrictPrefix"_s);
    m_lstNewStrictPrefix->setMinimumContentsLength(3);
    m_cbxNewSyncDouble = new QCheckBox(u"Synchronize double character symbols"_s, this);
    m_cbxNewSyncDouble->setObjectName(u"cbxNewSyncDouble"_s);

    m_okButton = new QPushButton(u"OK"_s, this);
    m_okButton->setObjectName(u"OKButton"_s);
    m_okButton->setDefault(true);

    auto *fields = new QGridLayout;
    fields->addWidget(lblNewName, 0, 0);
    fields->addWidget(m_fldNewName, 0, 1);
    fields->addWidget(lblNewVersion, 1, 0);
    fields->addWidget(m_fldNewVersion, 1, 1);
    fields->setColumnStretch(1, 1);

    auto *prefixRow = new QHBoxLayout;
    prefixRow->addWidget(m_cbxNewStrictPrefix);
    prefixRow->addWidget(m_lstNewStrictPrefix);
    prefixRow->addStretch(1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_okButton);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addSpacing(6);
    layout->addLayout(prefixRow);
    layout->addWidget(m_cbxNewSyncDouble);
    layout->addSpacing(6);
    layout->addLayout(buttons);
    setMinimumWidth(360);

    // One entry per character of the prefix alphabet, in its order; the first (".") is chosen.
    m_lstNewStrictPrefix->clear();
    for (const QChar c : prefixAlphabet())
        m_lstNewStrictPrefix->addItem(QString(c));
    m_fldNewName->clear();
    m_fldNewVersion->clear();
    m_lstNewStrictPrefix->setCurrentIndex(0);

    if (strictPrefixSetting) {
        m_cbxNewStrictPrefix->setChecked(true);
        m_cbxNewSyncDouble->setChecked(syncDoubleSetting);
        setPrefixListEnabled(true);
    } else {
        m_cbxNewStrictPrefix->setChecked(false);
        m_cbxNewSyncDouble->setChecked(false);
        // Sync double is only ever offered together with the strict prefix.
        m_cbxNewSyncDouble->setEnabled(false);
        setPrefixListEnabled(false);
    }

    connect(m_cbxNewStrictPrefix, &QCheckBox::clicked, this, &frmNew::strictPrefixClicked);
    connect(m_okButton, &QPushButton::clicked, this, &frmNew::okClicked);
}

NewBlocksetChoice frmNew::ask(bool strictPrefixSetting, bool syncDoubleSetting)
{
    frmNew dialog(strictPrefixSetting, syncDoubleSetting, QApplication::activeWindow());
    dialog.exec();
    return dialog.choice();
}

NewBlocksetChoice frmNew::choice() const
{
    NewBlocksetChoice result;
    result.name = m_fldNewName->text();
    result.version = m_fldNewVersion->text();
    result.strictPrefix = intNewStrictPrefix != 0;
    result.syncDouble = intNewSyncDouble != 0;
    result.prefixIndex = qMax(0, m_lstNewStrictPrefix->currentIndex());
    return result;
}

void frmNew::reject()
{
    // Deliberately empty: the dialog has no Cancel.
}

void frmNew::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_centreOn && m_centreOn != this) {
        const QRect owner = m_centreOn->frameGeometry();
        const QRect own = frameGeometry();
        move(owner.left() + (owner.width() - own.width()) / 2, owner.top() + (owner.height() - own.height()) / 2);
    }
}

void frmNew::strictPrefixClicked(bool checked)
{
    setPrefixListEnabled(checked);
    if (checked) {
        m_cbxNewSyncDouble->setEnabled(true);
        m_cbxNewSyncDouble->setChecked(m_syncDoubleSetting);
    } else {
        m_cbxNewSyncDouble->setChecked(false);
        m_cbxNewSyncDouble->setEnabled(false);
    }
}

void frmNew::setPrefixListEnabled(bool enabled)
{
    // Enabled: window background; disabled: button face, as the other prefix lists show it.
    m_lstNewStrictPrefix->setEnabled(enabled);
    QPalette palette = m_lstNewStrictPrefix->palette();
    const QColor background =
        enabled ? QApplication::palette().color(QPalette::Base) : QApplication::palette().color(QPalette::Button);
    palette.setColor(QPalette::All, QPalette::Base, background);
    m_lstNewStrictPrefix->setPalette(palette);
}

void frmNew::okClicked()
{
    intNewStrictPrefix = m_cbxNewStrictPrefix->isChecked() ? 1 : 0;
    intNewSyncDouble = m_cbxNewSyncDouble->isChecked() ? 1 : 0;
    accept();
}
