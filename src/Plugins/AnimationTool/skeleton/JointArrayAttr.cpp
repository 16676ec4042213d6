#include "skeleton/JointArrayAttr.h"

JointArrayAttr::JointArrayAttr(AT_AttrOwner *node, AT_AttrMeta const &meta, int size)
    : AT_ArrayAttr<JointAttr>(node, meta, size, &JointArrayAttr::createJoint)
{
}

void JointArrayAttr::createJoint(int index, AT_ArrayAttr<JointAttr> &array, std::unique_ptr<JointAttr> *out)
{
    if (out)
        *out = std::make_unique<JointAttr>(array.owner(), JointAttr::getMeta(index), index == 0);
}
