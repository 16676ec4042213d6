// The preferences dialog: one tab per page (General, Tools, Colours), each page holding a tab
// widget named "tabWidget" where plug-ins add their own tabs (PLUG_PreferenceUI::customizePage).
// Plug-in tabs write tuPref themselves; the General tab here does too.
#pragma once

#include <QDialog>

class PLUG_PreferenceUI;
class QTabWidget;

class AH_PreferencesDialog : public QDialog {
    Q_OBJECT
public:
    // `customizers` may be null: the plug-in tabs are then left out.
    explicit AH_PreferencesDialog(PLUG_PreferenceUI const *customizers, QWidget *parent = nullptr);
    ~AH_PreferencesDialog() override;

    // The page of that kind (PLUG_PreferenceUI::PageKind), or null.
    QWidget *page(int pageKind) const;

private:
    QWidget *addPage(int pageKind, QString const &title);

    QTabWidget *pages_;  // owned by the dialog's widget tree
    PLUG_PreferenceUI const *customizers_;
};
