#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_ToolbarService.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Entries in short: items by id, "|" for a separator, submenus as id[children].
std::string outline(std::vector<PLUG_ActionEntry> const &entries)
{
    std::string result;
    for (PLUG_ActionEntry const &e : entries) {
        if (!result.empty())
            result += ",";
        if (e.kind == PLUG_ActionEntry::Kind::Separator)
            result += "|";
        else
            result += e.id.toStdString();
        if (e.kind == PLUG_ActionEntry::Kind::Submenu)
            result += "[" + outline(e.children) + "]";
    }
    return result;
}

class MenuFiles : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString write(QString const &name, QByteArray const &contents)
    {
        QString const path = dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(contents);
        return path;
    }
};

QByteArray const animationMenu = R"xml(<?xml version="1.0"?>
<menu>
  <item id="IK_TOOL" text="New IK Tool" icon="IKTool.png" responder="IKToolResponder"
        slot="onActionSelectNewIKTool()" checkable="true"/>
  <separator/>
  <menu id="TRACE" text="Shift and Trace">
    <item id="SHOW_PEGS" text="Show Pegs" responder="ST" slot="onActionToggleShowPegs()"/>
  </menu>
</menu>
)xml";

QByteArray const otherMenu = R"xml(<menu>
  <item id="PLAY" text="Play" slot="onActionPlay()"/>
  <menu id="TRACE" text="Shift and Trace">
    <item id="RESET" text="Reset" responder="ST" slot="onActionResetAllShiftPositions()"/>
  </menu>
  <item id="IK_TOOL" text="IK Tool (replaced)" responder="Other" slot="onActionOther()"/>
</menu>
)xml";

TEST_F(MenuFiles, AMenuFileIsMergedIntoTheMenuOfItsIdentifier)
{
    PLUG_MenuModel menus;
    QSignalSpy spy(&menus, &PLUG_MenuModel::menuChanged);
    ASSERT_TRUE(menus.addMenu("Animation", write("animationMenu.xml", animationMenu)));
    EXPECT_EQ(menus.menuIdentifiers(), QStringList({"Animation"}));
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toString(), "Animation");

    std::vector<PLUG_ActionEntry> const entries = menus.menu("Animation");
    EXPECT_EQ(outline(entries), "IK_TOOL,|,TRACE[SHOW_PEGS]");
    PLUG_ActionEntry const &tool = entries.at(0);
    EXPECT_EQ(tool.text, "New IK Tool");
    EXPECT_EQ(tool.icon, "IKTool.png");
    EXPECT_EQ(tool.responderIdentity, "IKToolResponder");
    EXPECT_EQ(tool.slot, "onActionSelectNewIKTool()");
    EXPECT_TRUE(tool.checkable);
    EXPECT_EQ(entries.at(2).text, "Shift and Trace");
    EXPECT_FALSE(entries.at(2).children.at(0).checkable);
    EXPECT_TRUE(menus.menu("View").empty());
}

TEST_F(MenuFiles, SubmenusOfTheSameIdMergeAndItemsOfTheSameIdAreReplacedInPlace)
{
    PLUG_MenuModel menus;
    ASSERT_TRUE(menus.addMenu("Animation", write("a.xml", animationMenu)));
    ASSERT_TRUE(menus.addMenu("Animation", write("b.xml", otherMenu)));
    std::vector<PLUG_ActionEntry> const entries = menus.menu("Animation");
    EXPECT_EQ(outline(entries), "IK_TOOL,|,TRACE[SHOW_PEGS,RESET],PLAY");
    EXPECT_EQ(entries.at(0).text, "IK Tool (replaced)");
    EXPECT_EQ(entries.at(0).responderIdentity, "Other");
}

TEST_F(MenuFiles, MergingAFileAgainChangesNothing)
{
    PLUG_MenuModel menus;
    QString const a = write("a.xml", animationMenu);
    QString const b = write("b.xml", otherMenu);
    ASSERT_TRUE(menus.addMenu("Animation", a));
    ASSERT_TRUE(menus.addMenu("Animation", a));
    EXPECT_EQ(outline(menus.menu("Animation")), "IK_TOOL,|,TRACE[SHOW_PEGS]");

    ASSERT_TRUE(menus.addMenu("Animation", b));
    ASSERT_TRUE(menus.addMenu("Animation", b));
    EXPECT_EQ(outline(menus.menu("Animation")), "IK_TOOL,|,TRACE[SHOW_PEGS,RESET],PLAY");

    ASSERT_TRUE(menus.addMenu("Animation", a));
    EXPECT_EQ(outline(menus.menu("Animation")), "IK_TOOL,|,TRACE[SHOW_PEGS,RESET],PLAY");
}

TEST_F(MenuFiles, AChangedFileReplacesWhatItBroughtBefore)
{
    PLUG_MenuModel menus;
    QString const a = write("a.xml", animationMenu);
    ASSERT_TRUE(menus.addMenu("Animation", a));
    ASSERT_TRUE(menus.addMenu("Animation", write("b.xml", otherMenu)));
    write("a.xml", "<menu><item id=\"NEW\" slot=\"onActionNew()\"/></menu>");
    ASSERT_TRUE(menus.addMenu("Animation", a));
    // The submenu stays for the entry the other file put in it.
    EXPECT_EQ(outline(menus.menu("Animation")), "IK_TOOL,TRACE[RESET],PLAY,NEW");
}

TEST_F(MenuFiles, ABadMenuFileIsReportedByLineAndChangesNothing)
{
    struct Case {
        char const *what;
        char const *contents;
        int line;
    };
    Case const cases[] = {
        {"malformed", "<menu>\n<item id=\"X\" slot=\"x()\">\n</menu>\n", 3},
        {"wrong root", "<toolbar/>\n", 1},
        {"item without slot", "<menu>\n<item id=\"X\"/>\n</menu>\n", 2},
        {"item without id", "<menu>\n\n<item slot=\"x()\"/>\n</menu>\n", 3},
        {"submenu without id", "<menu>\n<menu text=\"Sub\"/>\n</menu>\n", 2},
        {"id twice", "<menu>\n<item id=\"X\" slot=\"x()\"/>\n<item id=\"X\" slot=\"y()\"/>\n</menu>\n", 3},
        {"bad checkable", "<menu>\n<item id=\"X\" slot=\"x()\" checkable=\"yes\"/>\n</menu>\n", 2},
        {"unknown element", "<menu>\n<item id=\"X\" slot=\"x()\"/>\n<button/>\n</menu>\n", 3},
        {"bad entry deep down", "<menu>\n<menu id=\"S\">\n<menu id=\"T\">\n<item id=\"X\"/>\n</menu>\n</menu>\n</menu>\n", 4},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        PLUG_MenuModel menus;
        ASSERT_TRUE(menus.addMenu("Animation", write("good.xml", animationMenu)));
        QSignalSpy spy(&menus, &PLUG_MenuModel::menuChanged);
        QString const path = write("bad.xml", c.contents);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(menus.addMenu("Animation", path));
        EXPECT_FALSE(menus.addMenu("View", path));
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_NE(message.find(path.toStdString()), std::string::npos) << message;
        EXPECT_NE(message.find("line " + std::to_string(c.line) + ":"), std::string::npos) << message;
        EXPECT_EQ(outline(menus.menu("Animation")), "IK_TOOL,|,TRACE[SHOW_PEGS]");
        EXPECT_EQ(menus.menuIdentifiers(), QStringList({"Animation"}));
        EXPECT_EQ(spy.count(), 0);
    }
    PLUG_MenuModel menus;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(menus.addMenu("View", dir.filePath("missing.xml")));
    std::string const message = testing::internal::GetCapturedStderr();
    EXPECT_NE(message.find("missing.xml"), std::string::npos) << message;
    EXPECT_FALSE(menus.addMenu("", write("good.xml", animationMenu)));
    EXPECT_TRUE(menus.menuIdentifiers().isEmpty());
}

QByteArray const traceToolbar = R"xml(<toolbar text="Shift and Trace">
  <item id="ST_TOOL" text="Shift and Trace" icon="st.svg" responder="ST" slot="onActionSelectShiftAndTraceTool()"/>
  <separator/>
  <item id="ST_PEGS" responder="ST" slot="onActionToggleShowPegs()" checkable="true"/>
</toolbar>
)xml";

TEST_F(MenuFiles, ToolbarsAreLoadedAndRemovedByNameAndOwner)
{
    PLUG_ToolbarModel toolbars;
    QSignalSpy spy(&toolbars, &PLUG_ToolbarModel::toolbarsChanged);
    QString const path = write("ShiftAndTrace_toolbar.xml", traceToolbar);
    ASSERT_TRUE(toolbars.loadToolbar(path, "shiftAndTraceToolbar"));
    ASSERT_TRUE(toolbars.loadToolbar(path, "shiftAndTraceToolbar"));  // replaces, does not add
    EXPECT_EQ(toolbars.toolbarNames(), QStringList({"shiftAndTraceToolbar"}));
    PLUG_ToolbarModel::Toolbar const *toolbar = toolbars.toolbar("shiftAndTraceToolbar");
    ASSERT_NE(toolbar, nullptr);
    EXPECT_EQ(toolbar->text, "Shift and Trace");
    EXPECT_EQ(outline(toolbar->entries), "ST_TOOL,|,ST_PEGS");
    EXPECT_TRUE(toolbar->entries.at(2).checkable);

    auto *window = reinterpret_cast<QWidget *>(&spy);  // an identity only
    ASSERT_TRUE(toolbars.loadToolbar(path, "shiftAndTraceToolbar", window));
    EXPECT_EQ(toolbars.toolbarNames(window), QStringList({"shiftAndTraceToolbar"}));
    EXPECT_EQ(spy.count(), 3);

    EXPECT_TRUE(toolbars.removeToolbar("shiftAndTraceToolbar", nullptr));
    EXPECT_FALSE(toolbars.removeToolbar("shiftAndTraceToolbar", nullptr));
    EXPECT_FALSE(toolbars.removeToolbar("newIKToolbar"));
    EXPECT_EQ(toolbars.toolbar("shiftAndTraceToolbar"), nullptr);
    EXPECT_NE(toolbars.toolbar("shiftAndTraceToolbar", window), nullptr);
    EXPECT_EQ(spy.count(), 4);
}

TEST_F(MenuFiles, ABadToolbarFileLeavesTheToolbarInPlace)
{
    PLUG_ToolbarModel toolbars;
    ASSERT_TRUE(toolbars.loadToolbar(write("good.xml", traceToolbar), "trace"));
    char const *const bad[] = {
        "<toolbar>\n<menu id=\"S\"/>\n</toolbar>\n",  // no submenus in toolbars
        "<menu/>\n",
        "<toolbar>\n<item id=\"X\"/>\n</toolbar>\n",
    };
    for (char const *contents : bad) {
        SCOPED_TRACE(contents);
        QString const path = write("bad.xml", contents);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(toolbars.loadToolbar(path, "trace"));
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_NE(message.find(path.toStdString() + ": line "), std::string::npos) << message;
        ASSERT_NE(toolbars.toolbar("trace"), nullptr);
        EXPECT_EQ(outline(toolbars.toolbar("trace")->entries), "ST_TOOL,|,ST_PEGS");
    }
    EXPECT_FALSE(toolbars.loadToolbar(write("good.xml", traceToolbar), ""));
}

}  // namespace
