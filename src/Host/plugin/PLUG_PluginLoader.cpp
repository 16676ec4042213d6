#include "plugin/PLUG_PluginLoader.h"

#include "plugin/PLUG_Services.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QSet>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using EntryPoint = void (*)();

struct Plugin {
    QString name;
    std::unique_ptr<QLibrary> library;  // stays loaded for the life of the process
    EntryPoint unpolish = nullptr;
    bool polished = false;
};

QString libraryFileName(QString const &name)
{
    return QStringLiteral("lib%1.so").arg(name);
}

}  // namespace

struct PLUG_PluginLoader::Impl {
    QStringList searchPath;       // absolute, clean, in the order of search
    std::vector<Plugin> plugins;  // in the order of loading
    QStringList errors;

    bool isLoaded(QString const &name) const
    {
        for (Plugin const &plugin : plugins)
            if (plugin.name == name)
                return true;
        return false;
    }

    // The first folder that holds the plug-in's library, or empty.
    QString folderOf(QString const &name) const
    {
        for (QString const &folder : searchPath)
            if (QFileInfo(folder + QLatin1Char('/') + libraryFileName(name)).isFile())
                return folder;
        return QString();
    }

    // Opens <folder>/lib<name>.so and calls its PLUG_Init and PLUG_Polish; false, with a
    // message, when it cannot be used.
    bool open(QString const &name, QString const &folder);

    bool refuse(QString const &name, QString const &problem)
    {
        QString const message =
            QStringLiteral("plug-in \"%1\": %2; the host goes on without it").arg(name, problem);
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
        std::fflush(stderr);
        errors << message;
        return false;
    }
};

bool PLUG_PluginLoader::Impl::open(QString const &name, QString const &folder)
{
    QString const path = folder + QLatin1Char('/') + libraryFileName(name);
    // Static initialisers of the library may ask for their resources: the path comes first.
    QString const previousPath = PLUG_Services::getPluginPath(name);
    PLUG_Services::setPluginPath(name, folder);
    auto library = std::make_unique<QLibrary>(path);
    if (!library->load()) {
        PLUG_Services::setPluginPath(name, previousPath);
        return refuse(name, QStringLiteral("cannot open %1 (%2)").arg(path, library->errorString()));
    }
    char const *const names[] = {"PLUG_Init", "PLUG_Polish", "PLUG_Unpolish"};
    EntryPoint entries[3] = {};
    QStringList missing;
    for (int i = 0; i < 3; ++i) {
        entries[i] = reinterpret_cast<EntryPoint>(library->resolve(names[i]));
        if (!entries[i])
            missing << QLatin1String(names[i]);
    }
    if (!missing.isEmpty()) {
        PLUG_Services::setPluginPath(name, previousPath);
        return refuse(name, QStringLiteral("%1 lacks the entry point %2").arg(path, missing.join(QStringLiteral(", "))));
    }
    plugins.push_back(Plugin{name, std::move(library), entries[2], false});
    entries[0]();
    entries[1]();
    plugins.back().polished = true;
    return true;
}

PLUG_PluginLoader::PLUG_PluginLoader(QStringList const &searchPath) : impl_(std::make_unique<Impl>())
{
    for (QString const &folder : searchPath)
        impl_->searchPath << QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
}

PLUG_PluginLoader::PLUG_PluginLoader(QString const &pluginsFolder) : PLUG_PluginLoader(QStringList{pluginsFolder}) {}

PLUG_PluginLoader::~PLUG_PluginLoader()
{
    unpolishAll();
    // Careful: the QLibrary objects go, the libraries stay mapped (QLibrary does not unload on
    // destruction), as their static objects must.
}

QStringList PLUG_PluginLoader::searchPath() const
{
    return impl_->searchPath;
}

bool PLUG_PluginLoader::load(QString const &name)
{
    if (name.isEmpty())
        return impl_->refuse(name, QStringLiteral("no name given"));
    if (impl_->isLoaded(name))
        return impl_->refuse(name, QStringLiteral("loaded already"));
    QString const folder = impl_->folderOf(name);
    if (folder.isEmpty())
        return impl_->refuse(name, QStringLiteral("no library %1 in %2")
                                       .arg(libraryFileName(name),
                                            impl_->searchPath.isEmpty() ? QStringLiteral("an empty search path")
                                                                        : impl_->searchPath.join(QStringLiteral(", "))));
    return impl_->open(name, folder);
}

int PLUG_PluginLoader::loadAll()
{
    int loaded = 0;
    QSet<QString> tried;  // names met in an earlier folder: a later library of that name is shadowed
    for (QString const &folder : impl_->searchPath) {
        QStringList const files =
            QDir(folder).entryList({QStringLiteral("lib*.so")}, QDir::Files | QDir::Readable, QDir::Name);
        for (QString const &file : files) {
            QString const name = file.mid(3, file.size() - 3 - 3);  // lib<name>.so
            if (tried.contains(name) || impl_->isLoaded(name))
                continue;
            tried.insert(name);
            if (impl_->open(name, folder))
                ++loaded;
        }
    }
    return loaded;
}

QStringList PLUG_PluginLoader::loadedPlugins() const
{
    QStringList result;
    for (Plugin const &plugin : impl_->plugins)
        result << plugin.name;
    return result;
}

QStringList PLUG_PluginLoader::errors() const
{
    return impl_->errors;
}

void PLUG_PluginLoader::unpolishAll()
{
    for (auto it = impl_->plugins.rbegin(); it != impl_->plugins.rend(); ++it) {
        if (!it->polished)
            continue;
        it->polished = false;
        it->unpolish();
    }
}
