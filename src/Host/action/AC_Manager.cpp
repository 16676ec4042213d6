#include "action/AC_Manager.h"

#include "action/AC_Responder.h"
#include "action/AC_ShortcutManager.h"

#include <QDir>
#include <QFileInfo>

#include <map>

struct AC_Manager::Impl {
    std::map<QString, AC_Responder *> responders;  // identity -> responder; not owned
    AC_Responder *firstResponder = nullptr;        // registered, or null
    AC_Responder *selectionResponder = nullptr;    // registered, or null
    AC_ShortcutManager shortcuts;
    QStringList imageFolders;

    bool isRegistered(AC_Responder *responder) const
    {
        auto const it = responders.find(responder->responderIdentity());
        return it != responders.end() && it->second == responder;
    }

    // The responders an action reaches, in order: its own, or the first then the selection one.
    std::vector<AC_Responder *> targets(QString const &identity) const
    {
        if (!identity.isEmpty()) {
            auto const it = responders.find(identity);
            return it == responders.end() ? std::vector<AC_Responder *>{} : std::vector<AC_Responder *>{it->second};
        }
        std::vector<AC_Responder *> result;
        for (AC_Responder *r : {firstResponder, selectionResponder})
            if (r)
                result.push_back(r);
        return result;
    }
};

AC_Manager::AC_Manager(QObject *parent) : QObject(parent), impl_(std::make_unique<Impl>()) {}

AC_Manager::~AC_Manager() = default;

bool AC_Manager::registerResponder(AC_Responder *responder)
{
    if (!responder || responder->responderIdentity().isEmpty())
        return false;
    return impl_->responders.emplace(responder->responderIdentity(), responder).second;
}

void AC_Manager::unregisterResponder(AC_Responder *responder)
{
    if (!responder || !impl_->isRegistered(responder))
        return;
    impl_->responders.erase(responder->responderIdentity());
    if (impl_->firstResponder == responder)
        impl_->firstResponder = nullptr;
    if (impl_->selectionResponder == responder)
        impl_->selectionResponder = nullptr;
}

AC_Responder *AC_Manager::responder(QString const &identity) const
{
    auto const it = impl_->responders.find(identity);
    return it == impl_->responders.end() ? nullptr : it->second;
}

bool AC_Manager::setFirstResponder(AC_Responder *responder)
{
    if (responder && !impl_->isRegistered(responder))
        return false;
    impl_->firstResponder = responder;
    return true;
}

AC_Responder *AC_Manager::firstResponder() const
{
    return impl_->firstResponder;
}

bool AC_Manager::setSelectionResponder(AC_Responder *responder)
{
    if (responder && !impl_->isRegistered(responder))
        return false;
    impl_->selectionResponder = responder;
    return true;
}

AC_Responder *AC_Manager::selectionResponder() const
{
    return impl_->selectionResponder;
}

AC_ShortcutManager *AC_Manager::shortcutManager() const
{
    return &impl_->shortcuts;
}

int AC_Manager::shortcutKeyCode(QString const &id) const
{
    return impl_->shortcuts.keyCode(id);
}

AC_Result AC_Manager::handleShortcut(int keyCode)
{
    QString const id = impl_->shortcuts.shortcutForKeyCode(keyCode);
    AC_ShortcutManager::Shortcut const *shortcut = impl_->shortcuts.shortcut(id);
    if (!shortcut)
        return AC_Result::NotHandled;
    AC_Responder *target = shortcut->responderIdentity.isEmpty() ? impl_->firstResponder
                                                                 : responder(shortcut->responderIdentity);
    if (!target || !target->handleShortcuts())
        return AC_Result::NotHandled;
    return trigger(shortcut->responderIdentity, shortcut->slot);
}

void AC_Manager::addImageFolder(QString const &folder)
{
    if (folder.isEmpty())
        return;
    QString const clean = QDir::cleanPath(folder);
    if (!impl_->imageFolders.contains(clean))
        impl_->imageFolders << clean;
}

QStringList AC_Manager::imageFolders() const
{
    return impl_->imageFolders;
}

QString AC_Manager::findImage(QString const &fileName) const
{
    if (fileName.isEmpty())
        return QString();
    for (QString const &folder : impl_->imageFolders) {
        QFileInfo const candidate(QDir(folder), fileName);
        if (candidate.isFile())
            return candidate.filePath();
    }
    return QString();
}

bool AC_Manager::actionState(QString const &responderIdentity, QString const &slot, bool &enabled, bool &checked)
{
    for (AC_Responder *target : impl_->targets(responderIdentity)) {
        AC_ActionInfo info(slot, responderIdentity);
        if (target->validate(&info) == AC_Result::Handled) {
            enabled = info.isEnabled();
            checked = info.isChecked();
            return true;
        }
    }
    return false;
}

AC_Result AC_Manager::trigger(QString const &responderIdentity, QString const &slot, bool forceEnable)
{
    for (AC_Responder *target : impl_->targets(responderIdentity)) {
        AC_ActionInfo info(slot, responderIdentity);
        if (target->validate(&info) != AC_Result::Handled)
            continue;
        if (!info.isEnabled() && !forceEnable)
            return AC_Result::Disabled;
        return target->perform(&info);
    }
    return AC_Result::NotHandled;
}

void AC_Manager::refreshActionStates()
{
    emit actionStatesChanged();
}
