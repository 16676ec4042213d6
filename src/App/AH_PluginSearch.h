// Where animhost looks for plug-ins.
//
// The search path is, in order:
//   1. the folders of --plugins,
//   2. the folders of the environment variable ANIMHOST_PLUGIN_PATH,
//   3. the plug-in folder of the installation, found from the executable's folder (the build tree
//      has the same layout, so a built animhost finds the built plug-ins the same way).
// --plugins and the variable each hold one folder or several separated by ':', as PATH does.
// Empty entries are skipped, relative folders are taken from the current folder, and a folder
// named twice is searched once, where it first comes. The loader takes the first folder that holds
// a plug-in (PLUG_PluginLoader), so a plug-in of --plugins or of the variable shadows an installed
// one of the same name.
#pragma once

#include <QString>
#include <QStringList>

// The environment variable of the search path.
inline constexpr char AH_PluginPathVariable[] = "ANIMHOST_PLUGIN_PATH";

struct AH_PluginSearchPath {
    QStringList folders;   // absolute and clean, in the order of search
    QStringList problems;  // one message per folder of --plugins or of the variable that does not exist

    // `option` is the value of --plugins, `environment` that of the variable (both may be empty),
    // `executableFolder` the folder of the running executable.
    static AH_PluginSearchPath make(QString const &option, QString const &environment, QString const &executableFolder);
    // The installation's plug-in folder, relative to the executable's folder.
    static QString installedFolder(QString const &executableFolder);
};
