// The toolbar service: plug-ins load toolbars from description files, by name, and remove them.
//
// A toolbar file holds one <toolbar> element with items and separators, as in menu files (see
// PLUG_MenuService.h) but without submenus:
//
//   <toolbar text="Shift and Trace">
//     <item id="ST_TOOL" text="Shift and Trace" icon="shiftandtrace.svg"
//           responder="ShiftAndTraceToolResponder" slot="onActionSelectShiftAndTraceTool()"/>
//     <separator/>
//   </toolbar>
//
// Toolbars belong to a window, the `owner`; null stands for the main window. The owner is only a
// key: the service never uses the widget itself.
#pragma once

#include "plugin/PLUG_ActionEntry.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QWidget;

class PLUG_ToolbarService {
public:
    virtual ~PLUG_ToolbarService() = default;
    // Loads the toolbar file under `name`, replacing a toolbar of that name; false when the file
    // is unusable (the toolbar in place, if any, stays).
    virtual bool loadToolbar(QString const &path, QString const &name, QWidget *owner = nullptr) = 0;
    // Forgets the toolbar; false when there was none of that name.
    virtual bool removeToolbar(QString const &name, QWidget *owner = nullptr) = 0;
};

class PLUG_ToolbarModel : public QObject, public PLUG_ToolbarService {
    Q_OBJECT
public:
    struct Toolbar {
        QString text;
        std::vector<PLUG_ActionEntry> entries;
    };

    explicit PLUG_ToolbarModel(QObject *parent = nullptr);
    ~PLUG_ToolbarModel() override;

    bool loadToolbar(QString const &path, QString const &name, QWidget *owner = nullptr) override;
    bool removeToolbar(QString const &name, QWidget *owner = nullptr) override;

    QStringList toolbarNames(QWidget *owner = nullptr) const;
    // The toolbar, or null. Careful: the pointer is invalidated by the next load or removal.
    Toolbar const *toolbar(QString const &name, QWidget *owner = nullptr) const;

signals:
    void toolbarsChanged();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
