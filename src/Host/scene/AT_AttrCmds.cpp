#include "scene/AT_AttrCmds.h"

#include "command/CO_CommandManager.h"
#include "scene/AT_Attr.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"

// ---- AT_AttrStateCmd ----

AT_AttrStateCmd::AT_AttrStateCmd(AT_Attr *attr, std::unique_ptr<AT_AttrState> before,
                                 std::unique_ptr<AT_AttrState> after)
    : attr_(attr), before_(std::move(before)), after_(std::move(after))
{
}

AT_AttrStateCmd::~AT_AttrStateCmd() = default;

std::unique_ptr<CO_Command> AT_AttrStateCmd::make(AT_Attr *attr, std::unique_ptr<AT_AttrState> before,
                                                  std::unique_ptr<AT_AttrState> after)
{
    if (!attr || !before || !after || before->equals(*after))
        return nullptr;
    return std::make_unique<AT_AttrStateCmd>(attr, std::move(before), std::move(after));
}

AT_Attr *AT_AttrStateCmd::attr() const { return attr_; }
bool AT_AttrStateCmd::execute() { return attr_ && after_ && attr_->restoreState(*after_); }
bool AT_AttrStateCmd::unexecute() { return attr_ && before_ && attr_->restoreState(*before_); }

// ---- keyframes ----

bool AT_KeyframeCmds::AddKeyframe(SC_SceneCommon *, int frame, AT_Attr *attr, bool useCurrentValue,
                                  bool constantSegment, bool replace, bool quiet)
{
    if (!attr)
        return false;
    std::unique_ptr<CO_Command> command = attr->addKeyframeCmd(frame, useCurrentValue, constantSegment, replace);
    if (!command)
        return false;
    CO_CommandManager *manager = attr->owner() ? attr->owner()->attrCommandManager() : nullptr;
    if (quiet)
        attr->setNotificationsBlocked(true);
    bool const done = manager ? manager->execute(std::move(command)) : command->execute();
    if (quiet)
        attr->setNotificationsBlocked(false);
    return done;
}

std::unique_ptr<CO_Command> AT_KeyframeCmds::DeleteKeyframe(int from, int to, AT_Attr *attr)
{
    return attr ? attr->removeKeyframesCmd(from, to) : nullptr;
}

// ---- set value at a frame ----

std::unique_ptr<CO_Command> Attr::Double::createSetValueCurrentFrameCmd(
    SC_SceneCommon *, AT_DoubleAttr *attr, double frame, double value, bool relative,
    bool createKeyframe, bool constantSegment, bool localOnly)
{
    if (!attr)
        return nullptr;
    return attr->setValueCmd(frame, value, relative, createKeyframe, constantSegment, localOnly);
}

std::unique_ptr<CO_Command> Attr::Rotation3d::createSetValueCurrentFrameCmd(
    SC_SceneCommon *, AT_Rotation3dAttr *attr, double frame, Math::Angle3d const &value,
    bool relative, bool createKeyframe, bool constantSegment, bool localOnly)
{
    if (!attr)
        return nullptr;
    return attr->setValueCmd(frame, value, relative, createKeyframe, constantSegment, localOnly);
}

std::unique_ptr<CO_Command> Attr::Position3d::createSetValueCurrentFrameCmd(
    SC_SceneCommon *, AT_Position3dAttr *attr, double frame, double x, double y, double z,
    bool relative)
{
    if (!attr)
        return nullptr;
    return attr->setValueCmd(frame, Math::Point3d(x, y, z), relative);
}

std::unique_ptr<CO_Command> Attr::Position2d::createSetValueCurrentFrameCmd(
    SC_SceneCommon *, AT_Position2dAttr *attr, double frame, double x, double y, bool relative)
{
    if (!attr)
        return nullptr;
    return attr->setValueCmd(frame, Math::Point2d(x, y), relative);
}

// ---- tu_node::CreateAttrCmd ----

struct tu_node::CreateAttrCmd::Impl {
    AT_AttrOwner *node;
    AT_AttrMeta meta;
    QString typeName;
    bool replaceExisting;
    AT_Attr *attr = nullptr;            // the attribute made, once made
    std::unique_ptr<AT_Attr> held;      // the attribute while it is not on the node
    std::unique_ptr<AT_Attr> replaced;  // the attribute it replaced, while this one is on the node
    AT_Attr *replacedAttr = nullptr;    // the attribute it replaces, if any
};

tu_node::CreateAttrCmd::CreateAttrCmd(AT_AttrOwner *node, AT_AttrMeta const &meta,
                                      QString const &typeName, bool replaceExisting)
    : d_(std::make_unique<Impl>(Impl{node, meta, typeName, replaceExisting, nullptr, nullptr, nullptr, nullptr}))
{
}

tu_node::CreateAttrCmd::~CreateAttrCmd() = default;

AT_Attr *tu_node::CreateAttrCmd::attr() const { return d_->attr; }

bool tu_node::CreateAttrCmd::execute()
{
    if (!d_->node)
        return false;
    if (!d_->attr) {
        try {
            d_->held = AT_AttrFactorySingleton::instance().create(d_->typeName, d_->node, d_->meta);
        } catch (not_registered const &) {
            return false;
        }
        if (!d_->held)
            return false;
        d_->attr = d_->held.get();
        d_->replacedAttr = d_->node->findAttr(d_->meta.keyword());
        if (d_->replacedAttr && !d_->replaceExisting) {
            d_->held.reset();
            d_->attr = nullptr;
            d_->replacedAttr = nullptr;
            return false;
        }
    }
    if (!d_->held)
        return false;  // already on the node
    if (d_->replacedAttr) {
        d_->replaced = d_->node->takeDynamicAttr(d_->replacedAttr);
        if (!d_->replaced)
            return false;  // a static attribute cannot be replaced
    }
    if (!d_->node->addDynamicAttr(std::move(d_->held))) {
        // The owner refused and destroyed the attribute; put back what it replaced.
        d_->attr = nullptr;
        if (d_->replaced)
            d_->node->addDynamicAttr(std::move(d_->replaced));
        return false;
    }
    return true;
}

bool tu_node::CreateAttrCmd::unexecute()
{
    if (!d_->node || !d_->attr || d_->held)
        return false;
    d_->held = d_->node->takeDynamicAttr(d_->attr);
    if (!d_->held)
        return false;
    if (d_->replaced)
        d_->node->addDynamicAttr(std::move(d_->replaced));
    return true;
}
