#include "cache/ui/frmBlocksetInfo.h"

#include "cache/CacheManager.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmBlocksetInfo::frmBlocksetInfo(const CacheRow &row, QWidget *parent) : QDialog(parent)
{
    setObjectName(u"frmBlocksetInfo"_s);
    setWindowTitle(u"Blockset Info"_s);
    auto *form = new QFormLayout;
    const auto add = [this, form](const QString &name, const QString &title, const QString &text) {
        auto *label = new QLabel(text, this);
        label->setObjectName(name);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setWordWrap(name == u"lblSynopsis"_s || name == u"lblCopyright"_s);
        form->addRow(title, label);
        return label;
    };
    add(u"lblFileName"_s, u"File name:"_s, row.fileName);
    lblURL = add(u"lblURL"_s, u"URL:"_s, row.url());
    add(u"lblVersion"_s, u"Version:"_s, row.version);
    add(u"lblSize"_s, u"Size:"_s, CacheManager::cellText(row, CacheManager::Size));
    add(u"lblUpdated"_s, u"Last updated"_s, row.lastUpdatedText());
    add(u"lblName"_s, u"Name:"_s, row.name);
    add(u"lblSynopsis"_s, u"Synopsis:"_s, row.synopsis);
    add(u"lblAuthor"_s, u"Author:"_s, row.author);
    add(u"lblCopyright"_s, u"Copyright:"_s, row.copyright);
    add(u"lblBlocks"_s, u"Blocks:"_s, CacheManager::cellText(row, CacheManager::Blocks));
    add(u"lblTextures"_s, u"Textures:"_s, CacheManager::cellText(row, CacheManager::Textures));
    add(u"lblSounds"_s, u"Sounds:"_s, CacheManager::cellText(row, CacheManager::Sounds));

    auto *buttons = new QHBoxLayout;
    const auto button = [this, buttons](const QString &name, const QString &caption) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(name);
        buttons->addWidget(b);
        return b;
    };
    connect(button(u"btnCopyTag"_s, u"Copy Tag"_s), &QPushButton::clicked, this,
            [this] { copyText(u"<blockset href=\""_s + lblURL->text() + u"\"/>"_s); });
    connect(button(u"btnCopyURL"_s, u"Copy URL"_s), &QPushButton::clicked, this, [this] { copyText(lblURL->text()); });
    buttons->addStretch();
    QPushButton *ok = button(u"OKButton"_s, u"OK"_s);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setMinimumWidth(420);

    // Centred over the window that asked for it, else the one active now.
    if (QWidget *active = parent ? parent->window() : QApplication::activeWindow()) {
        adjustSize();
        const QRect frame = active->geometry();
        move(frame.center() - QPoint(width() / 2, height() / 2));
    }
}

void frmBlocksetInfo::copyText(const QString &text)
{
    QClipboard *clipboard = QApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}
