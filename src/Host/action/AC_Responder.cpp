#include "action/AC_Responder.h"

#include "action/AC_Manager.h"

#include <QMetaMethod>
#include <QPointer>
#include <QRegularExpression>

#include <optional>

namespace {

// A slot text taken apart: "name()" or "name", or "name(<int>)".
struct SlotCall {
    QByteArray name;
    std::optional<int> argument;

    QByteArray signature() const { return name + (argument ? "(int)" : "()"); }
    QByteArray validateSignature() const { return name + "Validate(AC_ActionInfo*)"; }
};

std::optional<SlotCall> parseSlot(QString const &text)
{
    static QRegularExpression const pattern(
        QStringLiteral("^\\s*([A-Za-z_][A-Za-z0-9_]*)\\s*(?:\\(\\s*([-+]?[0-9]+)?\\s*\\))?\\s*$"));
    QRegularExpressionMatch const match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    SlotCall call{match.captured(1).toLatin1(), std::nullopt};
    if (match.lastCapturedIndex() >= 2 && !match.captured(2).isEmpty()) {
        bool ok = false;
        int const value = match.captured(2).toInt(&ok);
        if (!ok)
            return std::nullopt;
        call.argument = value;
    }
    return call;
}

std::optional<QMetaMethod> findSlot(QObject const *object, QByteArray const &signature)
{
    if (!object)
        return std::nullopt;
    QMetaObject const *meta = object->metaObject();
    int const index = meta->indexOfSlot(QMetaObject::normalizedSignature(signature.constData()));
    // QObject's own slots (deleteLater, ...) are no actions.
    if (index < QObject::staticMetaObject.methodCount())
        return std::nullopt;
    return meta->method(index);
}

// Runs the slot of `info` on `object`; NotHandled when it has none.
AC_Result performOn(QObject *object, AC_ActionInfo &info)
{
    std::optional<SlotCall> const call = parseSlot(info.slot());
    if (!call)
        return AC_Result::NotHandled;
    std::optional<QMetaMethod> const slot = findSlot(object, call->signature());
    if (!slot)
        return AC_Result::NotHandled;
    bool const invoked = call->argument
                             ? slot->invoke(object, Qt::DirectConnection, Q_ARG(int, *call->argument))
                             : slot->invoke(object, Qt::DirectConnection);
    return invoked ? AC_Result::Handled : AC_Result::NotHandled;
}

// Runs the validate twin of `info` on `object`, if it has the slot; NotHandled when it has not.
AC_Result validateOn(QObject *object, AC_ActionInfo &info)
{
    std::optional<SlotCall> const call = parseSlot(info.slot());
    if (!call || !findSlot(object, call->signature()))
        return AC_Result::NotHandled;
    if (std::optional<QMetaMethod> const twin = findSlot(object, call->validateSignature())) {
        AC_ActionInfo *argument = &info;
        twin->invoke(object, Qt::DirectConnection, Q_ARG(AC_ActionInfo *, argument));
    }
    return AC_Result::Handled;
}

}  // namespace

struct AC_ResponderTemplate::Impl {
    QString identity;
    QString description;
    QPointer<AC_Manager> manager;  // null once the manager is gone
    bool handleShortcuts = true;
};

AC_ResponderTemplate::AC_ResponderTemplate(QString identity, QString description)
    : impl_(std::make_unique<Impl>())
{
    impl_->identity = std::move(identity);
    impl_->description = std::move(description);
}

AC_ResponderTemplate::~AC_ResponderTemplate()
{
    initActionManager(nullptr);
}

void AC_ResponderTemplate::initActionManager(AC_Manager *manager)
{
    if (impl_->manager == manager)
        return;
    if (impl_->manager)
        impl_->manager->unregisterResponder(this);
    impl_->manager = nullptr;
    if (manager && manager->registerResponder(this))
        impl_->manager = manager;
}

AC_Manager *AC_ResponderTemplate::actionManager() const
{
    return impl_->manager;
}

QString const &AC_ResponderTemplate::responderIdentity() const
{
    return impl_->identity;
}

QString const &AC_ResponderTemplate::responderDescription() const
{
    return impl_->description;
}

void AC_ResponderTemplate::setResponderDescription(QString const &description)
{
    impl_->description = description;
}

bool AC_ResponderTemplate::handleShortcuts() const
{
    return impl_->handleShortcuts;
}

void AC_ResponderTemplate::setHandleShortcuts(bool handle)
{
    impl_->handleShortcuts = handle;
}

bool AC_ResponderTemplate::becomeFirstResponder()
{
    return impl_->manager && acceptsFirstResponder() && impl_->manager->setFirstResponder(this);
}

bool AC_ResponderTemplate::resignFirstResponder()
{
    return isFirstResponder() && impl_->manager->setFirstResponder(nullptr);
}

bool AC_ResponderTemplate::isFirstResponder() const
{
    return impl_->manager && impl_->manager->firstResponder() == this;
}

bool AC_ResponderTemplate::becomeSelectionResponder()
{
    return impl_->manager && impl_->manager->setSelectionResponder(this);
}

bool AC_ResponderTemplate::resignSelectionResponder()
{
    return isSelectionResponder() && impl_->manager->setSelectionResponder(nullptr);
}

bool AC_ResponderTemplate::isSelectionResponder() const
{
    return impl_->manager && impl_->manager->selectionResponder() == this;
}

AC_Result AC_ResponderTemplate::perform(AC_ActionInfo *info)
{
    if (!info)
        return AC_Result::NotHandled;
    if (performOn(actionTarget(), *info) == AC_Result::Handled)
        return AC_Result::Handled;
    AC_Responder *parent = parentResponder();
    return parent ? parent->perform(info) : AC_Result::NotHandled;
}

AC_Result AC_ResponderTemplate::performDownToChildren(AC_ActionInfo *info)
{
    if (!info)
        return AC_Result::NotHandled;
    QObject *target = actionTarget();
    if (performOn(target, *info) == AC_Result::Handled)
        return AC_Result::Handled;
    if (!target)
        return AC_Result::NotHandled;
    for (QObject *child : target->children()) {
        auto *responder = dynamic_cast<AC_Responder *>(child);
        if (responder && responder->performDownToChildren(info) == AC_Result::Handled)
            return AC_Result::Handled;
    }
    return AC_Result::NotHandled;
}

AC_Result AC_ResponderTemplate::validate(AC_ActionInfo *info)
{
    if (!info)
        return AC_Result::NotHandled;
    if (validateOn(actionTarget(), *info) == AC_Result::Handled)
        return AC_Result::Handled;
    AC_Responder *parent = parentResponder();
    return parent ? parent->validate(info) : AC_Result::NotHandled;
}
