// The metas of the modules' own attributes (private to the scene library).
#pragma once

#include "scene/AT_AttrMeta.h"

#include <map>

// The meta of a module's own attribute `keyword`: flagged Builtin and NodeDirtyOnChange, plus
// `extraFlags`. One meta per keyword, made on first use and shared by every module: module kinds
// that share a keyword ("offset", "orientation") share its meaning.
inline AT_AttrMeta const &ownAttrMeta(QString const &keyword, QString const &displayName, int extraFlags = 0)
{
    static std::map<QString, AT_AttrMeta> metas;
    auto it = metas.find(keyword);
    if (it == metas.end()) {
        int const flags = AT_AttrMetaContainer::Builtin | AT_AttrMetaContainer::NodeDirtyOnChange | extraFlags;
        it = metas.emplace(keyword, AT_AttrMeta(keyword, displayName, flags)).first;
    }
    return it->second;
}
