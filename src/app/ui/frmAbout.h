#pragma once

#include <QDialog>

// The about box: product name, version, what the program is for, and a button
// that shows the system's information.
class frmAbout : public QDialog {
    Q_OBJECT

public:
    explicit frmAbout(QWidget *parent = nullptr);

    // "0.9 Beta 1": major.minor and the release comment of the build.
    static QString versionText();
    // Lines describing this machine (operating system, kernel, CPU, Qt, screen).
    static QStringList systemInfoLines();

private:
    void showSystemInfo();
};
