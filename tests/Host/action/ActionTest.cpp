#include "action/AC_Manager.h"
#include "action/AC_Responder.h"
#include "action/AC_ShortcutManager.h"
#include "preference/PR_Preference.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class TestResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    TestResponder(QString const &identity, AC_Manager *manager, QObject *parent = nullptr)
        : AC_ResponderTemplateObject(identity, parent)
    {
        initActionManager(manager);
    }

    AC_Responder *parentResponder() override { return parent_; }

    QStringList calls;
    bool enabled = true;
    bool checked = false;
    AC_Responder *parent_ = nullptr;

public slots:
    void onActionRun() { calls << "run"; }
    void onActionToggle() { calls << "toggle"; }
    void onActionToggleValidate(AC_ActionInfo *info)
    {
        calls << "validate";
        info->setEnabled(enabled);
        info->setChecked(checked);
    }
    void onActionSetPegPosition(int position) { calls << QString("peg %1").arg(position); }

signals:
    void somethingHappened();
};

// A responder with no slots of its own: actions pass up to its parent responder.
class EmptyResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    using AC_ResponderTemplateObject::AC_ResponderTemplateObject;
    AC_Responder *parentResponder() override { return parent_; }
    AC_Responder *parent_ = nullptr;
};

TEST(Actions, ASlotIsPerformedByNameWithOrWithoutItsParentheses)
{
    AC_Manager manager;
    TestResponder responder("Tester", &manager);
    EXPECT_EQ(manager.responder("Tester"), &responder);

    EXPECT_EQ(manager.trigger("Tester", "onActionRun()"), AC_Result::Handled);
    EXPECT_EQ(manager.trigger("Tester", "onActionRun"), AC_Result::Handled);
    EXPECT_EQ(manager.trigger("Tester", "onActionSetPegPosition(2)"), AC_Result::Handled);
    EXPECT_EQ(manager.trigger("Tester", "onActionSetPegPosition(-1)"), AC_Result::Handled);
    EXPECT_EQ(responder.calls, QStringList({"run", "run", "peg 2", "peg -1"}));
}

TEST(Actions, UnknownRespondersAndSlotsAreRefusedAndRunNothing)
{
    struct Case {
        char const *responder;
        char const *slot;
    };
    Case const cases[] = {
        {"Nobody", "onActionRun()"},
        {"", "onActionRun()"},  // no first responder
        {"Tester", ""},
        {"Tester", "onActionMissing()"},
        {"Tester", "onActionRun("},
        {"Tester", "onActionRun(1)"},        // no int overload
        {"Tester", "onActionSetPegPosition()"},  // needs its argument
        {"Tester", "onActionSetPegPosition(x)"},
        {"Tester", "onActionSetPegPosition(99999999999)"},
        {"Tester", "somethingHappened()"},  // a signal
        {"Tester", "deleteLater()"},        // QObject's own slots are no actions
        {"Tester", "onActionToggleValidate(AC_ActionInfo*)"},
        {"Tester", "1onActionRun()"},
    };
    AC_Manager manager;
    TestResponder responder("Tester", &manager);
    for (Case const &c : cases) {
        SCOPED_TRACE(std::string(c.responder) + " / " + c.slot);
        bool enabled = false, checked = true;
        EXPECT_EQ(manager.trigger(c.responder, c.slot, true), AC_Result::NotHandled);
        EXPECT_FALSE(manager.actionState(c.responder, c.slot, enabled, checked));
        EXPECT_FALSE(enabled);
        EXPECT_TRUE(checked);
        EXPECT_TRUE(responder.calls.isEmpty()) << responder.calls.join(",").toStdString();
        EXPECT_EQ(manager.responder("Tester"), &responder);
    }
}

TEST(Actions, TheValidateTwinEnablesDisablesAndChecks)
{
    AC_Manager manager;
    TestResponder responder("Tester", &manager);
    bool enabled = false, checked = true;

    // Without a twin: enabled, unchecked.
    ASSERT_TRUE(manager.actionState("Tester", "onActionRun()", enabled, checked));
    EXPECT_TRUE(enabled);
    EXPECT_FALSE(checked);

    responder.enabled = false;
    responder.checked = true;
    ASSERT_TRUE(manager.actionState("Tester", "onActionToggle()", enabled, checked));
    EXPECT_FALSE(enabled);
    EXPECT_TRUE(checked);
    EXPECT_EQ(manager.trigger("Tester", "onActionToggle()"), AC_Result::Disabled);
    EXPECT_EQ(responder.calls, QStringList({"validate", "validate"}));
    EXPECT_EQ(manager.trigger("Tester", "onActionToggle()", true), AC_Result::Handled);
    EXPECT_EQ(responder.calls.last(), "toggle");

    responder.calls.clear();
    responder.enabled = true;
    responder.checked = false;
    EXPECT_EQ(manager.trigger("Tester", "onActionToggle()"), AC_Result::Handled);
    EXPECT_EQ(responder.calls, QStringList({"validate", "toggle"}));
    ASSERT_TRUE(manager.actionState("Tester", "onActionToggle()", enabled, checked));
    EXPECT_TRUE(enabled);
    EXPECT_FALSE(checked);
}

TEST(Actions, AnActionPassesUpToTheParentResponderAndDownToChildren)
{
    AC_Manager manager;
    TestResponder parent("Parent", &manager);
    EmptyResponder child("Child", &parent);
    child.initActionManager(&manager);
    child.parent_ = &parent;

    parent.enabled = false;
    bool enabled = true, checked = false;
    ASSERT_TRUE(manager.actionState("Child", "onActionToggle()", enabled, checked));
    EXPECT_FALSE(enabled);  // the parent's twin answered
    EXPECT_EQ(manager.trigger("Child", "onActionRun()"), AC_Result::Handled);
    EXPECT_EQ(parent.calls.last(), "run");

    // Down: a responder tries its QObject children that are responders.
    EmptyResponder top("Top", nullptr);
    TestResponder below("Below", nullptr, &top);
    AC_ActionInfo run("onActionRun()");
    EXPECT_EQ(top.perform(&run), AC_Result::NotHandled);
    EXPECT_EQ(top.performDownToChildren(&run), AC_Result::Handled);
    EXPECT_EQ(below.calls, QStringList({"run"}));
    EXPECT_EQ(top.perform(nullptr), AC_Result::NotHandled);
    EXPECT_EQ(top.performDownToChildren(nullptr), AC_Result::NotHandled);
}

TEST(Actions, RespondersRegisterOnceAndLeaveWhenDestroyed)
{
    AC_Manager manager;
    auto first = std::make_unique<TestResponder>("Same", &manager);
    TestResponder second("Same", &manager);  // identity taken: not registered
    EXPECT_EQ(manager.responder("Same"), first.get());
    EXPECT_EQ(first->actionManager(), &manager);
    EXPECT_EQ(second.actionManager(), nullptr);
    EXPECT_FALSE(manager.registerResponder(nullptr));
    TestResponder anonymous("", &manager);
    EXPECT_EQ(anonymous.actionManager(), nullptr);

    ASSERT_TRUE(first->becomeFirstResponder());
    first.reset();
    EXPECT_EQ(manager.responder("Same"), nullptr);
    EXPECT_EQ(manager.firstResponder(), nullptr);
    EXPECT_EQ(manager.trigger("Same", "onActionRun()"), AC_Result::NotHandled);

    // A manager that goes first leaves its responders without one.
    auto shortLived = std::make_unique<AC_Manager>();
    TestResponder orphan("Orphan", shortLived.get());
    shortLived.reset();
    EXPECT_EQ(orphan.actionManager(), nullptr);
    EXPECT_FALSE(orphan.becomeFirstResponder());
}

TEST(Actions, AnActionForNoResponderGoesToTheFirstThenTheSelectionResponder)
{
    AC_Manager manager;
    TestResponder focus("Focus", &manager);
    EmptyResponder selection("Selection");
    selection.initActionManager(&manager);
    TestResponder selectionParent("SelectionParent", &manager);
    selection.parent_ = &selectionParent;

    EXPECT_EQ(manager.trigger("", "onActionRun()"), AC_Result::NotHandled);
    ASSERT_TRUE(selection.becomeSelectionResponder());
    EXPECT_EQ(manager.trigger("", "onActionRun()"), AC_Result::Handled);
    EXPECT_EQ(selectionParent.calls, QStringList({"run"}));

    ASSERT_TRUE(focus.becomeFirstResponder());
    EXPECT_TRUE(focus.isFirstResponder());
    EXPECT_EQ(manager.trigger("", "onActionRun()"), AC_Result::Handled);
    EXPECT_EQ(focus.calls, QStringList({"run"}));
    EXPECT_EQ(selectionParent.calls.size(), 1);

    EXPECT_TRUE(focus.resignFirstResponder());
    EXPECT_FALSE(focus.isFirstResponder());
    EXPECT_FALSE(focus.resignFirstResponder());
    EXPECT_TRUE(selection.isSelectionResponder());
    EXPECT_TRUE(selection.resignSelectionResponder());
    EXPECT_EQ(manager.selectionResponder(), nullptr);

    TestResponder unregistered("Loose", nullptr);
    EXPECT_FALSE(manager.setFirstResponder(&unregistered));
    EXPECT_EQ(manager.firstResponder(), nullptr);
}

TEST(Actions, RefreshAsksForValidationAgain)
{
    AC_Manager manager;
    QSignalSpy spy(&manager, &AC_Manager::actionStatesChanged);
    manager.refreshActionStates();
    EXPECT_EQ(spy.count(), 1);
}

TEST(Actions, ImagesAreFoundInTheFirstFolderThatHoldsThem)
{
    QTemporaryDir dir;
    QDir(dir.path()).mkpath("a");
    QDir(dir.path()).mkpath("b");
    for (char const *file : {"a/one.png", "b/one.png", "b/two.png"}) {
        QFile f(dir.filePath(file));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    AC_Manager manager;
    manager.addImageFolder(dir.filePath("a"));
    manager.addImageFolder(dir.filePath("b") + "/");
    manager.addImageFolder(dir.filePath("a/../a"));  // the same folder again
    manager.addImageFolder("");
    EXPECT_EQ(manager.imageFolders(), QStringList({dir.filePath("a"), dir.filePath("b")}));
    EXPECT_EQ(manager.findImage("one.png"), dir.filePath("a/one.png"));
    EXPECT_EQ(manager.findImage("two.png"), dir.filePath("b/two.png"));
    EXPECT_EQ(manager.findImage("three.png"), QString());
    EXPECT_EQ(manager.findImage(""), QString());
}

class ShortcutFile : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString write(QString const &name, QByteArray const &contents)
    {
        QString const path = dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return path;
    }
};

QByteArray const goodShortcuts = R"xml(<?xml version="1.0"?>
<shortcuts>
  <shortcut id="RUN" text="Run" responder="Tester" slot="onActionRun()" key="Alt+T">
    <key set="Compact" value="T"/>
  </shortcut>
  <shortcut id="PEG" responder="Tester" slot="onActionSetPegPosition(3)" key="Ctrl+Shift+P"/>
  <shortcut id="UNBOUND" responder="Tester" slot="onActionToggle()"/>
</shortcuts>
)xml";

TEST_F(ShortcutFile, LoadedShortcutsTakeEffectWhenASetIsApplied)
{
    AC_Manager manager;
    AC_ShortcutManager *shortcuts = manager.shortcutManager();
    ASSERT_NE(shortcuts, nullptr);
    ASSERT_TRUE(shortcuts->loadShortcuts(write("shortcuts.xml", goodShortcuts)));
    EXPECT_EQ(manager.shortcutKeyCode("RUN"), 0);  // not applied yet

    EXPECT_EQ(shortcuts->currentShortcutSetName(), AC_ShortcutManager::DefaultSetName);
    ASSERT_TRUE(shortcuts->applyShortcutSet(shortcuts->currentShortcutSetName()));
    int const run = manager.shortcutKeyCode("RUN");
    EXPECT_EQ(run, int(Qt::ALT) + int(Qt::Key_T));
    EXPECT_EQ(run & 0x1ffffff, int(Qt::Key_T));
    EXPECT_EQ(manager.shortcutKeyCode("PEG"), int(Qt::CTRL) + int(Qt::SHIFT) + int(Qt::Key_P));
    EXPECT_EQ(manager.shortcutKeyCode("UNBOUND"), 0);
    EXPECT_EQ(manager.shortcutKeyCode("MISSING"), 0);
    EXPECT_EQ(shortcuts->shortcutSetNames(), QStringList({"Compact", "Default"}));

    ASSERT_TRUE(shortcuts->applyShortcutSet("Compact"));
    EXPECT_EQ(manager.shortcutKeyCode("RUN"), int(Qt::Key_T));
    EXPECT_EQ(manager.shortcutKeyCode("PEG"), int(Qt::CTRL) + int(Qt::SHIFT) + int(Qt::Key_P));
    EXPECT_FALSE(shortcuts->applyShortcutSet(""));
    EXPECT_EQ(shortcuts->currentShortcutSetName(), "Compact");

    // A key runs the bound action, unless its responder declines shortcuts.
    TestResponder responder("Tester", &manager);
    EXPECT_EQ(manager.handleShortcut(int(Qt::Key_T)), AC_Result::Handled);
    EXPECT_EQ(manager.handleShortcut(int(Qt::CTRL) + int(Qt::SHIFT) + int(Qt::Key_P)), AC_Result::Handled);
    EXPECT_EQ(manager.handleShortcut(int(Qt::Key_Q)), AC_Result::NotHandled);
    EXPECT_EQ(manager.handleShortcut(0), AC_Result::NotHandled);
    responder.setHandleShortcuts(false);
    EXPECT_EQ(manager.handleShortcut(int(Qt::Key_T)), AC_Result::NotHandled);
    EXPECT_EQ(responder.calls, QStringList({"run", "peg 3"}));
}

TEST_F(ShortcutFile, ALaterFileReplacesShortcutsOfTheSameId)
{
    AC_ShortcutManager shortcuts;
    ASSERT_TRUE(shortcuts.loadShortcuts(write("a.xml", goodShortcuts)));
    ASSERT_TRUE(shortcuts.loadShortcuts(write("b.xml", R"xml(<shortcuts>
      <shortcut id="RUN" responder="Other" slot="onActionOther()" key="F5"/>
    </shortcuts>)xml")));
    shortcuts.applyShortcutSet("Default");
    EXPECT_EQ(shortcuts.keyCode("RUN"), int(Qt::Key_F5));
    ASSERT_NE(shortcuts.shortcut("RUN"), nullptr);
    EXPECT_EQ(shortcuts.shortcut("RUN")->responderIdentity, "Other");
    EXPECT_EQ(shortcuts.keyCode("PEG"), int(Qt::CTRL) + int(Qt::SHIFT) + int(Qt::Key_P));
}

TEST_F(ShortcutFile, AShortcutSwitchedByAPreferenceBindsOnlyWhileItIsTrueWhenASetIsApplied)
{
    AC_ShortcutManager shortcuts;
    ASSERT_TRUE(shortcuts.loadShortcuts(write("switched.xml", R"xml(<shortcuts>
      <shortcut id="FEATURE" slot="onActionFeature()" key="Alt+K" preference="TestFeatureOn"/>
      <shortcut id="ALWAYS" slot="onActionAlways()" key="Alt+T"/>
    </shortcuts>)xml")));
    for (bool const on : {false, true, false}) {
        tuPref->setBoolValue(QStringLiteral("TestFeatureOn"), on);
        shortcuts.applyShortcutSet("Default");
        EXPECT_EQ(shortcuts.keyCode("FEATURE"), on ? int(Qt::ALT) + int(Qt::Key_K) : 0) << on;
        EXPECT_EQ(shortcuts.shortcutForKeyCode(int(Qt::ALT) + int(Qt::Key_K)), on ? "FEATURE" : "") << on;
        EXPECT_EQ(shortcuts.keyCode("ALWAYS"), int(Qt::ALT) + int(Qt::Key_T)) << on;
    }
}

TEST_F(ShortcutFile, ABadFileIsReportedByLineAndNothingOfItIsUsed)
{
    struct Case {
        char const *what;
        char const *contents;
        int line;
    };
    Case const cases[] = {
        {"malformed", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\" key=\"F1\">\n</shortcuts>\n", 3},
        {"wrong root", "<keys/>\n", 1},
        {"no id", "<shortcuts>\n\n<shortcut slot=\"a()\"/>\n</shortcuts>\n", 3},
        {"no slot", "<shortcuts>\n<shortcut id=\"NEW\"/>\n</shortcuts>\n", 2},
        {"id twice", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\"/>\n<shortcut id=\"NEW\" slot=\"b()\"/>\n</shortcuts>\n", 3},
        {"unknown key", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\" key=\"Ctrl+Nope\"/>\n</shortcuts>\n", 2},
        {"two chords", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\" key=\"Ctrl+K, Ctrl+L\"/>\n</shortcuts>\n", 2},
        {"modifier only", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\" key=\"Ctrl+\"/>\n</shortcuts>\n", 2},
        {"set key without set", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\">\n<key value=\"F2\"/>\n</shortcut>\n</shortcuts>\n", 3},
        {"unknown child", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\">\n<binding/>\n</shortcut>\n</shortcuts>\n", 3},
        {"unknown element", "<shortcuts>\n<shortcut id=\"NEW\" slot=\"a()\"/>\n<action/>\n</shortcuts>\n", 3},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        AC_ShortcutManager shortcuts;
        ASSERT_TRUE(shortcuts.loadShortcuts(write("good.xml", goodShortcuts)));
        QString const path = write("bad.xml", c.contents);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(shortcuts.loadShortcuts(path));
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_NE(message.find(path.toStdString()), std::string::npos) << message;
        EXPECT_NE(message.find("line " + std::to_string(c.line) + ":"), std::string::npos) << message;
        EXPECT_EQ(shortcuts.shortcut("NEW"), nullptr);
        shortcuts.applyShortcutSet("Default");
        EXPECT_EQ(shortcuts.keyCode("RUN"), int(Qt::ALT) + int(Qt::Key_T));
    }
    AC_ShortcutManager shortcuts;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(shortcuts.loadShortcuts(dir.filePath("missing.xml")));
    std::string const message = testing::internal::GetCapturedStderr();
    EXPECT_NE(message.find("missing.xml"), std::string::npos) << message;
}

}  // namespace

#include "ActionTest.moc"
