#include "skeleton/JointAttr.h"

#include "skeleton/IKMetaData.h"

#include <limits>

namespace {

// The metas of the sub-attributes, shared by every JointAttr of the process.
struct JointMetas {
    AT_AttrMeta jointType{QStringLiteral("jointType"), QStringLiteral("Type")};
    AT_AttrMeta isRoot{QStringLiteral("isRoot"), QStringLiteral("Is Root")};
    AT_AttrMeta useActualPosition{QStringLiteral("useActualPosition"), QStringLiteral("Use Actual Position")};
    AT_AttrMeta customType{QStringLiteral("customType"), QStringLiteral("Is Custom Type")};
    AT_AttrMeta active{QStringLiteral("active"), QStringLiteral("Active")};
    AT_AttrMeta holdOrientation{QStringLiteral("holdOrientation"), QStringLiteral("Hold Orientation")};
    AT_AttrMeta holdPosition{QStringLiteral("holdPosition"), QStringLiteral("Hold Position")};
    AT_DoubleAttrMeta weight = weightMeta(QStringLiteral("weight"), QStringLiteral("Weight"));
    AT_DoubleAttrMeta holdPositionGain = weightMeta(QStringLiteral("holdpositiongain"), QStringLiteral("Hold Position Gain"));
    AT_DoubleAttrMeta holdOrientationGain =
        weightMeta(QStringLiteral("holdorientationgain"), QStringLiteral("Hold Orientation Gain"));
    AT_AttrMeta setupPosition{QStringLiteral("setupPosition"), QStringLiteral("Setup Position")};
    AT_DoubleAttrMeta handleX = handleMeta(QStringLiteral("handlepositionx"), QStringLiteral("Handle X"));
    AT_DoubleAttrMeta handleY = handleMeta(QStringLiteral("handlepositiony"), QStringLiteral("Handle Y"));
    AT_AttrMeta blocker{QStringLiteral("blocker"), QStringLiteral("Blocker")};

    // Weights and gains run from 0 to 100; the editor's slider from 0 to 1000.
    static AT_DoubleAttrMeta weightMeta(QString const &keyword, QString const &displayName)
    {
        return AT_DoubleAttrMeta(keyword, displayName, QStringLiteral("IK_WEIGHT_STEP"), 0, 100, 0, 1000,
                                 AT_DoubleAttrMetaContainer::kDefaultValueStep);
    }

    // The handle is a vector in the module's axes, so either component may be negative: the host
    // refuses values outside a double meta's range, so its range is every finite value. The
    // editor keeps the weights' slider.
    static AT_DoubleAttrMeta handleMeta(QString const &keyword, QString const &displayName)
    {
        double const big = std::numeric_limits<double>::max();
        return AT_DoubleAttrMeta(keyword, displayName, QStringLiteral("IK_WEIGHT_STEP"), -big, big, 0, 1000,
                                 AT_DoubleAttrMetaContainer::kDefaultValueStep);
    }
};

JointMetas const &metas()
{
    static JointMetas const m;
    return m;
}

} // namespace

struct JointAttr::Impl {
    // The record's attributes, in the order of the accessors; all made on the group's owner.
    AT_StringAttr jointType;
    AT_BoolAttr isRoot;
    AT_BoolAttr useActualPosition;
    AT_BoolAttr customType;
    AT_BoolAttr active;
    AT_BoolAttr holdOrientation;
    AT_BoolAttr holdPosition;
    AT_DoubleAttr weight;
    AT_DoubleAttr holdPositionGain;
    AT_DoubleAttr holdOrientationGain;
    AT_Position2dAttr setupPosition;
    AT_DoubleAttr handleX;
    AT_DoubleAttr handleY;
    AT_BoolAttr blocker;
    QString jointId;  // the node's joint name when the group was made

    Impl(AT_AttrOwner *node, bool root, QString id)
        : jointType(node, metas().jointType, QString()), isRoot(node, metas().isRoot, root),
          useActualPosition(node, metas().useActualPosition, false), customType(node, metas().customType, true),
          active(node, metas().active, true), holdOrientation(node, metas().holdOrientation, false),
          holdPosition(node, metas().holdPosition, false), weight(node, metas().weight, 1.0, false),
          holdPositionGain(node, metas().holdPositionGain, 1.0, false),
          holdOrientationGain(node, metas().holdOrientationGain, 1.0, false),
          setupPosition(node, metas().setupPosition, false, Math::Point2d(0.0, 0.0)),
          handleX(node, metas().handleX, 1.0, false), handleY(node, metas().handleY, 0.0, false),
          blocker(node, metas().blocker, false), jointId(std::move(id))
    {
    }
};

namespace {

QString jointNameOf(AT_AttrOwner *owner)
{
    IKJointNameAttr const *name = IKJointNameAttr::forNode(owner ? owner->attrOwnerNode() : nullptr);
    return name ? QString::fromUtf8(name->name.c_str(), static_cast<int>(name->name.size())) : QString();
}

} // namespace

JointAttr::JointAttr(AT_AttrOwner *node, AT_AttrMeta const &meta, bool isRoot)
    : AT_GroupAttr(node, meta, 0), d_(std::make_unique<Impl>(node, isRoot, jointNameOf(node)))
{
    for (AT_Attr *attr : std::initializer_list<AT_Attr *>{
             &d_->customType, &d_->jointType, &d_->isRoot, &d_->active, &d_->weight, &d_->holdPositionGain,
             &d_->holdOrientationGain, &d_->holdPosition, &d_->holdOrientation, &d_->setupPosition, &d_->handleX,
             &d_->handleY, &d_->blocker})
        registerAttr(attr);
}

JointAttr::~JointAttr() = default;

AT_StringAttr *JointAttr::jointType() const { return &d_->jointType; }
AT_BoolAttr *JointAttr::isRoot() const { return &d_->isRoot; }
AT_BoolAttr *JointAttr::useActualPositionAttr() const { return &d_->useActualPosition; }
AT_BoolAttr *JointAttr::isCustomType() const { return &d_->customType; }
AT_BoolAttr *JointAttr::activeAttr() const { return &d_->active; }
AT_BoolAttr *JointAttr::holdOrientationAttr() const { return &d_->holdOrientation; }
AT_BoolAttr *JointAttr::holdPositionAttr() const { return &d_->holdPosition; }
AT_DoubleAttr *JointAttr::weightAttr() const { return &d_->weight; }
AT_DoubleAttr *JointAttr::holdPositionGainAttr() const { return &d_->holdPositionGain; }
AT_DoubleAttr *JointAttr::holdOrientationGainAttr() const { return &d_->holdOrientationGain; }
AT_Position2dAttr *JointAttr::setupPositionAttr() const { return &d_->setupPosition; }
AT_DoubleAttr *JointAttr::handlePositionX() const { return &d_->handleX; }
AT_DoubleAttr *JointAttr::handlePositionY() const { return &d_->handleY; }
AT_BoolAttr *JointAttr::isBlocker() const { return &d_->blocker; }

QString JointAttr::jointId() const
{
    return d_->isRoot.localValue() ? QStringLiteral("root") : d_->jointId;
}

AT_AttrMeta JointAttr::getMeta(int index)
{
    return AT_AttrMeta(QStringLiteral("jointattr%1").arg(index), QStringLiteral("Joint"), kElementFlags);
}

void JointAttr::resetDefaultValues(CO_CommandManager *manager)
{
    if (!manager)
        return;
    struct Reset {
        AT_Attr *attr;
        char const *text;
    };
    for (Reset const &r : {Reset{&d_->useActualPosition, "false"}, Reset{&d_->active, "true"},
                           Reset{&d_->holdOrientation, "false"}, Reset{&d_->holdPosition, "false"},
                           Reset{&d_->weight, "1"}, Reset{&d_->holdOrientationGain, "1"},
                           Reset{&d_->holdPositionGain, "1"}, Reset{&d_->blocker, "false"}}) {
        if (std::unique_ptr<CO_Command> cmd = r.attr->setTextValue(0.0, QString::fromLatin1(r.text)))
            manager->execute(std::move(cmd), QString());
    }
}
