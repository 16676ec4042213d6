// Opens plug-in shared libraries and drives their three entry points.
//
// A plug-in named N is the library "libN.so" in one of the folders of the search path, exporting
// the C functions PLUG_Init, PLUG_Polish and PLUG_Unpolish (no arguments, no result). The folders
// are searched in order and the first that holds the library wins: a plug-in of the same name in a
// later folder is shadowed, as a program is on PATH. Loading a plug-in records its folder as its
// plug-in path (PLUG_Services::getPluginPath), opens the library (its static initialisers run now:
// the host's preferences must be loaded before), resolves the three entry points, then calls
// PLUG_Init and PLUG_Polish. unpolishAll() calls PLUG_Unpolish of each loaded plug-in once, in the
// reverse order of loading.
//
// A library that is missing, cannot be opened or lacks an entry point is reported on standard
// error by name, and the host goes on without it: none of its entry points is called.
//
// Libraries are never unloaded: their static initialisers may have handed objects (tool
// generators, responders) to the host that must outlive them.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class PLUG_PluginLoader {
public:
    // Folders are made absolute and clean; an empty path finds nothing.
    explicit PLUG_PluginLoader(QStringList const &searchPath);
    explicit PLUG_PluginLoader(QString const &pluginsFolder);  // a search path of one folder
    ~PLUG_PluginLoader();  // unpolishes what is still polished
    PLUG_PluginLoader(PLUG_PluginLoader const &) = delete;
    PLUG_PluginLoader &operator=(PLUG_PluginLoader const &) = delete;

    QStringList searchPath() const;

    // Loads the plug-in `name` from the first folder that holds it; false, with a message, when
    // none does, it cannot be used or it is loaded already.
    bool load(QString const &name);
    // Loads every library "lib*.so" of each folder in turn, in the order of their names, passing
    // over the names loaded already (shadowed, or loaded before by name); the number loaded.
    int loadAll();
    // Loaded plug-ins, in the order of loading.
    QStringList loadedPlugins() const;
    // Messages of the plug-ins that could not be used, in order.
    QStringList errors() const;

    void unpolishAll();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
