// Reading menu and toolbar description files (formats in PLUG_MenuService.h and
// PLUG_ToolbarService.h). Private to the plug-in manager.
#pragma once

#include "plugin/PLUG_ActionEntry.h"

#include <QString>

#include <optional>
#include <vector>

namespace PLUG_EntryReader {

struct File {
    QString text;  // the root element's text attribute
    std::vector<PLUG_ActionEntry> entries;
};

// Reads `path`, whose root element must be `rootName`; submenus are allowed when `submenus`.
// Entries get the clean absolute path of the file as their source. On failure, nothing and the
// reason in `error` ("<path>: line N: what was expected"), also written to standard error.
std::optional<File> read(QString const &path, QString const &rootName, bool submenus, QString &error);

}  // namespace PLUG_EntryReader
