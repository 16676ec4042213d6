// Skeleton extraction from graphs built in code: which modules become joints, how they link by
// name, where handles go, how switches and second roots prune the walk, and the selection
// functions through the plug-in services.
#include "BridgeTestUtil.h"

#include "bridge/ModuleManipulator.h"
#include "session/SC_Session.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace BridgeTest;
using IKToolUtil::SkeletonExtractionSettings;

namespace {

MO_Module *const kNull = nullptr;

bool contains(SkeletonDef const &skeleton, MO_Module *module)
{
    std::vector<MO_Module *> const modules = modulesOf(skeleton);
    return std::find(modules.begin(), modules.end(), module) != modules.end();
}

} // namespace

TEST(SkeletonExtraction, PassThroughAndNonPoseableNodesGiveNoJointButTheirChildrenLinkAcross)
{
    Graph g;
    auto *top = g.add<MO_PegModule>("top");
    MO_Node *composite = g.addPassThrough("composite", "COMPOSITE");
    auto *plain = g.add<MO_Module>("plain");  // a module of no poseable kind
    auto *elbow = g.add<MO_PegModule>("elbow");
    auto *hand = g.add<MO_PegModule>("hand");
    Graph::link(top, composite);
    Graph::link(composite, plain);
    Graph::link(plain, elbow);
    Graph::link(elbow, hand);
    g.root(top);
    g.joint(elbow);
    g.joint(hand);

    SkeletonDef const skeleton = extract(hand, poseSettings());
    ASSERT_EQ(skeleton.size(), 4u);
    EXPECT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{top, elbow, hand, hand}));
    EXPECT_EQ(skeleton[0].name, "root");
    EXPECT_EQ(skeleton[0].parentName, "");
    EXPECT_EQ(skeleton[1].name, nameOf(elbow));
    EXPECT_EQ(skeleton[1].parentName, "root");
    EXPECT_EQ(skeleton[2].parentName, nameOf(elbow));
    EXPECT_EQ(skeleton[3].name, nameOf(hand) + "_handle");
    EXPECT_TRUE(skeleton[3].isHandle);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(skeleton[std::size_t(i)].index, i);
    EXPECT_EQ(skeleton[0].childCount, 1);
    EXPECT_EQ(skeleton[2].childCount, 1);  // its handle
    EXPECT_EQ(IKToolUtil::skeletonFromModule(hand), top);
    EXPECT_EQ(IKToolUtil::getModuleDepth(hand), 3);  // the composite is looked through
}

TEST(SkeletonExtraction, PositionsAreReadAtTheFrameAndHandlesFollowTheModulesAxes)
{
    Graph g;
    auto *top = g.add<MO_PegModule>("top");
    auto *arm = g.add<MO_PegModule>("arm");
    Graph::link(top, arm);
    g.root(top);
    g.joint(arm);
    top->positionAttr()->setKeyframe(1, Math::Point3d(0, 0, 0));
    top->positionAttr()->setKeyframe(11, Math::Point3d(12, 16, 0));  // (1, 1) in scene space
    arm->positionAttr()->setLocalValue(Math::Point3d(24, 0, 0));    // 2 to the right of top
    arm->rotationAttr()->setLocalValue(Math::Angle3d(0, 0, 90));
    // Handle 2 field units along the arm's x: (1/6, 0) in its axes, turned a quarter up.
    JointAttr *joint = IKToolUtil::getIKMetaDataForModule(arm)->skeletonMetaData()->jointAttr();
    joint->handlePositionX()->setLocalValue(2.0);

    SkeletonDef const skeleton = extract(arm, poseSettings(6.7));  // read at frame 6
    ASSERT_EQ(skeleton.size(), 3u);
    expectNear(skeleton[0].position, Math::Point3d(0.5, 0.5, 0));
    expectNear(skeleton[1].position, Math::Point3d(2.5, 0.5, 0));
    expectNear(skeleton[1].localPosition, Math::Point3d(2.0, 0, 0));
    expectNear(skeleton[2].position, Math::Point3d(2.5, 0.5 + 2.0 / 12.0, 0));
    expectNear(skeleton[2].solvedPosition, skeleton[2].position);
}

TEST(SkeletonExtraction, ANonParticipatingPegBetweenJointsLinksItsChildToTheJointAbove)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *b = g.add<MO_PegModule>("b");
    auto *c = g.add<MO_PegModule>("c");
    Graph::link(a, b);
    Graph::link(b, c);
    g.root(a);
    g.joint(b, false);
    g.joint(c);

    SkeletonDef const skeleton = extract(a, poseSettings());
    EXPECT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{a, c, c}));
    EXPECT_EQ(skeleton[1].parentName, "root");

    // The setup view takes every candidate.
    SkeletonExtractionSettings setup = poseSettings();
    setup.definedJointsOnly = false;
    EXPECT_EQ(modulesOf(extract(a, setup)), (std::vector<MO_Module *>{a, b, c}));
}

TEST(SkeletonExtraction, ASecondRootBelowTheFirstAndAllBelowItStayOut)
{
    Graph g;
    std::vector<MO_PegModule *> const pegs = g.pegChain({"a", "b", "second", "d"});
    MO_PegModule *a = pegs[0], *b = pegs[1], *second = pegs[2], *d = pegs[3];
    g.root(second);

    SkeletonDef const first = extract(a, poseSettings());
    EXPECT_EQ(modulesOf(first), (std::vector<MO_Module *>{a, b, b}));
    // From below the second root, its own skeleton.
    EXPECT_EQ(modulesOf(extract(d, poseSettings())), (std::vector<MO_Module *>{second, d, d}));
}

TEST(SkeletonExtraction, WithoutARootOnlyTheSetupViewGivesASkeletonFromTheTopOfTheChain)
{
    Graph g;
    auto *excluded = g.add<MO_PegModule>("excluded");
    auto *a = g.add<MO_PegModule>("a");
    auto *b = g.add<MO_PegModule>("b");
    Graph::link(excluded, a);
    Graph::link(a, b);
    static_cast<AT_BoolAttr *>(excluded->attr(QStringLiteral("excludeFromIK")))->setLocalValue(true);

    EXPECT_TRUE(extract(b, poseSettings()).empty());
    EXPECT_EQ(IKToolUtil::findTopLevelParent(b), a);  // the excluded node is not entered
    SkeletonExtractionSettings setup = poseSettings();
    setup.definedJointsOnly = false;
    SkeletonDef const skeleton = extract(b, setup);
    EXPECT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{a, b}));  // no handles in the setup view
}

TEST(SkeletonExtraction, ASwitchKeepsOnlyTheBranchActiveAtTheFrame)
{
    Graph g;
    auto *top = g.add<MO_PegModule>("top");
    auto *left = g.add<MO_PegModule>("left");
    auto *right = g.add<MO_PegModule>("right");
    auto *sw = g.add<MO_SwitchModule>("switch");
    auto *child = g.add<MO_PegModule>("child");
    Graph::link(top, left);
    Graph::link(top, right);
    Graph::link(left, sw, 0);
    Graph::link(right, sw, 1);
    Graph::link(sw, child);
    ASSERT_TRUE(sw->activeInputAttr()->setKeyframe(1, 0));
    ASSERT_TRUE(sw->activeInputAttr()->setKeyframe(5, 1));
    SkeletonExtractionSettings setup;
    setup.definedJointsOnly = false;

    setup.frame = 2.0;
    SkeletonDef const atTwo = extract(child, setup);
    EXPECT_TRUE(contains(atTwo, left));
    EXPECT_FALSE(contains(atTwo, right));
    EXPECT_EQ(jointOf(atTwo, child)->parentName, nameOf(left));

    setup.frame = 6.0;
    SkeletonDef const atSix = extract(child, setup);
    EXPECT_FALSE(contains(atSix, left));
    EXPECT_TRUE(contains(atSix, right));
    EXPECT_TRUE(contains(atSix, top));  // on both chains: kept
    // Input 0 of the switch still names the parent: with left out, the child links to the top.
    EXPECT_EQ(jointOf(atSix, child)->parentName, "root");
    EXPECT_FALSE(atTwo.isEquivalent(atSix));
    setup.frame = 3.0;
    EXPECT_TRUE(atTwo.isEquivalent(extract(child, setup)));
}

TEST(SkeletonExtraction, AMiniPegIsAJointOnlyAsARootWithItsLocalReferential)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *mini = g.add<MiniPegModule>("mini");
    auto *c = g.add<MO_PegModule>("c");
    Graph::link(a, mini);
    Graph::link(mini, c);
    g.root(a);
    g.joint(mini);
    g.joint(c);
    mini->offsetAttr()->setLocalValue(Math::Point2d(12, 0));

    // Below the root a mini peg is no candidate: the joint below links across it, and its
    // referential moves that joint only while in force.
    SkeletonDef const inChain = extract(a, poseSettings());
    EXPECT_EQ(modulesOf(inChain), (std::vector<MO_Module *>{a, c, c}));
    EXPECT_EQ(jointOf(inChain, c)->parentName, "root");
    expectNear(jointOf(inChain, c)->position, Math::Point3d(1, 0, 0));
    mini->useLocalReferentialAttr()->setLocalValue(false);
    expectNear(jointOf(extract(a, poseSettings()), c)->position, Math::Point3d(0, 0, 0));

    // As the root.
    g.root(mini);
    SkeletonDef const without = extract(c, poseSettings());
    EXPECT_EQ(modulesOf(without), (std::vector<MO_Module *>{c}));  // one joint: no handle
    mini->useLocalReferentialAttr()->setLocalValue(true);
    SkeletonDef const with = extract(c, poseSettings());
    EXPECT_EQ(modulesOf(with), (std::vector<MO_Module *>{mini, c, c}));
    EXPECT_EQ(with[1].parentName, "root");
    expectNear(with[0].position, Math::Point3d(1, 0, 0));
}

TEST(SkeletonExtraction, IgnoredKeywordsComeBeforeParticipationAndForcedModulesOverrideThem)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *forced = g.add<MO_PegModule>("forced");
    auto *ignored = g.add<MO_PegModule>("ignored");
    auto *bone = g.add<BendyBoneModule>("bone");
    Graph::link(a, forced);
    Graph::link(forced, ignored);
    Graph::link(ignored, bone);
    g.root(a);
    g.joint(forced);
    g.joint(ignored);
    g.joint(bone);

    SkeletonExtractionSettings settings = poseSettings();
    settings.ignoredKeywords = {QStringLiteral("PEG")};
    settings.forcedModules = {forced};
    SkeletonDef const skeleton = extract(a, settings);
    // The root is never tested against the keywords.
    EXPECT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{a, forced, bone, bone}));
    EXPECT_EQ(jointOf(skeleton, bone)->parentName, nameOf(forced));
}

TEST(SkeletonExtraction, IgnoredKeywordsFollowTheThreeSetupOptions)
{
    using Options = IKToolUtil::SetupKeywordOptions;
    std::set<QString> const deformers{QStringLiteral("CurveModule"), QStringLiteral("BoneModule"),
                                      QStringLiteral("BendyBoneModule"), QStringLiteral("GameBoneModule"),
                                      QStringLiteral("OffsetModule")};
    EXPECT_EQ(IKToolUtil::getIgnoredKeywords(), (std::set<QString>{QStringLiteral("READ")}));
    EXPECT_TRUE(IKToolUtil::getIgnoredKeywords(Options{true, true, true}).empty());
    EXPECT_EQ(IKToolUtil::getIgnoredKeywords(Options{false, true, true}), (std::set<QString>{QStringLiteral("PEG")}));
    EXPECT_EQ(IKToolUtil::getIgnoredKeywords(Options{true, true, false}), deformers);
    EXPECT_EQ(IKToolUtil::getIgnoredKeywords(Options{false, false, false}).size(), deformers.size() + 2);
}

TEST(SkeletonExtraction, TwoChildrenOfOneParentBothLinkToItAndEachGetsAHandle)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *b = g.add<MO_PegModule>("b");
    auto *c = g.add<MO_PegModule>("c");
    Graph::link(a, b);
    Graph::link(a, c);
    g.root(a);
    g.joint(b);
    g.joint(c);

    SkeletonDef const skeleton = extract(a, poseSettings());
    ASSERT_EQ(skeleton.size(), 5u);  // root, b, c and the handles of b and c
    EXPECT_EQ(skeleton.front().childCount, 2);
    for (MO_Module *child : {b, c}) {
        EXPECT_EQ(jointOf(skeleton, child)->parentName, "root");
        ASSERT_NE(jointOf(skeleton, child, true), nullptr);
        EXPECT_EQ(jointOf(skeleton, child, true)->parentName, nameOf(child));
    }
}

TEST(SkeletonExtraction, ANodeReachedByTwoConnectionsIsOneJoint)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *b = g.add<MO_PegModule>("b");
    auto *c = g.add<MO_PegModule>("c");
    auto *grand = g.add<MO_PegModule>("grand");
    Graph::link(a, b);
    Graph::link(a, c);
    Graph::link(b, grand);
    ASSERT_TRUE(grand->setInPortCount(2));
    Graph::link(c, grand, 1);
    SkeletonExtractionSettings setup = poseSettings();
    setup.definedJointsOnly = false;

    std::vector<MO_Module *> const modules = modulesOf(extract(a, setup));
    EXPECT_EQ(modules.size(), 4u);
    EXPECT_EQ(std::count(modules.begin(), modules.end(), grand), 1);
}

TEST(SkeletonExtraction, ALoneRootGetsNoHandleAndCopiedHandlesAreForced)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *b = g.add<MO_PegModule>("b");
    auto *c = g.add<MO_PegModule>("c");
    Graph::link(a, b);
    Graph::link(b, c);
    g.root(a);
    EXPECT_EQ(extract(a, poseSettings()).size(), 1u);

    g.joint(b);
    SkeletonDef const pose = extract(a, poseSettings());
    ASSERT_EQ(pose.size(), 3u);
    SkeletonExtractionSettings setup = poseSettings();
    setup.definedJointsOnly = false;
    SkeletonDef view = extract(a, setup);
    ASSERT_EQ(view.size(), 3u);  // a, b, c: no handles
    IKToolUtil::copyHandlesToSkeleton(view, pose, 0.0);
    ASSERT_EQ(view.size(), 4u);
    EXPECT_EQ(view[3].name, nameOf(b) + "_handle");
    EXPECT_EQ(jointOf(view, b)->childCount, 2);  // c and the forced handle

    SkeletonDef lone = extract(a, setup);
    IKToolUtil::copyHandlesToSkeleton(lone, SkeletonDef(1), 0.0);
    EXPECT_EQ(lone.size(), 3u);
}

TEST(SkeletonExtraction, TheAutomaticGenerationLeavesOutModulesThatMayNotAnimateButWalksBelowThem)
{
    Graph g;
    auto *a = g.add<MO_PegModule>("a");
    auto *still = g.add<MO_PegModule>("still");
    auto *c = g.add<MO_PegModule>("c");
    MO_Node *effect = g.addPassThrough("effect", "EFFECT");
    auto *d = g.add<MO_PegModule>("d");
    Graph::link(a, still);
    Graph::link(still, c);
    Graph::link(c, effect);
    Graph::link(effect, d);
    static_cast<AT_BoolAttr *>(still->attr(QStringLiteral("CAN_ANIMATE")))->setLocalValue(false);

    SkeletonDef skeleton;
    IKToolUtil::smartSkeletonFromModule(a, skeleton, 0.0);
    EXPECT_EQ(modulesOf(skeleton), (std::vector<MO_Module *>{a, c, d}));
    EXPECT_EQ(jointOf(skeleton, c)->parentName, "root");
    EXPECT_EQ(jointOf(skeleton, d)->parentName, nameOf(c));
}

TEST(SkeletonExtraction, DeformersAreJointsAtTheirOwnStartAndAGameBoneCountsAsABone)
{
    Graph g;
    auto *bone = g.add<GameBoneModule>("bone");
    auto *offset = g.add<OffsetModule>("offset");
    Graph::link(bone, offset);
    g.root(bone);
    g.joint(offset);
    bone->offsetAttr()->setLocalValue(Math::Point2d(12, 16));
    bone->lengthAttr()->setLocalValue(24);
    offset->offsetAttr()->setLocalValue(Math::Point2d(0, 16));

    SkeletonDef const skeleton = extract(bone, poseSettings());
    ASSERT_EQ(skeleton.size(), 3u);  // the offset's handle; none for the root
    expectNear(skeleton[0].position, Math::Point3d(1, 1, 0));
    expectNear(skeleton[1].position, Math::Point3d(3, 2, 0));  // the bone's end, then the offset
    EXPECT_TRUE(skeleton[2].isHandle);
}

TEST(SkeletonExtraction, NullAndUnlinkedInputsGiveTheEmptyResult)
{
    Graph g;
    auto *lone = g.add<MO_PegModule>("lone");
    SkeletonDef skeleton(2);
    IKToolUtil::skeletonFromModule(nullptr, skeleton, poseSettings());
    EXPECT_TRUE(skeleton.empty());
    skeleton.resize(2);
    IKToolUtil::smartSkeletonFromModule(nullptr, skeleton, 0.0);
    EXPECT_TRUE(skeleton.empty());
    std::set<MO_Module *> visited;
    IKToolUtil::appendModuleToSkeleton(nullptr, skeleton, poseSettings(), visited);
    EXPECT_TRUE(skeleton.empty());
    EXPECT_TRUE(visited.empty());
    EXPECT_EQ(IKToolUtil::skeletonFromModule(kNull), nullptr);
    EXPECT_EQ(IKToolUtil::findRoot(nullptr), nullptr);
    EXPECT_EQ(IKToolUtil::findRoot(lone), nullptr);
    EXPECT_EQ(IKToolUtil::findTopLevelParent(nullptr), nullptr);
    EXPECT_EQ(IKToolUtil::findTopLevelParent(lone), lone);
    EXPECT_EQ(IKToolUtil::getAncestorForModuleInSet(nullptr, {lone}), nullptr);
    EXPECT_EQ(IKToolUtil::getAncestorForModuleInSet(lone, {lone}), nullptr);  // strict ancestors only
    EXPECT_EQ(IKToolUtil::getModuleDepth(nullptr), 0);
    EXPECT_EQ(IKToolUtil::getModuleDepth(lone), 0);
    EXPECT_TRUE(IKToolUtil::selectedNodes(nullptr).empty());
    EXPECT_EQ(IKToolUtil::moduleFromSelectable(UT_SharedPtr<SLB_SelectableDescriptor>()), nullptr);
    // With no selection installed, every selection function answers empty.
    PLUG_Services::setSelection(nullptr);
    IKToolUtil::addModuleToSelection(lone);
    EXPECT_EQ(IKToolUtil::concreteModuleFromSelection(), nullptr);
    EXPECT_EQ(IKToolUtil::uniqueSelection(), nullptr);
    EXPECT_FALSE(IKToolUtil::isMultipleSelection());
}

namespace {

// A session whose selection the plug-in services hand out for the length of a test.
struct SelectionFixture : ::testing::Test {
    SC_Session session{std::make_unique<TUScene>()};
    SL_Selection *selection = session.getSelection();

    SelectionFixture() { PLUG_Services::setSelection(selection); }
    ~SelectionFixture() override { PLUG_Services::setSelection(nullptr); }

    template <class T>
    T *add(TUGroup *group, char const *name)
    {
        auto node = UT_MakeShared<T>();
        node->setInstanceName(QLatin1String(name));
        return static_cast<T *>(group->addNode(node));
    }
};

} // namespace

TEST_F(SelectionFixture, SelectionFunctionsFindTheModuleAndTheHeadOfItsSkeleton)
{
    TUGroup *top = session.scene()->getRootGroup();
    auto *root = add<MO_PegModule>(top, "root");
    auto *arm = add<MO_PegModule>(top, "arm");
    auto *other = add<MO_PegModule>(top, "other");
    auto *group = add<TUGroup>(top, "group");
    auto *peg = add<MO_PegModule>(group, "peg");
    auto *element = add<MO_ElementModule>(group, "element");
    Graph::link(root, arm);
    Graph::link(arm, element);
    IKToolUtil::defineRoot(session.commandManager(), root, true);

    IKToolUtil::addModuleToSelection(arm);
    EXPECT_EQ(IKToolUtil::concreteModuleFromSelection(), arm);
    EXPECT_EQ(IKToolUtil::skeletonFromSelection(), root);
    EXPECT_EQ(IKToolUtil::uniqueSelection(), arm);
    EXPECT_FALSE(IKToolUtil::isMultipleSelection());

    IKToolUtil::addModuleToSelection(other);
    IKToolUtil::addModuleToSelection(root);
    EXPECT_EQ(IKToolUtil::uniqueSelection(), nullptr);
    EXPECT_TRUE(IKToolUtil::isMultipleSelection());
    EXPECT_EQ(IKToolUtil::selectedNodes(root), (std::set<MO_Module *>{root, arm}));
    EXPECT_EQ(IKToolUtil::selectedNodes(arm), (std::set<MO_Module *>{arm}));

    // A group stands for its first drawing element.
    selection->set({group, arm});
    EXPECT_EQ(IKToolUtil::concreteModuleFromSelection(), element);
    EXPECT_EQ(IKToolUtil::skeletonFromSelection(), root);
    selection->set({group});
    EXPECT_EQ(IKToolUtil::uniqueSelection(), nullptr);  // a group is no module
    group->removeNode(element);
    EXPECT_EQ(IKToolUtil::concreteModuleFromSelection(), nullptr);
    (void)peg;

    UT_SharedPtr<SLB_SelectableDescriptor> picked = UT_MakeShared<SLB_ModuleDescriptorWithFrame>(arm, 3);
    EXPECT_EQ(IKToolUtil::moduleFromSelectable(picked), arm);
    EXPECT_EQ(IKToolUtil::moduleFromSelectable(UT_MakeShared<SLB_SelectableDescriptor>()), nullptr);
}

TEST(SkeletonExtraction, FramesThatAreNoWholeFrameAreRefused)
{
    Graph g;
    std::vector<MO_PegModule *> const pegs = g.pegChain({"a", "b"});
    double const inf = std::numeric_limits<double>::infinity();
    for (double frame : {std::nan(""), inf, -inf, 1e300, -3e9}) {
        SkeletonDef skeleton = extract(pegs[1], poseSettings(frame));
        EXPECT_TRUE(skeleton.empty()) << frame;
        std::set<MO_Module *> visited;
        IKToolUtil::appendModuleToSkeleton(pegs[0], skeleton, poseSettings(frame), visited);
        EXPECT_TRUE(skeleton.empty()) << frame;
        EXPECT_TRUE(visited.empty()) << frame;
        SkeletonDef view = extract(pegs[1], poseSettings(0.0));
        SkeletonDef const before = view;
        IKToolUtil::copyHandlesToSkeleton(view, extract(pegs[1], poseSettings(0.0)), frame);
        EXPECT_TRUE(view.isEquivalent(before)) << frame;
        ManipulatorSet set;
        EXPECT_FALSE(set.build(frame, pegs[0], nullptr, view)) << frame;
        EXPECT_EQ(pegs[0]->rotationAttr()->surrogate(), nullptr);
    }
    EXPECT_EQ(extract(pegs[1], poseSettings(-2.5)).size(), 3u);  // truncated towards zero: frame -2
}
