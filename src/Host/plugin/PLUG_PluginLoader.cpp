#include "plugin/PLUG_PluginLoader.h"

#include "plugin/PLUG_Services.h"

#include <QDir>
#include <QFileInfo>
#include <QLibrary>

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
    QString folder;
    std::vector<Plugin> plugins;  // in the order of loading
    QStringList errors;

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

PLUG_PluginLoader::PLUG_PluginLoader(QString const &pluginsFolder) : impl_(std::make_unique<Impl>())
{
    impl_->folder = QDir::cleanPath(QFileInfo(pluginsFolder).absoluteFilePath());
}

PLUG_PluginLoader::~PLUG_PluginLoader()
{
    unpolishAll();
    // Careful: the QLibrary objects go, the libraries stay mapped (QLibrary does not unload on
    // destruction), as their static objects must.
}

QString PLUG_PluginLoader::pluginsFolder() const
{
    return impl_->folder;
}

bool PLUG_PluginLoader::load(QString const &name)
{
    if (name.isEmpty())
        return impl_->refuse(name, QStringLiteral("no name given"));
    for (Plugin const &plugin : impl_->plugins)
        if (plugin.name == name)
            return impl_->refuse(name, QStringLiteral("loaded already"));
    QString const path = impl_->folder + QLatin1Char('/') + libraryFileName(name);
    if (!QFileInfo(path).isFile())
        return impl_->refuse(name, QStringLiteral("no library %1").arg(path));

    // Static initialisers of the library may ask for their resources: the path comes first.
    QString const previousPath = PLUG_Services::getPluginPath(name);
    PLUG_Services::setPluginPath(name, impl_->folder);
    auto library = std::make_unique<QLibrary>(path);
    if (!library->load()) {
        PLUG_Services::setPluginPath(name, previousPath);
        return impl_->refuse(name, QStringLiteral("cannot open %1 (%2)").arg(path, library->errorString()));
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
        return impl_->refuse(name, QStringLiteral("%1 lacks the entry point %2").arg(path, missing.join(QStringLiteral(", "))));
    }
    impl_->plugins.push_back(Plugin{name, std::move(library), entries[2], false});
    entries[0]();
    entries[1]();
    impl_->plugins.back().polished = true;
    return true;
}

int PLUG_PluginLoader::loadAll()
{
    QStringList const files =
        QDir(impl_->folder).entryList({QStringLiteral("lib*.so")}, QDir::Files | QDir::Readable, QDir::Name);
    int loaded = 0;
    for (QString const &file : files) {
        QString const name = file.mid(3, file.size() - 3 - 3);  // lib<name>.so
        if (load(name))
            ++loaded;
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
