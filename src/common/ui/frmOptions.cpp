#include "common/ui/frmOptions.h"

#include "common/RegistryWrapper.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmOptions::frmOptions(RegistryWrapper &settings, QWidget *parent) : QDialog(parent), m_settings(settings)
{
    setObjectName(u"frmOptions"_s);
    setWindowTitle(u"Options"_s);

    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    auto addBox = [&](const QString &name, const QString &caption, const QString &setting, int indent = 0) {
        auto *box = new QCheckBox(caption, this);
        box->setObjectName(name);
        // Each box shows the stored setting, read now.
        box->setChecked(m_settings.getBoolSetting(setting));
        if (indent > 0) {
            auto *row = new QHBoxLayout;
            row->addSpacing(indent);
            row->addWidget(box);
            layout->addLayout(row);
        } else {
            layout->addWidget(box);
        }
        return box;
    };
    cbxShowWarnings = addBox(u"cbxShowWarnings"_s, u"Show Warnings"_s, u"showWarnings"_s);
    cbxSyncBlockset = addBox(u"cbxSyncBlockset"_s, u"Synchronize Blockset Name with Filename"_s, u"syncBlockset"_s);
    cbxSyncBlock = addBox(u"cbxSyncBlock"_s, u"Synchronize Block Name with Filename"_s, u"syncBlock"_s);
    cbxStrictPrefix =
        addBox(u"cbxStrictPrefix"_s, u"Use Strict Prefix for Double Character Symbols"_s, u"strictPrefix"_s);
    cbxSyncDouble = addBox(u"cbxSyncDouble"_s, u"Synchronize Single and Double Character Symbols"_s, u"syncDouble"_s,
                           // Indented under the strict prefix, on which it depends.
                           style()->pixelMetric(QStyle::PM_IndicatorWidth) + 6);
    cbxSkipEdit = addBox(u"cbxSkipEdit"_s, u"Skip Edit Symbols Dialog"_s, u"skipEdit"_s);
    cbxUpdateFile = addBox(u"cbxUpdateFile"_s, u"Save Update File along with Blockset"_s, u"updateFile"_s);

    // Without a strict prefix the double symbols cannot be kept in step; the
    // box keeps the state it was stored with.
    if (!cbxStrictPrefix->isChecked())
        cbxSyncDouble->setEnabled(false);
    // Only the user's click couples the two boxes, not the loading above.
    connect(cbxStrictPrefix, &QCheckBox::clicked, this, &frmOptions::strictPrefixClicked);

    layout->addSpacing(6);
    auto *buttons = new QDialogButtonBox(this);
    cmdOK = buttons->addButton(u"OK"_s, QDialogButtonBox::AcceptRole);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdCancel = buttons->addButton(u"Cancel"_s, QDialogButtonBox::RejectRole);
    cmdCancel->setObjectName(u"cmdCancel"_s);
    // Enter presses OK; Esc is Cancel (QDialog's reject).
    cmdOK->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &frmOptions::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &frmOptions::reject);
    layout->addWidget(buttons);

    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void frmOptions::strictPrefixClicked(bool checked)
{
    cbxSyncDouble->setEnabled(checked);
    cbxSyncDouble->setChecked(checked);
}

void frmOptions::accept()
{
    auto on = [](const QCheckBox *box) { return box->checkState() != Qt::Unchecked; };
    // Written in this order; a failed write is ignored (the store reports none).
    m_settings.setBoolSetting(u"showWarnings"_s, on(cbxShowWarnings));
    m_settings.setBoolSetting(u"syncBlockset"_s, on(cbxSyncBlockset));
    m_settings.setBoolSetting(u"syncBlock"_s, on(cbxSyncBlock));
    m_settings.setBoolSetting(u"syncDouble"_s, on(cbxSyncDouble));
    m_settings.setBoolSetting(u"strictPrefix"_s, on(cbxStrictPrefix));
    m_settings.setBoolSetting(u"skipEdit"_s, on(cbxSkipEdit));
    m_settings.setBoolSetting(u"updateFile"_s, on(cbxUpdateFile));
    QDialog::accept();
}
