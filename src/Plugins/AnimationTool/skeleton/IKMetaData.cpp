#include "skeleton/IKMetaData.h"

#include <cstdio>

namespace {

// The meta with `keyword`, no display name, and `flags` without Builtin: the form in which the
// metadata is made on a node, whether by a command or by a scene file.
AT_AttrMeta nodeMeta(QString const &keyword, int flags)
{
    return AT_AttrMeta(keyword, QString(), flags & ~AT_AttrMetaContainer::Builtin);
}

AT_AttrMeta const &participatesMeta()
{
    static AT_AttrMeta const meta(QStringLiteral("participates"), QStringLiteral("participates"));
    return meta;
}

AT_AttrMeta const &jointAttrMeta()
{
    static AT_AttrMeta const meta(QStringLiteral("jointattr"), QStringLiteral("jointattr"));
    return meta;
}

// Registration at library load.
struct Registration {
    Registration() { IKMetaData::registerType(); }
} const registration;

} // namespace

// ---- SkeletonMetaData ----

SkeletonMetaData::SkeletonMetaData(AT_AttrOwner *node, AT_AttrMeta const &meta, bool isRoot)
    : AT_ComplexAttr(node, meta), participates_(std::make_unique<AT_BoolAttr>(node, participatesMeta(), true)),
      jointAttr_(std::make_unique<JointAttr>(node, jointAttrMeta(), isRoot))
{
    registerAttr(participates_.get());
    registerAttr(jointAttr_.get());
}

SkeletonMetaData::~SkeletonMetaData() = default;

QString SkeletonMetaData::TypeString() { return QStringLiteral("com.quorvene.SKELETON_META_DATA"); }

UT_DynKey const &SkeletonMetaData::staticTypeKey()
{
    static UT_DynKey const key(TypeString().toStdString());
    return key;
}

AT_AttrMeta const &SkeletonMetaData::getMeta()
{
    static AT_AttrMeta const meta(QStringLiteral("jointAttachment"), QStringLiteral("SkeletonTie"));
    return meta;
}

QString SkeletonMetaData::typeName() const { return TypeString(); }
UT_DynKey const &SkeletonMetaData::typeKey() const { return staticTypeKey(); }
QString SkeletonMetaData::textValue(double) const { return QString(); }
AT_BoolAttr *SkeletonMetaData::participates() const { return participates_.get(); }
JointAttr *SkeletonMetaData::jointAttr() const { return jointAttr_.get(); }

// ---- IKMetaData ----

IKMetaData::IKMetaData(AT_AttrOwner *node, AT_AttrMeta const &meta)
    : AT_DynGroupAttr(node, nodeMeta(meta.xmlKeyword(), meta.flags())),
      skeleton_(std::make_unique<SkeletonMetaData>(node, SkeletonMetaData::getMeta(), false))
{
    registerAttr(skeleton_.get());
}

IKMetaData::~IKMetaData() = default;

QString IKMetaData::TypeString() { return QStringLiteral("com.quorvane.IK_META_DATA"); }
QString IKMetaData::Keyword() { return QStringLiteral("com.quorvane.ikmetadata"); }

UT_DynKey const &IKMetaData::staticTypeKey()
{
    static UT_DynKey const key(TypeString().toStdString());
    return key;
}

AT_AttrMeta IKMetaData::metaForKeyword(QString const &keyword)
{
    return nodeMeta(keyword, AT_AttrMetaFactorySingleton::instance().meta(TypeString()).flags());
}

void IKMetaData::registerType()
{
    AT_AttrMetaFactorySingleton::instance().registerClass(TypeString(),
                                                         [] { return std::make_unique<AT_AttrMetaContainer>(); });
    AT_AttrFactorySingleton::instance().registerClass(
        TypeString(), [] { return std::unique_ptr<AT_Attr>(); },
        [](AT_AttrOwner *owner, AT_AttrMeta const &meta) -> std::unique_ptr<AT_Attr> {
            return std::make_unique<IKMetaData>(owner, meta);
        });
}

QString IKMetaData::typeName() const { return TypeString(); }
UT_DynKey const &IKMetaData::typeKey() const { return staticTypeKey(); }
SkeletonMetaData *IKMetaData::skeletonMetaData() const { return skeleton_.get(); }

// ---- IKJointNameAttr ----

namespace {

// Numbers of joint names: process-wide, first 1. Names are made on the main thread only.
int nextJointNumber()
{
    static int counter = 0;
    return ++counter;
}

AT_AttrMeta const &jointNameMeta()
{
    static AT_AttrMeta const meta(QStringLiteral("ikJointName"), QString(), AT_AttrMetaContainer::Hidden);
    return meta;
}

} // namespace

IKJointNameAttr::IKJointNameAttr(AT_AttrOwner *node) : AT_DynAttr(node, jointNameMeta())
{
    char text[32];
    std::snprintf(text, sizeof text, "j_%d", nextJointNumber());
    name = text;
}

IKJointNameAttr::~IKJointNameAttr() = default;

UT_DynKey const &IKJointNameAttr::staticTypeKey()
{
    static UT_DynKey const key("com.quorvane.IK_JOINT_NAME");
    return key;
}

QString IKJointNameAttr::typeName() const { return QString::fromStdString(staticTypeKey().name()); }
UT_DynKey const &IKJointNameAttr::typeKey() const { return staticTypeKey(); }

IKJointNameAttr *IKJointNameAttr::forNode(MO_Node *node)
{
    if (!node)
        return nullptr;
    if (auto *found = dynamic_cast<IKJointNameAttr *>(node->dynamicAttr(staticTypeKey())))
        return found;
    return static_cast<IKJointNameAttr *>(
        node->registerDynamicAttr(staticTypeKey(), std::make_unique<IKJointNameAttr>(node)));
}

// ---- look-ups ----

IKMetaData *IKToolUtil::getIKMetaDataForModule(MO_Module *module)
{
    if (!module)
        return nullptr;
    // The metadata is always a dynamic attribute (made by a command or read with its type name):
    // the built-in attributes, most of a module's, are passed over without a cast.
    for (auto it = module->attrsBegin(); it != module->attrsEnd(); ++it)
        if ((*it)->isDynamic())
            if (auto *metaData = dynamic_cast<IKMetaData *>(*it))
                return metaData;
    return nullptr;
}

IKMetaData *IKToolUtil::getIKMetaDataForNode(MO_Node *node)
{
    return node ? getIKMetaDataForModule(node->toModule()) : nullptr;
}

bool IKToolUtil::participates(MO_Module *module)
{
    IKMetaData const *metaData = getIKMetaDataForModule(module);
    return metaData && metaData->skeletonMetaData()->participates()->localValue();
}

JointAttr *IKToolUtil::jointAttrForModule(MO_Module *module)
{
    IKMetaData const *metaData = getIKMetaDataForModule(module);
    return metaData ? metaData->skeletonMetaData()->jointAttr() : nullptr;
}

bool IKToolUtil::isRoot(MO_Module *module)
{
    JointAttr const *joint = jointAttrForModule(module);
    return joint && joint->isRoot()->localValue();
}
