#include "plugin/PLUG_ToolbarService.h"

#include "PLUG_EntryReader.h"

#include <map>
#include <utility>

struct PLUG_ToolbarModel::Impl {
    // (owner, name) -> toolbar. The owner is an identity only, never dereferenced.
    std::map<std::pair<QWidget const *, QString>, Toolbar> toolbars;
};

PLUG_ToolbarModel::PLUG_ToolbarModel(QObject *parent) : QObject(parent), impl_(std::make_unique<Impl>()) {}

PLUG_ToolbarModel::~PLUG_ToolbarModel() = default;

bool PLUG_ToolbarModel::loadToolbar(QString const &path, QString const &name, QWidget *owner)
{
    if (name.isEmpty())
        return false;
    QString error;
    std::optional<PLUG_EntryReader::File> file = PLUG_EntryReader::read(path, QStringLiteral("toolbar"), false, error);
    if (!file)
        return false;
    impl_->toolbars[{owner, name}] = Toolbar{file->text, std::move(file->entries)};
    emit toolbarsChanged();
    return true;
}

bool PLUG_ToolbarModel::removeToolbar(QString const &name, QWidget *owner)
{
    if (impl_->toolbars.erase({owner, name}) == 0)
        return false;
    emit toolbarsChanged();
    return true;
}

QStringList PLUG_ToolbarModel::toolbarNames(QWidget *owner) const
{
    QStringList result;
    for (auto const &entry : impl_->toolbars)
        if (entry.first.first == owner)
            result << entry.first.second;
    return result;
}

PLUG_ToolbarModel::Toolbar const *PLUG_ToolbarModel::toolbar(QString const &name, QWidget *owner) const
{
    auto const it = impl_->toolbars.find({owner, name});
    return it == impl_->toolbars.end() ? nullptr : &it->second;
}
