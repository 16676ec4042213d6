// The action manager: reaches responders by identity and their actions by slot name, owns the
// shortcut manager and the folders where action icons are looked up.
//
// An action is addressed by (responder identity, slot). trigger() first asks the validate twin
// whether the action is enabled, then performs it through the responder's chain. An action with an
// empty responder identity goes to the first responder's chain, then to the selection responder's.
// Responders register themselves (AC_ResponderTemplate::initActionManager) and leave when they are
// destroyed; the manager owns none of them.
#pragma once

#include "action/AC_ActionInfo.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class AC_Responder;
class AC_ShortcutManager;

class AC_Manager : public QObject {
    Q_OBJECT
public:
    explicit AC_Manager(QObject *parent = nullptr);
    ~AC_Manager() override;

    // Refuses (false) a null responder, an empty identity and an identity already registered.
    bool registerResponder(AC_Responder *responder);
    void unregisterResponder(AC_Responder *responder);
    AC_Responder *responder(QString const &identity) const;

    // Null responders clear the role. A responder must be registered to take one.
    bool setFirstResponder(AC_Responder *responder);
    AC_Responder *firstResponder() const;
    bool setSelectionResponder(AC_Responder *responder);
    AC_Responder *selectionResponder() const;

    // Never null for this manager; callers of the host interface still test it.
    AC_ShortcutManager *shortcutManager() const;
    // The key code bound to the shortcut `id` in the active set (Qt key plus modifier bits; mask
    // with 0x1ffffff for the key alone), or 0.
    int shortcutKeyCode(QString const &id) const;
    // Performs the action bound to `keyCode`, if its responder handles shortcuts.
    AC_Result handleShortcut(int keyCode);

    // Folders searched for action icons, in the order added; empty and repeated folders are ignored.
    void addImageFolder(QString const &folder);
    QStringList imageFolders() const;
    // The path of `fileName` in the first image folder that holds it, or empty.
    QString findImage(QString const &fileName) const;

    // Validates the action: false when no responder handles it, else true with the marks its
    // validate twin set (enabled and unchecked when it has none).
    bool actionState(QString const &responderIdentity, QString const &slot, bool &enabled, bool &checked);
    // Validates, then performs. `forceEnable` performs even when the validate twin disables it.
    AC_Result trigger(QString const &responderIdentity, QString const &slot, bool forceEnable = false);
    // Asks whoever shows actions (menus, toolbars) to validate them again.
    void refreshActionStates();

signals:
    void actionStatesChanged();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
