// The window: the node list selects undoably, the tool bar and the current tool record agree, the
// timeline follows the frame, plug-in menus trigger actions with their validate twins, and the
// preferences dialog lets plug-ins add their tabs.
#include "AH_Host.h"
#include "AH_MainWindow.h"
#include "AH_PreferencesDialog.h"
#include "AH_Timeline.h"
#include "AH_Workspace.h"
#include "TestTools.h"
#include "action/AC_Manager.h"
#include "action/AC_Responder.h"
#include "command/CO_CommandManager.h"
#include "panel/TP_ToolProperties.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "scene/MO_Node.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <QAction>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QSpinBox>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolBar>

#include <gtest/gtest.h>

namespace {

class IdleTool : public TO_Tool {
public:
    using TO_Tool::TO_Tool;
};

CX_ToolIds::ID idleToolId()
{
    return registerTestTool<IdleTool>(QStringLiteral("WindowTestIdle"));
}

class WindowTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        idleToolId();  // registered before the window builds its tool bar
        CX_Context::GetInstance().SetData(CX_ToolRecord(), nullptr);
        ASSERT_TRUE(workspace.open(QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/arm.xml"), nullptr));
        window = std::make_unique<AH_MainWindow>(workspace, host);
    }
    void TearDown() override { window.reset(); }

    QStringList selectedNames() const
    {
        QStringList names;
        for (MO_Node *node : workspace.session()->getSelection()->nodes())
            names << node->instanceName();
        return names;
    }

    AH_Host host;  // not started: its services exist, no plug-in is loaded
    AH_Workspace workspace;
    std::unique_ptr<AH_MainWindow> window;
};

TEST_F(WindowTest, TheNodeListSelectsNodesAsOneUndoableStepAndFollowsTheSelection)
{
    auto *list = window->findChild<QListWidget *>(QStringLiteral("nodeList"));
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 6);
    list->item(3)->setSelected(true);
    EXPECT_EQ(selectedNames(), QStringList{QStringLiteral("Forearm")});
    EXPECT_EQ(workspace.session()->commandManager()->undoName(), QStringLiteral("Selection"));
    QAction *undo = nullptr;
    for (QAction *a : window->findChildren<QAction *>())
        if (a->text().startsWith(QStringLiteral("Undo")))
            undo = a;
    ASSERT_NE(undo, nullptr);
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Selection"));

    ASSERT_TRUE(workspace.undo());
    EXPECT_TRUE(selectedNames().isEmpty());
    EXPECT_FALSE(list->item(3)->isSelected());
    EXPECT_EQ(workspace.session()->commandManager()->undoCount(), 0);  // following the selection records nothing

    ASSERT_TRUE(workspace.selectNodes({QStringLiteral("Hand")}, nullptr));
    EXPECT_TRUE(list->item(5)->isSelected());
}

TEST_F(WindowTest, TheToolBarSetsTheCurrentToolAndFollowsIt)
{
    QAction *button = nullptr;
    for (QAction *a : window->findChild<QToolBar *>(QStringLiteral("toolsBar"))->actions())
        if (a->objectName() == QStringLiteral("WindowTestIdle"))
            button = a;
    ASSERT_NE(button, nullptr);
    button->trigger();
    EXPECT_EQ(CX_Context::GetInstance().currentToolId(), idleToolId());
    EXPECT_EQ(workspace.view()->toolId(), idleToolId());
    EXPECT_EQ(window->findChild<TP_ToolPropertiesReceiver *>()->currentTool(), idleToolId());
    EXPECT_TRUE(button->isChecked());

    CX_Context::GetInstance().SetData(CX_ToolRecord(), nullptr);  // an action elsewhere
    EXPECT_FALSE(button->isChecked());
    EXPECT_EQ(workspace.view()->toolId(), CX_ToolIds::None);
}

TEST_F(WindowTest, TheTimelineAndTheSessionShareTheFrame)
{
    auto *track = window->findChild<AH_TimelineTrack *>(QStringLiteral("timeline"));
    auto *spin = window->findChild<QSpinBox *>(QStringLiteral("frameSpin"));
    ASSERT_NE(track, nullptr);
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(track->frameCount(), 24);  // the arm's keys end at 12: at least 24 frames show
    EXPECT_EQ(spin->maximum(), 24);
    spin->setValue(7);
    EXPECT_DOUBLE_EQ(workspace.session()->currentFrame(), 7.0);
    EXPECT_EQ(track->currentFrame(), 7);
    workspace.setFrame(12, nullptr);
    EXPECT_EQ(track->currentFrame(), 12);
    EXPECT_EQ(spin->value(), 12);
}

class MenuResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    explicit MenuResponder(AC_Manager *manager) : AC_ResponderTemplateObject(QStringLiteral("WindowTestResponder"))
    {
        initActionManager(manager);
    }
    int performed = 0;
    bool enabled = true;
    bool checked = false;

public slots:
    void onActionDo() { ++performed; }
    void onActionDoValidate(AC_ActionInfo *info)
    {
        info->setEnabled(enabled);
        info->setChecked(checked);
    }
};

TEST_F(WindowTest, PluginMenusTriggerTheirActionsAndShowTheirValidation)
{
    MenuResponder responder(host.actionManager());
    QTemporaryDir dir;
    QString const path = dir.filePath(QStringLiteral("menu.xml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<menu><menu id=\"SUB\" text=\"Sub\"><item id=\"DO_IT\" text=\"Do It\" responder=\"WindowTestResponder\" "
               "slot=\"onActionDo()\" checkable=\"true\"/></menu></menu>\n");
    file.close();
    ASSERT_TRUE(host.menus()->addMenu(QStringLiteral("Animation"), path));

    auto *menu = window->menuBar()->findChild<QMenu *>(QStringLiteral("Animation"));
    ASSERT_NE(menu, nullptr);
    auto *action = menu->findChild<QAction *>(QStringLiteral("DO_IT"));
    ASSERT_NE(action, nullptr);
    EXPECT_EQ(action->text(), QStringLiteral("Do It"));
    EXPECT_TRUE(action->isEnabled());

    responder.checked = true;
    action->trigger();
    EXPECT_EQ(responder.performed, 1);
    EXPECT_TRUE(action->isChecked());  // validated again after the trigger

    responder.enabled = false;
    host.actionManager()->refreshActionStates();
    EXPECT_FALSE(action->isEnabled());
}

class TabCustomizer : public PLUG_PreferenceUICustomizerInterface {
public:
    void addPreferenceTab(int pageKind, QWidget *page) override
    {
        if (pageKind == PLUG_PreferenceUI::ToolsPage)
            page->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->addTab(new QLabel(QStringLiteral("x")), QStringLiteral("Probe"));
    }
    void addColorTab(int, QWidget *) override {}
};

TEST(PreferencesDialog, PluginsAddTheirTabsToThePagesTheyChoose)
{
    PLUG_PreferenceUI hook;
    TabCustomizer customizer;
    hook.registerCustomizer(&customizer);
    AH_PreferencesDialog dialog(&hook);
    QWidget *tools = dialog.page(PLUG_PreferenceUI::ToolsPage);
    ASSERT_NE(tools, nullptr);
    auto *tabs = tools->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    ASSERT_EQ(tabs->count(), 1);
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("Probe"));
    // A page no plug-in fills says so rather than showing nothing.
    EXPECT_EQ(dialog.page(PLUG_PreferenceUI::ColoursPage)->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->count(), 1);
    EXPECT_EQ(dialog.page(PLUG_PreferenceUI::AdvancedPage), nullptr);
    hook.unregisterCustomizer(&customizer);
}

} // namespace

#include "MainWindowTest.moc"
