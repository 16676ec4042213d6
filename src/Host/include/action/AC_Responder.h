// Responders: the objects that actions (menu entries, toolbar buttons, shortcuts) reach by
// identity and slot name.
//
// AC_Responder is the interface the action manager sees. AC_ResponderTemplate gives it an identity,
// a description and a place in an action manager; AC_ResponderTemplateObject<Base> adds the Qt
// side, so that an action runs the slot of that name on the object:
//
//   class MyResponder : public AC_ResponderTemplateObject<QObject> {
//       Q_OBJECT
//   public:
//       MyResponder() : AC_ResponderTemplateObject("MyResponder") { initActionManager(manager); }
//   public slots:
//       void onActionDoIt();
//       void onActionDoItValidate(AC_ActionInfo *info);  // optional
//   };
//
// perform() tries the responder itself and, when it has no such slot, its parentResponder() and so
// up the chain; performDownToChildren() tries the responder, then its QObject children that are
// responders, depth first. Neither runs the validate twin: AC_Manager::trigger does that first.
#pragma once

#include "action/AC_ActionInfo.h"

#include <QObject>
#include <QString>

#include <memory>
#include <utility>

class AC_Manager;
class QEvent;

class AC_Responder {
public:
    virtual ~AC_Responder() = default;

    virtual QString const &responderIdentity() const = 0;
    virtual QString const &responderDescription() const = 0;
    // The next responder up the chain, or null where the chain ends.
    virtual AC_Responder *parentResponder() { return nullptr; }
    // Whether shortcuts may reach this responder.
    virtual bool handleShortcuts() const { return true; }

    // Run the slot named in `info` (null gives NotHandled).
    virtual AC_Result perform(AC_ActionInfo *info) = 0;
    virtual AC_Result performDownToChildren(AC_ActionInfo *info) = 0;
    // Runs the validate twin of the responder of the chain that has the slot, which sets the marks
    // of `info`. Handled when a responder has the slot (with or without a twin), NotHandled else.
    virtual AC_Result validate(AC_ActionInfo *info) = 0;
    // Delivers an event to the responder; true when it was used.
    virtual bool handleEvent(QEvent *) { return false; }
};

class AC_ResponderTemplate : public AC_Responder {
public:
    explicit AC_ResponderTemplate(QString identity, QString description = QString());
    ~AC_ResponderTemplate() override;  // leaves its action manager
    AC_ResponderTemplate(AC_ResponderTemplate const &) = delete;
    AC_ResponderTemplate &operator=(AC_ResponderTemplate const &) = delete;

    // Registers the responder with `manager` (leaving the previous one). Null leaves the
    // responder without a manager: nothing reaches it by identity.
    void initActionManager(AC_Manager *manager);
    AC_Manager *actionManager() const;

    QString const &responderIdentity() const override;
    QString const &responderDescription() const override;
    void setResponderDescription(QString const &description);

    bool handleShortcuts() const override;
    void setHandleShortcuts(bool handle);

    // The first responder receives actions addressed to no responder in particular; the selection
    // responder receives them when the first responder chain does not handle them. Both need an
    // action manager; the become operations give false without one.
    virtual bool acceptsFirstResponder() const { return true; }
    bool becomeFirstResponder();
    bool resignFirstResponder();
    bool isFirstResponder() const;
    bool becomeSelectionResponder();
    bool resignSelectionResponder();
    bool isSelectionResponder() const;

    AC_Result perform(AC_ActionInfo *info) override;
    AC_Result performDownToChildren(AC_ActionInfo *info) override;
    AC_Result validate(AC_ActionInfo *info) override;

protected:
    // The object whose slots the actions run; null for a responder without slots.
    virtual QObject *actionTarget() { return nullptr; }

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// A responder that is also a `Base` (QObject or a class derived from it): its actions are its slots.
template <class Base>
class AC_ResponderTemplateObject : public Base, public AC_ResponderTemplate {
public:
    // `baseArgs` go to the constructor of Base (a parent, for instance).
    template <class... Args>
    explicit AC_ResponderTemplateObject(QString const &identity, Args &&...baseArgs)
        : Base(std::forward<Args>(baseArgs)...), AC_ResponderTemplate(identity)
    {
    }

    bool handleEvent(QEvent *event) override { return Base::event(event); }

protected:
    QObject *actionTarget() override { return this; }
};
