#include "AH_MainWindow.h"

#include "AH_Host.h"
#include "AH_PreferencesDialog.h"
#include "AH_Timeline.h"
#include "AH_Workspace.h"
#include "action/AC_Manager.h"
#include "command/CO_CommandManager.h"
#include "panel/TP_ToolProperties.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_ToolbarService.h"
#include "preference/PR_Preference.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"
#include "view/VW_ViewWidget.h"
#include "widgets/WID_IconManager.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QCursor>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>

#include <algorithm>

namespace {

// Titles of the menus plug-ins name by identifier.
QString menuTitle(QString const &identifier)
{
    if (identifier == QLatin1String("INSERT_MENU_ID"))
        return QObject::tr("Insert");
    return identifier;
}

void collectNodes(TUGroup const *group, std::vector<MO_Node *> &nodes)
{
    for (auto it = group->subNodesBegin(); it != group->subNodesEnd(); ++it) {
        if (auto *sub = dynamic_cast<TUGroup *>(it->get()))
            collectNodes(sub, nodes);
        else
            nodes.push_back(it->get());
    }
}

// The preference that keeps the recent scene files, newest first, one path per line.
QString const kRecentFilesKey = QStringLiteral("animhostRecentFiles");
constexpr int kRecentFileCount = 8;
// Zoom steps of the +/- keys and the menu.
constexpr double kZoomStep = 1.25;

// A plug-in action shown in a menu or a toolbar.
struct PluginAction {
    QAction *action;
    QString responder;
    QString slot;
};

} // namespace

struct AH_MainWindow::Impl {
    Impl(AH_Workspace &w, AH_Host &h) : workspace(w), host(h) {}

    AH_Workspace &workspace;
    AH_Host &host;
    VW_ViewWidget *viewWidget = nullptr;
    QListWidget *nodeList = nullptr;
    AH_Timeline *timeline = nullptr;
    QLabel *zoomLabel = nullptr;
    QMenu *recentMenu = nullptr;
    QMenu *viewMenu = nullptr;  // the window's own, with the plug-ins' "View" entries merged in
    TP_ToolPropertiesReceiver *receiver = nullptr;
    QToolBar *toolsBar = nullptr;
    QActionGroup *toolGroup = nullptr;
    QAction *undoAction = nullptr;
    QAction *redoAction = nullptr;
    std::vector<QMenu *> pluginMenus;
    std::vector<QToolBar *> pluginToolbars;
    std::vector<PluginAction> pluginActions;
    QMetaObject::Connection changeConnections[2];
    bool syncing = false;  // true while the window updates its widgets from the session

    QAction *makePluginAction(PLUG_ActionEntry const &entry, QObject *parent, AH_MainWindow *window)
    {
        auto *action = new QAction(entry.text.isEmpty() ? entry.id : entry.text, parent);
        action->setObjectName(entry.id);
        action->setCheckable(entry.checkable);
        if (!entry.icon.isEmpty()) {
            QString const file = host.actionManager()->findImage(entry.icon);
            QIcon const icon = file.isEmpty() ? WID_IconManager::instance().icon(entry.icon) : QIcon(file);
            if (!icon.isNull())
                action->setIcon(icon);
        }
        QString const responder = entry.responderIdentity, slot = entry.slot;
        QObject::connect(action, &QAction::triggered, window, [this, window, responder, slot] {
            host.actionManager()->trigger(responder, slot);
            window->onValidateActions();
        });
        pluginActions.push_back({action, responder, slot});
        return action;
    }

    void fillMenu(QMenu *menu, std::vector<PLUG_ActionEntry> const &entries, AH_MainWindow *window)
    {
        for (PLUG_ActionEntry const &entry : entries) {
            if (entry.kind == PLUG_ActionEntry::Kind::Separator)
                menu->addSeparator();
            else if (entry.kind == PLUG_ActionEntry::Kind::Submenu)
                fillMenu(menu->addMenu(entry.text.isEmpty() ? entry.id : entry.text), entry.children, window);
            else
                menu->addAction(makePluginAction(entry, menu, window));
        }
    }

    void forgetActionsOf(QObject *owner)
    {
        pluginActions.erase(std::remove_if(pluginActions.begin(), pluginActions.end(),
                                           [owner](PluginAction const &a) {
                                               for (QObject *o = a.action; o; o = o->parent())
                                                   if (o == owner)
                                                       return true;
                                               return false;
                                           }),
                            pluginActions.end());
    }
};

AH_MainWindow::AH_MainWindow(AH_Workspace &workspace, AH_Host &host, QWidget *parent)
    : QMainWindow(parent), d_(std::make_unique<Impl>(workspace, host))
{
    setObjectName(QStringLiteral("mainWindow"));
    d_->viewWidget = new VW_ViewWidget(workspace.view(), this);
    d_->viewWidget->setObjectName(QStringLiteral("cameraView"));
    setCentralWidget(d_->viewWidget);

    // Node list.
    auto *nodesDock = new QDockWidget(tr("Nodes"), this);
    nodesDock->setObjectName(QStringLiteral("nodesDock"));
    d_->nodeList = new QListWidget(nodesDock);
    d_->nodeList->setObjectName(QStringLiteral("nodeList"));
    d_->nodeList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    nodesDock->setWidget(d_->nodeList);
    addDockWidget(Qt::LeftDockWidgetArea, nodesDock);
    connect(d_->nodeList, &QListWidget::itemSelectionChanged, this, &AH_MainWindow::onNodeListSelectionChanged);

    // Tool properties.
    auto *toolDock = new QDockWidget(tr("Tool Properties"), this);
    toolDock->setObjectName(QStringLiteral("toolPropertiesDock"));
    d_->receiver = new TP_ToolPropertiesReceiver(toolDock);
    d_->receiver->setObjectName(QStringLiteral("toolProperties"));
    toolDock->setWidget(d_->receiver);
    toolDock->setMinimumWidth(260);
    addDockWidget(Qt::RightDockWidgetArea, toolDock);

    // Timeline.
    auto *timelineDock = new QDockWidget(tr("Timeline"), this);
    timelineDock->setObjectName(QStringLiteral("timelineDock"));
    d_->timeline = new AH_Timeline(workspace, timelineDock);
    d_->timeline->setObjectName(QStringLiteral("timelineBox"));
    timelineDock->setWidget(d_->timeline);
    addDockWidget(Qt::BottomDockWidgetArea, timelineDock);

    // The zoom of the view, in the status bar.
    d_->zoomLabel = new QLabel(this);
    d_->zoomLabel->setObjectName(QStringLiteral("zoomLabel"));
    statusBar()->addPermanentWidget(d_->zoomLabel);
    connect(workspace.view(), &VW_View::cameraChanged, this, &AH_MainWindow::onCameraChanged);
    onCameraChanged();

    // Menus.
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&New"), this, [this] {
        if (maybeSave())
            d_->workspace.newScene();
    }, QKeySequence::New);
    file->addAction(tr("&Open..."), this, &AH_MainWindow::onOpen, QKeySequence::Open);
    d_->recentMenu = file->addMenu(tr("Open &Recent"));
    d_->recentMenu->setObjectName(QStringLiteral("recentMenu"));
    connect(d_->recentMenu, &QMenu::aboutToShow, this, &AH_MainWindow::onFillRecentMenu);
    file->addAction(tr("&Save"), this, &AH_MainWindow::onSave, QKeySequence::Save);
    file->addAction(tr("Save &As..."), this, &AH_MainWindow::onSaveAs, QKeySequence::SaveAs);
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    d_->undoAction = edit->addAction(tr("Undo"), this, [this] { d_->workspace.undo(); }, QKeySequence::Undo);
    d_->redoAction = edit->addAction(tr("Redo"), this, [this] { d_->workspace.redo(); });
    QList<QKeySequence> redoKeys = QKeySequence::keyBindings(QKeySequence::Redo);
    if (!redoKeys.contains(QKeySequence(Qt::CTRL | Qt::Key_Y)))
        redoKeys << QKeySequence(Qt::CTRL | Qt::Key_Y);
    d_->redoAction->setShortcuts(redoKeys);
    edit->addSeparator();
    edit->addAction(tr("&Preferences..."), this, &AH_MainWindow::onPreferences);
    QMenu *viewMenu = d_->viewMenu = menuBar()->addMenu(tr("&View"));
    viewMenu->setObjectName(QStringLiteral("viewMenu"));
    connect(viewMenu, &QMenu::aboutToShow, this, &AH_MainWindow::onValidateActions);
    VW_View *view = workspace.view();
    viewMenu->addAction(tr("Zoom &In"), this, [this] { zoomBy(kZoomStep, false); }, QKeySequence(Qt::CTRL | Qt::Key_Plus));
    viewMenu->addAction(tr("Zoom &Out"), this, [this] { zoomBy(1.0 / kZoomStep, false); }, QKeySequence(Qt::CTRL | Qt::Key_Minus));
    viewMenu->addAction(tr("&Fit Scene"), view, &VW_View::fitScene, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F));
    viewMenu->addAction(tr("&Actual Size (100%)"), view, &VW_View::resetCamera, QKeySequence(Qt::CTRL | Qt::Key_0));

    // Tools.
    d_->toolsBar = addToolBar(tr("Tools"));
    d_->toolsBar->setObjectName(QStringLiteral("toolsBar"));
    d_->toolGroup = new QActionGroup(this);
    for (TO_ToolFactory::Registration const &tool : TO_ToolFactory::instance().tools()) {
        QIcon const icon = WID_IconManager::instance().icon(tool.descriptor.icon);
        QAction *action = d_->toolsBar->addAction(icon, tool.descriptor.label.isEmpty() ? tool.descriptor.name : tool.descriptor.label);
        action->setObjectName(tool.descriptor.name);
        action->setCheckable(true);
        action->setData(tool.id);
        d_->toolGroup->addAction(action);
        CX_ToolIds::ID const id = tool.id;
        connect(action, &QAction::triggered, this, [id] {
            CX_ToolRecord record = CX_Context::GetInstance().data();
            record.toolId = id;
            CX_Context::GetInstance().SetData(record, nullptr);
        });
    }

    connect(&workspace, &AH_Workspace::sessionChanged, this, &AH_MainWindow::onSessionChanged);
    connect(&workspace, &AH_Workspace::documentChanged, this, &AH_MainWindow::onDocumentChanged);
    connect(&workspace, &AH_Workspace::toolChanged, this, &AH_MainWindow::onToolChanged);
    connect(host.actionManager(), &AC_Manager::actionStatesChanged, this, &AH_MainWindow::onValidateActions);
    connect(host.menus(), &PLUG_MenuModel::menuChanged, this, &AH_MainWindow::onPluginMenusChanged);
    connect(host.toolbars(), &PLUG_ToolbarModel::toolbarsChanged, this, &AH_MainWindow::onPluginToolbarsChanged);

    onPluginMenusChanged();
    onPluginToolbarsChanged();
    onSessionChanged();
    onToolChanged();
    resize(1100, 720);
}

AH_MainWindow::~AH_MainWindow() = default;

TP_ToolPropertiesReceiver *AH_MainWindow::toolProperties() const
{
    return d_->receiver;
}

void AH_MainWindow::reportError(QString const &title, QString const &message)
{
    QMessageBox::critical(this, title, message);
}

void AH_MainWindow::closeEvent(QCloseEvent *event)
{
    if (!maybeSave()) {
        event->ignore();
        return;
    }
    d_->timeline->stop();
    event->accept();
}

bool AH_MainWindow::maybeSave()
{
    if (!d_->workspace.isModified())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Unsaved changes"), tr("The scene has unsaved changes."),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    box.setObjectName(QStringLiteral("unsavedChangesBox"));
    box.setInformativeText(tr("Save them before going on?"));
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
    case QMessageBox::Save: return onSave();
    case QMessageBox::Discard: return true;
    default: return false;
    }
}

void AH_MainWindow::keyPressEvent(QKeyEvent *event)
{
    // Here come the keys that the view's tool and the focused widget did not take: the actions'
    // shortcuts first, then the frame keys of the timeline, then the zoom keys.
    int const code = event->key() | int(event->modifiers() & ~Qt::KeypadModifier);
    if (!event->isAutoRepeat() && d_->host.actionManager()->handleShortcut(code) != AC_Result::NotHandled)
        return onValidateActions();
    if (d_->workspace.stepFrameForKey(event->key(), event->modifiers()))
        return;
    Qt::KeyboardModifiers const modifiers = event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    if (modifiers == Qt::NoModifier && (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal))
        return zoomBy(kZoomStep, true);
    if (modifiers == Qt::NoModifier && event->key() == Qt::Key_Minus)
        return zoomBy(1.0 / kZoomStep, true);
    QMainWindow::keyPressEvent(event);
}

void AH_MainWindow::zoomBy(double factor, bool aboutPointer)
{
    VW_View *view = d_->workspace.view();
    QPoint const pointer = d_->viewWidget->mapFromGlobal(QCursor::pos());
    Math::Point2d anchor((view->size().width() - 1) / 2.0, (view->size().height() - 1) / 2.0);
    if (aboutPointer && d_->viewWidget->rect().contains(pointer))
        anchor = Math::Point2d(pointer.x(), pointer.y());
    view->zoomAbout(std::clamp(view->zoom() * factor, VW_View::kMinimumZoom, VW_View::kMaximumZoom), anchor);
}

void AH_MainWindow::onCameraChanged()
{
    d_->zoomLabel->setText(tr("Zoom %1%").arg(d_->workspace.view()->zoom() * 100.0, 0, 'g', 4));
}

bool AH_MainWindow::openScene(QString const &path)
{
    if (!maybeSave())
        return false;
    QString error;
    if (d_->workspace.open(path, &error))
        return true;
    reportError(tr("Cannot open the scene"), error);
    return false;
}

QStringList AH_MainWindow::recentFiles() const
{
    return tuPref->getStringValue(kRecentFilesKey, QString()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void AH_MainWindow::rememberFile(QString const &path)
{
    if (path.isEmpty())
        return;
    QString const absolute = QFileInfo(path).absoluteFilePath();
    QStringList files = recentFiles();
    files.removeAll(absolute);
    files.prepend(absolute);
    tuPref->setStringValue(kRecentFilesKey, files.mid(0, kRecentFileCount).join(QLatin1Char('\n')));
}

void AH_MainWindow::onFillRecentMenu()
{
    d_->recentMenu->clear();
    QStringList const files = recentFiles();
    for (int i = 0; i < files.size(); ++i) {
        QString const path = files[i];
        QAction *action = d_->recentMenu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(path).fileName()), this,
                                                    [this, path] { openScene(path); });
        action->setToolTip(path);
        action->setEnabled(QFileInfo::exists(path));
    }
    if (files.isEmpty())
        d_->recentMenu->addAction(tr("No recent scenes"))->setEnabled(false);
}

void AH_MainWindow::onOpen()
{
    QString const path = QFileDialog::getOpenFileName(this, tr("Open Scene"), QFileInfo(d_->workspace.filePath()).absolutePath(),
                                                      tr("Scenes (*.xml)"));
    if (!path.isEmpty())
        openScene(path);
}

bool AH_MainWindow::onSave()
{
    if (d_->workspace.filePath().isEmpty())
        return onSaveAs();
    QString error;
    if (!d_->workspace.save(d_->workspace.filePath(), &error)) {
        reportError(tr("Cannot save the scene"), error);
        return false;
    }
    rememberFile(d_->workspace.filePath());
    return true;
}

bool AH_MainWindow::onSaveAs()
{
    QString const path = QFileDialog::getSaveFileName(this, tr("Save Scene"), d_->workspace.filePath(), tr("Scenes (*.xml)"));
    if (path.isEmpty())
        return false;
    QString error;
    if (!d_->workspace.save(path, &error)) {
        reportError(tr("Cannot save the scene"), error);
        return false;
    }
    rememberFile(path);
    return true;
}

void AH_MainWindow::onPreferences()
{
    AH_PreferencesDialog dialog(d_->host.preferenceUI(), this);
    dialog.exec();
}

void AH_MainWindow::onSessionChanged()
{
    SC_Session *session = d_->workspace.session();
    for (auto &c : d_->changeConnections)
        disconnect(c);
    TUSceneChangeManager *changes = session->changeManager();
    d_->changeConnections[0] = connect(changes, &TUSceneChangeManager::selectionChanged, this, &AH_MainWindow::onSelectionChanged);
    d_->changeConnections[1] = connect(changes, &TUSceneChangeManager::currentFrameChanged, this, &AH_MainWindow::onFrameChanged);

    d_->syncing = true;
    d_->nodeList->clear();
    std::vector<MO_Node *> nodes;
    collectNodes(session->scene()->getRootGroup(), nodes);
    for (MO_Node *node : nodes) {
        auto *item = new QListWidgetItem(QStringLiteral("%1  (%2)").arg(node->instanceName(), node->typeKeyword()), d_->nodeList);
        item->setData(Qt::UserRole, node->instanceName());
    }
    d_->syncing = false;
    rememberFile(d_->workspace.filePath());
    onSelectionChanged();
    onFrameChanged();
    onDocumentChanged();
}

void AH_MainWindow::onDocumentChanged()
{
    CO_CommandManager *commands = d_->workspace.session()->commandManager();
    d_->undoAction->setEnabled(commands->canUndo());
    d_->undoAction->setText(commands->canUndo() ? tr("Undo %1").arg(commands->undoName()) : tr("Undo"));
    d_->redoAction->setEnabled(commands->canRedo());
    d_->redoAction->setText(commands->canRedo() ? tr("Redo %1").arg(commands->redoName()) : tr("Redo"));
    QString const name = d_->workspace.filePath().isEmpty() ? tr("untitled") : QFileInfo(d_->workspace.filePath()).fileName();
    setWindowTitle(QStringLiteral("%1[*] - animhost").arg(name));
    setWindowModified(d_->workspace.isModified());
    d_->viewWidget->update();
    // Panels show state derived from the scene, and an undo may take away what a panel shows
    // (a root) without telling it: the current one is brought up to date after every step.
    d_->receiver->updateStatus();
}

void AH_MainWindow::onSelectionChanged()
{
    std::vector<MO_Node *> const selected = d_->workspace.session()->getSelection()->nodes();
    d_->syncing = true;
    for (int i = 0; i < d_->nodeList->count(); ++i) {
        QListWidgetItem *item = d_->nodeList->item(i);
        MO_Node *node = d_->workspace.findNode(item->data(Qt::UserRole).toString());
        item->setSelected(std::find(selected.begin(), selected.end(), node) != selected.end());
    }
    d_->syncing = false;
    d_->receiver->selectionChanged();
    d_->viewWidget->update();
}

void AH_MainWindow::onFrameChanged()
{
    d_->viewWidget->update();
}

void AH_MainWindow::onNodeListSelectionChanged()
{
    if (d_->syncing)
        return;
    QStringList names;
    for (int i = 0; i < d_->nodeList->count(); ++i)
        if (d_->nodeList->item(i)->isSelected())
            names << d_->nodeList->item(i)->data(Qt::UserRole).toString();
    d_->workspace.selectNodes(names, nullptr);
}

void AH_MainWindow::onToolChanged()
{
    CX_ToolIds::ID const id = d_->workspace.view()->toolId();
    for (QAction *action : d_->toolGroup->actions())
        action->setChecked(action->data().toInt() == id);
    d_->receiver->setCurrentTool(id);
    onValidateActions();
}

void AH_MainWindow::onValidateActions()
{
    for (PluginAction const &a : d_->pluginActions) {
        bool enabled = false, checked = false;
        bool const known = d_->host.actionManager()->actionState(a.responder, a.slot, enabled, checked);
        a.action->setEnabled(known && enabled);
        if (a.action->isCheckable())
            a.action->setChecked(checked);
    }
}

void AH_MainWindow::onPluginMenusChanged()
{
    for (QMenu *menu : d_->pluginMenus) {
        d_->forgetActionsOf(menu);
        menuBar()->removeAction(menu->menuAction());
        for (QAction *action : menu->actions())
            d_->viewMenu->removeAction(action);
        menu->deleteLater();
    }
    d_->pluginMenus.clear();
    for (QString const &identifier : d_->host.menus()->menuIdentifiers()) {
        if (identifier == QLatin1String("View")) {
            // Merged into the window's own View menu, after a separator: the entries live in a
            // menu that is never shown, so that dropping it takes them out of the View menu.
            auto *entries = new QMenu(this);
            entries->setObjectName(identifier);
            entries->addSeparator();
            d_->fillMenu(entries, d_->host.menus()->menu(identifier), this);
            d_->viewMenu->addActions(entries->actions());
            d_->pluginMenus.push_back(entries);
            continue;
        }
        QMenu *menu = menuBar()->addMenu(menuTitle(identifier));
        menu->setObjectName(identifier);
        d_->fillMenu(menu, d_->host.menus()->menu(identifier), this);
        connect(menu, &QMenu::aboutToShow, this, &AH_MainWindow::onValidateActions);
        d_->pluginMenus.push_back(menu);
    }
    onValidateActions();
}

void AH_MainWindow::onPluginToolbarsChanged()
{
    for (QToolBar *bar : d_->pluginToolbars) {
        d_->forgetActionsOf(bar);
        removeToolBar(bar);
        bar->deleteLater();
    }
    d_->pluginToolbars.clear();
    for (QString const &name : d_->host.toolbars()->toolbarNames()) {
        PLUG_ToolbarModel::Toolbar const *model = d_->host.toolbars()->toolbar(name);
        if (!model)
            continue;
        QToolBar *bar = addToolBar(model->text.isEmpty() ? name : model->text);
        bar->setObjectName(name);
        for (PLUG_ActionEntry const &entry : model->entries) {
            if (entry.kind == PLUG_ActionEntry::Kind::Separator)
                bar->addSeparator();
            else if (entry.kind == PLUG_ActionEntry::Kind::Item)
                bar->addAction(d_->makePluginAction(entry, bar, this));
        }
        d_->pluginToolbars.push_back(bar);
    }
    onValidateActions();
}
