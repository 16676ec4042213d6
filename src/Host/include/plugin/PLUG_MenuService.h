// The menu service: plug-ins merge menu description files into the host's menus, which are
// known by identifier ("INSERT_MENU_ID", "Animation", "View", ...).
//
// A menu file holds one <menu> element with the entries to merge:
//
//   <menu>
//     <item id="IK_TOOL" text="New IK Tool" icon="IKTool.png"
//           responder="IKToolResponder" slot="onActionSelectNewIKTool()" checkable="true"/>
//     <separator/>
//     <menu id="SHIFT_AND_TRACE" text="Shift and Trace">     a submenu, same contents
//       <item id="SHOW_PEGS" text="Show Pegs" responder="..." slot="..."/>
//     </menu>
//   </menu>
//
// Items need an id and a slot, submenus an id; `checkable` is "true" or "false".
//
// Merging rules (PLUG_MenuModel): entries are appended to the menu, created if it does not exist
// yet; a submenu whose id the menu has already takes the file's entries into the existing one; an
// item whose id exists replaces it in place. Merging a file again with the same contents changes
// nothing; with other contents, what the file brought the last time is taken out first (a submenu
// that holds entries of other files stays) and the new entries are merged as above. A file with an error is not
// merged at all: the message on standard error names the file, the line and what was expected.
#pragma once

#include "plugin/PLUG_ActionEntry.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class PLUG_MenuService {
public:
    virtual ~PLUG_MenuService() = default;
    // Merges the menu file `path` into the menu `menuIdentifier`; false when the file is unusable.
    virtual bool addMenu(QString const &menuIdentifier, QString const &path) = 0;
};

// The host's menus, kept as entries for the GUI to show.
class PLUG_MenuModel : public QObject, public PLUG_MenuService {
    Q_OBJECT
public:
    explicit PLUG_MenuModel(QObject *parent = nullptr);
    ~PLUG_MenuModel() override;

    bool addMenu(QString const &menuIdentifier, QString const &path) override;

    QStringList menuIdentifiers() const;
    // The entries of the menu; empty for an unknown menu.
    std::vector<PLUG_ActionEntry> menu(QString const &menuIdentifier) const;

signals:
    void menuChanged(QString const &menuIdentifier);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
