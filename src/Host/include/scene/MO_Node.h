// Nodes of the scene graph and the ports that join them.
//
// A node has numbered input and output ports. An input port has at most one source (an output
// port); an output port feeds any number of inputs. Links never make a cycle: connect refuses
// one, so walking up through sources always ends; nor a path of more than kMaxChainDepth nodes,
// so walks that recurse once per node stay far from the end of the stack.
//
// Pass-through nodes ("COMPOSITE", "EFFECT") are plain nodes, no modules: realSrcPort and
// realDstPorts look through them, entering and leaving by their port 0.
//
// Nodes are shared host objects, owned through UT_SharedPtr by their group, so that weak
// references (UT_SharedWeakPtr) to them read null once they are gone. Careful: removing a node
// from its group cuts all its links and may destroy it.
#pragma once

#include "base/UT_SharedPtr.h"
#include "scene/AT_Attr.h"

#include <QString>

#include <memory>
#include <vector>

class MO_AnimatedModule;
class MO_Module;
class MO_Node;
class SC_ProjectCommon;
class SC_SceneCommon;
class SC_SceneMetrics;
class TUGroup;
class TUScene;

class MO_Port {
public:
    MO_Port(MO_Node *node, bool isInput, int index) : node_(node), input_(isInput), index_(index) {}
    MO_Port(MO_Port const &) = delete;
    MO_Port &operator=(MO_Port const &) = delete;

    MO_Node *node() const { return node_; }  // the node that owns the port; never null
    bool isInput() const { return input_; }
    int index() const { return index_; }

    // The output port linked to this input, or null (always null for an output port).
    MO_Port *srcPort() const { return src_; }
    // The input ports this output feeds, in the order they were linked (empty for an input).
    std::vector<MO_Port *> const &dstPorts() const { return dsts_; }

    // The source of this input with pass-through nodes looked through: null when the chain
    // ends at a pass-through node with nothing linked to its port 0.
    MO_Port *realSrcPort() const;
    // Fills `list` (emptied first) with the input ports this output feeds, with pass-through
    // nodes looked through, depth first in link order.
    void realDstPorts(std::vector<MO_Port *> &list) const;

private:
    friend class MO_Node;
    void appendRealDstPorts(std::vector<MO_Port *> &list) const;
    MO_Node *node_;                // owner; the port lives exactly as long as it
    bool input_;
    int index_;
    MO_Port *src_ = nullptr;       // inputs only: src_->dsts_ holds this
    std::vector<MO_Port *> dsts_;  // outputs only: each d has d->src_ == this
};

class MO_Node : public UT_ShareBase, public AT_AttrOwner {
public:
    using AttrIterator = std::vector<AT_Attr *>::const_iterator;

    MO_Node(QString typeKeyword, int inPorts, int outPorts);
    ~MO_Node() override;
    MO_Node(MO_Node const &) = delete;
    MO_Node &operator=(MO_Node const &) = delete;

    QString const &typeKeyword() const;
    QString const &instanceName() const;
    void setInstanceName(QString const &name);
    bool selected() const;
    void setSelected(bool selected);
    // True for the kinds that hand their port 0 input straight to their outputs.
    bool isPassThrough() const;
    static bool isPassThroughKeyword(QString const &typeKeyword);

    // Ports. An index out of range gives null.
    int nInPorts() const;
    MO_Port *inPort(int index) const;
    int nOutPorts() const;
    MO_Port *outPort(int index) const;
    // Changes the number of input ports; ports that go are unlinked first. Refuses (false) a
    // negative count.
    bool setInPortCount(int count);

    // The most nodes one path of links may hold, from a node nothing feeds to a node that feeds
    // nothing (a chain of pegs, each the parent of the next, holds one node per peg). Evaluation
    // recurses once per node of the path, so the limit keeps it far from the end of the stack;
    // real rigs hold a few dozen.
    static constexpr int kMaxChainDepth = 250;

    // Whether a link from `src` to `dst` may be made: not when it would close a cycle, nor when
    // a path of links through it would hold more than kMaxChainDepth nodes. The walks are
    // iterative and visit each node above `src` and below `dst` once. Null nodes close no cycle
    // and give Allowed (connect refuses them).
    enum class LinkCheck { Allowed, ClosesCycle, TooDeep };
    static LinkCheck checkLink(MO_Node const *src, MO_Node const *dst);
    // Links output `outIndex` of `src` to input `inIndex` of `dst`, replacing what fed that
    // input. Refuses (false, nothing changed) null nodes, indices out of range and a link that
    // checkLink does not allow.
    static bool connect(MO_Node *src, int outIndex, MO_Node *dst, int inIndex);
    // Unlinks input `inIndex`; false when nothing was linked there or the index is out of range.
    bool disconnect(int inIndex);

    // Attributes, in registration order: the node's own ones first (made by its kind), then
    // the dynamic ones added while it lives, which are saved with their type name.
    AttrIterator attrsBegin() const;
    AttrIterator attrsEnd() const;
    int attrCount() const;
    // The top-level attribute whose keyword is `keyword`, or null.
    AT_Attr *attr(QString const &keyword) const { return findAttr(keyword); }
    // Takes ownership and appends one of the node's own attributes. Gives it, or null for null.
    template <class T>
    T *addOwnAttr(std::unique_ptr<T> attr)
    {
        T *raw = attr.get();
        return appendAttr(std::move(attr)) ? raw : nullptr;
    }

    // AT_AttrOwner: dynamic attributes are appended and taken out again (undo of their
    // creation); the owner is told of every change of an attribute.
    MO_Node *attrOwnerNode() override { return this; }
    void attrChanged(AT_Attr &attr) override;
    CO_CommandManager *attrCommandManager() override;
    AT_Attr *addDynamicAttr(std::unique_ptr<AT_Attr> attr) override;
    std::unique_ptr<AT_Attr> takeDynamicAttr(AT_Attr *attr) override;
    AT_Attr *findAttr(QString const &keyword) const override;

    // Run-time attributes keyed by type, never saved.
    AT_DynAttr *dynamicAttr(UT_DynKey const &key) const;
    // Takes ownership; replaces what was registered under the key. Gives the attribute.
    AT_DynAttr *registerDynamicAttr(UT_DynKey const &key, std::unique_ptr<AT_DynAttr> attr);

    // Where the node lives: null while it is in no group of a scene.
    TUGroup *parentGroup() const;
    TUScene *scene() const;
    // The scene's metrics, or the defaults while the node is in no scene.
    SC_SceneMetrics const &sceneMetrics() const;
    // Services of the scene and project. Null until an application installs them on the
    // scene (TUScene::setSceneCommon / setProjectCommon), and for a node in no scene: the
    // services themselves come with the application layer.
    SC_SceneCommon *sceneCommon() const;
    SC_ProjectCommon *projectCommon() const;

    // Marks the node changed and tells its scene (TUScene::reportNodeChanged). Evaluation keeps
    // no cache, so nothing stale can be served; the counters let views and tests see that
    // something changed.
    void setDirty();
    unsigned long dirtyCount() const;

    virtual MO_Module *toModule() { return nullptr; }
    virtual MO_Module const *toModule() const { return nullptr; }
    virtual MO_AnimatedModule *toAnimatedModule() { return nullptr; }

private:
    friend class TUGroup;
    void setParentGroup(TUGroup *group);
    void unlinkAll();
    AT_Attr *appendAttr(std::unique_ptr<AT_Attr> attr);

    class Impl;
    std::unique_ptr<Impl> impl_;
};
