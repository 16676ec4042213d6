// Evaluation of every module kind at keyed and unkeyed frames, switched inputs, pass-through
// nodes and surrogates. Expected matrices are worked out by hand in the comments, with the
// default metrics (1/12 OGL unit per field unit in x, 1/16 in y).
#include "SceneTestUtil.h"

#include "scene/AT_AttrSurrogate.h"
#include "scene/AT_ValueAttr.h"
#include "scene/MO_ModuleVisitor.h"

#include <cmath>

namespace {

using namespace SceneTest;
using Math::Matrix2x3;
using Math::Point2d;

double const kHalfRoot2 = std::sqrt(0.5);
double const kRoot2 = std::sqrt(2.0);
double const kHalfRoot3 = std::sqrt(3.0) / 2.0;

// A peg keyed at frames 1 and 11, turned 90 degrees about a pivot, scaled (2, 1).
MO_PegModule *addKeyedPeg(TUScene &scene)
{
    auto *peg = add<MO_PegModule>(scene, "peg");
    peg->positionAttr()->setKeyframe(1, Math::Point3d(12.0, 16.0, 0.0));  // OGL (1, 1)
    peg->positionAttr()->setKeyframe(11, Math::Point3d(24.0, 0.0, 0.0));  // OGL (2, 0)
    peg->rotationAttr()->setLocalValue(Math::Angle3d(0.0, 0.0, 90.0));
    peg->pivotAttr()->setLocalValue(Point2d(12.0, 0.0));                  // OGL (1, 0)
    peg->scaleAttr()->setLocalValue(Point2d(2.0, 1.0));
    return peg;
}

TEST(Evaluation, PegComposesPositionPivotRotationAndScale)
{
    TUScene scene;
    MO_PegModule *peg = addKeyedPeg(scene);
    // Axes: x -> S -> (2, 0) -> Rz90 -> (0, 2); y -> (0, 1) -> (-1, 0).
    // Origin: T(-pivot) (-1, 0), S (-2, 0), Rz90 (0, -2), T(pivot) (1, -2), T(position).
    expectPlaneMap(world(*peg, 1.0), Matrix2x3(0, -1, 2, 2, 0, -1));
    expectPlaneMap(world(*peg, 0.0), Matrix2x3(0, -1, 2, 2, 0, -1));    // before the first key
    expectPlaneMap(world(*peg, 6.0), Matrix2x3(0, -1, 2.5, 2, 0, -1.5)); // halfway: (1.5, 0.5)
    expectPlaneMap(world(*peg, 30.0), Matrix2x3(0, -1, 3, 2, 0, -2));   // after the last key
    // A peg has no deformation part.
    EXPECT_EQ(world(*peg, 6.0, false), world(*peg, 6.0, true));
}

TEST(Evaluation, ChildPegAndElementFollowTheirParent)
{
    TUScene scene;
    MO_PegModule *parent = addKeyedPeg(scene);
    auto *child = add<MO_PegModule>(scene, "child");
    child->positionAttr()->setLocalValue(Math::Point3d(0.0, 16.0, 0.0));  // OGL (0, 1)
    ASSERT_TRUE(MO_Node::connect(parent, 0, child, 0));
    auto *element = add<MO_ElementModule>(scene, "element");
    ASSERT_TRUE(MO_Node::connect(child, 0, element, 0));

    // parent * (0, 1) at frame 1 = (0 - 1 + 2, 0 + 0 - 1).
    expectPlaneMap(world(*child, 1.0), Matrix2x3(0, -1, 1, 2, 0, -1));
    EXPECT_EQ(world(*element, 1.0), world(*child, 1.0));
    // The element's own transform is a peg's: keyed at 1 and 3, halfway at 2 it is turned 45.
    element->rotationAttr()->setKeyframe(1, Math::Angle3d(0, 0, 0));
    element->rotationAttr()->setKeyframe(3, Math::Angle3d(0, 0, 90));
    EXPECT_EQ(world(*element, 1.0), world(*child, 1.0));
    Math::Matrix4x4 turned45;
    turned45.rotateDegrees(45.0);
    Math::Matrix4x4 const expected45 = world(*child, 2.0) * turned45;
    expectPlaneMap(world(*element, 2.0), expected45.getTransform2d());
    // A plain module passes its parent's transform on.
    auto *plain = add<MO_Module>(scene, "plain");
    ASSERT_TRUE(MO_Node::connect(element, 0, plain, 0));
    EXPECT_EQ(world(*plain, 2.0), world(*element, 2.0));
    element->rotationAttr()->setKeyframe(3, Math::Angle3d(0, 0, 0));  // back to no turn
    element->rotationAttr()->setKeyframe(1, Math::Angle3d(0, 0, 0));
    EXPECT_EQ(child->inputModule(0), parent);
    EXPECT_EQ(child->computeTransformationParent(MO_BaseContext(MO_FrameKey(6.0), 0), 0)->matrix(true),
              world(*parent, 6.0));

    element->addDrawing("a", {{OC_VectorShape::Kind::Polygon, {{0, 0}, {1, 0}, {1, 2}}, Qt::black, Qt::red, 1.0}});
    ASSERT_TRUE(element->setExposure(1, "a"));
    OC_DrawingPtr drawing = element->oglDrawing(1.0);
    ASSERT_TRUE(drawing.isDrawing());
    EXPECT_EQ(drawing->bounds(), Math::Box2d(Point2d(0, 0), Point2d(1, 2)));
    // The corners go to (1, -1), (1, 1) and (-1, 1).
    Math::Box2d const placed =
        drawing->boundingBox(element->getPortTransformation(MO_BaseContext(MO_FrameKey(1.0), 0))->transformation()).asBox2d();
    expectNear(placed.min(), Point2d(-1, -1));
    expectNear(placed.max(), Point2d(1, 1));
}

TEST(Evaluation, ElementTimingExposesDrawingsFromTheirFrameOn)
{
    TUScene scene;
    auto *element = add<MO_ElementModule>(scene, "arm");
    element->setElementName("arm");
    EXPECT_FALSE(element->isUsable());
    element->addDrawing("a", {{OC_VectorShape::Kind::Polyline, {{0, 0}, {1, 1}}, Qt::black, Qt::transparent, 2.0}});
    element->addDrawing("b", {});
    EXPECT_FALSE(element->setExposure(3, "missing"));
    ASSERT_TRUE(element->setExposure(1, "a"));
    ASSERT_TRUE(element->setExposure(5, "b"));
    ASSERT_TRUE(element->setExposure(9, ""));
    EXPECT_TRUE(element->isUsable());

    struct Case {
        double frame;
        QString drawing;  // empty: nothing exposed
    };
    for (Case const &c : {Case{0.0, ""}, Case{1.0, "a"}, Case{4.9, "a"}, Case{5.0, "b"}, Case{8.0, "b"},
                          Case{9.0, ""}, Case{100.0, ""}}) {
        OC_DrawingPtr const d = element->oglDrawing(c.frame);
        EXPECT_EQ(d.isDrawing(), !c.drawing.isEmpty()) << c.frame;
        if (d.isDrawing()) {
            EXPECT_EQ(d->celKey(), CA_CelKey("arm", c.drawing)) << c.frame;
            EXPECT_EQ(CA_CelKeyMgr::timing(d->celKey()), c.drawing);
        }
    }
    EXPECT_TRUE(element->load(MO_BaseContext(MO_FrameKey(2.0), 0)).isDrawing());
    // A drawing without points has an empty box.
    EXPECT_TRUE(element->oglDrawing(5.0)->bounds().isEmpty());
    EXPECT_FALSE(CA_CelKey().isValid());
    // Renaming the element gives its drawings new keys.
    element->setElementName("limb");
    EXPECT_EQ(element->oglDrawing(1.0)->celKey(), CA_CelKey("limb", "a"));
    EXPECT_LT(CA_CelKey("arm", "z"), CA_CelKey("limb", "a"));
}

// A bone under a peg at OGL (1, 0): offset OGL (1, 1), length OGL 2, orientation keyed 90 at
// frame 1 and 0 at frame 11 (local value 0), and a child bone turned a further 90 degrees.
struct BoneChain {
    TUScene scene;
    MO_PegModule *peg = add<MO_PegModule>(scene, "peg");
    BendyBoneModule *bone = add<BendyBoneModule>(scene, "bone");
    BendyBoneModule *child = add<BendyBoneModule>(scene, "child");

    BoneChain()
    {
        peg->positionAttr()->setLocalValue(Math::Point3d(12.0, 0.0, 0.0));
        bone->offsetAttr()->setLocalValue(Point2d(12.0, 16.0));
        bone->orientationAttr()->setKeyframe(1, 90.0);
        bone->orientationAttr()->setKeyframe(11, 0.0);
        bone->lengthAttr()->setLocalValue(24.0);
        child->orientationAttr()->setLocalValue(90.0);
        child->lengthAttr()->setLocalValue(12.0);
        MO_Node::connect(peg, 0, bone, 0);
        MO_Node::connect(bone, 0, child, 0);
    }
};

TEST(Evaluation, BoneChainsFromItsEnd)
{
    BoneChain chain;
    // Frame 1: T(1, 0) T(1, 1) Rz90 T(2, 0): the end at (2, 3), pointing up.
    expectPlaneMap(world(*chain.bone, 1.0), Matrix2x3(0, -1, 2, 1, 0, 3));
    expectPlaneMap(world(*chain.bone, 1.0, false), Matrix2x3(1, 0, 1, 0, 1, 0));
    // Frame 6: 45 degrees, end at (2 + 2c, 1 + 2s).
    expectPlaneMap(world(*chain.bone, 6.0),
                   Matrix2x3(kHalfRoot2, -kHalfRoot2, 2 + kRoot2, kHalfRoot2, kHalfRoot2, 1 + kRoot2));
    // The child turns 90 more (pointing left) and ends one unit further: (1, 3).
    expectPlaneMap(world(*chain.child, 1.0), Matrix2x3(-1, 0, 1, 0, -1, 3));
    expectPlaneMap(world(*chain.child, 1.0, false), Matrix2x3(0, -1, 2, 1, 0, 3));
    // Frame 20: after the last key both bones lie flat: (1,1) + (2,0) then a quarter turn.
    expectPlaneMap(world(*chain.child, 20.0), Matrix2x3(0, -1, 4, 1, 0, 2));

    MO_PortTransformPtr t = chain.child->getPortTransformation(MO_BaseContext(MO_FrameKey(1.0), 0));
    DeformationInformation const *info = t->transformation().deformation(DeformationInformation::typeId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->chainLength, 2);
    expectPlaneMap(info->rigidMatrix, Matrix2x3(1, 0, 1, 0, 1, 0));
    EXPECT_EQ(t->transformation().deformation(UT_DynKey("other")), nullptr);
    EXPECT_EQ(chain.peg->getPortTransformation(MO_BaseContext(MO_FrameKey(1.0), 0))
                  ->transformation().deformation(DeformationInformation::typeId),
              nullptr);
}

TEST(Evaluation, BoneComponentFramesAreRestAndPosed)
{
    BoneChain chain;
    MO_BaseContext context(MO_FrameKey(1.0), 0);
    MO_FramePair offset, start, middle, end;
    chain.bone->computeComponentReference(context, offset, start, middle, end);
    // Posed at frame 1 (90 degrees), in the bone's input space.
    expectPlaneMap(offset.second, Matrix2x3(1, 0, 1, 0, 1, 1));
    expectPlaneMap(start.second, Matrix2x3(0, -1, 1, 1, 0, 1));
    expectPlaneMap(middle.second, Matrix2x3(0, -1, 1, 1, 0, 2));
    expectPlaneMap(end.second, Matrix2x3(0, -1, 1, 1, 0, 3));
    // Rest: the local orientation 0.
    expectPlaneMap(start.first, Matrix2x3(1, 0, 1, 0, 1, 1));
    expectPlaneMap(end.first, Matrix2x3(1, 0, 3, 0, 1, 1));
    // The bone's joint in the scene: matrix(false) * start frame, at the peg-shifted (2, 1).
    Math::Matrix4x4 const joint = world(*chain.bone, 1.0, false) * Math::Matrix4x4(start.second);
    expectNear(apply(joint, Point2d()), Point2d(2, 1));
}

TEST(Evaluation, GameBoneHasTheBendyBoneMathsUnderItsOwnKeyword)
{
    TUScene scene;
    auto *bendy = add<BendyBoneModule>(scene, "bendy");
    auto *game = add<GameBoneModule>(scene, "game");
    for (BendyBoneModule *b : {bendy, static_cast<BendyBoneModule *>(game)}) {
        b->offsetAttr()->setKeyframe(1, Point2d(0.0, 16.0));
        b->offsetAttr()->setKeyframe(3, Point2d(24.0, 16.0));
        b->orientationAttr()->setLocalValue(180.0);
        b->lengthAttr()->setLocalValue(12.0);
    }
    EXPECT_EQ(game->typeKeyword(), GameBoneModule::Keyword());
    EXPECT_EQ(bendy->typeKeyword(), BendyBoneModule::Keyword());
    // Frame 2: offset (1, 1), pointing left, end at (0, 1).
    expectPlaneMap(world(*game, 2.0), Matrix2x3(-1, 0, 0, 0, -1, 1));
    EXPECT_EQ(world(*game, 2.0), world(*bendy, 2.0));
}

// A curve: elbow at (1, 0) OGL, second piece turned by orientation1 (keyed 90 at 1, 0 at 11).
struct Curve {
    TUScene scene;
    CurveModule *curve = add<CurveModule>(scene, "curve");
    Curve()
    {
        curve->length0Attr()->setLocalValue(12.0);  // OGL 1
        curve->length1Attr()->setLocalValue(24.0);  // OGL 2
        curve->orientation1()->setKeyframe(1, 90.0);
        curve->orientation1()->setKeyframe(11, 0.0);
    }
};

TEST(Evaluation, CurveHangsChildrenFromItsElbow)
{
    Curve c;
    expectPlaneMap(world(*c.curve, 1.0), Matrix2x3(0, -1, 1, 1, 0, 0));
    expectPlaneMap(world(*c.curve, 6.0), Matrix2x3(kHalfRoot2, -kHalfRoot2, 1, kHalfRoot2, kHalfRoot2, 0));
    expectPlaneMap(world(*c.curve, 11.0), Matrix2x3(1, 0, 1, 0, 1, 0));
    EXPECT_EQ(world(*c.curve, 1.0, false), Math::Matrix4x4());
}

TEST(Evaluation, CurveBezierPiecesJoinSmoothlyAtTheElbow)
{
    Curve c;
    DeformationInformation const info;
    GR_Bezier2d first(3, 1, 1);
    GR_Bezier2d second(3, 1, 1);
    ASSERT_TRUE(c.curve->getBeziers(MO_BaseContext(MO_FrameKey(1.0), 0), first, second, info));
    // OGL: start (0, 0), elbow (1, 0), end (1, 2), elbow tangent (1, 1)/sqrt2; field = OGL * (12, 16).
    expectNear(first.controlPoint(0), Point2d(0, 0));
    expectNear(first.controlPoint(1), Point2d(4, 0));
    expectNear(first.controlPoint(2), Point2d(12 - 2 * kRoot2, -16.0 / 6.0 * kRoot2));
    expectNear(first.controlPoint(3), Point2d(12, 0));
    expectNear(second.controlPoint(0), Point2d(12, 0));
    expectNear(second.controlPoint(1), Point2d(12 + 4 * kRoot2, 16.0 / 3.0 * kRoot2));
    expectNear(second.controlPoint(2), Point2d(12, 64.0 / 3.0));
    expectNear(second.controlPoint(3), Point2d(12, 32));
    expectNear(second.pointAt(0, 1.0), Point2d(12, 32));

    // Frame 11: straight; the inner points lie on the line.
    ASSERT_TRUE(c.curve->getBeziers(MO_BaseContext(MO_FrameKey(11.0), 0), first, second, info));
    expectNear(first.controlPoint(2), Point2d(8, 0));
    expectNear(second.controlPoint(1), Point2d(20, 0));
    // Evenly spaced points on a line: the middle of the piece is the middle of the line.
    expectNear(second.pointAt(0, 0.5), Point2d(24, 0));
    expectNear(second.pointAt(1, 0.5), Point2d());  // no second segment
    expectNear(second.controlPoint(4), Point2d());
    EXPECT_FALSE(second.setControlPoint(-1, Point2d(1, 1)));
    EXPECT_EQ(GR_Bezier2d(2, 3, 1).controlPointCount(), 7);  // shared ends
    EXPECT_EQ(GR_Bezier2d(2, 3, 0).controlPointCount(), 9);

    // Curves of another shape are refused and left as they were.
    GR_Bezier2d quadratic(2, 1, 1);
    EXPECT_FALSE(c.curve->getBeziers(MO_BaseContext(MO_FrameKey(1.0), 0), quadratic, second, info));
    expectNear(quadratic.controlPoint(1), Point2d());
}

TEST(Evaluation, OffsetAndMiniPegFrames)
{
    TUScene scene;
    auto *offset = add<OffsetModule>(scene, "offset");
    offset->offset()->setLocalValue(Point2d(12.0, 0.0));
    offset->orientation()->setKeyframe(1, 30.0);
    offset->orientation()->setKeyframe(3, 90.0);
    expectPlaneMap(world(*offset, 2.0), Matrix2x3(0.5, -kHalfRoot3, 1, kHalfRoot3, 0.5, 0));
    expectPlaneMap(world(*offset, 3.0), Matrix2x3(0, -1, 1, 1, 0, 0));

    // A drawing under a deformer is carried rigidly by the deformer's frame.
    auto *element = add<MO_ElementModule>(scene, "element");
    ASSERT_TRUE(MO_Node::connect(offset, 0, element, 0));
    element->positionAttr()->setLocalValue(Math::Point3d(12.0, 0.0, 0.0));
    expectNear(apply(world(*element, 3.0), Point2d(1, 0)), Point2d(1, 2));  // (1, 0) + Rz90 (2, 0)

    auto *mini = add<MiniPegModule>(scene, "mini");
    mini->offsetAttr()->setKeyframe(1, Point2d(0.0, 16.0));
    mini->offsetAttr()->setKeyframe(5, Point2d(24.0, 16.0));
    mini->orientationAttr()->setLocalValue(90.0);
    MO_BaseContext const frame3(MO_FrameKey(3.0), 0);
    EXPECT_TRUE(mini->useLocalReferential());
    expectPlaneMap(world(*mini, 3.0), Matrix2x3(0, -1, 1, 1, 0, 1));
    expectPlaneMap(world(*mini, 1.0), Matrix2x3(0, -1, 0, 1, 0, 1));
    ASSERT_TRUE(mini->useLocalReferentialAttr()->setLocalValue(false));
    EXPECT_FALSE(mini->useLocalReferential());
    EXPECT_EQ(world(*mini, 3.0), Math::Matrix4x4());
    expectPlaneMap(mini->localReferential(frame3), Matrix2x3(0, -1, 1, 1, 0, 1));
}

TEST(Evaluation, SwitchTakesTheInputChosenAtEachFrame)
{
    TUScene scene;
    auto *a = add<MO_PegModule>(scene, "a");
    auto *b = add<MO_PegModule>(scene, "b");
    a->positionAttr()->setLocalValue(Math::Point3d(12.0, 0.0, 0.0));  // (1, 0)
    b->positionAttr()->setLocalValue(Math::Point3d(0.0, 16.0, 0.0));  // (0, 1)
    auto *sw = add<MO_SwitchModule>(scene, "switch", 2);
    auto *below = add<MO_PegModule>(scene, "below");
    ASSERT_TRUE(MO_Node::connect(a, 0, sw, 0));
    ASSERT_TRUE(MO_Node::connect(b, 0, sw, 1));
    ASSERT_TRUE(MO_Node::connect(sw, 0, below, 0));
    sw->activeInputAttr()->setKeyframe(1, 0);
    sw->activeInputAttr()->setKeyframe(10, 1);

    EXPECT_TRUE(sw->hasSwitchedInputs());
    EXPECT_FALSE(a->hasSwitchedInputs());
    EXPECT_EQ(sw->transformationInput(5.0), 0);
    EXPECT_EQ(sw->transformationInput(10.0), 1);
    EXPECT_EQ(a->transformationInput(10.0), 0);
    expectNear(apply(world(*below, 5.0), Point2d()), Point2d(1, 0));
    expectNear(apply(world(*below, 10.0), Point2d()), Point2d(0, 1));
    // Each input's parent transformation stays at hand whichever input is in force.
    MO_BaseContext const frame5(MO_FrameKey(5.0), 0);
    EXPECT_EQ(sw->computeTransformationParent(frame5, 1)->matrix(true), world(*b, 5.0));
    EXPECT_EQ(sw->inputModule(1), b);
    // An input out of range falls back on input 0.
    sw->activeInputAttr()->setKeyframe(20, 7);
    EXPECT_EQ(sw->transformationInput(20.0), 0);
}

TEST(Evaluation, PassThroughNodesAreLookedThrough)
{
    TUScene scene;
    auto *top = add<MO_PegModule>(scene, "top");
    top->positionAttr()->setLocalValue(Math::Point3d(12.0, 16.0, 0.0));
    auto *effect = add<MO_Node>(scene, "effect", QString("EFFECT"), 1, 1);
    auto *composite = add<MO_Node>(scene, "composite", QString("COMPOSITE"), 2, 1);
    auto *bottom = add<MO_PegModule>(scene, "bottom");
    auto *side = add<MO_PegModule>(scene, "side");
    ASSERT_TRUE(MO_Node::connect(top, 0, effect, 0));
    ASSERT_TRUE(MO_Node::connect(effect, 0, composite, 0));
    ASSERT_TRUE(MO_Node::connect(side, 0, composite, 1));
    ASSERT_TRUE(MO_Node::connect(composite, 0, bottom, 0));

    EXPECT_EQ(bottom->inPort(0)->realSrcPort(), top->outPort(0));
    EXPECT_EQ(bottom->inPort(0)->srcPort(), composite->outPort(0));
    EXPECT_EQ(bottom->inputModule(0), top);
    expectNear(apply(world(*bottom, 1.0), Point2d()), Point2d(1, 1));

    std::vector<MO_Port *> dsts;
    top->outPort(0)->realDstPorts(dsts);
    ASSERT_EQ(dsts.size(), 1u);
    EXPECT_EQ(dsts[0], bottom->inPort(0));
    // The composite's second input does not pass through; the list is emptied first.
    side->outPort(0)->realDstPorts(dsts);
    EXPECT_TRUE(dsts.empty());

    // With nothing above the pass-through nodes, there is no real source and no parent.
    effect->disconnect(0);
    EXPECT_EQ(bottom->inPort(0)->realSrcPort(), nullptr);
    EXPECT_EQ(bottom->inputModule(0), nullptr);
    EXPECT_EQ(bottom->computeTransformationParent(MO_BaseContext(MO_FrameKey(1.0), 0), 0), nullptr);
    EXPECT_EQ(world(*bottom, 1.0), Math::Matrix4x4());
}

TEST(Evaluation, SurrogatesReplaceValuesUntilDetached)
{
    BoneChain chain;
    auto position = std::make_shared<AT_Position3dAttrSurrogate>(chain.peg->positionAttr(),
                                                                 Math::Point3d(0.0, 32.0, 0.0), false, 1);
    ASSERT_TRUE(chain.peg->positionAttr()->setSurrogate(position));
    // The peg moves to (0, 2): the bone's end moves with it, to (0, 2) + (1, 1) + (0, 2).
    expectPlaneMap(world(*chain.bone, 1.0), Matrix2x3(0, -1, 1, 1, 0, 5));
    position->setValue(Math::Point3d(0.0, 0.0, 0.0));
    expectPlaneMap(world(*chain.bone, 1.0), Matrix2x3(0, -1, 1, 1, 0, 3));

    auto orientation = std::make_shared<AT_ScalarSimpleAttrSurrogate>(chain.bone->orientationAttr(), 0.0, false, 1);
    ASSERT_TRUE(chain.bone->orientationAttr()->setSurrogate(orientation));
    expectPlaneMap(world(*chain.bone, 1.0), Matrix2x3(1, 0, 3, 0, 1, 1));
    expectPlaneMap(world(*chain.bone, 6.0), Matrix2x3(1, 0, 3, 0, 1, 1));  // every frame reads it

    chain.peg->positionAttr()->resetSurrogate();
    chain.bone->orientationAttr()->resetSurrogate();
    expectPlaneMap(world(*chain.bone, 1.0), Matrix2x3(0, -1, 2, 1, 0, 3));
    EXPECT_EQ(chain.bone->orientationAttr()->keyframes(), (std::vector<int>{1, 11}));
}

TEST(Evaluation, ChangesShowAtOnceAndMarkTheNodeDirty)
{
    BoneChain chain;
    Math::Matrix4x4 const before = world(*chain.child, 1.0);
    unsigned long const count = chain.bone->dirtyCount();
    ASSERT_TRUE(chain.bone->lengthAttr()->setLocalValue(36.0));
    EXPECT_GT(chain.bone->dirtyCount(), count);
    EXPECT_NE(world(*chain.child, 1.0), before);
    expectPlaneMap(world(*chain.child, 1.0), Matrix2x3(-1, 0, 1, 0, -1, 4));
}

// Transformations are reused between evaluations: each change below comes after the chain was
// evaluated at the frames it is read at, and must show at once all the same, on the grandchild.
TEST(Evaluation, ReusedTransformationsFollowEveryChange)
{
    TUScene scene;
    auto *top = add<MO_PegModule>(scene, "top");
    auto *other = add<MO_PegModule>(scene, "other");
    auto *middle = add<MO_PegModule>(scene, "middle");
    auto *leaf = add<MO_PegModule>(scene, "leaf");
    ASSERT_TRUE(MO_Node::connect(top, 0, middle, 0));
    ASSERT_TRUE(MO_Node::connect(middle, 0, leaf, 0));
    other->positionAttr()->setLocalValue(Math::Point3d(0.0, -16.0, 0.0));  // OGL (0, -1)
    leaf->positionAttr()->setLocalValue(Math::Point3d(12.0, 0.0, 0.0));    // OGL (1, 0)
    auto origin = [&](double frame) { return world(*leaf, frame) * Math::Point3d(); };
    auto expectOrigin = [&](double frame, double x, double y) {
        Math::Point3d const p = origin(frame);
        EXPECT_NEAR(p.x, x, 1e-12) << "frame " << frame;
        EXPECT_NEAR(p.y, y, 1e-12) << "frame " << frame;
    };
    expectOrigin(1.0, 1.0, 0.0);
    expectOrigin(2.0, 1.0, 0.0);

    // A value of the top, and a key at one frame only.
    top->positionAttr()->setLocalValue(Math::Point3d(24.0, 0.0, 0.0));
    expectOrigin(1.0, 3.0, 0.0);
    middle->rotationAttr()->setKeyframe(2, Math::Angle3d(0.0, 0.0, 90.0));
    expectOrigin(2.0, 2.0, 1.0);
    expectOrigin(1.0, 2.0, 1.0);  // one key: the value of every frame

    // A surrogate on the middle, then taken off.
    auto surrogate = std::make_shared<AT_Rotation3dAttrSurrogate>(middle->rotationAttr(), Math::Angle3d(0.0, 0.0, 180.0));
    ASSERT_TRUE(middle->rotationAttr()->setSurrogate(surrogate));
    expectOrigin(2.0, 1.0, 0.0);
    surrogate->setValue(Math::Angle3d(0.0, 0.0, -90.0));
    expectOrigin(2.0, 2.0, -1.0);
    middle->rotationAttr()->resetSurrogate();
    expectOrigin(2.0, 2.0, 1.0);

    // The middle linked under another parent, then under nothing.
    ASSERT_TRUE(middle->disconnect(0));
    expectOrigin(2.0, 0.0, 1.0);
    ASSERT_TRUE(MO_Node::connect(other, 0, middle, 0));
    expectOrigin(2.0, 0.0, 0.0);

    // Other metrics: a field unit is 1/6 OGL unit across.
    SC_SceneMetrics metrics = scene.sceneMetrics();
    ASSERT_TRUE(metrics.setFieldToOgl(1.0 / 6.0, 1.0 / 16.0));
    scene.setSceneMetrics(metrics);
    expectOrigin(2.0, 0.0, 1.0);
}

TEST(Evaluation, VisitorsDispatchOnTheModuleClass)
{
    TUScene scene;
    add<MO_PegModule>(scene, "peg");
    add<MO_ElementModule>(scene, "read");
    add<BendyBoneModule>(scene, "bendy");
    add<GameBoneModule>(scene, "game");
    add<CurveModule>(scene, "curve");
    add<OffsetModule>(scene, "offset");
    add<MiniPegModule>(scene, "mini");
    add<MO_SwitchModule>(scene, "switch");
    add<MO_Module>(scene, "module");
    add<MO_Node>(scene, "plain", QString("EFFECT"), 1, 1);

    struct Elements : MO_ModuleVisitor {
        QStringList seen;
        void visit(MO_ElementModule &m) override { seen << m.instanceName(); }
    } elements;
    scene.getRootGroup()->acceptModules(elements);
    EXPECT_EQ(elements.seen, QStringList{"read"});

    struct All : MO_AbstractModuleVisitorWithModuleFallback {
        QStringList seen;
        void visitModule(MO_Module &m) override { seen << m.instanceName(); }
        void visit(GameBoneModule &m) override { seen << "game bone " + m.instanceName(); }
    } all;
    scene.getRootGroup()->acceptModules(all);
    EXPECT_EQ(all.seen, (QStringList{"peg", "read", "bendy", "game bone game", "curve", "offset", "mini",
                                     "switch", "module"}));
}

TEST(Evaluation, InvalidRequestsGiveTheEmptyResult)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    MO_BaseContext const context(MO_FrameKey(1.0), 0);
    EXPECT_EQ(peg->getPortTransformation(context, 1), nullptr);
    EXPECT_EQ(peg->getPortTransformation(context, 99), nullptr);
    EXPECT_EQ(peg->computeTransformationParent(context, 0), nullptr);  // nothing linked
    EXPECT_EQ(peg->computeTransformationParent(context, 5), nullptr);
    EXPECT_EQ(peg->inputModule(-1), nullptr);
    EXPECT_EQ(peg->inputModule(3), nullptr);
    EXPECT_EQ(world(*peg, 1.0), Math::Matrix4x4());
    // A module fed by a plain node that is no module has no parent transformation.
    auto *plain = add<MO_Node>(scene, "plain", QString("MYSTERY"), 0, 1);
    ASSERT_TRUE(MO_Node::connect(plain, 0, peg, 0));
    EXPECT_EQ(peg->computeTransformationParent(context, 0), nullptr);
    EXPECT_EQ(peg->inputModule(0), nullptr);
}

TEST(Evaluation, RefusedAttributeValuesLeaveTheTransformAsItWas)
{
    BoneChain chain;
    Math::Matrix4x4 const before = world(*chain.child, 6.0);
    double const inf = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double bad : {nan, inf, -inf}) {
        EXPECT_FALSE(chain.bone->lengthAttr()->setLocalValue(bad));
        EXPECT_FALSE(chain.bone->orientationAttr()->setKeyframe(6, bad));
        EXPECT_FALSE(chain.bone->offsetAttr()->setLocalValue(Point2d(bad, 0.0)));
        EXPECT_FALSE(chain.peg->positionAttr()->setLocalValue(Math::Point3d(0.0, bad, 0.0)));
        EXPECT_EQ(world(*chain.child, 6.0), before) << bad;
    }
}

TEST(Evaluation, MetricsRefuseInvalidFactorsAndConvertPerAxis)
{
    SC_SceneMetrics metrics;
    EXPECT_EQ(metrics.toOGL(Math::Point3d(12.0, 16.0, 5.0)), Math::Point3d(1.0, 1.0, 5.0));
    EXPECT_EQ(metrics.fromOGL(Point2d(1.0, 1.0)), Point2d(12.0, 16.0));
    EXPECT_EQ(metrics.oglToFieldX(), 12.0);
    EXPECT_EQ(metrics.oglToFieldY(), 16.0);
    double const inf = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (auto const &[x, y] : {std::pair{0.0, 1.0}, {1.0, -1.0}, {nan, 1.0}, {1.0, inf}, {-inf, 1.0}}) {
        EXPECT_FALSE(metrics.setFieldToOgl(x, y)) << x << ", " << y;
        EXPECT_EQ(metrics, SC_SceneMetrics());
    }
    ASSERT_TRUE(metrics.setFieldToOgl(0.5, 0.25));
    EXPECT_EQ(metrics.toOGL(Math::Vector3d(2.0, 4.0, 0.0)), Math::Vector3d(1.0, 1.0, 0.0));
}

} // namespace
