// An array of joints' constraints: AT_ArrayAttr over JointAttr.
//
// Element i is a JointAttr made on the array's node with the meta JointAttr::getMeta(i)
// ("jointattr<i>"); only the element at index 0 starts as a root. The array's XML form and its
// reader come from AT_ArrayAttr.
#pragma once

#include "skeleton/AT_ArrayAttr.h"
#include "skeleton/JointAttr.h"

class JointArrayAttr : public AT_ArrayAttr<JointAttr> {
public:
    JointArrayAttr(AT_AttrOwner *node, AT_AttrMeta const &meta, int size);

    JointAttr *pushOneJoint() { return pushNewAttr(); }
    std::unique_ptr<JointAttr> removeLastJoint() { return popAttr(); }

    // The create function of the array: nothing for a null `out`.
    static void createJoint(int index, AT_ArrayAttr<JointAttr> &array, std::unique_ptr<JointAttr> *out);
};
