#include "iktool/IKToolPolish.h"

#include "iktool/IKPreferences.h"
#include "iktool/IKTool.h"
#include "iktool/IKToolPanel.h"
#include "iktool/IKToolResponder.h"

#include <QFile>

namespace {

// Latches that last for the life of the library.
struct PolishLatches {
    bool shortcutsLoaded = false;
    bool panelFactoryMade = false;
};

PolishLatches &latches()
{
    static PolishLatches state;
    return state;
}

QString pluginPath()
{
    return PLUG_Services::getPluginPath(QStringLiteral("AnimationTool"));
}

} // namespace

namespace IKToolPolish {

void polish()
{
    AC_Manager *actions = PLUG_Services::getActionManager();

    // 1. Shortcuts: load the file once, then apply the current set again so that its entries bind.
    AC_ShortcutManager *shortcuts = actions ? actions->shortcutManager() : nullptr;
    if (shortcuts && !latches().shortcutsLoaded) {
        latches().shortcutsLoaded = true;
        shortcuts->loadShortcuts(pluginPath() + QStringLiteral("/resources/shortcuts.xml"));
        shortcuts->applyShortcutSet(shortcuts->currentShortcutSetName());
    }

    // 2. Menus.
    if (PLUG_MenuService *menus = PLUG_Services::getMenuService()) {
        QString const folder = pluginPath() + QStringLiteral("/resources/");
        menus->addMenu(QStringLiteral("INSERT_MENU_ID"), folder + QStringLiteral("insertMenu.xml"));
        menus->addMenu(QStringLiteral("Animation"), folder + QStringLiteral("animationMenu.xml"));
        menus->addMenu(QStringLiteral("View"), folder + QStringLiteral("viewMenu.xml"));
    }

    // 3. Resources.
    QString const resources = pluginPath() + QStringLiteral("/resources");
    IKTool::setResourceFolder(resources);
    if (actions)
        actions->addImageFolder(resources);

    // 4. The tool has no toolbar of its own: the file is only looked for.
    if (PLUG_Services::getToolbarService())
        (void)QFile::exists(resources + QStringLiteral("/IKTool_toolbar.xml"));

    // 5. Actions.
    IKToolResponder::instance().makeConnections();

    // 6. Icons.
    WID_IconManager::instance().addSearchDirectory(resources);

    // 7. The panel factory, once.
    if (!latches().panelFactoryMade) {
        latches().panelFactoryMade = true;
        TP_ToolPropertiesPanelFactory::addPanelFactory(std::make_unique<IKToolPanelFactory>(resources));
    }

    // 8. Preferences.
    IKPreferences::instance();
}

void unpolish()
{
    if (PLUG_ToolbarService *toolbars = PLUG_Services::getToolbarService())
        toolbars->removeToolbar(QStringLiteral("newIKToolbar"), nullptr);
}

} // namespace IKToolPolish
