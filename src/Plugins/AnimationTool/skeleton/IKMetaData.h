// What the plug-in stores on the scene's modules.
//
// Each module that takes part in a skeleton carries one dynamic attribute, IKMetaData, under the
// keyword "com.quorvane.ikmetadata". The host saves it with the node, written with its type name
// "com.quorvane.IK_META_DATA" so that reading finds the factory registered below. In the file:
//
//   <com.quorvane.ikmetadata type="com.quorvane.IK_META_DATA">
//     <jointAttachment>            SkeletonMetaData
//       <participates .../>        the participation flag
//       <jointattr> ... </jointattr>   the joint's JointAttr, in its registration order
//
// A second attribute, IKJointNameAttr, is run-time only: it gives each module a unique joint name
// ("j_1", "j_2", ...) for the length of the run, to key joints in a SkeletonDef.
//
// The type is registered with the host's attribute factories by a static initialiser of
// IKMetaData.cpp. That file also holds the metadata look-ups that every skeleton record uses, so
// it is linked into whatever uses skeletons, and registration runs at load.
#pragma once

#include "skeleton/JointAttr.h"

#include <memory>
#include <string>

// The participation flag and the joint's constraints; the only sub-attribute of an IKMetaData.
class SkeletonMetaData : public AT_ComplexAttr {
public:
    // Makes `participates` (true) and then the JointAttr ("jointattr", `isRoot`), registered in
    // that order.
    SkeletonMetaData(AT_AttrOwner *node, AT_AttrMeta const &meta, bool isRoot);
    ~SkeletonMetaData() override;

    // "com.quorvene.SKELETON_META_DATA": the second word is spelt unlike IKMetaData's on purpose,
    // and files hold it so; match it as it stands.
    static QString TypeString();
    static UT_DynKey const &staticTypeKey();
    // Keyword "jointAttachment", display name "SkeletonTie".
    static AT_AttrMeta const &getMeta();

    QString typeName() const override;
    UT_DynKey const &typeKey() const override;
    QString textValue(double frame) const override;  // always empty

    AT_BoolAttr *participates() const;
    JointAttr *jointAttr() const;

private:
    std::unique_ptr<AT_BoolAttr> participates_;  // registered first
    std::unique_ptr<JointAttr> jointAttr_;       // registered second
};

class IKMetaData : public AT_DynGroupAttr {
public:
    // The group is made with the XML keyword of `meta` as keyword, an empty display name and the
    // flags of `meta` without AT_AttrMetaContainer::Builtin; it holds a SkeletonMetaData whose
    // joint is not a root.
    IKMetaData(AT_AttrOwner *node, AT_AttrMeta const &meta);
    ~IKMetaData() override;

    static QString TypeString();  // "com.quorvane.IK_META_DATA"
    static QString Keyword();     // "com.quorvane.ikmetadata": the attribute's keyword on a node
    static UT_DynKey const &staticTypeKey();
    // The meta the host's meta factory holds for TypeString(), with `keyword`, an empty display
    // name, and its flags without AT_AttrMetaContainer::Builtin.
    static AT_AttrMeta metaForKeyword(QString const &keyword);

    // Registers TypeString() with AT_AttrMetaFactorySingleton (a plain meta container) and with
    // AT_AttrFactorySingleton (no attribute without arguments; an IKMetaData with them). Runs at
    // load; calling it again does no harm.
    static void registerType();

    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    SkeletonMetaData *skeletonMetaData() const;

private:
    std::unique_ptr<SkeletonMetaData> skeleton_;  // the only registered sub-attribute
};

// A module's joint name for this run of the host, kept as a run-time attribute of the node.
class IKJointNameAttr : public AT_DynAttr {
public:
    // Takes the next number of the process-wide counter (first 1) and names itself "j_<n>".
    explicit IKJointNameAttr(AT_AttrOwner *node);
    ~IKJointNameAttr() override;

    static UT_DynKey const &staticTypeKey();
    QString typeName() const override;
    UT_DynKey const &typeKey() const override;

    // The node's joint name, made and registered on the node the first time it is asked for; the
    // same attribute afterwards. Null for a null node.
    static IKJointNameAttr *forNode(MO_Node *node);

    std::string name;  // UTF-8 bytes
};

namespace IKToolUtil {

// The first dynamic attribute of the module, in the node's order, that is an IKMetaData (it is
// always made dynamic: by a command, or read with its type name); null for a null
// module or a module without one. Asking creates nothing.
IKMetaData *getIKMetaDataForModule(MO_Module *module);
// As above; null for a node that is no module.
IKMetaData *getIKMetaDataForNode(MO_Node *node);
// The JointAttr of the module's metadata; null for a module without metadata.
JointAttr *jointAttrForModule(MO_Module *module);
// Local value of the participation flag; false without metadata.
bool participates(MO_Module *module);
// Local value of JointAttr::isRoot(); false without metadata.
bool isRoot(MO_Module *module);

} // namespace IKToolUtil
