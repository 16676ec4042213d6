// Entries of menus and toolbars as the host keeps them: what a menu or toolbar shows and which
// action each entry triggers. The GUI builds its menus and toolbars from these.
#pragma once

#include <QString>

#include <vector>

struct PLUG_ActionEntry {
    enum class Kind { Item, Separator, Submenu };

    Kind kind = Kind::Item;
    QString id;                 // items and submenus: unique among the entries of one level
    QString text;               // the label; an item without one shows its id
    QString icon;               // file name for the icon lookup, or empty
    QString responderIdentity;  // items: the responder of the action (empty: the first responder)
    QString slot;               // items: the slot of the action
    bool checkable = false;     // items: shows a check mark from the validate twin
    std::vector<PLUG_ActionEntry> children;  // submenus only
    QString source;             // the file the entry came from
};
