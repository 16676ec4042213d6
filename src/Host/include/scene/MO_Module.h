// Nodes and modules of the scene graph.
//
// Only the identity of a node is defined so far: nodes are shared host objects that skeleton
// records refer to weakly. The graph, ports, attributes and evaluation join this header as the
// scene library grows.
#pragma once

#include "base/UT_SharedPtr.h"

// A node of the scene graph.
class MO_Node : public UT_ShareBase {
public:
    MO_Node() = default;
    ~MO_Node() override = default;
};

// A node with a transformation.
class MO_Module : public MO_Node {
public:
    MO_Module() = default;
    ~MO_Module() override = default;
};
