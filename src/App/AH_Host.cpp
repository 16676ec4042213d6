#include "AH_Host.h"

#include "AH_PluginSearch.h"

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
#include <QCoreApplication>

#include <cstdio>

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
    options.pluginsDir = parser.value(plugins);
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

QString AH_Options::help()
{
    return usage() + QStringLiteral(
        "\n\n"
        "Opens SCENE in the window, or runs a batch script of gestures on it without a display.\n"
        "\n"
        "Options:\n"
        "  --prefs PATH       the preference file (default: in the user's configuration folder)\n"
        "  --plugins DIR      folders searched first for plug-ins, separated by ':'\n"
        "  --batch SCRIPT     runs the batch script and exits, without a window\n"
        "  --output DIR       the folder where a batch script saves and renders relative paths\n"
        "  --run SCRIPT       runs the batch script in the window before it shows\n"
        "  --screenshot FILE  saves a picture of the window as PNG and quits\n"
        "  --help             shows this help and exits\n"
        "  --version          shows the version and exits\n"
        "\n"
        "Environment:\n"
        "  %1  folders searched for plug-ins after those of --plugins and\n"
        "                        before the installed ones, separated by ':'\n"
        "\n"
        "Exit status: 0 on success; 1 when a scene or a script fails; 2 for a bad command line.\n")
        .arg(QString::fromLatin1(AH_PluginPathVariable));
}

QString AH_Options::version()
{
    return QStringLiteral("animhost " ANIMHOST_VERSION);
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
    QStringList searchProblems;  // folders of the search path that do not exist
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
    AH_PluginSearchPath const search = AH_PluginSearchPath::make(
        options.pluginsDir, qEnvironmentVariable(AH_PluginPathVariable), QCoreApplication::applicationDirPath());
    d_->searchProblems = search.problems;
    for (QString const &problem : search.problems)
        std::fprintf(stderr, "%s\n", qUtf8Printable(problem));
    d_->loader = std::make_unique<PLUG_PluginLoader>(search.folders);
    d_->loader->load(QStringLiteral("AnimationTool"));
    d_->loader->loadAll();
    d_->running = true;
}

void AH_Host::shutdown()
{
    if (!d_->running)
        return;
    d_->running = false;
    d_->loader->unpolishAll();
    TP_ToolPropertiesPanelFactory::clearPanelFactories();
    PLUG_Services::setActionManager(nullptr);
    PLUG_Services::setMenuService(nullptr);
    PLUG_Services::setToolbarService(nullptr);
    PLUG_Services::setPreference(nullptr);
    if (PLUG_Services::getSessionContext() == d_->startupContext.get())
        PLUG_Services::setSessionContext(nullptr);
    tuPref->save();
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
    return d_->searchProblems + (d_->loader ? d_->loader->errors() : QStringList());
}
