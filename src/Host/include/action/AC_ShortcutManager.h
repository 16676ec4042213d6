// Keyboard shortcuts: named bindings of a key to an action, grouped in sets.
//
// A shortcut file adds or replaces shortcut definitions; it does not change the active bindings,
// which follow the set made active by applyShortcutSet(). Loading a file and then applying the
// current set again is thus how new entries take effect. The file format:
//
//   <shortcuts>
//     <shortcut id="SHIFT_AND_TRACE_TOOL" text="Shift and Trace Tool"
//               responder="ShiftAndTraceToolResponder" slot="onActionSelectShiftAndTraceTool()"
//               key="Alt+T">                        key: the binding of every set (optional)
//       <key set="Compact" value="T"/>              another binding in the set "Compact"
//     </shortcut>
//     <shortcut id="NEW_IK_TOOL" ... key="Alt+K" preference="QV_HAS_NEW_IK_TOOL"/>
//   </shortcuts>
//
// `preference` names a boolean preference (tuPref) that switches the shortcut's feature on: while
// it is false when a set is applied, the shortcut binds no key, so a file shared by several
// features binds the keys of those that are on only.
//
// Keys are written as QKeySequence portable text with one key combination ("Ctrl+Shift+K").
// `responder` may be left out: the action then goes to the first responder. A file with an error
// is not used at all; the message on standard error names the file, the line and what was expected.
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

class AC_ShortcutManager : public QObject {
    Q_OBJECT
public:
    struct Shortcut {
        QString id;
        QString text;
        QString responderIdentity;
        QString slot;
        QKeySequence key;                         // empty: no binding unless a set gives one
        std::map<QString, QKeySequence> setKeys;  // set name -> binding in that set
        QString preference;                       // empty, or the boolean preference that must be true to bind
    };

    static QString const DefaultSetName;  // "Default", the set active at start

    explicit AC_ShortcutManager(QObject *parent = nullptr);
    ~AC_ShortcutManager() override;

    // Adds the shortcuts of the file; a shortcut whose id exists already is replaced.
    bool loadShortcuts(QString const &path);

    QString currentShortcutSetName() const;
    // The sets named in loaded files, and the default set.
    QStringList shortcutSetNames() const;
    // Makes `name` the active set and rebinds every shortcut to its key in that set, or to its
    // key of every set; a shortcut whose preference is false binds none. An empty name is refused.
    bool applyShortcutSet(QString const &name);

    // The shortcut of that id, or null.
    Shortcut const *shortcut(QString const &id) const;
    // The key code (Qt key plus modifier bits) bound to the shortcut in the active set; 0 if none.
    int keyCode(QString const &id) const;
    // The id of the shortcut bound to `keyCode` in the active set (the first loaded when several
    // are), or empty.
    QString shortcutForKeyCode(int keyCode) const;

signals:
    // The active bindings changed.
    void shortcutsApplied();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
