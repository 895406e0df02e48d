#include "app/ui/SettingsTab.h"

#include "app/ui/FieldText.h"
#include "formats/ui/AttributeValueValidator.h"
#include "formats/ui/usrColor.h"
#include "formats/ui/usrPercentage.h"
#include "formats/ui/usrPosition.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Room for a texture file name such as "cobblestone_wall.jpg".
constexpr int textureNameLength = 20;

QFormLayout *makeForm(QGroupBox *group)
{
    auto *form = new QFormLayout(group);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    return form;
}

} // namespace

SettingsTab::SettingsTab(QWidget *parent) : QWidget(parent)
{
    setObjectName(u"SettingsTab"_s);

    grpPlaceholder = new QGroupBox(tr("Placeholder"), this);
    grpPlaceholder->setObjectName(u"grpPlaceholder"_s);
    lstPlaceholderTexture = makeTextureBox(u"lstPlaceholderTexture"_s, StyleField::PlaceholderTexture);

    grpSky = new QGroupBox(tr("Sky"), this);
    grpSky->setObjectName(u"grpSky"_s);
    lstSkyTexture = makeTextureBox(u"lstSkyTexture"_s, StyleField::SkyTexture);
    rgbSky = new usrColor(this);
    rgbSky->setObjectName(u"rgbSky"_s);
    prcSky = new usrPercentage(this);
    prcSky->setObjectName(u"prcSky"_s);

    grpGround = new QGroupBox(tr("Ground"), this);
    grpGround->setObjectName(u"grpGround"_s);
    lstGroundTexture = makeTextureBox(u"lstGroundTexture"_s, StyleField::GroundTexture);
    rgbGround = new usrColor(this);
    rgbGround->setObjectName(u"rgbGround"_s);

    grpOrb = new QGroupBox(tr("Orb"), this);
    grpOrb->setObjectName(u"grpOrb"_s);
    lstOrbTexture = makeTextureBox(u"lstOrbTexture"_s, StyleField::OrbTexture);
    rgbOrb = new usrColor(this);
    rgbOrb->setObjectName(u"rgbOrb"_s);
    prcOrb = new usrPercentage(this);
    prcOrb->setObjectName(u"prcOrb"_s);
    posOrb = new usrPosition(this);
    posOrb->setObjectName(u"posOrb"_s);
    fldOrbHREF = makeTextField(this, u"fldOrbHREF"_s, StyleField::OrbHref, m_showing);
    fldOrbTarget = makeTextField(this, u"fldOrbTarget"_s, StyleField::OrbTarget, m_showing);
    fldOrbText = makeTextField(this, u"fldOrbText"_s, StyleField::OrbText, m_showing);

    grpSymbol = new QGroupBox(tr("Symbol Synchronization"), this);
    grpSymbol->setObjectName(u"grpSymbol"_s);
    cbxStrictPrefix = new QCheckBox(tr("Strict prefix for double character symbols:"), this);
    cbxStrictPrefix->setObjectName(u"cbxStrictPrefix"_s);
    lstStrictPrefix = new QComboBox(this);
    lstStrictPrefix->setObjectName(u"lstStrictPrefix"_s);
    lstStrictPrefix->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    lstStrictPrefix->setMaxVisibleItems(20);
    lstStrictPrefix->setToolTip(tr("First character of every double character symbol"));
    cbxSyncDouble = new QCheckBox(tr("Synchronize double character symbols"), this);
    cbxSyncDouble->setObjectName(u"cbxSyncDouble"_s);

    const std::pair<usrColor *, StyleField> colors[] = {
        {rgbSky, StyleField::SkyColor}, {rgbGround, StyleField::GroundColor}, {rgbOrb, StyleField::OrbColor}};
    for (const auto &[control, field] : colors) {
        connect(control, &usrColor::Change, this, [this, control = control, field = field] {
            if (!m_showing)
                emit styleValueEdited(field, control->rgb());
        });
    }
    const std::pair<usrPercentage *, StyleField> percentages[] = {{prcSky, StyleField::SkyBrightness},
                                                                  {prcOrb, StyleField::OrbBrightness}};
    for (const auto &[control, field] : percentages) {
        connect(control, &usrPercentage::Change, this, [this, control = control, field = field] {
            if (!m_showing)
                emit styleValueEdited(field, control->percentage());
        });
    }
    connect(posOrb, &usrPosition::Change, this, [this] {
        if (!m_showing)
            emit styleValueEdited(StyleField::OrbPosition, posOrb->position());
    });

    const auto symbolsEdited = [this] {
        if (!m_showing)
            emit symbolControlsEdited();
    };
    connect(cbxSyncDouble, &QCheckBox::toggled, this, symbolsEdited);
    // The strict prefix box and list report the user's own actions only; the
    // window decides what they do to the symbols and shows the result.
    connect(cbxStrictPrefix, &QCheckBox::clicked, this, [this](bool checked) {
        if (!m_showing)
            emit strictPrefixClicked(checked);
    });
    connect(lstStrictPrefix, &QComboBox::activated, this, [this](int index) {
        if (!m_showing)
            emit prefixListChosen(index);
    });
    lstStrictPrefix->installEventFilter(this);

    buildLayout();
    paintPrefixList(lstStrictPrefix->isEnabled());
}

QComboBox *SettingsTab::makeTextureBox(const QString &name, StyleField field)
{
    auto *box = new QComboBox(this);
    box->setObjectName(name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(textureNameLength);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    // Typed text is not completed from the list, so that leaving the box keeps
    // exactly what was typed (a texture may be named before it is added).
    box->setCompleter(nullptr);
    box->setValidator(new AttributeValueValidator(box));
    box->installEventFilter(this);
    m_textureBoxes.append({box, field});
    return box;
}

QLabel *SettingsTab::makeLabel(const QString &name, const QString &caption, QWidget *buddy)
{
    auto *label = new QLabel(caption, this);
    label->setObjectName(name);
    label->setBuddy(buddy);
    return label;
}

void SettingsTab::buildLayout()
{
    // The same letter is given to the labels of equal meaning: pressing it again
    // moves on to the next box of that kind (sky, ground, orb).
    const QString texture = tr("Text&ure:");
    const QString color = tr("&Color:");
    const QString brightness = tr("Bri&ghtness:");

    QFormLayout *form = makeForm(grpPlaceholder);
    m_leftLabels << makeLabel(u"lblPlaceholderTexture"_s, texture, lstPlaceholderTexture);
    form->addRow(m_leftLabels.last(), lstPlaceholderTexture);

    form = makeForm(grpSky);
    m_leftLabels << makeLabel(u"lblSkyTexture"_s, texture, lstSkyTexture);
    form->addRow(m_leftLabels.last(), lstSkyTexture);
    m_leftLabels << makeLabel(u"lblSkyColor"_s, color, rgbSky);
    form->addRow(m_leftLabels.last(), rgbSky);
    m_leftLabels << makeLabel(u"lblSkyBrightness"_s, brightness, prcSky);
    form->addRow(m_leftLabels.last(), prcSky);

    form = makeForm(grpGround);
    m_leftLabels << makeLabel(u"lblGroundTexture"_s, texture, lstGroundTexture);
    form->addRow(m_leftLabels.last(), lstGroundTexture);
    m_leftLabels << makeLabel(u"lblGroundColor"_s, color, rgbGround);
    form->addRow(m_leftLabels.last(), rgbGround);

    form = makeForm(grpOrb);
    m_rightLabels << makeLabel(u"lblOrbTexture"_s, texture, lstOrbTexture);
    form->addRow(m_rightLabels.last(), lstOrbTexture);
    m_rightLabels << makeLabel(u"lblOrbColor"_s, color, rgbOrb);
    form->addRow(m_rightLabels.last(), rgbOrb);
    m_rightLabels << makeLabel(u"lblOrbBrightness"_s, brightness, prcOrb);
    form->addRow(m_rightLabels.last(), prcOrb);
    m_rightLabels << makeLabel(u"lblOrbPosition"_s, tr("&Position:"), posOrb);
    form->addRow(m_rightLabels.last(), posOrb);
    m_rightLabels << makeLabel(u"lblOrbHREF"_s, tr("&Link URL:"), fldOrbHREF);
    form->addRow(m_rightLabels.last(), fldOrbHREF);
    m_rightLabels << makeLabel(u"lblOrbTarget"_s, tr("T&arget:"), fldOrbTarget);
    form->addRow(m_rightLabels.last(), fldOrbTarget);
    m_rightLabels << makeLabel(u"lblOrbText"_s, tr("Te&xt:"), fldOrbText);
    form->addRow(m_rightLabels.last(), fldOrbText);

    // Labels line up across the groups of one column.
    for (const QList<QLabel *> *column : {&m_leftLabels, &m_rightLabels}) {
        int width = 0;
        for (const QLabel *label : *column)
            width = std::max(width, label->sizeHint().width());
        for (QLabel *label : *column)
            label->setMinimumWidth(width);
    }

    auto *symbols = new QVBoxLayout(grpSymbol);
    auto *prefixRow = new QHBoxLayout;
    prefixRow->addWidget(cbxStrictPrefix);
    prefixRow->addWidget(lstStrictPrefix);
    prefixRow->addStretch(1);
    symbols->addLayout(prefixRow);
    symbols->addWidget(cbxSyncDouble);

    auto *left = new QVBoxLayout;
    left->addWidget(grpPlaceholder);
    left->addWidget(grpSky);
    left->addWidget(grpGround);
    left->addStretch(1);

    // The orb group stretches to the height of the left column, so that both
    // columns end on one line.
    auto *page = new QGridLayout(this);
    page->addLayout(left, 0, 0);
    page->addWidget(grpOrb, 0, 1);
    page->addWidget(grpSymbol, 1, 0, 1, 2);
    page->setRowStretch(2, 1);
    page->setColumnStretch(0, 1);
    page->setColumnStretch(1, 1);
}

void SettingsTab::showValues(const StyleValues &style, const QStringList &textureNames)
{
    const QScopedValueRollback guard(m_showing, true);
    setTextureNames(textureNames);
    showTexture(lstPlaceholderTexture, style.placeholderTexture);
    showTexture(lstSkyTexture, style.skyTexture);
    showTexture(lstGroundTexture, style.groundTexture);
    showTexture(lstOrbTexture, style.orbTexture);

    const auto showColor = [](usrColor *control, const QString &value) {
        if (control->rgb() == value)
            return;
        control->clear();
        control->setRGB(value);
    };
    showColor(rgbSky, style.skyColor);
    showColor(rgbGround, style.groundColor);
    showColor(rgbOrb, style.orbColor);
    const auto showPercentage = [](usrPercentage *control, const QString &value) {
        if (control->percentage() == value)
            return;
        control->clear();
        // The document holds what the control shows, so a single digit comes back
        // as "7%", which the control's own setter refuses as too short; the
        // zero-padded form means the same and is taken.
        control->setPercentage(value.size() == 2 ? u'0' + value : value);
    };
    showPercentage(prcSky, style.skyBrightness);
    showPercentage(prcOrb, style.orbBrightness);
    if (posOrb->position() != style.orbPosition) {
        posOrb->clear();
        posOrb->setPosition(style.orbPosition);
    }
    setTextIfDifferent(fldOrbHREF, style.orbHref);
    setTextIfDifferent(fldOrbTarget, style.orbTarget);
    setTextIfDifferent(fldOrbText, style.orbText);
}

void SettingsTab::setTextureNames(const QStringList &textureNames)
{
    const QScopedValueRollback guard(m_showing, true);
    for (const TextureBox &entry : std::as_const(m_textureBoxes)) {
        QComboBox *box = entry.box;
        QStringList current;
        current.reserve(box->count());
        for (int i = 0; i < box->count(); ++i)
            current << box->itemText(i);
        if (current == textureNames)
            continue;
        // Refilling an editable box empties its text; the text shown stays.
        const QString text = box->currentText();
        box->clear();
        box->addItems(textureNames);
        box->setCurrentIndex(-1);
        box->setEditText(text);
    }
}

void SettingsTab::showTexture(QComboBox *box, const QString &text)
{
    if (box->currentText() != text)
        box->setEditText(text);
    // A box that has the focus now starts from what it shows, so that leaving it
    // reports only what the user changes from here on.
    if (box->hasFocus())
        m_rememberedTexture = text;
}

void SettingsTab::showSymbols(const SymbolSettings &symbols)
{
    const QScopedValueRollback guard(m_showing, true);
    m_symbols = symbols;
    cbxStrictPrefix->setChecked(symbols.strictPrefixBoxChecked);
    cbxStrictPrefix->setEnabled(symbols.strictPrefixBoxEnabled);
    cbxSyncDouble->setChecked(symbols.syncDoubleBoxChecked);
    cbxSyncDouble->setEnabled(symbols.syncDoubleBoxEnabled);
    if (symbols.prefixIndex >= 0 && symbols.prefixIndex < lstStrictPrefix->count())
        lstStrictPrefix->setCurrentIndex(symbols.prefixIndex);
    lstStrictPrefix->setEnabled(symbols.prefixListEnabled);
    paintPrefixList(symbols.prefixListEnabled);
}

SymbolSettings SettingsTab::shownSymbols() const
{
    SymbolSettings symbols = m_symbols;
    symbols.strictPrefixBoxChecked = cbxStrictPrefix->isChecked();
    symbols.strictPrefixBoxEnabled = cbxStrictPrefix->isEnabled();
    symbols.syncDoubleBoxChecked = cbxSyncDouble->isChecked();
    symbols.syncDoubleBoxEnabled = cbxSyncDouble->isEnabled();
    symbols.prefixListEnabled = lstStrictPrefix->isEnabled();
    symbols.prefixIndex = std::max(0, lstStrictPrefix->currentIndex());
    return symbols;
}

void SettingsTab::paintPrefixList(bool enabled)
{
    // An enabled list shows the window (edit) background, a disabled one the
    // button face, so that a list that cannot be changed looks it.
    const QPalette page = palette();
    const QColor background = page.color(enabled ? QPalette::Base : QPalette::Button);
    QPalette list = page;
    list.setColor(QPalette::Base, background);
    list.setColor(QPalette::Button, background);
    lstStrictPrefix->setPalette(list);
}

void SettingsTab::fillPrefixList(const QString &prefixAlphabet)
{
    const QScopedValueRollback guard(m_showing, true);
    const int selected = lstStrictPrefix->currentIndex();
    lstStrictPrefix->clear();
    for (const QChar character : prefixAlphabet)
        lstStrictPrefix->addItem(QString(character));
    if (lstStrictPrefix->count() > 0)
        lstStrictPrefix->setCurrentIndex(std::clamp(selected, 0, int(lstStrictPrefix->count()) - 1));
}

void SettingsTab::resetValues()
{
    const QScopedValueRollback guard(m_showing, true);
    for (const TextureBox &entry : std::as_const(m_textureBoxes)) {
        entry.box->clear();
        entry.box->clearEditText();
    }
    m_rememberedTexture.clear();
    rgbSky->clear();
    prcSky->clear();
    rgbGround->clear();
    rgbOrb->clear();
    prcOrb->clear();
    posOrb->clear();
    fldOrbHREF->clear();
    fldOrbTarget->clear();
    fldOrbText->clear();
}

void SettingsTab::checkTextureEdit(QComboBox *box)
{
    const QString text = box->currentText();
    if (text == m_rememberedTexture)
        return;
    m_rememberedTexture = text;
    for (const TextureBox &entry : std::as_const(m_textureBoxes)) {
        if (entry.box == box) {
            emit styleValueEdited(entry.field, text);
            return;
        }
    }
}

void SettingsTab::commitTextureEdit()
{
    for (const TextureBox &entry : std::as_const(m_textureBoxes)) {
        if (entry.box->hasFocus())
            checkTextureEdit(entry.box);
    }
}

bool SettingsTab::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == lstStrictPrefix) {
        if (event->type() == QEvent::FocusIn && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason)
            emit prefixListFocused();
        return QWidget::eventFilter(watched, event);
    }
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        // Opening and closing the drop-down list moves the focus to the list and
        // back; that is still the same visit to the box.
        const auto *focus = static_cast<QFocusEvent *>(event);
        auto *box = qobject_cast<QComboBox *>(watched);
        if (box && focus->reason() != Qt::PopupFocusReason) {
            if (event->type() == QEvent::FocusIn)
                m_rememberedTexture = box->currentText();
            else
                checkTextureEdit(box);
        }
    }
    return QWidget::eventFilter(watched, event);
}

QWidget *SettingsTab::firstField() const
{
    return lstPlaceholderTexture;
}
