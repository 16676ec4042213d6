// Defining joints on the scene's modules, and where a module's joint lies in the scene.
//
// The marks live in each module's IKMetaData (skeleton/IKMetaData.h): the participation flag and
// the JointAttr whose isRoot flag heads a skeleton. The functions here set them through commands
// run on the given manager, each with an empty name: the caller gathers them in a
// CO_CommandAccumScope. Booleans are written through their text form ("true", "false").
//
// A null module or a null manager changes nothing and makes no command. All positions and
// vectors are in scene (OGL) space; attribute values are field units.
#pragma once

#include "skeleton/IKMetaData.h"

namespace IKToolUtil {

// The command manager of the module's project; null for a null module or one outside a project.
CO_CommandManager *commandManagerForModule(MO_Module *module);

// Gives the module its metadata if it has none, then sets its participation flag.
void setParticipation(CO_CommandManager *manager, MO_Module *module, bool participate);

// Makes the module head a skeleton (`define`) or stop heading one. Defining creates the metadata
// if needed, then sets isRoot and the participation flag, in that order. Undefining a module
// without metadata does nothing; otherwise it first clears the participation of every module
// below it, other skeletons' roots and joints included, then clears isRoot. The module's own
// participation is left as it was.
void defineRoot(CO_CommandManager *manager, MO_Module *module, bool define);

// The module's handle: the vector from its joint to its handle, in scene space, from the local
// handle position of its JointAttr. (0.1, 0, 0), a scene-space constant, without metadata.
Math::Vector3d handleOrientationForModule(MO_Module *module);

// Stores `vector` (scene space, from the joint towards the wanted handle) as the module's handle,
// in its local axes at `frame`. Makes the module take part first if it does not. A world
// transform without inverse leaves the handle as it was. z is dropped.
void setHandleOrientationForModule(CO_CommandManager *manager, MO_Module *module, Math::Vector3d const &vector,
                                   double frame);

// Where the module's joint lies at `frame`: its world transform applied to the pivot of its
// animated part, or, for a mini peg, its transform without deformation composed with its local
// referential, applied to the origin. (0, 0, 0) for a null module.
Math::Point3d getModuleJointPositionAtFrame(MO_Module *module, int frame);

// Where a deformer's joint lies at `frame`: at the deformer's own start, in the space its
// attributes are given in (the identity when nothing feeds its input 0). Bones: the origin of
// their posed start frame; curves: the first control point of their second piece (the elbow);
// offsets: their offset. Any other kind gives the origin of that space; a null module (0, 0, 0).
Math::Point3d getModuleOffsetJointAtFrame(MO_Module *module, int frame);

} // namespace IKToolUtil
