// The services the host offers to plug-ins, as one registry that the application fills at
// start-up and empties at shutdown. A getter gives null when the host runs without that service,
// so plug-ins test each service before use.
//
// The registry holds pointers it does not own. Services of families other than this one are kept
// by identifier (service / setService) so that their getters can be added beside the ones here
// without this family depending on theirs:
//
//   static SC_SessionContext *getSessionContext()
//   { return static_cast<SC_SessionContext *>(service(Service::SessionContext)); }
//
// Careful: setService stores an untyped pointer; the getter must cast back to the very type the
// application stored.
#pragma once

#include <QString>

class AC_Manager;
class PLUG_InteractiveViewManager;
class SC_CurrentFrameInterface;
class SC_EditionStackInterface;
class SC_SessionContext;
class SL_Selection;
class PLUG_MenuService;
class PLUG_ToolbarService;
class PLUG_PreferenceUI;

class PLUG_Services {
public:
    enum class Service {
        ActionManager,
        MenuService,
        ToolbarService,
        Preference,
        SessionContext,
        Selection,
        CurrentFrameInterface,
        EditionStackInterface,
        InteractiveViewManager,
    };

    // The folder that holds the named plug-in's resources/ folder, without a trailing separator;
    // empty for a plug-in the host does not know. The plug-in loader sets it before it opens the
    // library, so static initialisers may ask for it already.
    static QString getPluginPath(QString const &name);
    // An empty folder forgets the plug-in.
    static void setPluginPath(QString const &name, QString const &folder);

    static AC_Manager *getActionManager();
    static PLUG_MenuService *getMenuService();
    static PLUG_ToolbarService *getToolbarService();
    static PLUG_PreferenceUI *getPreference();

    static void setActionManager(AC_Manager *manager);
    static void setMenuService(PLUG_MenuService *service);
    static void setToolbarService(PLUG_ToolbarService *service);
    static void setPreference(PLUG_PreferenceUI *preferenceUI);

    // The services of the editing session, typed; the pointers are stored as they are given.
    static SC_SessionContext *getSessionContext();
    static SL_Selection *getSelection();
    static SC_CurrentFrameInterface *getCurrentFrameInterface();
    static SC_EditionStackInterface *getEditionStackInterface();
    static PLUG_InteractiveViewManager *getInteractiveViewManager();

    static void setSessionContext(SC_SessionContext *context);
    static void setSelection(SL_Selection *selection);
    static void setCurrentFrameInterface(SC_CurrentFrameInterface *frames);
    static void setEditionStackInterface(SC_EditionStackInterface *stack);
    static void setInteractiveViewManager(PLUG_InteractiveViewManager *views);

    static void *service(Service id);
    static void setService(Service id, void *service);

    // Forgets every service and plug-in path.
    static void reset();
};
