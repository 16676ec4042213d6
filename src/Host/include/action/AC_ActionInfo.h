// What an action carries while it is validated or performed.
//
// An action is a slot of a responder, named by text: "onActionToggleShowPegs()", or with one
// integer argument "onActionSetPegPosition(2)". Its validate twin, where the responder has one, is
// the slot of the same name followed by "Validate", taking an AC_ActionInfo *:
// "onActionToggleShowPegsValidate(AC_ActionInfo*)"; it sets the enabled and checked marks.
#pragma once

#include <QString>

enum class AC_Result {
    NotHandled,  // no responder of the chain has the slot, or the responder is unknown
    Handled,     // the slot ran
    Disabled,    // the validate twin disabled the action; the slot did not run
};

// The state a validate twin reports: enabled (by default) and checked (not by default).
class AC_ActionData {
public:
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }
    bool isChecked() const { return checked_; }
    void setChecked(bool checked) { checked_ = checked; }

private:
    bool enabled_ = true;
    bool checked_ = false;
};

class AC_ActionInfo : public AC_ActionData {
public:
    // `responderIdentity` empty: the action goes to the first responder, then the selection
    // responder (see AC_Manager).
    explicit AC_ActionInfo(QString slot, QString responderIdentity = QString())
        : slot_(std::move(slot)), responderIdentity_(std::move(responderIdentity)) {}

    QString const &slot() const { return slot_; }
    QString const &responderIdentity() const { return responderIdentity_; }

private:
    QString slot_;
    QString responderIdentity_;
};
