#pragma once

#include "formats/BlocksetModel.h"

#include <QList>
#include <QStringList>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class usrColor;
class usrPercentage;
class usrPosition;

// The "Setti&ngs" page of the main window: the scene values of the style
// (placeholder, sky, ground, orb) and the symbol synchronization controls.
// It shows what it is given and reports what the user edits; it holds no
// document state of its own.
class SettingsTab : public QWidget {
    Q_OBJECT

public:
    explicit SettingsTab(QWidget *parent = nullptr);

    // Fills the four texture lists with `textureNames` and shows every scene value
    // of `style`, without emitting any edit signal. A colour, percentage or
    // position that its control does not accept leaves that control empty.
    void showValues(const StyleValues &style, const QStringList &textureNames);
    // Refills the four texture lists; the texts shown in the boxes stay.
    void setTextureNames(const QStringList &textureNames);
    // Shows the symbol settings (check and enabled states, the selected prefix)
    // without emitting symbolControlsEdited.
    void showSymbols(const SymbolSettings &symbols);
    // The symbol settings as the controls show them now; the two mode flags are
    // those last given to showSymbols.
    SymbolSettings shownSymbols() const;
    // One entry of lstStrictPrefix per character of `prefixAlphabet`.
    void fillPrefixList(const QString &prefixAlphabet);
    // Empties every value and texture list, without emitting edit signals.
    void resetValues();
    // Reports a texture box edit still pending because the focus has not left the
    // box yet (for commands that run from a toolbar button, which takes no focus).
    void commitTextureEdit();
    // The control that takes the focus when the page is chosen.
    QWidget *firstField() const;

signals:
    // The user changed a scene value; `value` is the control's text after the change.
    void styleValueEdited(StyleField field, const QString &value);
    // The user changed cbxSyncDouble.
    void symbolControlsEdited();
    // The user clicked cbxStrictPrefix, leaving it `checked`.
    void strictPrefixClicked(bool checked);
    // lstStrictPrefix received the focus (not from its own drop-down).
    void prefixListFocused();
    // The user chose the entry `index` of lstStrictPrefix.
    void prefixListChosen(int index);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QGroupBox *grpPlaceholder;
    QComboBox *lstPlaceholderTexture;
    QGroupBox *grpSky;
    QComboBox *lstSkyTexture;
    usrColor *rgbSky;
    usrPercentage *prcSky;
    QGroupBox *grpGround;
    QComboBox *lstGroundTexture;
    usrColor *rgbGround;
    QGroupBox *grpOrb;
    QComboBox *lstOrbTexture;
    usrColor *rgbOrb;
    usrPercentage *prcOrb;
    usrPosition *posOrb;
    QLineEdit *fldOrbHREF;
    QLineEdit *fldOrbTarget;
    QLineEdit *fldOrbText;
    QGroupBox *grpSymbol;
    QCheckBox *cbxStrictPrefix;
    QComboBox *lstStrictPrefix;
    QCheckBox *cbxSyncDouble;
    QComboBox *makeTextureBox(const QString &name, StyleField field);
    QLabel *makeLabel(const QString &name, const QString &caption, QWidget *buddy);
    void buildLayout();
    void paintPrefixList(bool enabled);
    void showTexture(QComboBox *box, const QString &text);
    void checkTextureEdit(QComboBox *box);

    struct TextureBox {
        QComboBox *box;
        StyleField field;
    };
    QList<TextureBox> m_textureBoxes;
    QList<QLabel *> m_leftLabels;
    QList<QLabel *> m_rightLabels;
    // The text of the texture box that had the focus last, as it was when the
    // focus came; shared by the four boxes.
    QString m_rememberedTexture;
    SymbolSettings m_symbols;
    // Set while values are being shown, so that no edit is reported.
    bool m_showing = false;
};
