// plugin_probe: a minimal host that opens the real AnimationTool library and reports what its
// entry points did to the host, one "key=value" line each, for PluginFrameTest to check.
//
// Usage: plugin_probe --ik on|off --identity N [--no-services] [--raw] [--steps s1,s2,...]
//   --ik          the preference QV_HAS_NEW_IK_TOOL, set before the library is opened
//   --identity    the application identity the host reports
//   --no-services runs without action manager, menu and toolbar services and session
//   --raw         opens the library without the plug-in loader, so that no entry point runs
//                 unless a step asks for it
//   --steps       entry points to call after opening: init, polish, unpolish
// Before each step the toolbar "newIKToolbar" is put in place, so that its removal shows.

#include "action/AC_Manager.h"
#include "action/AC_ShortcutManager.h"
#include "panel/TP_ToolProperties.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_PluginLoader.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "plugin/PLUG_Services.h"
#include "plugin/PLUG_ToolbarService.h"
#include "plugin/WHO_Identity.h"
#include "preference/PR_Preference.h"
#include "scene/TUScene.h"
#include "session/SC_Session.h"
#include "tool/CX_Context.h"
#include "tool/TO_ToolFactory.h"
#include "widgets/WID_IconManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QTemporaryDir>

#include <cstdio>

namespace {

void report(char const *key, QString const &value)
{
    std::printf("%s=%s\n", key, qUtf8Printable(value));
}

QString menusOf(PLUG_MenuModel const &menus)
{
    QStringList parts;
    for (QString const &id : menus.menuIdentifiers())
        parts << QStringLiteral("%1:%2").arg(id).arg(menus.menu(id).size());
    return parts.join(QLatin1Char(';'));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QStringList const args = app.arguments();
    auto option = [&](QString const &name) {
        int const i = args.indexOf(name);
        return i >= 0 && i + 1 < args.size() ? args.at(i + 1) : QString();
    };
    bool const ik = option(QStringLiteral("--ik")) == QLatin1String("on");
    int const identity = option(QStringLiteral("--identity")).toInt();
    bool const services = !args.contains(QStringLiteral("--no-services"));
    bool const raw = args.contains(QStringLiteral("--raw"));
    QStringList const steps = option(QStringLiteral("--steps")).split(QLatin1Char(','), Qt::SkipEmptyParts);

    QTemporaryDir home;
    tuPref->load(home.filePath(QStringLiteral("preferences.xml")));
    tuPref->setBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), ik);
    WHO_Identity::setApplication(static_cast<WHO_ApplicationIdentity>(identity));

    AC_Manager actions;
    PLUG_MenuModel menus;
    PLUG_ToolbarModel toolbars;
    PLUG_PreferenceUI preferenceUI;
    SC_Session session(std::make_unique<TUScene>());
    QString const pluginsFolder = QStringLiteral(ANIM_PLUGINS_DIR);
    QString const toolbarFile = pluginsFolder + QStringLiteral("/resources/ShiftAndTrace_toolbar.xml");
    if (services) {
        PLUG_Services::setActionManager(&actions);
        PLUG_Services::setMenuService(&menus);
        PLUG_Services::setToolbarService(&toolbars);
        PLUG_Services::setPreference(&preferenceUI);
        PLUG_Services::setSessionContext(&session);
    }

    PLUG_PluginLoader loader(pluginsFolder);
    QLibrary library(pluginsFolder + QStringLiteral("/libAnimationTool.so"));
    if (raw) {
        PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), pluginsFolder);
        if (!library.load()) {
            std::fprintf(stderr, "%s\n", qUtf8Printable(library.errorString()));
            return 1;
        }
    } else if (!loader.load(QStringLiteral("AnimationTool"))) {
        return 1;
    } else {
        library.load();  // the same library, already open: gives access to its entry points
    }

    for (QString const &step : steps) {
        toolbars.loadToolbar(toolbarFile, QStringLiteral("newIKToolbar"));
        QByteArray const symbol = step == QLatin1String("init")       ? "PLUG_Init"
                                  : step == QLatin1String("polish")   ? "PLUG_Polish"
                                                                      : "PLUG_Unpolish";
        auto entry = reinterpret_cast<void (*)()>(library.resolve(symbol.constData()));
        if (!entry)
            return 1;
        entry();
    }

    TO_ToolFactory const &factory = TO_ToolFactory::instance();
    report("ik_registered", factory.idForName(QStringLiteral("NewIKTool")) != CX_ToolIds::None ? "1" : "0");
    report("ik_tool_id", QString::number(factory.idForName(QStringLiteral("NewIKTool"))));
    report("st_tool_id", QString::number(factory.idForName(QStringLiteral("ShiftAndTraceTool"))));
    report("menus", menusOf(menus));
    report("toolbars", toolbars.toolbarNames().join(QLatin1Char(';')));
    report("shortcut_NEW_IK_TOOL", QString::number(actions.shortcutKeyCode(QStringLiteral("NEW_IK_TOOL"))));
    report("shortcut_SHIFT_AND_TRACE_TOOL", QString::number(actions.shortcutKeyCode(QStringLiteral("SHIFT_AND_TRACE_TOOL"))));
    report("image_folders", QString::number(actions.imageFolders().size()));
    report("icon_folders", QString::number(WID_IconManager::instance().searchDirectories().size()));
    report("panel_factories", QString::number(TP_ToolPropertiesPanelFactory::panelFactoryCount()));
    report("pref_ikJointSize", tuPref->find(QStringLiteral("ikJointSize"))
                                   ? QString::number(tuPref->getIntValue(QStringLiteral("ikJointSize"), -1))
                                   : QStringLiteral("missing"));
    report("customizers", QString::number(preferenceUI.customizers().size()));
    report("responders", QStringLiteral("%1;%2")
                             .arg(actions.responder(QStringLiteral("IKToolResponder")) ? 1 : 0)
                             .arg(actions.responder(QStringLiteral("ShiftAndTraceToolResponder")) ? 1 : 0));

    // Alt+K as the window hands it to the action manager: the tool it made current, if any.
    actions.handleShortcut(int(Qt::AltModifier) | Qt::Key_K);
    report("current_tool_after_alt_k", QString::number(CX_Context::GetInstance().currentToolId()));

    // The IK tool's action selects the tool under its identifier, registered or not.
    actions.trigger(QStringLiteral("IKToolResponder"), QStringLiteral("onActionSelectNewIKTool()"));
    report("current_tool_after_ik_action", QString::number(CX_Context::GetInstance().currentToolId()));
    PLUG_Services::reset();
    return 0;
}
