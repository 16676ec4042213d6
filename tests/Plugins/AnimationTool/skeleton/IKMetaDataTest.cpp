// IKMetaData, SkeletonMetaData and IKJointNameAttr: names and keys, registration at load,
// creation on a node, the look-ups, joint names, and the metadata saved in a scene file and
// loaded back.
#include "SkeletonTestUtil.h"

#include "scene/TUSceneFile.h"

#include <QRegularExpression>

namespace {

using namespace SkeletonTest;

TEST(IKMetaData, TypeNamesKeywordsAndKeysAreExact)
{
    EXPECT_EQ(IKMetaData::TypeString(), QLatin1String("com.quorvane.IK_META_DATA"));
    EXPECT_EQ(IKMetaData::Keyword(), QLatin1String("com.quorvane.ikmetadata"));
    EXPECT_EQ(SkeletonMetaData::TypeString(), QLatin1String("com.quorvene.SKELETON_META_DATA"));
    EXPECT_EQ(SkeletonMetaData::getMeta().keyword(), QLatin1String("jointAttachment"));
    EXPECT_EQ(SkeletonMetaData::getMeta().displayName(), QLatin1String("SkeletonTie"));

    EXPECT_EQ(IKMetaData::staticTypeKey().name(), "com.quorvane.IK_META_DATA");
    EXPECT_EQ(SkeletonMetaData::staticTypeKey().name(), "com.quorvene.SKELETON_META_DATA");
    EXPECT_NE(IKJointNameAttr::staticTypeKey(), IKMetaData::staticTypeKey());
    EXPECT_NE(IKJointNameAttr::staticTypeKey(), SkeletonMetaData::staticTypeKey());
    EXPECT_TRUE(IKJointNameAttr::staticTypeKey().isValid());
}

TEST(IKMetaData, TheTypeIsRegisteredWithBothFactoriesAtLoad)
{
    // No test has made metadata yet when this runs first: registration happened at load.
    AT_AttrFactorySingleton const &attrs = AT_AttrFactorySingleton::instance();
    ASSERT_TRUE(attrs.isRegistered(IKMetaData::TypeString()));
    ASSERT_TRUE(AT_AttrMetaFactorySingleton::instance().isRegistered(IKMetaData::TypeString()));
    EXPECT_EQ(attrs.create(IKMetaData::TypeString()), nullptr) << "nothing without a node";
    EXPECT_FALSE(attrs.isRegistered(SkeletonMetaData::TypeString())) << "only the outer type is dynamic";

    IKMetaData::registerType();  // again: no harm
    EXPECT_TRUE(attrs.isRegistered(IKMetaData::TypeString()));

    try {
        attrs.create(QStringLiteral("com.quorvane.UNKNOWN"));
        FAIL() << "an unknown type name must throw";
    } catch (not_registered const &e) {
        EXPECT_STREQ(e.what(), "Class/key not registered");
    }
}

TEST(IKMetaData, MetasLoseTheBuiltinFlagAndTheirDisplayName)
{
    AT_AttrMeta const forKeyword = IKMetaData::metaForKeyword(QStringLiteral("custom.key"));
    EXPECT_EQ(forKeyword.keyword(), QLatin1String("custom.key"));
    EXPECT_TRUE(forKeyword.displayName().isEmpty());
    EXPECT_FALSE(forKeyword.hasFlag(AT_AttrMetaContainer::Builtin));

    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    AT_AttrMeta const given(QStringLiteral("plain"), QStringLiteral("xml.key"), QStringLiteral("Shown"), 13);
    IKMetaData const metaData(module.get(), given);
    EXPECT_EQ(metaData.keyword(), QLatin1String("xml.key"));
    EXPECT_TRUE(metaData.displayName().isEmpty());
    EXPECT_EQ(metaData.meta().flags(), 9);
    EXPECT_TRUE(metaData.isDynamic());
}

TEST(IKMetaData, CreationOnANodeBuildsTheTreeAndUndoTakesItOff)
{
    TUScene scene;
    MO_Module *module = add<MO_PegModule>(scene, QStringLiteral("hip"));
    int const ownAttrs = module->attrCount();
    CO_CommandManager manager;
    IKMetaData *metaData = addMetaData(module, manager);
    ASSERT_NE(metaData, nullptr);
    EXPECT_EQ(module->attrCount(), ownAttrs + 1);
    EXPECT_EQ(metaData->keyword(), IKMetaData::Keyword());
    EXPECT_EQ(metaData->typeName(), IKMetaData::TypeString());
    EXPECT_EQ(metaData->typeKey(), IKMetaData::staticTypeKey());

    SkeletonMetaData *skeleton = metaData->skeletonMetaData();
    ASSERT_EQ(metaData->registeredAttrs(), std::vector<AT_Attr *>{skeleton});
    EXPECT_EQ(skeleton->typeName(), SkeletonMetaData::TypeString());
    EXPECT_EQ(skeleton->typeKey(), SkeletonMetaData::staticTypeKey());
    ASSERT_EQ(skeleton->registeredCount(), 2);
    EXPECT_EQ(skeleton->registeredAttr(0), skeleton->participates());
    EXPECT_EQ(skeleton->registeredAttr(1), skeleton->jointAttr());
    EXPECT_EQ(skeleton->participates()->keyword(), QLatin1String("participates"));
    EXPECT_EQ(skeleton->participates()->displayName(), QLatin1String("participates"));
    EXPECT_EQ(skeleton->jointAttr()->keyword(), QLatin1String("jointattr"));
    EXPECT_EQ(skeleton->jointAttr()->displayName(), QLatin1String("jointattr"));
    EXPECT_TRUE(skeleton->participates()->localValue());
    EXPECT_FALSE(skeleton->jointAttr()->isRoot()->localValue());
    EXPECT_TRUE(skeleton->textValue(0.0).isEmpty());
    EXPECT_TRUE(skeleton->textValue(12.5).isEmpty());

    EXPECT_TRUE(IKToolUtil::participates(module));
    EXPECT_FALSE(IKToolUtil::isRoot(module));
    skeleton->jointAttr()->isRoot()->setLocalValue(true);
    EXPECT_TRUE(IKToolUtil::isRoot(module));
    skeleton->participates()->setLocalValue(false);
    EXPECT_FALSE(IKToolUtil::participates(module));

    manager.undo();
    EXPECT_EQ(IKToolUtil::getIKMetaDataForModule(module), nullptr);
    EXPECT_EQ(module->attrCount(), ownAttrs);
    manager.redo();
    EXPECT_EQ(IKToolUtil::getIKMetaDataForModule(module), metaData) << "redo puts back the same object";
}

TEST(IKMetaData, LookUpsFindTheMetadataAnywhereAndCreateNothing)
{
    TUScene scene;
    CO_CommandManager manager;
    MO_Module *bare = add<MO_PegModule>(scene, QStringLiteral("bare"));
    int const bareAttrs = bare->attrCount();

    EXPECT_EQ(IKToolUtil::getIKMetaDataForModule(nullptr), nullptr);
    EXPECT_EQ(IKToolUtil::getIKMetaDataForNode(nullptr), nullptr);
    EXPECT_FALSE(IKToolUtil::participates(nullptr));
    EXPECT_FALSE(IKToolUtil::isRoot(nullptr));
    EXPECT_EQ(IKToolUtil::getIKMetaDataForModule(bare), nullptr);
    EXPECT_FALSE(IKToolUtil::participates(bare));
    EXPECT_FALSE(IKToolUtil::isRoot(bare));
    EXPECT_EQ(bare->attrCount(), bareAttrs) << "asking creates nothing";

    // Metadata after another dynamic attribute is found all the same.
    MO_Module *late = add<MO_PegModule>(scene, QStringLiteral("late"));
    manager.execute(std::make_unique<tu_node::CreateAttrCmd>(late, AT_AttrMeta(QStringLiteral("notes"), QString()),
                                                             AT_DynGroupAttr::TypeString(), false));
    ASSERT_NE(late->attr(QStringLiteral("notes")), nullptr);
    IKMetaData *metaData = addMetaData(late, manager);
    ASSERT_NE(metaData, nullptr);
    EXPECT_EQ(*(late->attrsEnd() - 1), metaData);
    EXPECT_EQ(IKToolUtil::getIKMetaDataForNode(late), metaData);

    // A node that is no module has none, even with the attribute on it.
    auto composite = UT_MakeShared<MO_Node>(QStringLiteral("COMPOSITE"), 1, 1);
    manager.execute(std::make_unique<tu_node::CreateAttrCmd>(composite.get(), IKMetaData::metaForKeyword(IKMetaData::Keyword()),
                                                             IKMetaData::TypeString(), false));
    ASSERT_NE(composite->attr(IKMetaData::Keyword()), nullptr);
    EXPECT_EQ(IKToolUtil::getIKMetaDataForNode(composite.get()), nullptr);
}

TEST(IKJointNameAttr, EachNodeGetsOneNameFromTheCounter)
{
    EXPECT_EQ(IKJointNameAttr::forNode(nullptr), nullptr);
    UT_SharedPtr<MO_Module> a = UT_MakeShared<MO_Module>();
    UT_SharedPtr<MO_Module> b = UT_MakeShared<MO_Module>();
    int const attrs = a->attrCount();

    IKJointNameAttr *first = IKJointNameAttr::forNode(a.get());
    ASSERT_NE(first, nullptr);
    QRegularExpressionMatch const match =
        QRegularExpression(QStringLiteral("^j_([1-9][0-9]*)$")).match(QString::fromStdString(first->name));
    ASSERT_TRUE(match.hasMatch()) << first->name;
    int const number = match.captured(1).toInt();

    EXPECT_EQ(IKJointNameAttr::forNode(a.get()), first) << "the same attribute for the same node";
    EXPECT_EQ(a->dynamicAttr(IKJointNameAttr::staticTypeKey()), first);
    EXPECT_EQ(a->attrCount(), attrs) << "a run-time attribute, not one of the saved ones";
    IKJointNameAttr const *second = IKJointNameAttr::forNode(b.get());
    EXPECT_EQ(second->name, "j_" + std::to_string(number + 1)) << "the counter moved once for the first node";
}

// Sets distinct values on a module's joint.
void pose(MO_Module *module, CO_CommandManager &manager, bool root, bool participates, double weight, double handleY)
{
    IKMetaData *metaData = addMetaData(module, manager);
    ASSERT_NE(metaData, nullptr);
    JointAttr *joint = metaData->skeletonMetaData()->jointAttr();
    joint->isRoot()->setLocalValue(root);
    metaData->skeletonMetaData()->participates()->setLocalValue(participates);
    joint->weightAttr()->setLocalValue(weight);
    joint->handlePositionY()->setLocalValue(handleY);
    joint->holdPositionAttr()->setLocalValue(!root);
    joint->setupPositionAttr()->setLocalValue(Math::Point2d(weight, -weight));
    joint->useActualPositionAttr()->setLocalValue(true);
}

TEST(IKMetaData, ASceneSavedWithMetadataOnSeveralModulesLoadsBackEqual)
{
    TUScene scene;
    CO_CommandManager manager;
    MO_Module *hip = add<MO_PegModule>(scene, QStringLiteral("hip"));
    MO_Module *thigh = add<BendyBoneModule>(scene, QStringLiteral("thigh"));
    MO_Module *shin = add<CurveModule>(scene, QStringLiteral("shin"));
    MO_Module *foot = add<MO_ElementModule>(scene, QStringLiteral("foot"));
    add<MO_PegModule>(scene, QStringLiteral("unmarked"));
    ASSERT_TRUE(MO_Node::connect(hip, 0, thigh, 0));
    ASSERT_TRUE(MO_Node::connect(thigh, 0, shin, 0));
    ASSERT_TRUE(MO_Node::connect(shin, 0, foot, 0));
    pose(hip, manager, true, true, 2.0, -1.5);
    pose(thigh, manager, false, true, 0.5, 0.25);
    pose(shin, manager, false, false, 7.0, 3.0);
    pose(foot, manager, false, true, 100.0, -0.001);
    IKJointNameAttr::forNode(hip);  // run-time names are never saved

    QByteArray const written = TUSceneFile::write(scene);
    QString error;
    std::unique_ptr<TUScene> loaded = TUSceneFile::read(written, QStringLiteral("saved"), &error);
    ASSERT_TRUE(loaded) << error.toStdString();
    for (char const *name : {"hip", "thigh", "shin", "foot"}) {
        SCOPED_TRACE(name);
        auto *original = scene.getRootGroup()->findNode(QLatin1String(name))->toModule();
        auto *copy = loaded->getRootGroup()->findNode(QLatin1String(name))->toModule();
        ASSERT_NE(copy, nullptr);
        IKMetaData *before = IKToolUtil::getIKMetaDataForModule(original);
        IKMetaData *after = IKToolUtil::getIKMetaDataForModule(copy);
        ASSERT_NE(after, nullptr);
        EXPECT_TRUE(after->isEquivalent(*before));
        EXPECT_EQ(after->keyword(), IKMetaData::Keyword());
        EXPECT_EQ(IKToolUtil::isRoot(copy), IKToolUtil::isRoot(original));
        EXPECT_EQ(IKToolUtil::participates(copy), IKToolUtil::participates(original));
        EXPECT_FALSE(jointOf(copy)->useActualPositionAttr()->localValue()) << "not saved";
    }
    EXPECT_EQ(IKToolUtil::getIKMetaDataForNode(loaded->getRootGroup()->findNode(QStringLiteral("unmarked"))), nullptr);
    EXPECT_EQ(TUSceneFile::write(*loaded), written);

    // The form in the file.
    QString const text = QString::fromUtf8(written);
    QRegularExpression const form(QStringLiteral(
        "<com\\.quorvane\\.ikmetadata type=\"com\\.quorvane\\.IK_META_DATA\">\\s*<jointAttachment>\\s*"
        "<participates [^>]*/>\\s*<jointattr>\\s*<customType "));
    EXPECT_EQ(text.count(form), 4) << text.toStdString();
    EXPECT_FALSE(text.contains(QLatin1String("useActualPosition")));
    EXPECT_FALSE(text.contains(QLatin1String("j_")));
}

TEST(IKMetaData, ASceneNamingAnUnregisteredMetadataTypeIsRefused)
{
    TUScene scene;
    CO_CommandManager manager;
    pose(add<MO_PegModule>(scene, QStringLiteral("hip")), manager, true, true, 1.0, 0.0);
    QByteArray const written = TUSceneFile::write(scene);
    QString error;
    ASSERT_TRUE(TUSceneFile::read(written, QStringLiteral("good"), &error)) << error.toStdString();

    // The outer type must be the registered one.
    QByteArray misspelt = written;
    misspelt.replace("com.quorvane.IK_META_DATA", "com.quorvene.IK_META_DATA");
    EXPECT_FALSE(TUSceneFile::read(misspelt, QStringLiteral("misspelt"), &error));
    EXPECT_TRUE(error.startsWith(QLatin1String("misspelt:"))) << error.toStdString();
}

} // namespace
