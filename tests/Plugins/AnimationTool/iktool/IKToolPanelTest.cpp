// The IK tool panel built by its factory from the real form of the plug-in's resource folder, on
// scenes made for each rule of its refresh and for its gestures.
#include "iktool/IKTool.h"
#include "iktool/IKToolPanel.h"
#include "iktool/IKToolResponder.h"
#include "iktool/IKToolSettings.h"

#include "bridge/JointDefinition.h"
#include "bridge/SkeletonExtraction.h"
#include "skeleton/IKMetaData.h"
#include "skeleton/JointAttr.h"
#include "skeleton/SkeletonDef.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolButton>

#include <gtest/gtest.h>

#include <ostream>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

QString const kResources = QStringLiteral(ANIM_SOURCE_DIR "/resources");

// Object names of the widgets that are enabled with a root (tool) and with selected joints (joint).
char const *const kToolWidgets[] = {"maxIterations", "enableRootTranslation", "enableRootTranslationGain",
                                    "enableRootTranslationGainSlider", "enableShadowPosing"};
char const *const kJointWidgets[] = {"holdAngleCB", "holdAngleGain", "holdAngleGainSlider", "holdPosCB",
                                     "holdPosGain", "holdPosGainSlider", "activeCB", "activeGain",
                                     "activeGainSlider", "jointUseActualPosition", "jointIsBlocker"};
char const *const kMultiLabels[] = {"holdAngleMulti", "holdPosMulti", "activeMulti", "holdAngleGainMulti",
                                    "holdPosGainMulti", "activeGainMulti", "jointUseActualPositionMulti",
                                    "jointIsBlockerMulti"};

JointAttr *jointAttrOf(MO_Module *module)
{
    IKMetaData *meta = IKToolUtil::getIKMetaDataForModule(module);
    return meta && meta->skeletonMetaData() ? meta->skeletonMetaData()->jointAttr() : nullptr;
}

// A tool as the panel sees it through the settings: selected joints of a skeleton.
class FakeJointSource : public IKToolSettings::SelectionJointSource {
public:
    void selectedJoints(std::set<int> &out) override { out = selected; }
    double currentFrame() override { return frame; }
    SkeletonDef &skeleton() override { return skeletonDef; }
    bool canClearKeyframes() override { return true; }
    void clearKeyframes() override { ++clears; }

    std::set<int> selected;
    double frame = 7.6;
    SkeletonDef skeletonDef;
    int clears = 0;
};

class IKToolPanelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        IKToolSettings &s = IKToolSettings::instance();
        s.setToolMode(IKToolSettings::ManipulationMode);
        s.setInterpolationEnabled(false);
        s.setFrameRange(1, 12);
        s.setUseCurrentFrame(true);
        WID_IconManager::instance().addSearchDirectory(kResources);
        scene = std::make_unique<TUScene>();
    }

    void TearDown() override
    {
        IKToolSettings::instance().clearJointSource(&source);
        IKToolSettings::instance().setSkeletonRoot(nullptr);
        receiver.reset();
        PLUG_Services::setSelection(nullptr);
        PLUG_Services::setSessionContext(nullptr);
        session.reset();
    }

    template <class T = MO_PegModule>
    T *add(QString const &name, MO_Node *parent = nullptr)
    {
        auto node = UT_MakeShared<T>();
        node->setInstanceName(name);
        T *added = static_cast<T *>(scene->getRootGroup()->addNode(node));
        if (parent) {
            EXPECT_TRUE(MO_Node::connect(parent, 0, added, 0));
        }
        return added;
    }

    // Pegs with these names, each the child of the one before: a root to be and its joints.
    template <std::size_t N>
    std::array<MO_PegModule *, N> chain(char const *const (&names)[N])
    {
        std::array<MO_PegModule *, N> pegs{};
        for (std::size_t i = 0; i < N; ++i)
            pegs[i] = add(QString::fromLatin1(names[i]), i > 0 ? pegs[i - 1] : nullptr);
        return pegs;
    }

    // Makes the session of the scene built so far and the panel in its receiver, as the host does.
    void open()
    {
        session = std::make_unique<SC_Session>(std::move(scene));
        PLUG_Services::setSessionContext(session.get());
        PLUG_Services::setSelection(session->getSelection());
        // As at the plug-in's load: the responder hears selection changes before the panel does,
        // and takes the skeleton root of the selection.
        IKToolResponder::instance().makeConnections();
        receiver = std::make_unique<TP_ToolPropertiesReceiver>();
        IKToolPanelFactory(kResources).create(receiver.get());
        panel = dynamic_cast<IKToolPanel *>(receiver->panelForTool(IKTool::Id));
        ASSERT_TRUE(panel);
        ASSERT_TRUE(panel->isComplete());
    }

    CO_CommandManager *manager() const { return session->commandManager(); }
    void root(MO_Module *module) { IKToolUtil::defineRoot(manager(), module, true); }
    void joint(MO_Module *module) { IKToolUtil::setParticipation(manager(), module, true); }
    void select(std::vector<MO_Node *> const &nodes) { session->getSelection()->set(nodes); }

    template <class W = QWidget>
    W *widget(char const *name) const
    {
        W *w = panel->contentWidget()->findChild<W *>(QLatin1String(name));
        EXPECT_TRUE(w) << name;
        return w;
    }
    QString text(char const *name) const { return widget<QLabel>(name)->text(); }
    bool enabled(char const *name) const { return widget(name)->isEnabled(); }
    bool checked(char const *name) const { return widget<QAbstractButton>(name)->isChecked(); }
    void click(char const *name) { widget<QAbstractButton>(name)->click(); }

    std::unique_ptr<TUScene> scene;
    std::unique_ptr<SC_Session> session;
    std::unique_ptr<TP_ToolPropertiesReceiver> receiver;
    IKToolPanel *panel = nullptr;
    FakeJointSource source;
};

} // namespace

TEST_F(IKToolPanelTest, WithoutRootOrSelectionNothingCanBeEditedOrMadeARoot)
{
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_EQ(text("selectJointsInformation"), QStringLiteral("No Joint Selected"));
    EXPECT_EQ(text("skeletonNameLabel"), QStringLiteral("** No Skeleton Selected **"));
    for (char const *name : kToolWidgets)
        EXPECT_FALSE(enabled(name)) << name;
    for (char const *name : kJointWidgets)
        EXPECT_FALSE(enabled(name)) << name;
    for (char const *name : kMultiLabels)
        EXPECT_FALSE(enabled(name)) << name;
    EXPECT_FALSE(enabled("magicDefineRoot"));
    EXPECT_FALSE(enabled("magicSetup"));
    EXPECT_FALSE(enabled("resetAllConstraints"));
    EXPECT_TRUE(checked("manipulationMode"));
    EXPECT_FALSE(checked("jointSetupMode"));
    EXPECT_FALSE(widget("interpolationGroup")->isHidden());
    EXPECT_TRUE(widget("setupWizardGroup")->isHidden());
    // Their settings stay in force without being shown.
    EXPECT_TRUE(widget("maxIterations")->isHidden());
    EXPECT_TRUE(widget("enableShadowPosing")->isHidden());
}

TEST_F(IKToolPanelTest, ACurveCannotBeMadeARootFromEitherButton)
{
    CurveModule *curve = add<CurveModule>(QStringLiteral("Curve"));
    ASSERT_NO_FATAL_FAILURE(open());
    select({curve});
    EXPECT_FALSE(enabled("magicDefineRoot"));
    EXPECT_TRUE(enabled("magicSetup"));
    int const steps = manager()->undoCount();

    IKToolSettings::instance().setToolMode(IKToolSettings::SetupMode);
    EXPECT_FALSE(widget("jointDefineRoot")->isHidden());
    EXPECT_FALSE(enabled("jointDefineRoot"));
    EXPECT_TRUE(widget("interpolationGroup")->isHidden());
    EXPECT_FALSE(widget("setupWizardGroup")->isHidden());
    // Enabled by hand, the button still refuses a curve.
    widget("jointDefineRoot")->setEnabled(true);
    click("jointDefineRoot");
    EXPECT_EQ(manager()->undoCount(), steps);
    EXPECT_FALSE(IKToolUtil::isRoot(curve));

    // A peg can.
    MO_PegModule *peg = nullptr;
    {
        auto node = UT_MakeShared<MO_PegModule>();
        node->setInstanceName(QStringLiteral("Peg"));
        peg = static_cast<MO_PegModule *>(session->scene()->getRootGroup()->addNode(node));
    }
    select({peg});
    EXPECT_TRUE(enabled("jointDefineRoot"));
    click("jointDefineRoot");
    EXPECT_TRUE(IKToolUtil::isRoot(peg));
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Assign Root"));
    // The responder took the new root: the panel shows it, and the button now unassigns it.
    EXPECT_EQ(text("skeletonNameLabel"), QStringLiteral("Peg"));
    EXPECT_TRUE(checked("jointDefineRoot"));
    click("jointDefineRoot");
    EXPECT_FALSE(IKToolUtil::isRoot(peg));
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Unassign Root"));
}

TEST_F(IKToolPanelTest, MixedFlagsShowTheFirstJointAndMarkWhereTheOthersDiffer)
{
    auto const [body, a, b, c] = chain({"Body", "A", "B", "C"});
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    for (MO_PegModule *m : {a, b, c})
        joint(m);
    // Hold position on, on, off; gains 1.04 and 1.0 show as the same 10 tenths.
    manager()->execute(jointAttrOf(a)->holdPositionAttr()->setTextValue(0.0, QStringLiteral("true")));
    manager()->execute(jointAttrOf(b)->holdPositionAttr()->setTextValue(0.0, QStringLiteral("true")));
    manager()->execute(jointAttrOf(a)->weightAttr()->setTextValue(0.0, QStringLiteral("1.04")));
    manager()->execute(jointAttrOf(b)->holdPositionGainAttr()->setTextValue(0.0, QStringLiteral("2.5")));
    // Selected as nodes, with no tool.
    select({a, b, c});

    EXPECT_EQ(text("skeletonNameLabel"), QStringLiteral("Body"));
    QStringList const names = text("selectJointsInformation").split(QStringLiteral("("));
    EXPECT_EQ(names.front(), QStringLiteral("3 Joints Selected "));
    // The first joint is the first of the selected nodes below the root, in the bridge's order.
    MO_Module *first = *IKToolUtil::selectedNodes(body).begin();
    EXPECT_EQ(checked("holdPosCB"), jointAttrOf(first)->holdPositionAttr()->localValue());
    EXPECT_TRUE(enabled("holdPosMulti"));
    EXPECT_EQ(widget<QSpinBox>("activeGain")->value(), 10);
    EXPECT_EQ(widget<QSlider>("activeGainSlider")->value(), 10);
    EXPECT_FALSE(enabled("activeGainMulti"));
    EXPECT_TRUE(enabled("holdPosGainMulti"));  // 1.0 against 2.5
    EXPECT_FALSE(enabled("holdAngleMulti"));
    EXPECT_FALSE(enabled("activeMulti"));
    for (char const *name : kToolWidgets)
        EXPECT_TRUE(enabled(name)) << name;
    // Each gain pair goes with its flag as shown, the first joint's (nodes come in no fixed order).
    EXPECT_EQ(enabled("holdPosGain"), jointAttrOf(first)->holdPositionAttr()->localValue());
    EXPECT_EQ(enabled("holdPosGainSlider"), jointAttrOf(first)->holdPositionAttr()->localValue());
    EXPECT_FALSE(enabled("holdAngleGain"));
    EXPECT_TRUE(enabled("activeGain"));

    // A flag click writes the button's state to every selected joint, in one step.
    click("holdAngleCB");
    for (MO_PegModule *m : {a, b, c})
        EXPECT_TRUE(jointAttrOf(m)->holdOrientationAttr()->localValue()) << m->instanceName().toStdString();
    EXPECT_EQ(manager()->undoName(), QStringLiteral("IK Setting"));
    EXPECT_TRUE(enabled("holdAngleGain"));
    int const steps = manager()->undoCount();
    // A gain from a slider, in tenths, as text.
    widget<QSlider>("holdAngleGainSlider")->setValue(25);
    EXPECT_EQ(manager()->undoCount(), steps + 1);
    for (MO_PegModule *m : {a, b, c})
        EXPECT_DOUBLE_EQ(jointAttrOf(m)->holdOrientationGainAttr()->localValue(), 2.5);
    EXPECT_EQ(widget<QSpinBox>("holdAngleGain")->value(), 25);  // the refresh followed
    ASSERT_TRUE(manager()->undo());
    EXPECT_DOUBLE_EQ(jointAttrOf(b)->holdOrientationGainAttr()->localValue(), 1.0);

    // Resetting the selected joints gives them their defaults back in one named step.
    click("resetAllSelected");
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Reset ALL IK Constraints for Selected Joints"));
    for (MO_PegModule *m : {a, b, c}) {
        EXPECT_FALSE(jointAttrOf(m)->holdPositionAttr()->localValue());
        EXPECT_FALSE(jointAttrOf(m)->holdOrientationAttr()->localValue());
        EXPECT_DOUBLE_EQ(jointAttrOf(m)->weightAttr()->localValue(), 1.0);
    }
    EXPECT_FALSE(enabled("holdPosMulti"));
}

TEST_F(IKToolPanelTest, TheToolsSelectedJointsComeBeforeTheNodeSelection)
{
    auto const [body, a, b] = chain({"Body", "A", "B"});
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    joint(a);
    joint(b);
    select({body});
    EXPECT_EQ(text("selectJointsInformation"), QStringLiteral("1 Joint Selected (Body)"));

    IKToolUtil::skeletonFromModule(body, source.skeletonDef, IKToolUtil::SkeletonExtractionSettings());
    ASSERT_GE(source.skeletonDef.size(), 3u);
    source.selected = {2, 1, 99};  // in index order; an index past the end is skipped
    IKToolSettings::instance().setJointSource(&source);  // tells the panel
    QString const caption = text("selectJointsInformation");
    EXPECT_EQ(caption, QStringLiteral("2 Joints Selected (%1, %2)")
                           .arg(source.skeletonDef[1].module->instanceName(), source.skeletonDef[2].module->instanceName()));

    // The range buttons read the tool's current frame, cut to an integer; clearing goes to it.
    IKToolSettings &s = IKToolSettings::instance();
    click("interpolateButton");
    EXPECT_TRUE(s.interpolationEnabled());
    click("interpolateUseCurrentFrame");
    EXPECT_FALSE(s.useCurrentFrame());
    EXPECT_TRUE(enabled("toFrameButton"));
    click("fromFrameButton");
    EXPECT_EQ(s.fromFrame(), 7);
    EXPECT_EQ(widget<QLineEdit>("fromFrame")->text(), QStringLiteral("7"));
    click("toFrameButton");
    EXPECT_EQ(s.toFrame(), 7);
    EXPECT_EQ(s.fromFrame(), 7);
    EXPECT_EQ(widget<QLineEdit>("toFrame")->text(), QStringLiteral("7"));
    click("clearKeyframes");
    EXPECT_EQ(source.clears, 1);
    // The type buttons are exclusive through the refresh.
    click("interpolateCubic");
    EXPECT_EQ(s.interpolationType(), int(IKToolSettings::Cubic));
    EXPECT_TRUE(checked("interpolateCubic"));
    EXPECT_FALSE(checked("interpolateLinear"));
}

TEST_F(IKToolPanelTest, ManyLongNamesBreakTheCaptionAfterACommaAndOpenItOnANewLine)
{
    MO_PegModule *body = add(QStringLiteral("Body"));
    std::vector<MO_Node *> joints;
    MO_Node *parent = body;
    for (int i = 0; i < 20; ++i) {
        MO_PegModule *m = add(QStringLiteral("LongJointName%1").arg(i, 2, 10, QLatin1Char('0')), parent);
        joints.push_back(m);
        parent = m;
    }
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    for (MO_Node *m : joints)
        joint(m->toModule());
    select(joints);

    // Names of 15 characters, in the bridge's order of the selected nodes: the count passes 31
    // at the second ", " of each line.
    QString expected = QStringLiteral("20 Joints Selected \n(");
    int i = 0;
    for (MO_Module *m : IKToolUtil::selectedNodes(body)) {
        if (i > 0)
            expected += i % 2 == 0 ? QStringLiteral(", \n") : QStringLiteral(", ");
        expected += m->instanceName();
        ++i;
    }
    expected += QLatin1Char(')');
    EXPECT_EQ(i, 20);
    EXPECT_EQ(text("selectJointsInformation").toStdString(), expected.toStdString());

    // Two such names stay on the caption's line.
    select({joints[0], joints[1]});
    QStringList two;
    for (MO_Module *m : IKToolUtil::selectedNodes(body))
        two << m->instanceName();
    EXPECT_EQ(text("selectJointsInformation"), QStringLiteral("2 Joints Selected (%1)").arg(two.join(QStringLiteral(", "))));
}

TEST_F(IKToolPanelTest, AutomaticGenerationMarksTheSkeletonOnceAndNotAgain)
{
    auto const [body, upper, fore] = chain({"Body", "Upper", "Fore"});
    ASSERT_NO_FATAL_FAILURE(open());
    select({body});
    EXPECT_TRUE(enabled("magicSetup"));
    int const steps = manager()->undoCount();
    click("magicSetup");
    EXPECT_EQ(manager()->undoCount(), steps + 1);
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Automatic Skeleton Generation"));
    EXPECT_TRUE(IKToolUtil::isRoot(body));
    EXPECT_TRUE(IKToolUtil::participates(upper));
    EXPECT_TRUE(IKToolUtil::participates(fore));
    EXPECT_EQ(IKToolSettings::instance().skeletonRoot(), body);
    EXPECT_EQ(text("skeletonNameLabel"), QStringLiteral("Body"));

    // With a tool whose skeleton has two joints or more, the button is off.
    IKToolUtil::skeletonFromModule(body, source.skeletonDef, IKToolUtil::SkeletonExtractionSettings());
    ASSERT_GE(source.skeletonDef.size(), 2u);
    IKToolSettings::instance().setJointSource(&source);
    EXPECT_FALSE(enabled("magicSetup"));
    EXPECT_FALSE(enabled("magicDefineRoot"));

    // Undo takes the whole generation back.
    ASSERT_TRUE(manager()->undo());
    EXPECT_FALSE(IKToolUtil::isRoot(body));
    EXPECT_FALSE(IKToolUtil::participates(upper));
}

TEST_F(IKToolPanelTest, JointDefinitionTogglesTheSelectedNodeInOneStep)
{
    auto const [body, arm] = chain({"Body", "Arm"});
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    select({arm});
    IKToolSettings::instance().setToolMode(IKToolSettings::SetupMode);
    EXPECT_TRUE(widget("jointDefineRoot")->isHidden());
    EXPECT_FALSE(widget("jointDefineParticipates")->isHidden());
    EXPECT_FALSE(checked("jointDefineParticipates"));
    click("jointDefineParticipates");
    EXPECT_TRUE(IKToolUtil::participates(arm));
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Define Joint"));
    EXPECT_TRUE(checked("jointDefineParticipates"));
    click("jointDefineParticipates");
    EXPECT_FALSE(IKToolUtil::participates(arm));
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Undefine Joint"));

    // The root itself shows the root button, checked.
    select({body});
    EXPECT_FALSE(widget("jointDefineRoot")->isHidden());
    EXPECT_TRUE(checked("jointDefineRoot"));
    EXPECT_TRUE(widget("jointDefineParticipates")->isHidden());

    // The extraction filters follow their buttons.
    bool const peg = IKToolSettings::instance().usePeg();
    click("usePegButton");
    EXPECT_EQ(IKToolSettings::instance().usePeg(), !peg);
    EXPECT_EQ(checked("usePegButton"), !peg);
    click("usePegButton");
    EXPECT_EQ(IKToolSettings::instance().usePeg(), peg);
}

TEST_F(IKToolPanelTest, RootSettingsAndResetOfTheWholeSkeleton)
{
    auto const [body, a, b] = chain({"Body", "A", "B"});
    ASSERT_NO_FATAL_FAILURE(open());

    // The top root button makes the selection a root and goes to setup mode.
    select({body});
    ASSERT_TRUE(enabled("magicDefineRoot"));
    click("magicDefineRoot");
    EXPECT_TRUE(IKToolUtil::isRoot(body));
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Assign Root"));
    IKToolSettings &s = IKToolSettings::instance();
    EXPECT_EQ(s.toolMode(), int(IKToolSettings::SetupMode));
    EXPECT_TRUE(checked("jointSetupMode"));
    EXPECT_FALSE(checked("magicDefineRoot"));  // not a toggle
    click("manipulationMode");
    EXPECT_EQ(s.toolMode(), int(IKToolSettings::ManipulationMode));
    EXPECT_FALSE(enabled("magicDefineRoot"));  // there is a root now

    // Root translation and its gain, from the button, the spin box and the slider.
    bool const translate = s.enableRootTranslation();
    click("enableRootTranslation");
    EXPECT_EQ(s.enableRootTranslation(), !translate);
    widget<QSpinBox>("enableRootTranslationGain")->setValue(35);
    EXPECT_DOUBLE_EQ(s.rootTranslationGain(), 3.5);
    EXPECT_EQ(widget<QSlider>("enableRootTranslationGainSlider")->value(), 35);
    widget<QSlider>("enableRootTranslationGainSlider")->setValue(7);
    EXPECT_DOUBLE_EQ(s.rootTranslationGain(), 0.7);
    EXPECT_EQ(widget<QSpinBox>("enableRootTranslationGain")->value(), 7);

    // Buttons without an action of their own change nothing and leave no step.
    joint(a);
    joint(b);
    int const steps = manager()->undoCount();
    widget("magicDeleteRoot")->setEnabled(true);
    click("magicDeleteRoot");
    s.setInterpolationEnabled(true);
    panel->settingsChanged();
    click("existingKeyFramesButton");
    EXPECT_EQ(manager()->undoCount(), steps);
    EXPECT_TRUE(IKToolUtil::isRoot(body));

    // Resetting all constraints reaches every joint of the tool's skeleton, selected or not.
    manager()->execute(jointAttrOf(a)->holdPositionAttr()->setTextValue(0.0, QStringLiteral("true")));
    manager()->execute(jointAttrOf(b)->weightAttr()->setTextValue(0.0, QStringLiteral("4")));
    IKToolUtil::skeletonFromModule(body, source.skeletonDef, IKToolUtil::SkeletonExtractionSettings());
    source.selected = {1};
    s.setJointSource(&source);
    click("resetAllConstraints");
    EXPECT_EQ(manager()->undoName(), QStringLiteral("Reset ALL IK Constraints"));
    EXPECT_FALSE(jointAttrOf(a)->holdPositionAttr()->localValue());
    EXPECT_DOUBLE_EQ(jointAttrOf(b)->weightAttr()->localValue(), 1.0);
    ASSERT_TRUE(manager()->undo());
    EXPECT_TRUE(jointAttrOf(a)->holdPositionAttr()->localValue());
    EXPECT_DOUBLE_EQ(jointAttrOf(b)->weightAttr()->localValue(), 4.0);

    // The show/hide button shows or hides the joint properties.
    QAbstractButton *showHide = widget<QAbstractButton>("buttonShowHideJointProperties");
    showHide->setChecked(true);
    EXPECT_FALSE(widget("jointPropertyContainer")->isHidden());
    showHide->setChecked(false);
    EXPECT_TRUE(widget("jointPropertyContainer")->isHidden());
    showHide->setChecked(true);
    EXPECT_FALSE(widget("jointPropertyContainer")->isHidden());
}

TEST_F(IKToolPanelTest, ARefreshNeverComesBackAsAGesture)
{
    auto const [body, a] = chain({"Body", "A"});
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    joint(a);
    manager()->execute(jointAttrOf(a)->holdPositionGainAttr()->setTextValue(0.0, QStringLiteral("3.7")));
    manager()->execute(jointAttrOf(a)->holdPositionAttr()->setTextValue(0.0, QStringLiteral("true")));
    IKToolSettings &s = IKToolSettings::instance();
    s.setRootTranslationGain(1.0);

    // Each change below makes the refresh change widget values (texts, spin boxes, sliders, check
    // states), which would each run a gesture if their signals got through: a step, or at least
    // one more settings signal.
    QSignalSpy changes(&s, &IKToolSettings::settingsChanged);
    int const steps = manager()->undoCount();
    ASSERT_NE(widget<QSpinBox>("holdPosGain")->value(), 37);
    ASSERT_FALSE(checked("holdPosCB"));
    select({a});                      // the joint's values: no settings signal
    s.setInterpolationEnabled(true);  // silent
    s.setFrameRange(3, 9);            // one signal
    s.setRootTranslationGain(4.2);    // one signal
    for (int i = 0; i < 3; ++i)       // one signal each
        s.setToolMode(i % 2 ? IKToolSettings::ManipulationMode : IKToolSettings::SetupMode);
    s.setToolMode(IKToolSettings::ManipulationMode);
    panel->settingsChanged();
    panel->onSelectionChanged();
    EXPECT_EQ(manager()->undoCount(), steps);
    EXPECT_EQ(changes.count(), 6);
    EXPECT_EQ(widget<QSpinBox>("holdPosGain")->value(), 37);
    EXPECT_EQ(widget<QSlider>("holdPosGainSlider")->value(), 37);
    EXPECT_TRUE(checked("holdPosCB"));
    EXPECT_EQ(widget<QSpinBox>("enableRootTranslationGain")->value(), 42);
    EXPECT_EQ(widget<QLineEdit>("fromFrame")->text(), QStringLiteral("3"));
    EXPECT_EQ(widget<QLineEdit>("toFrame")->text(), QStringLiteral("9"));
    EXPECT_EQ(s.fromFrame(), 3);
    EXPECT_EQ(s.toFrame(), 9);
}

TEST_F(IKToolPanelTest, FrameTextsThatAreNotWholeNumbersLeaveTheRangeAndComeBack)
{
    MO_PegModule *body = add(QStringLiteral("Body"));
    ASSERT_NO_FATAL_FAILURE(open());
    root(body);
    select({body});
    IKToolSettings &s = IKToolSettings::instance();
    s.setUseCurrentFrame(false);
    click("interpolateButton");
    ASSERT_TRUE(s.interpolationEnabled());
    QLineEdit *from = widget<QLineEdit>("fromFrame");
    QLineEdit *to = widget<QLineEdit>("toFrame");

    // Whole numbers beyond the frame limits too (-1000000 to 1000000), though they fit an int.
    for (QString const &bad : {QStringLiteral(""), QStringLiteral("x"), QStringLiteral("2.5"), QStringLiteral("1e3"),
                              QStringLiteral("99999999999"), QStringLiteral("nan"), QStringLiteral("1000001"),
                              QStringLiteral("2147483647"), QStringLiteral("-2147483648")}) {
        from->setText(bad);
        EXPECT_EQ(s.fromFrame(), 1) << bad.toStdString();
        EXPECT_EQ(s.toFrame(), 12) << bad.toStdString();
        EXPECT_EQ(from->text(), QStringLiteral("1")) << bad.toStdString();
    }
    // Without a tool to read the current frame from, the range buttons change nothing.
    click("fromFrameButton");
    click("toFrameButton");
    EXPECT_EQ(s.fromFrame(), 1);
    EXPECT_EQ(s.toFrame(), 12);
    to->setText(QStringLiteral("20"));
    EXPECT_EQ(s.toFrame(), 20);
    from->setText(QStringLiteral("-4"));
    EXPECT_EQ(s.fromFrame(), -4);
    to->setText(QStringLiteral("1000000"));
    EXPECT_EQ(s.toFrame(), 1000000);
    EXPECT_EQ(to->text(), QStringLiteral("1000000"));
}

// A form that lacks one widget, and the group flags the diagnostic line then ends with: the
// panel's own widgets, the solver settings, the joint properties.
struct MissingWidget {
    char const *name;
    char const *flags;
};

// Shown in test listings and failures: the widget left out of the form.
void PrintTo(MissingWidget const &missing, std::ostream *out)
{
    *out << "without " << missing.name;
}

class IKToolPanelForm : public ::testing::TestWithParam<MissingWidget> {};

TEST_P(IKToolPanelForm, AFormWithoutOneOfTheWidgetsLeavesThePanelUnconnected)
{
    // A copy of the form where the widget goes by another name.
    QFile form(kResources + QStringLiteral("/ikToolProperties.ui"));
    ASSERT_TRUE(form.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(form.readAll());
    QString const attribute = QStringLiteral("name=\"%1\"").arg(QLatin1String(GetParam().name));
    int const at = text.indexOf(attribute);
    ASSERT_GE(at, 0);
    text.replace(at, attribute.size(), QStringLiteral("name=\"somethingElse\""));
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QFile copy(folder.filePath(QStringLiteral("ikToolProperties.ui")));
    ASSERT_TRUE(copy.open(QIODevice::WriteOnly));
    copy.write(text.toUtf8());
    copy.close();

    // The message goes to standard error; catch it in a file.
    QString const log = folder.filePath(QStringLiteral("stderr.txt"));
    std::fflush(stderr);
    int const saved = ::dup(STDERR_FILENO);
    int const file = ::open(qPrintable(log), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(saved, 0);
    ASSERT_GE(file, 0);
    ::dup2(file, STDERR_FILENO);
    TP_ToolPropertiesReceiver receiver;
    IKToolPanelFactory(folder.path()).create(&receiver);
    std::fflush(stderr);
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    ::close(file);
    QFile written(log);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    QStringList const lines = QString::fromUtf8(written.readAll()).split(QLatin1Char('\n'));
    ASSERT_GE(lines.size(), 2);
    EXPECT_EQ(lines[0], QStringLiteral("Something wrong in IK Tool panel initialization"));
    QStringList const fields = lines[1].split(QLatin1Char(' '));
    ASSERT_EQ(fields.size(), 11) << lines[1].toStdString();
    EXPECT_EQ(fields.mid(8).join(QLatin1Char(' ')), QLatin1String(GetParam().flags));

    auto *panel = dynamic_cast<IKToolPanel *>(receiver.panelForTool(IKTool::Id));
    ASSERT_TRUE(panel);
    EXPECT_FALSE(panel->isComplete());
    // Unconnected: a click changes no setting, and the entry points do nothing.
    IKToolSettings &s = IKToolSettings::instance();
    int const mode = s.toolMode();
    auto *setup = panel->contentWidget()->findChild<QToolButton *>(QStringLiteral("jointSetupMode"));
    auto *manipulation = panel->contentWidget()->findChild<QToolButton *>(QStringLiteral("manipulationMode"));
    QToolButton *other = mode == IKToolSettings::SetupMode ? manipulation : setup;
    ASSERT_TRUE(other);
    other->click();
    panel->modeChanged();
    panel->valueChanged();
    panel->settingsChanged();
    panel->onShowHideJointProperties(false);
    EXPECT_EQ(s.toolMode(), mode);
}

INSTANTIATE_TEST_SUITE_P(OneOfEachGroup, IKToolPanelForm,
                         ::testing::Values(MissingWidget{"holdPosMulti", "1 1 0"},
                                           MissingWidget{"activeGainSlider", "1 1 0"},
                                           MissingWidget{"enableRootTranslationGain", "1 0 1"},
                                           MissingWidget{"enableShadowPosing", "1 0 1"},
                                           MissingWidget{"interpolationGroup", "0 1 1"},
                                           MissingWidget{"selectJointsInformation", "0 1 1"}),
                         [](::testing::TestParamInfo<MissingWidget> const &info) { return std::string(info.param.name); });
