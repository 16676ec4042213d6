// The application's start-up and shutdown, shared by the window and batch mode.
//
// Order matters: the command line is read first, then the preferences are loaded (tuPref), then
// the services are set up in PLUG_Services, and only then is the plug-in opened, since its static
// initialisers read preferences and its polish uses the services. At exit the plug-ins are
// unpolished and the preferences saved.
//
// The host also owns the scene change manager of the whole run, and a session context that gives
// it out before any scene is open: a plug-in connects to its signals when it loads, and the
// workspace that opens scenes afterwards (AH_Workspace(host.changeManager())) reports to it.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class AC_Manager;
class PLUG_MenuModel;
class PLUG_PluginLoader;
class PLUG_PreferenceUI;
class PLUG_ToolbarModel;
class TUSceneChangeManager;

// What the command line asks for.
struct AH_Options {
    QString prefsPath;    // --prefs PATH; empty: PR_Preference::defaultFilePath()
    QString pluginsDir;   // --plugins DIR; empty: the plug-ins folder of the build
    QString batchScript;  // --batch SCRIPT; empty: the window
    QString outputDir;    // --output DIR: where batch scripts save and render relative paths
    QString sceneFile;    // the scene to open, if any
    QString screenshot;   // --screenshot FILE: the window saves a picture of itself there and quits
    QString startScript;  // --run SCRIPT: a batch script run in the window's session before it shows

    // Reads the arguments (the program name first). False with `error` for an unknown option, a
    // missing value or more than one scene file.
    static bool parse(QStringList const &arguments, AH_Options &options, QString *error);
    static QString usage();
};

class AH_Host {
public:
    AH_Host();
    ~AH_Host();  // shutdown() if not done
    AH_Host(AH_Host const &) = delete;
    AH_Host &operator=(AH_Host const &) = delete;

    // Loads the preferences, installs the services and loads the plug-in "AnimationTool" from the
    // folder of `options` (a plug-in that cannot be used is reported and left out).
    void startup(AH_Options const &options);
    // Unpolishes the plug-ins, forgets the panel factories and services, saves the preferences.
    // False when the preferences could not be saved (the store said why on standard error).
    bool shutdown();

    AC_Manager *actionManager() const;
    PLUG_MenuModel *menus() const;
    PLUG_ToolbarModel *toolbars() const;
    PLUG_PreferenceUI *preferenceUI() const;
    QStringList pluginErrors() const;
    TUSceneChangeManager *changeManager() const;  // never null; lives as long as the host

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
