// Small readings of the scene shared by the extraction and the manipulators: a module's world
// matrix at a context, and one step up the graph through an input port.
#pragma once

#include "host/HostAPI.h"

#include <climits>
#include <cmath>

namespace IKToolUtil {

// The matrix of the module's output transformation at `context`; the identity when the module
// gives none.
inline Math::Matrix4x4 worldMatrix(MO_Module const *module, MO_BaseContext const &context, bool withDeformation = true)
{
    MO_PortTransformPtr const port = module->getPortTransformation(context);
    return port ? port->transformation().matrix(withDeformation) : Math::Matrix4x4();
}

// The node that feeds input `port` of `node`, pass-through nodes looked through; null at the top
// of a chain (no such port, nothing linked).
inline MO_Node *sourceNode(MO_Node const *node, int port)
{
    MO_Port const *input = node->inPort(port);
    MO_Port const *source = input ? input->realSrcPort() : nullptr;
    return source ? source->node() : nullptr;
}

// Whether `frame` can stand for a whole frame: finite, and within the range of an int once
// truncated. Anything else (NaN, infinities, huge values) is refused by the bridge.
inline bool isUsableFrame(double frame)
{
    return std::isfinite(frame) && std::fabs(frame) < double(INT_MAX);
}

} // namespace IKToolUtil
