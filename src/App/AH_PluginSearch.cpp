#include "AH_PluginSearch.h"

#include <QDir>
#include <QFileInfo>

#ifndef ANIMHOST_PLUGINS_FROM_BINDIR
#error "ANIMHOST_PLUGINS_FROM_BINDIR: the plug-in folder relative to the executable's folder"
#endif

namespace {

void addFolder(AH_PluginSearchPath &path, QString const &folder)
{
    QString const clean = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (!path.folders.contains(clean))
        path.folders << clean;
}

void addList(AH_PluginSearchPath &path, QString const &list, QString const &origin)
{
    for (QString const &folder : list.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        if (QFileInfo(folder).isDir())
            addFolder(path, folder);
        else
            path.problems << QStringLiteral("plug-in folder \"%1\" (%2): expected an existing folder").arg(folder, origin);
    }
}

} // namespace

AH_PluginSearchPath AH_PluginSearchPath::make(QString const &option, QString const &environment,
                                              QString const &executableFolder)
{
    AH_PluginSearchPath path;
    addList(path, option, QStringLiteral("--plugins"));
    addList(path, environment, QString::fromLatin1(AH_PluginPathVariable));
    addFolder(path, installedFolder(executableFolder));
    return path;
}

QString AH_PluginSearchPath::installedFolder(QString const &executableFolder)
{
    return QDir::cleanPath(executableFolder + QLatin1Char('/') + QStringLiteral(ANIMHOST_PLUGINS_FROM_BINDIR));
}
