#include "plugin/PLUG_Services.h"

#include <QDir>

#include <map>

namespace {

struct Registry {
    std::map<PLUG_Services::Service, void *> services;
    std::map<QString, QString> pluginPaths;  // plug-in name -> folder, clean, no trailing separator
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

}  // namespace

QString PLUG_Services::getPluginPath(QString const &name)
{
    auto const it = registry().pluginPaths.find(name);
    return it == registry().pluginPaths.end() ? QString() : it->second;
}

void PLUG_Services::setPluginPath(QString const &name, QString const &folder)
{
    if (name.isEmpty())
        return;
    if (folder.isEmpty())
        registry().pluginPaths.erase(name);
    else
        registry().pluginPaths[name] = QDir::cleanPath(folder);  // cleanPath drops a trailing '/'
}

void *PLUG_Services::service(Service id)
{
    auto const it = registry().services.find(id);
    return it == registry().services.end() ? nullptr : it->second;
}

void PLUG_Services::setService(Service id, void *service)
{
    if (service)
        registry().services[id] = service;
    else
        registry().services.erase(id);
}

AC_Manager *PLUG_Services::getActionManager()
{
    return static_cast<AC_Manager *>(service(Service::ActionManager));
}

PLUG_MenuService *PLUG_Services::getMenuService()
{
    return static_cast<PLUG_MenuService *>(service(Service::MenuService));
}

PLUG_ToolbarService *PLUG_Services::getToolbarService()
{
    return static_cast<PLUG_ToolbarService *>(service(Service::ToolbarService));
}

PLUG_PreferenceUI *PLUG_Services::getPreference()
{
    return static_cast<PLUG_PreferenceUI *>(service(Service::Preference));
}

void PLUG_Services::setActionManager(AC_Manager *manager)
{
    setService(Service::ActionManager, manager);
}

void PLUG_Services::setMenuService(PLUG_MenuService *menuService)
{
    setService(Service::MenuService, menuService);
}

void PLUG_Services::setToolbarService(PLUG_ToolbarService *toolbarService)
{
    setService(Service::ToolbarService, toolbarService);
}

void PLUG_Services::setPreference(PLUG_PreferenceUI *preferenceUI)
{
    setService(Service::Preference, preferenceUI);
}

void PLUG_Services::reset()
{
    registry() = Registry();
}

SC_SessionContext *PLUG_Services::getSessionContext()
{
    return static_cast<SC_SessionContext *>(service(Service::SessionContext));
}

SL_Selection *PLUG_Services::getSelection()
{
    return static_cast<SL_Selection *>(service(Service::Selection));
}

SC_CurrentFrameInterface *PLUG_Services::getCurrentFrameInterface()
{
    return static_cast<SC_CurrentFrameInterface *>(service(Service::CurrentFrameInterface));
}

SC_EditionStackInterface *PLUG_Services::getEditionStackInterface()
{
    return static_cast<SC_EditionStackInterface *>(service(Service::EditionStackInterface));
}

PLUG_InteractiveViewManager *PLUG_Services::getInteractiveViewManager()
{
    return static_cast<PLUG_InteractiveViewManager *>(service(Service::InteractiveViewManager));
}

void PLUG_Services::setSessionContext(SC_SessionContext *context)
{
    setService(Service::SessionContext, context);
}

void PLUG_Services::setSelection(SL_Selection *selection)
{
    setService(Service::Selection, selection);
}

void PLUG_Services::setCurrentFrameInterface(SC_CurrentFrameInterface *frames)
{
    setService(Service::CurrentFrameInterface, frames);
}

void PLUG_Services::setEditionStackInterface(SC_EditionStackInterface *stack)
{
    setService(Service::EditionStackInterface, stack);
}

void PLUG_Services::setInteractiveViewManager(PLUG_InteractiveViewManager *views)
{
    setService(Service::InteractiveViewManager, views);
}
