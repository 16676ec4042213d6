// From the node graph to a SkeletonDef, and from the selection to the module that heads a skeleton.
//
// A skeleton is not stored in the scene: it is read from the graph on demand, for one frame. The
// extraction finds the module that heads the skeleton, walks the graph downward from it through
// output port 0, decides node by node which modules are joints, reads each joint's scene position at
// the frame, links each joint by name to its nearest joint ancestor (through input port 0), adds a
// handle joint at each free tip and names the first joint "root".
//
// Nothing here changes the scene, except that asking a module for its joint name registers the
// run-time IKJointNameAttr on it the first time. A null module is allowed everywhere and gives the
// empty result. Sibling joints come out in the order of their nodes' instance names (addresses
// between equal names): only a parent standing before its children is guaranteed.
#pragma once

#include "skeleton/IKMetaData.h"
#include "skeleton/SkeletonDef.h"

#include <set>

class SLB_SelectableDescriptor;

namespace IKToolUtil {

// The input of one extraction.
struct SkeletonExtractionSettings {
    // Node type keywords that do not become joints when they are mere candidates.
    std::set<QString> ignoredKeywords;
    // True: the skeleton the user defined (a root must exist, only participating modules are
    // joints, handles are added at the tips). False: the setup view of the graph (every candidate is
    // a joint, and the top of the chain stands in for a missing root).
    bool definedJointsOnly = true;
    // Positions are read and switches resolved at this frame (truncated to a whole frame).
    double frame = 0.0;
    // Modules that stay joints even when their keyword is ignored.
    std::set<MO_Module *> forcedModules;
};

// Which node kinds the setup view turns into joints. The options are kept here, where extraction
// reads them, for the whole process; the IK tool's settings are their front (usePeg, useRead,
// useDeformer) and the only writer.
struct SetupKeywordOptions {
    bool usePeg = true;
    bool useRead = false;
    bool useDeformer = true;
};
SetupKeywordOptions setupKeywordOptions();
void setSetupKeywordOptions(SetupKeywordOptions const &options);

// The keywords left out for the options that are false: "PEG"; "READ"; the deformer kinds.
std::set<QString> getIgnoredKeywords(SetupKeywordOptions const &options);
// The same for the present options.
std::set<QString> getIgnoredKeywords();

// The head of the skeleton of `module`: findRoot(module).
MO_Module *skeletonFromModule(MO_Module *module);
// Fills `skeleton` (emptied first) with the skeleton of `module` at the settings' frame.
void skeletonFromModule(MO_Module *module, SkeletonDef &skeleton, SkeletonExtractionSettings const &settings);
// As above; modules in `excluded` never become joints, though what lies below them is still walked.
// The caller's set is not changed.
void skeletonFromModule(MO_Module *module, SkeletonDef &skeleton, SkeletonExtractionSettings const &settings,
                        std::set<MO_Module *> const &excluded);
// The automatic generation: every candidate below `module` that may be animated ("CAN_ANIMATE" not
// false) is a joint; no handles.
void smartSkeletonFromModule(MO_Module *module, SkeletonDef &skeleton, double frame);

// Appends `module` as a joint, child of its nearest ancestor in `visited`, and adds it to
// `visited`. A mini peg without local referential is no joint and stays out of `visited`, so that
// what lies below it links to the joint above it.
void appendModuleToSkeleton(MO_Module *module, SkeletonDef &skeleton, SkeletonExtractionSettings const &settings,
                            std::set<MO_Module *> &visited);

// For each handle of `source`, gives the joint of the same parent name in `target` a handle too,
// even if that joint has children. Nothing when `source` has fewer than two joints.
void copyHandlesToSkeleton(SkeletonDef &target, SkeletonDef const &source, double frame);

// The nearest module at or above `node` (through input port 0) that is a defined root; null if none.
MO_Module *findRoot(MO_Node *node);
// The top of the chain of `node` through input port 0, not entering a module excluded from IK;
// null when that top is no module.
MO_Module *findTopLevelParent(MO_Node *node);
// The nearest strict ancestor of `module` (through input port 0) that is in `set`; null if none.
MO_Module *getAncestorForModuleInSet(MO_Module *module, std::set<MO_Module *> const &set);
// The number of steps up through input port 0 to the top of the chain; 0 for null.
int getModuleDepth(MO_Module *module);

// Selection, through PLUG_Services::getSelection().
// The first selected node as a module; for a group, its first drawing element; else null.
MO_Module *concreteModuleFromSelection();
// findRoot(concreteModuleFromSelection()).
MO_Module *skeletonFromSelection();
// The only selected node, as a module; null for none, several, or a node that is no module.
MO_Module *uniqueSelection();
bool isMultipleSelection();
// The selected modules that are `root` or lie below it.
std::set<MO_Module *> selectedNodes(MO_Module *root);
// The module of a picked item, or null when the item is no module.
MO_Module *moduleFromSelectable(UT_SharedPtr<SLB_SelectableDescriptor> const &descriptor);
void addModuleToSelection(MO_Module *module);

} // namespace IKToolUtil
