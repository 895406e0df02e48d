#include "app/ui/frmAbout.h"

#include "common/ProgramVersion.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFont>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSysInfo>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

frmAbout::frmAbout(QWidget *parent) : QDialog(parent)
{
    setObjectName(u"frmAbout"_s);
    setWindowTitle(u"About Cubrix"_s);
    setModal(true);

    // The program's icon, as the window that shows the box carries it.
    auto *icon = new QLabel(this);
    const QIcon programIcon = parent ? parent->window()->windowIcon() : QApplication::windowIcon();
    icon->setPixmap(programIcon.pixmap(48, 48));
    icon->setAlignment(Qt::AlignTop);
    icon->setVisible(!programIcon.isNull());

    auto *lblTitle = new QLabel(u"Cubrix"_s, this);
    lblTitle->setObjectName(u"lblTitle"_s);
    QFont titleFont = lblTitle->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.8);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);

    auto *lblVersion = new QLabel(u"Version "_s + versionText(), this);
    lblVersion->setObjectName(u"lblVersion"_s);
    auto *lblDescription =
        new QLabel(u"An editor for 3DML blocksets: blocks, textures, sounds and style of the .bset archives "
                   "that the Rover browser plug-in shows."_s,
                   this);
    lblDescription->setObjectName(u"lblDescription"_s);
    lblDescription->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    auto *cmdOK = buttons->addButton(u"OK"_s, QDialogButtonBox::AcceptRole);
    cmdOK->setObjectName(u"cmdOK"_s);
    cmdOK->setDefault(true);
    auto *cmdSysInfo = buttons->addButton(u"&System Info..."_s, QDialogButtonBox::ActionRole);
    cmdSysInfo->setObjectName(u"cmdSysInfo"_s);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(cmdSysInfo, &QPushButton::clicked, this, &frmAbout::showSystemInfo);

    auto *texts = new QVBoxLayout;
    texts->addWidget(lblTitle);
    texts->addWidget(lblVersion);
    texts->addSpacing(8);
    texts->addWidget(lblDescription);
    texts->addStretch(1);

    auto *top = new QHBoxLayout;
    top->addWidget(icon);
    top->addSpacing(12);
    top->addLayout(texts, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addSpacing(8);
    layout->addWidget(buttons);
    setMinimumWidth(380);
}

QString frmAbout::versionText()
{
    return programVersion();
}

QStringList frmAbout::systemInfoLines()
{
    QStringList lines;
    lines << u"Operating system: "_s + QSysInfo::prettyProductName();
    lines << u"Kernel: "_s + QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion();
    lines << u"CPU architecture: "_s + QSysInfo::currentCpuArchitecture();
    lines << u"Machine name: "_s + QSysInfo::machineHostName();
    lines << u"Qt version: "_s + QString::fromLatin1(qVersion());
    lines << u"Window system: "_s + QGuiApplication::platformName();
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (int i = 0; i < screens.size(); ++i) {
        const QScreen *screen = screens.at(i);
        const QRect geometry = screen->geometry();
        lines << u"Screen %1: %2 x %3, %4 dpi"_s.arg(i + 1)
                     .arg(geometry.width())
                     .arg(geometry.height())
                     .arg(qRound(screen->logicalDotsPerInch()));
    }
    return lines;
}

void frmAbout::showSystemInfo()
{
    QDialog dialog(this);
    dialog.setObjectName(u"frmSystemInfo"_s);
    dialog.setWindowTitle(u"System Information"_s);
    auto *text = new QPlainTextEdit(&dialog);
    text->setObjectName(u"txtSystemInfo"_s);
    text->setReadOnly(true);
    text->setPlainText(systemInfoLines().join(u'\n'));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(text);
    layout->addWidget(buttons);
    dialog.resize(460, 260);
    dialog.exec();
}
