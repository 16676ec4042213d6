#include "AttrTestSupport.h"

#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(AttrFactory, MakesTheHostKindsByTypeNameAsDynamicAttributes)
{
    TestOwner owner;
    auto &factory = AT_AttrFactorySingleton::instance();
    struct Case {
        char const *type;
        bool (*isKind)(AT_Attr *);
    } const cases[] = {
        {"BOOL", [](AT_Attr *a) { return dynamic_cast<AT_BoolAttr *>(a) != nullptr; }},
        {"INT", [](AT_Attr *a) { return dynamic_cast<AT_IntAttr *>(a) != nullptr; }},
        {"DOUBLE", [](AT_Attr *a) { return dynamic_cast<AT_DoubleAttr *>(a) != nullptr; }},
        {"STRING", [](AT_Attr *a) { return dynamic_cast<AT_StringAttr *>(a) != nullptr; }},
        {"POSITION_2D", [](AT_Attr *a) { return dynamic_cast<AT_Position2dAttr *>(a) != nullptr; }},
        {"POSITION_3D", [](AT_Attr *a) { return dynamic_cast<AT_Position3dAttr *>(a) != nullptr; }},
        {"ROTATION_3D", [](AT_Attr *a) { return dynamic_cast<AT_Rotation3dAttr *>(a) != nullptr; }},
        {"GROUP", [](AT_Attr *a) { return dynamic_cast<AT_GroupAttr *>(a) != nullptr; }},
        {"DYN_GROUP", [](AT_Attr *a) { return dynamic_cast<AT_DynGroupAttr *>(a) != nullptr; }},
        {"DYN_ATTR", [](AT_Attr *a) { return dynamic_cast<AT_DynAttr *>(a) != nullptr; }},
    };
    for (auto const &c : cases) {
        std::unique_ptr<AT_Attr> attr = factory.create(c.type, &owner, AT_AttrMeta("k", "K"));
        ASSERT_NE(attr, nullptr) << c.type;
        EXPECT_TRUE(c.isKind(attr.get())) << c.type;
        EXPECT_EQ(attr->typeName(), c.type);
        EXPECT_EQ(attr->typeKey(), UT_DynKey(c.type));
        EXPECT_TRUE(attr->isDynamic());
        EXPECT_EQ(attr->keyword(), "k");
        EXPECT_EQ(attr->owner(), &owner);
        EXPECT_TRUE(AT_AttrMetaFactorySingleton::instance().isRegistered(c.type));
    }
}

TEST(AttrFactory, UnknownTypeNamesThrowNotRegistered)
{
    auto &factory = AT_AttrFactorySingleton::instance();
    EXPECT_THROW(factory.create("com.example.UNKNOWN"), not_registered);
    EXPECT_THROW(factory.create("com.example.UNKNOWN", nullptr, AT_AttrMeta()), not_registered);
    EXPECT_THROW(AT_AttrMetaFactorySingleton::instance().meta("com.example.UNKNOWN"), not_registered);
    try {
        factory.create("");
        FAIL() << "no exception";
    } catch (std::exception const &e) {
        EXPECT_STREQ(e.what(), "Class/key not registered");
    }
}

TEST(AttrFactory, PlugInTypesRegisterTheirCreatorsAndMetas)
{
    auto &factory = AT_AttrFactorySingleton::instance();
    auto &metas = AT_AttrMetaFactorySingleton::instance();
    QString const type = "com.example.TEST_GROUP";
    EXPECT_FALSE(factory.registerClass(type, nullptr, nullptr));
    ASSERT_TRUE(factory.registerClass(
        type, [] { return std::unique_ptr<AT_Attr>(); },
        [](AT_AttrOwner *owner, AT_AttrMeta const &meta) { return std::make_unique<AT_DynGroupAttr>(owner, meta); }));
    ASSERT_TRUE(metas.registerClass(type, [] {
        return std::make_unique<AT_AttrMetaContainer>("", "", AT_AttrMetaContainer::Builtin | AT_AttrMetaContainer::Hidden);
    }));
    EXPECT_EQ(factory.create(type), nullptr);  // the creator without arguments gives null
    EXPECT_NE(factory.create(type, nullptr, AT_AttrMeta("m", "")), nullptr);
    EXPECT_TRUE(factory.typeNames().contains(type));

    AT_AttrMeta const first = metas.meta(type);
    AT_AttrMeta const second = metas.meta(type);
    EXPECT_TRUE(first.sharesContainerWith(second));  // made once
    AT_AttrMeta own = first;
    own.setFlags(own.flags() & ~AT_AttrMetaContainer::Builtin);
    EXPECT_EQ(own.flags(), int(AT_AttrMetaContainer::Hidden));
    EXPECT_EQ(metas.meta(type).flags(), AT_AttrMetaContainer::Builtin | AT_AttrMetaContainer::Hidden);

    EXPECT_TRUE(factory.unregisterClass(type));
    EXPECT_TRUE(metas.unregisterClass(type));
    EXPECT_THROW(factory.create(type), not_registered);
}

TEST(AttrMeta, CopiesShareTheirDataUntilChanged)
{
    AT_AttrMeta const base("weight", "Weight", AT_AttrMetaContainer::NodeDirtyOnChange);
    AT_AttrMeta copy = base;
    EXPECT_TRUE(copy.sharesContainerWith(base));
    EXPECT_TRUE(copy.isNodeDirtyOnChange());
    EXPECT_EQ(copy.xmlKeyword(), "weight");  // the keyword when no XML keyword is given
    copy.setXmlKeyword("w");
    EXPECT_FALSE(copy.sharesContainerWith(base));
    EXPECT_EQ(base.xmlKeyword(), "weight");
    EXPECT_EQ(copy.xmlKeyword(), "w");
    EXPECT_EQ(copy.displayName(), "Weight");

    AT_DoubleAttrMeta const range("gain", "Gain", "IK_WEIGHT_STEP", 0, 100, 0, 1000,
                                  AT_DoubleAttrMetaContainer::kDefaultValueStep);
    ASSERT_NE(range.doubleContainer(), nullptr);
    EXPECT_EQ(range.doubleContainer()->maxValue, 100.0);
    EXPECT_EQ(range.doubleContainer()->stepPreference, "IK_WEIGHT_STEP");
    AT_AttrMeta renamed = range;
    renamed.setDisplayName("Other");  // a changed copy keeps its range
    ASSERT_NE(renamed.doubleContainer(), nullptr);
    EXPECT_EQ(renamed.doubleContainer()->editorMax, 1000.0);
    EXPECT_EQ(base.doubleContainer(), nullptr);
}

}  // namespace
