// Nodes, ports, links, groups and attributes of the scene graph.
#include "SceneTestUtil.h"

#include "scene/AT_ValueAttr.h"

namespace {

using namespace SceneTest;

class NamedDynAttr : public AT_DynAttr {
public:
    using AT_DynAttr::AT_DynAttr;
    QString name;
};

TEST(SceneGraph, LinksJoinPortsAndRefuseBadRequestsWithoutChange)
{
    TUScene scene;
    auto *a = add<MO_PegModule>(scene, "a");
    auto *b = add<MO_PegModule>(scene, "b");
    auto *c = add<MO_PegModule>(scene, "c");
    ASSERT_TRUE(MO_Node::connect(a, 0, b, 0));
    ASSERT_TRUE(MO_Node::connect(b, 0, c, 0));
    EXPECT_EQ(b->inPort(0)->srcPort(), a->outPort(0));
    EXPECT_EQ(a->outPort(0)->dstPorts(), std::vector<MO_Port *>{b->inPort(0)});
    EXPECT_EQ(b->inPort(0)->node(), b);
    EXPECT_TRUE(b->inPort(0)->isInput());
    EXPECT_FALSE(b->outPort(0)->isInput());

    struct Refused {
        char const *what;
        MO_Node *src;
        int out;
        MO_Node *dst;
        int in;
    };
    for (Refused const &r : {Refused{"null source", nullptr, 0, c, 0}, Refused{"null destination", a, 0, nullptr, 0},
                             Refused{"output out of range", a, 1, c, 0}, Refused{"negative output", a, -1, c, 0},
                             Refused{"input out of range", a, 0, c, 1}, Refused{"cycle", c, 0, a, 0},
                             Refused{"self link", a, 0, a, 0}}) {
        EXPECT_FALSE(MO_Node::connect(r.src, r.out, r.dst, r.in)) << r.what;
        EXPECT_EQ(c->inPort(0)->srcPort(), b->outPort(0)) << r.what;
        EXPECT_EQ(a->inPort(0)->srcPort(), nullptr) << r.what;
    }
    EXPECT_EQ(a->inPort(-1), nullptr);
    EXPECT_EQ(a->outPort(2), nullptr);
    EXPECT_FALSE(a->disconnect(0));
    EXPECT_FALSE(a->disconnect(9));

    // Linking an input again replaces its source.
    ASSERT_TRUE(MO_Node::connect(a, 0, c, 0));
    EXPECT_EQ(c->inputModule(0), a);
    EXPECT_TRUE(b->outPort(0)->dstPorts().empty());
    EXPECT_EQ(a->outPort(0)->dstPorts().size(), 2u);
}

TEST(SceneGraph, RemovingOrDestroyingANodeCutsItsLinks)
{
    TUScene scene;
    auto *a = add<MO_PegModule>(scene, "a");
    auto *b = add<MO_PegModule>(scene, "b");
    auto *c = add<MO_PegModule>(scene, "c");
    MO_Node::connect(a, 0, b, 0);
    MO_Node::connect(b, 0, c, 0);
    UT_SharedWeakPtr<MO_Module> weak(b);
    {
        UT_SharedPtr<MO_Node> taken = scene.getRootGroup()->removeNode(b);
        ASSERT_EQ(taken.get(), b);
        EXPECT_EQ(c->inPort(0)->srcPort(), nullptr);
        EXPECT_TRUE(a->outPort(0)->dstPorts().empty());
        EXPECT_EQ(taken->scene(), nullptr);
        EXPECT_TRUE(weak);
    }
    EXPECT_FALSE(weak);  // the group held the last share
    EXPECT_EQ(scene.getRootGroup()->removeNode(b), nullptr);
    EXPECT_EQ(scene.getRootGroup()->subNodeCount(), 2);
}

TEST(SceneGraph, GroupsNestAndFindNodesByName)
{
    TUScene scene;
    auto *outer = add<TUGroup>(scene, "outer");
    auto inner = UT_MakeShared<TUGroup>();
    inner->setInstanceName("inner");
    TUGroup *innerRaw = inner.get();
    ASSERT_NE(outer->addNode(inner), nullptr);
    auto peg = UT_MakeShared<MO_PegModule>();
    peg->setInstanceName("deep");
    ASSERT_NE(innerRaw->addNode(peg), nullptr);

    EXPECT_EQ(scene.getRootGroup()->findNode("deep"), peg.get());
    EXPECT_EQ(scene.getRootGroup()->findNode("nothing"), nullptr);
    EXPECT_EQ(peg->scene(), &scene);
    EXPECT_EQ(peg->parentGroup(), innerRaw);
    // A node in a group cannot join a second one, and a group cannot go inside itself.
    EXPECT_EQ(outer->addNode(peg), nullptr);
    EXPECT_EQ(outer->addNode(nullptr), nullptr);
    UT_SharedPtr<MO_Node> outerShare = scene.getRootGroup()->removeNode(outer);
    EXPECT_EQ(innerRaw->addNode(outerShare), nullptr);
    EXPECT_EQ(peg->scene(), nullptr);
    EXPECT_EQ(&peg->sceneMetrics(), &peg->sceneMetrics());
    EXPECT_EQ(peg->sceneMetrics(), SC_SceneMetrics());
}

TEST(SceneGraph, NodesGiveScenesUnitsAndServices)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    EXPECT_EQ(peg->sceneCommon(), nullptr);  // installed by the application
    EXPECT_EQ(peg->projectCommon(), nullptr);
    SC_SceneMetrics metrics;
    ASSERT_TRUE(metrics.setFieldToOgl(1.0, 2.0));
    scene.setSceneMetrics(metrics);
    EXPECT_EQ(peg->sceneMetrics(), metrics);
    peg->positionAttr()->setLocalValue(Math::Point3d(3.0, 4.0, 0.0));
    expectNear(apply(world(*peg, 0.0), Math::Point2d()), Math::Point2d(3.0, 8.0));
    EXPECT_FALSE(peg->selected());
    peg->setSelected(true);
    EXPECT_TRUE(peg->selected());
}

TEST(SceneGraph, AttributesKeepRegistrationOrderAndDynamicOnesComeAndGo)
{
    TUScene scene;
    auto *bone = add<BendyBoneModule>(scene, "bone");
    QStringList keywords;
    for (auto it = bone->attrsBegin(); it != bone->attrsEnd(); ++it)
        keywords << (*it)->keyword();
    EXPECT_EQ(keywords, (QStringList{"offset", "orientation", "length"}));
    EXPECT_EQ(bone->attr("length"), bone->lengthAttr());
    EXPECT_EQ(bone->attr("nothing"), nullptr);
    EXPECT_EQ(bone->attr(""), nullptr);
    EXPECT_EQ(bone->offsetAttr()->meta().keyword(), "offset");

    AT_Attr *dynamic = bone->addDynamicAttr(std::make_unique<AT_DoubleAttr>(bone, AT_AttrMeta("extra", "Extra")));
    ASSERT_NE(dynamic, nullptr);
    EXPECT_TRUE(dynamic->isDynamic());
    EXPECT_EQ(bone->attrCount(), 4);
    EXPECT_EQ(*(bone->attrsEnd() - 1), dynamic);
    // Same keyword twice, or a null attribute: refused.
    EXPECT_EQ(bone->addDynamicAttr(std::make_unique<AT_DoubleAttr>(bone, AT_AttrMeta("extra", "Extra"))), nullptr);
    EXPECT_EQ(bone->addDynamicAttr(nullptr), nullptr);
    // Own attributes cannot be taken out.
    EXPECT_EQ(bone->takeDynamicAttr(bone->lengthAttr()), nullptr);
    EXPECT_EQ(bone->takeDynamicAttr(nullptr), nullptr);
    std::unique_ptr<AT_Attr> taken = bone->takeDynamicAttr(dynamic);
    EXPECT_EQ(taken.get(), dynamic);
    EXPECT_EQ(bone->attrCount(), 3);
    EXPECT_EQ(bone->attr("extra"), nullptr);
}

TEST(SceneGraph, RunTimeAttributesAreKeyedByType)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    UT_DynKey const key("test.jointName");
    EXPECT_EQ(peg->dynamicAttr(key), nullptr);
    auto first = std::make_unique<NamedDynAttr>(peg, AT_AttrMeta("jointName", ""));
    first->name = "j_1";
    AT_DynAttr *registered = peg->registerDynamicAttr(key, std::move(first));
    EXPECT_EQ(peg->dynamicAttr(key), registered);
    EXPECT_EQ(static_cast<NamedDynAttr *>(peg->dynamicAttr(key))->name, "j_1");
    EXPECT_EQ(peg->dynamicAttr(UT_DynKey("other")), nullptr);
    // Not among the saved attributes.
    EXPECT_EQ(std::find(peg->attrsBegin(), peg->attrsEnd(), registered), peg->attrsEnd());
    AT_DynAttr *second = peg->registerDynamicAttr(key, std::make_unique<NamedDynAttr>(peg, AT_AttrMeta("jointName", "")));
    EXPECT_EQ(peg->dynamicAttr(key), second);
}

TEST(SceneGraph, PlainModuleAndAnimatedPart)
{
    TUScene scene;
    auto *module = add<MO_Module>(scene, "module");
    auto *peg = add<MO_PegModule>(scene, "peg");
    auto *bone = add<BendyBoneModule>(scene, "bone");
    auto *plain = add<MO_Node>(scene, "plain", QString("EFFECT"), 1, 1);
    EXPECT_EQ(module->typeKeyword(), "MODULE");
    EXPECT_EQ(module->toAnimatedModule(), nullptr);
    EXPECT_EQ(bone->toAnimatedModule(), nullptr);
    EXPECT_EQ(peg->toAnimatedModule(), peg);
    EXPECT_EQ(plain->toModule(), nullptr);
    EXPECT_TRUE(plain->isPassThrough());
    EXPECT_FALSE(peg->isExcludedFromIK());
    ASSERT_TRUE(static_cast<AT_BoolAttr *>(peg->attr("excludeFromIK"))->setLocalValue(true));
    EXPECT_TRUE(peg->isExcludedFromIK());
    peg->pivotAttr()->setKeyframe(1, Math::Point2d(2.0, 4.0));
    peg->pivotAttr()->setKeyframe(3, Math::Point2d(4.0, 8.0));
    EXPECT_EQ(peg->pivot(MO_BaseContext(MO_FrameKey(2.0), 0)), Math::Point3d(3.0, 6.0, 0.0));
    EXPECT_EQ(MO_FrameKey(-2.7).intFrame(), -2);  // truncated towards zero
    EXPECT_EQ(MO_BaseContext(MO_FrameKey(2.7), 0).intFrame(), 2);
}

} // namespace
