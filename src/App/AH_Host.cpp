#include "AH_Host.h"

#include "action/AC_Manager.h"
#include "panel/TP_ToolProperties.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_PluginLoader.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "plugin/PLUG_Services.h"
#include "plugin/PLUG_ToolbarService.h"
#include "preference/PR_Preference.h"
#include "session/SC_Session.h"
#include "session/TUSceneChangeManager.h"

#include <QCommandLineParser>

#ifndef ANIMHOST_PLUGINS_DIR
#define ANIMHOST_PLUGINS_DIR "plugins"
#endif

bool AH_Options::parse(QStringList const &arguments, AH_Options &options, QString *error)
{
    QCommandLineParser parser;
    QCommandLineOption prefs(QStringLiteral("prefs"), QString(), QStringLiteral("PATH"));
    QCommandLineOption plugins(QStringLiteral("plugins"), QString(), QStringLiteral("DIR"));
    QCommandLineOption batch(QStringLiteral("batch"), QString(), QStringLiteral("SCRIPT"));
    QCommandLineOption output(QStringLiteral("output"), QString(), QStringLiteral("DIR"));
    QCommandLineOption screenshot(QStringLiteral("screenshot"), QString(), QStringLiteral("FILE"));
    QCommandLineOption run(QStringLiteral("run"), QString(), QStringLiteral("SCRIPT"));
    parser.addOptions({prefs, plugins, batch, output, screenshot, run});
    parser.addPositionalArgument(QStringLiteral("scene"), QString());
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.positionalArguments().size() > 1) {
        *error = QStringLiteral("expected at most one scene file, not %1").arg(parser.positionalArguments().join(QLatin1Char(' ')));
        return false;
    }
    options.prefsPath = parser.value(prefs);
    options.pluginsDir = parser.isSet(plugins) ? parser.value(plugins) : QStringLiteral(ANIMHOST_PLUGINS_DIR);
    options.batchScript = parser.value(batch);
    options.outputDir = parser.value(output);
    options.sceneFile = parser.positionalArguments().value(0);
    options.screenshot = parser.value(screenshot);
    options.startScript = parser.value(run);
    return true;
}

QString AH_Options::usage()
{
    return QStringLiteral("usage: animhost [--prefs PATH] [--plugins DIR] [--batch SCRIPT [--output DIR] | --run SCRIPT] [--screenshot FILE] [SCENE]");
}

namespace {

// The session context before a scene is open: the run's change manager, and no drag manager.
class StartupSessionContext final : public SC_SessionContext {
public:
    explicit StartupSessionContext(TUSceneChangeManager *changes) : changes_(changes) {}
    TUSceneChangeManager *changeManager() const override { return changes_; }
    SC_InteractiveDragManager *dragManager() const override { return nullptr; }

private:
    TUSceneChangeManager *changes_;
};

} // namespace

struct AH_Host::Impl {
    std::unique_ptr<TUSceneChangeManager> changes = std::make_unique<TUSceneChangeManager>();
    std::unique_ptr<StartupSessionContext> startupContext = std::make_unique<StartupSessionContext>(changes.get());
    std::unique_ptr<AC_Manager> actions = std::make_unique<AC_Manager>();
    std::unique_ptr<PLUG_MenuModel> menus = std::make_unique<PLUG_MenuModel>();
    std::unique_ptr<PLUG_ToolbarModel> toolbars = std::make_unique<PLUG_ToolbarModel>();
    std::unique_ptr<PLUG_PreferenceUI> preferenceUI = std::make_unique<PLUG_PreferenceUI>();
    std::unique_ptr<PLUG_PluginLoader> loader;
    bool running = false;
};

AH_Host::AH_Host() : d_(std::make_unique<Impl>()) {}

AH_Host::~AH_Host()
{
    shutdown();
}

void AH_Host::startup(AH_Options const &options)
{
    tuPref->load(options.prefsPath.isEmpty() ? PR_Preference::defaultFilePath() : options.prefsPath);
    PLUG_Services::setActionManager(d_->actions.get());
    PLUG_Services::setMenuService(d_->menus.get());
    PLUG_Services::setToolbarService(d_->toolbars.get());
    PLUG_Services::setPreference(d_->preferenceUI.get());
    // Replaced by the workspace's session once a scene is open.
    PLUG_Services::setSessionContext(d_->startupContext.get());
    d_->loader = std::make_unique<PLUG_PluginLoader>(options.pluginsDir);
    d_->loader->load(QStringLiteral("AnimationTool"));
    d_->running = true;
}

bool AH_Host::shutdown()
{
    if (!d_->running)
        return true;
    d_->running = false;
    d_->loader->unpolishAll();
    TP_ToolPropertiesPanelFactory::clearPanelFactories();
    PLUG_Services::setActionManager(nullptr);
    PLUG_Services::setMenuService(nullptr);
    PLUG_Services::setToolbarService(nullptr);
    PLUG_Services::setPreference(nullptr);
    if (PLUG_Services::getSessionContext() == d_->startupContext.get())
        PLUG_Services::setSessionContext(nullptr);
    return tuPref->save();
}

AC_Manager *AH_Host::actionManager() const
{
    return d_->actions.get();
}

PLUG_MenuModel *AH_Host::menus() const
{
    return d_->menus.get();
}

PLUG_ToolbarModel *AH_Host::toolbars() const
{
    return d_->toolbars.get();
}

PLUG_PreferenceUI *AH_Host::preferenceUI() const
{
    return d_->preferenceUI.get();
}

TUSceneChangeManager *AH_Host::changeManager() const
{
    return d_->changes.get();
}

QStringList AH_Host::pluginErrors() const
{
    return d_->loader ? d_->loader->errors() : QStringList();
}
