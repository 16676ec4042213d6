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
#include "tool/TO_PencilTool.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

#ifndef ANIMHOST_VERSION
#define ANIMHOST_VERSION "unknown"
#endif

std::vector<AH_Options::Option> const &AH_Options::table()
{
    static std::vector<Option> const options = {
        {{QStringLiteral("h"), QStringLiteral("help")}, QString(), QStringLiteral("Print this help and exit."), nullptr,
         &AH_Options::help},
        {{QStringLiteral("v"), QStringLiteral("version")}, QString(), QStringLiteral("Print the version and exit."), nullptr,
         &AH_Options::version},
        {{QStringLiteral("prefs")}, QStringLiteral("PATH"),
         QStringLiteral("Read and save the preferences in PATH instead of the user's preference file."), &AH_Options::prefsPath},
        {{QStringLiteral("plugins")}, QStringLiteral("DIR"),
         QStringLiteral("Search the folders DIR (separated by ':') for plug-ins before the installed ones."), &AH_Options::pluginsDir},
        {{QStringLiteral("batch")}, QStringLiteral("SCRIPT"),
         QStringLiteral("Run the batch script SCRIPT without a window or a display, then exit."), &AH_Options::batchScript},
        {{QStringLiteral("output")}, QStringLiteral("DIR"),
         QStringLiteral("Save and render the relative paths of scripts in DIR (default: the current folder)."),
         &AH_Options::outputDir},
        {{QStringLiteral("run")}, QStringLiteral("SCRIPT"),
         QStringLiteral("Play the batch script SCRIPT in the window's session before the window shows."), &AH_Options::startScript},
        {{QStringLiteral("screenshot")}, QStringLiteral("FILE"),
         QStringLiteral("Save a picture of the window to FILE (PNG) a second after it shows, then quit."),
         &AH_Options::screenshot},
    };
    return options;
}

bool AH_Options::parse(QStringList const &arguments, AH_Options &options, QString *error)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    for (Option const &option : table())
        parser.addOption(QCommandLineOption(option.names, option.description, option.valueName));
    parser.addPositionalArgument(QStringLiteral("scene"), QString());
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.positionalArguments().size() > 1) {
        *error = QStringLiteral("expected at most one scene file, not %1").arg(parser.positionalArguments().join(QLatin1Char(' ')));
        return false;
    }
    for (Option const &option : table()) {
        if (option.text)
            options.*option.text = parser.value(option.names.constLast());
        else
            options.*option.flag = parser.isSet(option.names.constLast());
    }
    options.sceneFile = parser.positionalArguments().value(0);
    return true;
}

namespace {

// How an option is written: "-h, --help", "--prefs PATH".
QString optionSynopsis(AH_Options::Option const &option, QString const &separator)
{
    QStringList names;
    for (QString const &name : option.names)
        names << (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
    QString text = names.join(separator);
    if (!option.valueName.isEmpty())
        text += QLatin1Char(' ') + option.valueName;
    return text;
}

} // namespace

QString AH_Options::usage()
{
    QString text = QStringLiteral("usage: animhost");
    for (Option const &option : table())
        text += QStringLiteral(" [%1]").arg(optionSynopsis(option, QStringLiteral(" | ")));
    return text + QStringLiteral(" [SCENE]");
}

QString AH_Options::helpText()
{
    QString text = usage() + QStringLiteral(
        "\n\n"
        "A 2D cut-out animation application: opens SCENE (an XML scene file) in a window with the\n"
        "camera view, the node list, the tool properties and the timeline; with --batch, runs a\n"
        "script of the same gestures without a display.\n\nOptions:\n");
    QStringList columns;
    int width = 0;
    for (Option const &option : table()) {
        columns << optionSynopsis(option, QStringLiteral(", "));
        width = std::max(width, int(columns.constLast().size()));
    }
    for (std::size_t i = 0; i < table().size(); ++i)
        text += QStringLiteral("  %1  %2\n").arg(columns[int(i)], -width).arg(table()[i].description);
    text += QStringLiteral(
        "\nArguments:\n  SCENE  the scene file to open\n\n"
        "Environment:\n  %1  folders searched for plug-ins after those of --plugins and before the\n"
        "  installed ones, separated by ':'\n\n"
        "Exit status: 0 on success; 1 when a scene or a script fails; 2 for a bad command line.\n");
    return text.arg(QString::fromLatin1(AH_PluginPathVariable));
}

QString AH_Options::versionText()
{
    return QStringLiteral("animhost " ANIMHOST_VERSION);
}

// Q_INIT_RESOURCE must stand outside any namespace; calling it again does no harm.
void AH_InitResources()
{
    Q_INIT_RESOURCE(animhost);
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
    // The host's own tools, menus and toolbar come before any plug-in's.
    TO_PencilTool::registerTool();
    TO_PencilTool::addPanelFactory();
    AH_InitResources();
    d_->menus->addMenu(QStringLiteral("View"), QStringLiteral(":/animhost/viewMenu.xml"));
    d_->menus->addMenu(QStringLiteral("INSERT_MENU_ID"), QStringLiteral(":/animhost/insertMenu.xml"));
    d_->toolbars->loadToolbar(QStringLiteral(":/animhost/tracingToolbar.xml"), QStringLiteral("Tracing"));
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
    return d_->searchProblems + (d_->loader ? d_->loader->errors() : QStringList());
}
