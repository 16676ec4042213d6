#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "plugin/PLUG_Services.h"
#include "plugin/PLUG_ToolbarService.h"
#include "plugin/WHO_Identity.h"

#include <gtest/gtest.h>

namespace {

TEST(Services, GettersGiveNullUntilTheApplicationSetsAService)
{
    PLUG_Services::reset();
    EXPECT_EQ(PLUG_Services::getActionManager(), nullptr);
    EXPECT_EQ(PLUG_Services::getMenuService(), nullptr);
    EXPECT_EQ(PLUG_Services::getToolbarService(), nullptr);
    EXPECT_EQ(PLUG_Services::getPreference(), nullptr);
    EXPECT_EQ(PLUG_Services::service(PLUG_Services::Service::SessionContext), nullptr);

    PLUG_MenuModel menus;
    PLUG_ToolbarModel toolbars;
    PLUG_PreferenceUI preferences;
    int sessionContext = 0;
    PLUG_Services::setMenuService(&menus);
    PLUG_Services::setToolbarService(&toolbars);
    PLUG_Services::setPreference(&preferences);
    PLUG_Services::setService(PLUG_Services::Service::SessionContext, &sessionContext);
    EXPECT_EQ(PLUG_Services::getMenuService(), &menus);
    EXPECT_EQ(PLUG_Services::getToolbarService(), &toolbars);
    EXPECT_EQ(PLUG_Services::getPreference(), &preferences);
    EXPECT_EQ(PLUG_Services::service(PLUG_Services::Service::SessionContext), &sessionContext);
    EXPECT_EQ(PLUG_Services::getActionManager(), nullptr);

    PLUG_Services::setToolbarService(nullptr);
    EXPECT_EQ(PLUG_Services::getToolbarService(), nullptr);
    PLUG_Services::reset();
    EXPECT_EQ(PLUG_Services::getMenuService(), nullptr);
    EXPECT_EQ(PLUG_Services::service(PLUG_Services::Service::SessionContext), nullptr);
}

TEST(Services, APlugInPathHasNoTrailingSeparator)
{
    PLUG_Services::reset();
    EXPECT_EQ(PLUG_Services::getPluginPath("AnimationTool"), QString());
    PLUG_Services::setPluginPath("AnimationTool", "/opt/animhost/plugins/");
    EXPECT_EQ(PLUG_Services::getPluginPath("AnimationTool"), "/opt/animhost/plugins");
    PLUG_Services::setPluginPath("AnimationTool", "/opt/animhost/./lib//plugins");
    EXPECT_EQ(PLUG_Services::getPluginPath("AnimationTool"), "/opt/animhost/lib/plugins");
    EXPECT_EQ(PLUG_Services::getPluginPath("Other"), QString());
    PLUG_Services::setPluginPath("AnimationTool", "");
    EXPECT_EQ(PLUG_Services::getPluginPath("AnimationTool"), QString());
    PLUG_Services::setPluginPath("", "/somewhere");
    EXPECT_EQ(PLUG_Services::getPluginPath(""), QString());
}

TEST(Identity, TheReferenceHostIsTheAnimationApplicationUnlessSetOtherwise)
{
    EXPECT_EQ(WHO_Identity::application(), 2);
    for (WHO_ApplicationIdentity identity : {WHO_RenderApplication, WHO_DrawingApplication, WHO_AnimationApplication}) {
        WHO_Identity::setApplication(identity);
        EXPECT_EQ(WHO_Identity::application(), identity);
    }
}

class RecordingCustomizer : public PLUG_PreferenceUICustomizerInterface {
public:
    RecordingCustomizer(std::string name, std::vector<std::string> &log) : name_(std::move(name)), log_(log) {}
    void addPreferenceTab(int pageKind, QWidget *) override { log_.push_back(name_ + " prefs " + std::to_string(pageKind)); }
    void addColorTab(int pageKind, QWidget *) override { log_.push_back(name_ + " colours " + std::to_string(pageKind)); }

private:
    std::string name_;
    std::vector<std::string> &log_;
};

TEST(PreferenceUI, EveryCustomizerAddsItsTabsToEachPageInRegistrationOrder)
{
    std::vector<std::string> log;
    RecordingCustomizer a("a", log), b("b", log);
    PLUG_PreferenceUI ui;
    ui.registerCustomizer(&a);
    ui.registerCustomizer(&b);
    ui.registerCustomizer(&a);  // once only
    ui.registerCustomizer(nullptr);
    EXPECT_EQ(ui.customizers().size(), 2u);

    auto *page = reinterpret_cast<QWidget *>(&log);  // an identity only: customizers here do not use it
    ui.customizePage(PLUG_PreferenceUI::ToolsPage, page);
    EXPECT_EQ(log, (std::vector<std::string>{"a prefs 4", "a colours 4", "b prefs 4", "b colours 4"}));

    log.clear();
    ui.customizePage(PLUG_PreferenceUI::ColoursPage, nullptr);
    EXPECT_TRUE(log.empty());
    ui.unregisterCustomizer(&a);
    ui.customizePage(PLUG_PreferenceUI::ColoursPage, page);
    EXPECT_EQ(log, (std::vector<std::string>{"b prefs 5", "b colours 5"}));
}

}  // namespace
