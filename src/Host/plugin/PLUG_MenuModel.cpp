#include "plugin/PLUG_MenuService.h"

#include "PLUG_EntryReader.h"

#include <QFileInfo>

#include <algorithm>
#include <map>

namespace {

using Entries = std::vector<PLUG_ActionEntry>;
using Kind = PLUG_ActionEntry::Kind;

// Takes out of `entries` everything that came from `source`. A submenu from `source` that still
// holds entries of other files stays, and passes to the file of its first remaining entry.
void removeSource(Entries &entries, QString const &source)
{
    for (PLUG_ActionEntry &entry : entries)
        if (entry.kind == Kind::Submenu) {
            removeSource(entry.children, source);
            if (entry.source == source && !entry.children.empty())
                entry.source = entry.children.front().source;
        }
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [&source](PLUG_ActionEntry const &e) { return e.source == source; }),
                  entries.end());
}

void merge(Entries &into, Entries &&from)
{
    for (PLUG_ActionEntry &entry : from) {
        auto const same = entry.kind == Kind::Separator
                              ? into.end()
                              : std::find_if(into.begin(), into.end(), [&entry](PLUG_ActionEntry const &e) {
                                    return e.kind != Kind::Separator && e.id == entry.id;
                                });
        if (same == into.end())
            into.push_back(std::move(entry));
        else if (same->kind == Kind::Submenu && entry.kind == Kind::Submenu)
            merge(same->children, std::move(entry.children));
        else
            *same = std::move(entry);
    }
}

bool sameEntries(Entries const &a, Entries const &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](PLUG_ActionEntry const &x, PLUG_ActionEntry const &y) {
        return x.kind == y.kind && x.id == y.id && x.text == y.text && x.icon == y.icon
               && x.responderIdentity == y.responderIdentity && x.slot == y.slot && x.checkable == y.checkable
               && sameEntries(x.children, y.children);
    });
}

}  // namespace

struct PLUG_MenuModel::Impl {
    std::map<QString, Entries> menus;
    // (menu, file) -> the entries that file gave that menu the last time.
    std::map<std::pair<QString, QString>, Entries> merged;
};

PLUG_MenuModel::PLUG_MenuModel(QObject *parent) : QObject(parent), impl_(std::make_unique<Impl>()) {}

PLUG_MenuModel::~PLUG_MenuModel() = default;

bool PLUG_MenuModel::addMenu(QString const &menuIdentifier, QString const &path)
{
    if (menuIdentifier.isEmpty())
        return false;
    QString error;
    std::optional<PLUG_EntryReader::File> file = PLUG_EntryReader::read(path, QStringLiteral("menu"), true, error);
    if (!file)
        return false;
    QString const source = QFileInfo(path).absoluteFilePath();
    Entries &menu = impl_->menus[menuIdentifier];
    auto const before = impl_->merged.find({menuIdentifier, source});
    if (before != impl_->merged.end()) {
        if (sameEntries(before->second, file->entries))
            return true;  // the same file again: nothing to do, nothing moves
        removeSource(menu, source);
    }
    impl_->merged[{menuIdentifier, source}] = file->entries;
    merge(menu, std::move(file->entries));
    emit menuChanged(menuIdentifier);
    return true;
}

QStringList PLUG_MenuModel::menuIdentifiers() const
{
    QStringList result;
    for (auto const &entry : impl_->menus)
        result << entry.first;
    return result;
}

std::vector<PLUG_ActionEntry> PLUG_MenuModel::menu(QString const &menuIdentifier) const
{
    auto const it = impl_->menus.find(menuIdentifier);
    return it == impl_->menus.end() ? Entries() : it->second;
}
