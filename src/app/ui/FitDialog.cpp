#include "app/ui/FitDialog.h"

#include "app/BlocksetSize.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QSoundEffect>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPreviewSide = 200;

QPixmap picture(const QByteArray &bytes)
{
    QPixmap pixmap;
    pixmap.loadFromData(bytes);
    if (pixmap.width() > kPreviewSide || pixmap.height() > kPreviewSide)
        pixmap = pixmap.scaled(kPreviewSide, kPreviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return pixmap;
}

} // namespace

FitDialog::FitDialog(FitPlan &plan, std::function<QByteArray(const QString &)> itemBytes, QWidget *parent)
    : QDialog(parent),
      m_plan(plan),
      m_itemBytes(std::move(itemBytes))
{
    setObjectName(u"frmFit"_s);
    setWindowTitle(u"Fit Blockset for the Web"_s);
    auto *intro = new QLabel(u"Steps that bring the blockset under the 307,200 bytes Rover accepts from a web "
                             "address, least lossy first. Nothing changes until you press OK."_s,
                             this);
    intro->setWordWrap(true);
    m_steps = new QTreeWidget(this);
    m_steps->setObjectName(u"FitSteps"_s);
    m_steps->setRootIsDecorated(false);
    m_steps->setHeaderLabels({u"Item"_s, u"Step"_s, u"Bytes saved"_s});
    m_steps->headerItem()->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    m_size = new QLabel(this);
    m_size->setObjectName(u"lblFitSize"_s);

    m_before = new QLabel(this);
    m_after = new QLabel(this);
    for (QLabel *label : {m_before, m_after}) {
        label->setMinimumSize(kPreviewSide, kPreviewSide);
        label->setAlignment(Qt::AlignCenter);
        label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    }
    m_playBefore = new QPushButton(u"Play before"_s, this);
    m_playAfter = new QPushButton(u"Play after"_s, this);
    connect(m_playBefore, &QPushButton::clicked, this, [this] {
        if (QTreeWidgetItem *item = m_steps->currentItem())
            play(before(m_plan.steps[m_steps->indexOfTopLevelItem(item)]));
    });
    connect(m_playAfter, &QPushButton::clicked, this, [this] {
        if (QTreeWidgetItem *item = m_steps->currentItem())
            play(m_plan.steps[m_steps->indexOfTopLevelItem(item)].content);
    });
    auto *preview = new QGridLayout;
    preview->addWidget(new QLabel(u"Before"_s, this), 0, 0, Qt::AlignCenter);
    preview->addWidget(new QLabel(u"After"_s, this), 0, 1, Qt::AlignCenter);
    preview->addWidget(m_before, 1, 0);
    preview->addWidget(m_after, 1, 1);
    preview->addWidget(m_playBefore, 2, 0);
    preview->addWidget(m_playAfter, 2, 1);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_steps, 1);
    layout->addWidget(m_size);
    layout->addLayout(preview);
    layout->addWidget(buttons);
    resize(680, 640);

    connect(m_steps, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        if (!m_filling && column == 0)
            stepChanged(m_steps->indexOfTopLevelItem(item), item->checkState(0) == Qt::Checked);
    });
    connect(m_steps, &QTreeWidget::currentItemChanged, this, &FitDialog::showPreview);
    fill();
    if (m_steps->topLevelItemCount() > 0)
        m_steps->setCurrentItem(m_steps->topLevelItem(0));
    showPreview();
}

void FitDialog::fill()
{
    m_filling = true;
    if (m_steps->topLevelItemCount() != m_plan.steps.size()) {
        m_steps->clear();
        for (const FitStep &step : std::as_const(m_plan.steps)) {
            auto *item = new QTreeWidgetItem(m_steps, {step.path, step.text, BlocksetSize::groupedBytes(step.saved)});
            item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        }
        m_steps->resizeColumnToContents(0);
        m_steps->resizeColumnToContents(1);
    }
    for (qsizetype i = 0; i < m_plan.steps.size(); ++i)
        m_steps->topLevelItem(int(i))->setCheckState(0, m_plan.steps[i].chosen ? Qt::Checked : Qt::Unchecked);
    const qint64 size = m_plan.sizeAfter();
    m_size->setText(u"With the chosen steps the blockset takes %1 bytes (%2): %3"_s.arg(
        BlocksetSize::groupedBytes(size), BlocksetSize::shareOfLimit(size),
        m_plan.fits() ? u"Rover accepts it from a web address."_s : u"still too large for Rover."_s));
    m_filling = false;
}

void FitDialog::stepChanged(int index, bool chosen)
{
    m_plan.choose(index, chosen);
    fill();
}

QByteArray FitDialog::before(const FitStep &step) const
{
    return step.previous >= 0 ? m_plan.steps[step.previous].content : m_itemBytes(step.path);
}

void FitDialog::showPreview()
{
    QTreeWidgetItem *item = m_steps->currentItem();
    const int index = item ? m_steps->indexOfTopLevelItem(item) : -1;
    const bool sound = index >= 0 && m_plan.steps[index].path.startsWith(u"sounds/"_s);
    m_playBefore->setVisible(sound);
    m_playAfter->setVisible(sound);
    m_before->setVisible(!sound);
    m_after->setVisible(!sound);
    if (index < 0 || sound)
        return;
    const FitStep &step = m_plan.steps[index];
    m_before->setPixmap(picture(before(step)));
    m_after->setPixmap(picture(step.content));
}

void FitDialog::play(const QByteArray &bytes)
{
    // QSoundEffect plays files: each sound gets one of its own in a private folder.
    const QString path = m_soundFolder.filePath(u"sound%1.wav"_s.arg(++m_soundCount));
    QFile file(path);
    if (!m_soundFolder.isValid() || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return;
    file.close();
    if (!m_sound)
        m_sound = new QSoundEffect(this);
    m_sound->stop();
    m_sound->setSource(QUrl::fromLocalFile(path));
    m_sound->play();
}
