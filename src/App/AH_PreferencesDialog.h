// The preferences dialog: one tab per page (General, Drawing, Tools, Colours), each page holding a tab
// widget named "tabWidget" where plug-ins add their own tabs (PLUG_PreferenceUI::customizePage).
//
// Tabs need no code of their own to edit preferences: any widget of a page that carries the dynamic
// property "prefKey" (set in the .ui file) is bound to that key of tuPref, by its class:
//   QCheckBox                        a bool key
//   QSpinBox                         an int key
//   QDoubleSpinBox (UI_DoubleEditor) a double key
//   any other button                 an RGBA key: the button shows the colour, a click edits it in
//                                    a QColorDialog with alpha; the colour is also the button's
//                                    "color" property
// Editors of the same key (a form shown on two pages) are kept equal.
// When the dialog opens each bound widget shows the stored value; a key not stored yet, or stored
// with another type, leaves the widget at the value of its form. Nothing is written until OK: then
// every bound key is written (tuPref emits preferenceChanged() once per changed key). Cancel
// writes nothing.
#pragma once

#include <QDialog>

#include <memory>

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

    // The bound widgets, in the order of the pages and of the widget tree; a widget whose
    // "prefKey" is empty or whose class takes no preference is not among them.
    QList<QWidget *> boundWidgets() const;

    // Writes every bound widget's value to tuPref, then closes with QDialog::Accepted.
    void accept() override;

private:
    QWidget *addPage(int pageKind, QString const &title);
    void bindPage(QWidget *page);
    // The other bound editors of the same key and class as `widget`.
    QList<QWidget *> twinsOf(QWidget *widget) const;

    QTabWidget *pages_;  // owned by the dialog's widget tree
    PLUG_PreferenceUI const *customizers_;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
