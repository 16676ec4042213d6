// The application's start-up and shutdown, shared by the window and batch mode.
//
// Order matters: the command line is read first, then the preferences are loaded (tuPref), then
// the services are set up in PLUG_Services, then the host's own pencil tool (with its panel), menu
// entries and toolbar, and only then is the plug-in opened, since its static initialisers read
// preferences and its polish uses the services (and merges its menu entries after the host's).
// At exit the plug-ins are unpolished and the preferences saved.
//
// The host also owns the scene change manager of the whole run, and a session context that gives
// it out before any scene is open: a plug-in connects to its signals when it loads, and the
// workspace that opens scenes afterwards (AH_Workspace(host.changeManager())) reports to it.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class AC_Manager;
class PLUG_MenuModel;
class PLUG_PluginLoader;
class PLUG_PreferenceUI;
class PLUG_ToolbarModel;
class TUSceneChangeManager;

// What the command line asks for.
//
// The options are one table (AH_Options::table()): the parser and the help text are both made from
// it, so adding an option is adding a row (and the field it fills). Parsing needs no application
// object and no display: main() parses before it makes the QApplication, so that --help and
// --version work anywhere.
struct AH_Options {
    QString prefsPath;    // --prefs PATH; empty: PR_Preference::defaultFilePath()
    QString pluginsDir;   // --plugins DIR[:DIR...]: searched before the installed plug-ins (AH_PluginSearch.h)
    QString batchScript;  // --batch SCRIPT; empty: the window
    QString outputDir;    // --output DIR: where batch scripts save and render relative paths
    QString sceneFile;    // the scene to open, if any
    QString screenshot;   // --screenshot FILE: the window saves a picture of itself there and quits
    QString startScript;  // --run SCRIPT: a batch script run in the window's session before it shows
    bool help = false;     // -h, --help: print helpText() and exit 0
    bool version = false;  // -v, --version: print versionText() and exit 0

    // One option: its names (one letter or words, without dashes), the name of its value (empty
    // for a flag), what it does, and the field it fills (`text` for options with a value, `flag`
    // for flags).
    struct Option {
        QStringList names;
        QString valueName;
        QString description;
        QString AH_Options::*text = nullptr;
        bool AH_Options::*flag = nullptr;
    };
    static std::vector<Option> const &table();

    // Reads the arguments (the program name first). False with `error` for an unknown option, a
    // missing value or more than one scene file.
    static bool parse(QStringList const &arguments, AH_Options &options, QString *error);
    // The usage line; the whole help (usage, what the program does, every option, exit status).
    static QString usage();
    static QString helpText();
    static QString versionText();  // "animhost VERSION"
};

// Registers animhost's own resources (":/animhost/...": its menu and toolbar files, its forms),
// which a static library links in only when asked for. startup() calls it.
void AH_InitResources();

class AH_Host {
public:
    AH_Host();
    ~AH_Host();  // shutdown() if not done
    AH_Host(AH_Host const &) = delete;
    AH_Host &operator=(AH_Host const &) = delete;

    // Loads the preferences, installs the services and loads the plug-in "AnimationTool", then
    // every other plug-in, from the search path of `options` (AH_PluginSearch.h): a plug-in that
    // cannot be used, or a folder of the search path that does not exist, is reported and left out.
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
